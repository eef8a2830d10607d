// PropVarGraphBase, the property-variable graph; PropVarLayerBase, one kind of property; and
// PropVarGraphLayers, the graph built from independent layers.
#ifndef VESK_BIC_PROPVARGRAPHBASE_H
#define VESK_BIC_PROPVARGRAPHBASE_H

#include "ExpVarGraphBase.h"
#include "Matrix.h"
#include "StateDataSetReal.h"
#include "VarUniverse.h"
#include "ds/BitVec.h"

#include <string>
#include <vector>

class options;

// Holds the empty data set the condition-variable base is built on: a property graph has no single
// data set, so the property ids of a group are numbered by the layer that made it.
struct PropGraphDataHolder {
    explicit PropGraphDataHolder(VarUniverse& universe) : m_no_data(universe) {}
    StateDataSetReal m_no_data;
};

// The condition-variable graph with property nodes in the place of condition nodes: every table of
// the base is used under its property name below. A group also records the layer that made it, and
// an edge keeps the raw property value beside its weight.
class PropVarGraphBase : private PropGraphDataHolder, public ExpVarGraphBase {
public:
    // Prints "univ max vid " and " max vid "; reads `Logit` unless the scope is "Default".
    PropVarGraphBase(VarUniverse& universe, options& opts, const std::string& scope);
    PropVarGraphBase(const PropVarGraphBase&) = delete;
    PropVarGraphBase& operator=(const PropVarGraphBase&) = delete;

    // Layers make their own groups; a property graph doesn't build from levels.
    void add_exp_group(int, float, int) override {}

    int add_prop_node_to_group(int group, int prop_id) { return add_exp_node_to_group(group, prop_id); }
    // Sets the number of property groups, and the width of the group maps to `prop_num` ids.
    void allocate_max_prop_group(int groups, int prop_num);
    // An edge of weight `weight` (its probability) keeping the raw `value`; returns the edge id.
    int add_edge(int prop_node, int var_node, float weight, float value);
    // Refreshes the size of the universe in the tables that follow it.
    void update_max_vid();
    // Rotates edges three at a time as randomize(times), each rotation among the edges of one weight
    // range only: `ranges` are ascending cuts, range i holding weights in [cut i-1, cut i) (the last
    // range is open above). Degrees, and the weight sum per node, stay.
    void randomize(int times, const std::vector<float>& ranges);

    bool is_prop_node(int node) const { return is_exp_node(node); }
    int node_prop(int node) const { return node_exp(node); }
    int group_layer(int group) const { return m_group_layer[group]; }
    int node_layer(int node) const { return m_group_layer[node_group(node)]; }

    // Property names of the base's tables.
    int& m_max_prop_node;
    int& m_max_prop_group;
    Matrix<int>& m_prop_group_nodes;
    ds_bitvec& m_is_prop_node;
    std::vector<int> m_group_layer;  // by property group
    std::vector<float> m_edge_value; // by edge id
};

class PropVarGraphLayers;

// One kind of property. Layer objects are owned by the caller; a layer numbers its properties from 0.
class PropVarLayerBase {
public:
    virtual ~PropVarLayerBase() {}
    virtual const char* get_type_name() const = 0;
    // The number a property node's property id has in files; the id itself here.
    virtual int get_property_number(int prop_id) const { return prop_id; }
    // Strength of the evidence of one property of the layer; 1 here.
    virtual float get_prop_weight(int /*prop_id*/) const { return 1.0f; }
    virtual void build_layer_nodes(PropVarGraphLayers& graph, int layer) = 0;
    virtual void build_layer_edges(PropVarGraphLayers& graph, int layer) = 0;

    int m_first_group = 0;
    int m_end_group = 0;
};

// Keys unless the scope is "Default": VarCardinality (levels plus one) and VarOrientation (non-zero:
// two orientations per level). The variable groups are allocated at once.
class PropVarGraphLayers : public PropVarGraphBase {
public:
    PropVarGraphLayers(VarUniverse& universe, options& opts, const std::string& scope);

    // Nodes of every layer, then the variable nodes of every group, then the edges of every layer;
    // null slots are skipped. Statistics on the error stream.
    void build_layers();
    // A property layer node's file number, through its layer.
    int get_property_number(int node) const;
    const PropVarLayerBase& node_layer_obj(int node) const { return *m_layers[node_layer(node)]; }

    std::vector<PropVarLayerBase*> m_layers; // by layer; null for an absent one
    int m_var_cardinality;
    bool m_var_orientation;
};

// Makes a layer of one group: one node per property id in [0, n), in group `graph.m_max_prop_group`.
void add_single_group_layer(PropVarLayerBase& layer, PropVarGraphLayers& graph, int layer_id, int n);

#endif
