// BinRelGraphLayers, layers of undirected relations between variables; BinRelWgtSchemeBase, their
// weights; BinRelWgtSchemeDegree, weights that favour relations between nodes of low degree.
#ifndef VESK_BIC_BINRELGRAPHLAYERS_H
#define VESK_BIC_BINRELGRAPHLAYERS_H

#include "ds/GraphWeb.h"

#include <istream>
#include <string>
#include <vector>

// A node per variable id, node id = variable id. A relation is stored once, as an edge from the
// first variable named to the second; it is undirected, so readers walk both the in- and the
// out-edges of a node. A repeated pair (in either order) and a self relation are dropped.
// read_tables reads a key table of lines `layer name` and a relation table of lines
// `layer var_a var_b`, white-space separated, until a token fails to parse.
class BinRelGraphLayers : public GraphWeb {
public:
    BinRelGraphLayers();

    void read_tables(std::istream& key, std::istream& rels, int n_vars);
    // A relation in `layer`; returns the edge id, or -1 when dropped.
    int add_relation(int layer, int a, int b);
    // The relation between two variables in either direction, -1 if none.
    int get_relation(int a, int b) const;
    // Degree-keeping swaps: times * edges steps, each taking two relations (a, b), (c, d) and making
    // them (a, d), (c, b) when that makes neither a self relation nor a repeat. Ids keep their layers.
    void randomize(int times);

    std::vector<std::string> m_layer_names; // by layer
    std::vector<int> m_edge_layer;          // by edge id
};

class BinRelWgtSchemeBase {
public:
    virtual ~BinRelWgtSchemeBase() {}
    virtual float get_edge_weight(int edge) const = 0;
};

// ln(2E / (d_a * d_b)) for a relation between variables of degrees d_a and d_b among E relations,
// floored at 0: a relation between hubs says little. Computed once, at construction.
class BinRelWgtSchemeDegree : public BinRelWgtSchemeBase {
public:
    explicit BinRelWgtSchemeDegree(const BinRelGraphLayers& graph);
    float get_edge_weight(int edge) const override { return m_weight[edge]; }

    std::vector<float> m_weight; // by edge id
};

#endif
