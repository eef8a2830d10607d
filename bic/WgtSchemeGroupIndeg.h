// WgtSchemeGroupIndeg: log-likelihood-ratio weights against a null model that keeps the group
// in-degrees of bins and the out-degrees of condition nodes; WgtSchemeGroupIndegHS, the variant
// for a bicluster bound to one class of conditions.
#ifndef VESK_BIC_WGTSCHEMEGROUPINDEG_H
#define VESK_BIC_WGTSCHEMEGROUPINDEG_H

#include "ArrayVarEC.h"
#include "ExpClasses.h"
#include "ExpVarGraphBase.h"
#include "Matrix.h"
#include "VarNodesBins.h"
#include "WgtSchemeBase.h"

#include <functional>
#include <string>
#include <vector>

// Keys in the scheme's scope, all required: BinningScope (the scope of the bins' keys), MinimumPU
// and Logit in the constructor; LimitNegPosRatio, MinNegWeightRatio, UseSeriesFactor, UseExpWeight
// and MaxPatchPU in every reinit.
//
// For a condition node e and a bin b, p_u is the chance that e's edges into the bin's variable
// group hit a node of the bin's mean in-degree from e's group when the group pair's edges are
// placed at random (approximate_p), or MinimumPU where a count truncates to 0. An edge weighs
// log(ModelP / p) and a non-edge log((1 - ModelP) / (1 - p)), with p = min(p_u, MaxPatchPU).
// A pair outside the measurement pattern of the bin's class weighs 0 either way.
class WgtSchemeGroupIndeg : public virtual WgtSchemeBase {
public:
    // With `do_init` false the tables stay zero until reinit.
    WgtSchemeGroupIndeg(const ExpVarGraphBase& graph, const ArrayVarEC& ec, options& opts,
                        const std::string& scope, float model_p, bool do_init);

    // Re-reads the keys and recomputes every table for `model_p`; the bins stay.
    void reinit(options& opts, const std::string& scope, float model_p);
    // 1 - prod_{i<d} (E - bin_d - i) / (E - i), in extended precision; 0 for d <= 0.
    static long double approximate_p(int d, int bin_d, int E);
    // Weight of an edge (or a non-edge) for a null probability p_u in condition exp_id.
    virtual float get_p_weight(float p_u, bool is_edge, int exp_id) const;

    float get_edge_weight(int edge) const override { return m_edge_weight[edge]; }
    float get_edge_cnc(int edge) const override { return m_edge_cnc[edge]; }
    float get_edge_exp_weight(int exp_node, int bin) const override {
        return m_edge_exp_weight(bin, exp_node);
    }
    float get_non_edge_exp_weight(int exp_node, int bin) const override {
        return m_non_edge_exp_weight(bin, exp_node);
    }
    float get_edge_exp_cnc(int exp_node, int bin) const override { return m_edge_exp_cnc(bin, exp_node); }
    const VarNodesBinsBase& get_var_nodes_bins() const override { return m_bins; }
    int get_var_node_bin(int node) const override { return m_bins.get_var_node_bin(node); }

    const ExpVarGraphBase& m_graph;
    VarNodesBinsGroupIndeg m_bins;
    const ArrayVarEC& m_ec;
    float m_model_p;
    bool m_limit_neg_pos;
    float m_min_neg_ratio;
    bool m_use_series_factor;
    bool m_use_exp_weight;
    float m_max_patch_pu;
    float m_minimum_pu;
    Matrix<float> m_edge_exp_weight;     // bin by condition node
    Matrix<float> m_non_edge_exp_weight; // bin by condition node
    Matrix<float> m_edge_exp_cnc;        // bin by condition node
    std::vector<float> m_edge_weight;    // by edge id
    std::vector<float> m_edge_cnc;       // by edge id
    bool m_debug;

protected:
    // get_p_weight of the class being built, for a condition node: constructors pass their own, never
    // the override.
    typedef std::function<float(float p_u, bool is_edge, int exp_node)> PWeight;
    // Whether the pair of a bin and a condition node is weighed at all (else both weights are 0).
    typedef std::function<bool(int bin, int exp_node)> PairCounted;
    // The keys reinit reads, and the tables it computes with `p_weight`; by default a pair counts
    // when the bin's measurement class measured the node's condition.
    void read_keys(options& opts, const std::string& scope, float model_p);
    // With Logit, each weighed pair is traced: by `trace` if given (which then also announces the pass
    // over the edges), else in the condition scheme's words.
    typedef std::function<void(int bin, int exp_node, int d, int bin_d, int E, float p_u, float w1, float w0)>
        PairTrace;
    void fill_tables(const PWeight& p_weight, const PairCounted& counted = PairCounted(),
                     const PairTrace& trace = PairTrace());
    // The two log ratios for model probability `model` and null probability `p` (already limited),
    // with the negative-to-positive limit and the series factor applied.
    void log_ratios(float model, float p, int exp_id, float& pos, float& neg) const;
    // Number of conditions in the series of exp_id; 1 where the data set has no series for it.
    float series_size(int exp_id) const;
};

// The model probability of a condition outside the class (class neither `m_class` nor -1) is the
// unlimited p_u times NonClassPFactor; condition weights are never applied. Such conditions are not
// searched, so what they add to each variable node is folded into get_var_node_weight.
class WgtSchemeGroupIndegHS : public WgtSchemeGroupIndeg {
public:
    WgtSchemeGroupIndegHS(const ExpVarGraphBase& graph, const ArrayVarEC& ec, const ExpClasses& classes,
                          int cls, options& opts, const std::string& scope, float model_p);

    float get_p_weight(float p_u, bool is_edge, int exp_id) const override;
    float get_var_node_weight(int node) const override { return m_var_node_weight[node]; }
    // Per variable node: its bin's non-edge weights over the non-class condition nodes, plus what
    // its in-edges from such nodes add over non-edges, read from the tables. Condition nodes keep 0.
    void calc_nonclass_contrib();

    const ExpClasses& m_classes;
    int m_class;
    float m_non_class_p_factor;
    std::vector<float> m_var_node_weight; // by node id

private:
    bool in_class(int exp_id) const {
        const int c = m_classes.class_of(exp_id);
        return c == m_class || c == -1;
    }
};

#endif
