// PropVarNodesBinsGroupIndeg, the bins of the property graph's variable nodes; PropWgtSchemeBase, the
// interface of property weights; PropWgtSchemeGroupIndeg, weights whose model differs by layer.
#ifndef VESK_BIC_PROPWGTSCHEME_H
#define VESK_BIC_PROPWGTSCHEME_H

#include "ArrayVarEC.h"
#include "PropVarGraphBase.h"
#include "VarNodesBins.h"
#include "WgtSchemeBase.h"
#include "WgtSchemeGroupIndeg.h"
#include "ds/BitVec.h"

#include <string>
#include <vector>

// The binning of Part of the condition-variable graph applied as it stands: a property group is a
// condition group of the base graph.
class PropVarNodesBinsGroupIndeg : public VarNodesBinsGroupIndeg {
public:
    PropVarNodesBinsGroupIndeg(const PropVarGraphBase& graph, const ArrayVarEC& ec, options& opts,
                               const std::string& scope)
        : VarNodesBinsGroupIndeg(graph, ec, opts, scope) {}
};

// Property weights are condition weights under their property names: a bicluster or an optimiser
// of the condition-variable graph reads them through WgtSchemeBase, a property one through these.
class PropWgtSchemeBase : public virtual WgtSchemeBase {
public:
    virtual float get_edge_prop_weight(int prop_node, int bin) const = 0;
    virtual float get_non_edge_prop_weight(int prop_node, int bin) const = 0;
    virtual float get_edge_prop_cnc(int prop_node, int bin) const = 0;
    // Variable ids whose edge from `prop_node` counts in favour (positive get_edge_cnc).
    virtual const ds_bitvec& get_pos_genes(int prop_node) const = 0;
};

// Keys: BinningScope, MinimumPU and Logit at construction; ModelP and MaxPU (lists, one value per
// layer), LimitNegPosRatio, MinNegWeightRatio and UseExpWeight in every reinit. As the condition
// scheme with the model probability and the p_u ceiling of the node's layer, no series factor, and
// the measurement-class test applied to layer 0 only: a motif or a class has no missing measurement.
class PropWgtSchemeGroupIndeg : public PropWgtSchemeBase, public WgtSchemeGroupIndeg {
public:
    PropWgtSchemeGroupIndeg(const PropVarGraphLayers& graph, const ArrayVarEC& ec, options& opts,
                            const std::string& scope, bool do_init);

    void reinit(options& opts, const std::string& scope);
    // log(ModelP[layer] / p) for an edge, log((1 - ModelP[layer]) / (1 - p)) for a non-edge, with
    // p = min(p_u, MaxPU[layer]); times the layer's get_prop_weight(prop_id) with UseExpWeight.
    float get_p_weight(float p_u, bool is_edge, int layer, int prop_id) const;

    float get_edge_prop_weight(int prop_node, int bin) const override {
        return get_edge_exp_weight(prop_node, bin);
    }
    float get_non_edge_prop_weight(int prop_node, int bin) const override {
        return get_non_edge_exp_weight(prop_node, bin);
    }
    float get_edge_prop_cnc(int prop_node, int bin) const override {
        return get_edge_exp_cnc(prop_node, bin);
    }
    const ds_bitvec& get_pos_genes(int prop_node) const override { return m_pos_genes[prop_node]; }

    const PropVarGraphLayers& m_layers;
    std::vector<float> m_model_ps;      // by layer
    std::vector<float> m_max_pu;        // by layer
    std::vector<ds_bitvec> m_pos_genes; // by property node
};

#endif
