// BicGreedyOpt: grows a bicluster by always taking the best single-node move; BicSeperGreedy and
// BicVarSeperGreedy: the same walk for the separation of the members from the non-members.
#ifndef VESK_BIC_BICGREEDYOPT_H
#define VESK_BIC_BICGREEDYOPT_H

#include "BicChangeObs.h"
#include "BicSeperObs.h"
#include "DynBiclust.h"
#include "ExpClasses.h"
#include "ExpVarGraphBase.h"
#include "WgtSchemeBase.h"
#include "ds/BitVec.h"
#include "ds/GraphBaseEdgeIter.h"

#include <memory>
#include <string>
#include <vector>

class options;

// Walks the edges `it` was restarted on. With the node out (`in` false) it would join: a seed node
// at the other end, still in `focus`, turns bad if its margin plus the edge's weight falls below 0,
// and leaves `focus` otherwise, so that `focus` ends with the seed nodes the node has no edge to.
// With the node in it would leave: the margin minus the weight is what counts. `margin` gives the
// margin of a seed node by node id; the edges are taken in the iterator's order, and the first
// seed node that turns bad ends the walk.
template <class Margin>
bool edge_turns_focus_bad(GraphBaseEdgeIter& it, const WgtSchemeBase& wgt, ds_bitvec& focus, bool in,
                          Margin margin) {
    for (; !it.at_end(); ++it) {
        const int o = it.other();
        if (!focus.get_ind(o))
            continue;
        const float m = margin(o);
        const float w = wgt.get_edge_weight(it.edge());
        if (!in) {
            if (m + w < 0.0f)
                return true;
            focus.clr_ind(o);
        } else if (m - w < 0.0f) {
            return true;
        }
    }
    return false;
}

// A variable stands in a seed in one orientation only: of two nodes of one variable id, in node
// order, the earlier is deleted from `bic` if its group is 0 or the later group is the smaller, else
// the later one ("Double var " id " in bic kernel" on the error stream). Every variable id seen is
// set in `used_var`, which must cover the ids.
void keep_one_node_per_var(const ExpVarGraphBase& graph, ExpVarBiclust& bic, ds_bitvec& used_var);

// Keys in the scope given, all required: CanDelInitExp, CanAddExp, CanDelExp, CanDelInitVar, Logit
// (trace each step and verify the bicluster at each step), AddExpCostFactor and DelExpCostFactor
// (a condition's add and delete gains are multiplied by them).
//
// Heap layout, with B bins: sub-heap 2b holds the add moves of the variables of bin b, 2b + 1 their
// delete moves, 2B all condition moves. Keys are negated gains; the walk stops when the best gain is
// at most 0.00001 or no move is left. A refused move leaves the heap, and comes back only when an
// event puts the node's entry back (a change of side or a reset).
class BicGreedyOpt {
public:
    // All nodes take part.
    BicGreedyOpt(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, options& opts, const std::string& scope,
                 bool attach);
    // Variable nodes whose variable isn't in `vars` get no observer and never become candidates; a
    // null `vars` admits all.
    BicGreedyOpt(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, const ds_bitvec* vars, options& opts,
                 const std::string& scope, bool attach);
    // Only condition nodes of class `cls` or -1 take part; each variable starts with its own weight
    // (get_var_node_weight: what the other classes' conditions give it) as gain.
    BicGreedyOpt(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, const ExpClasses& classes, int cls,
                 options& opts, const std::string& scope, bool attach);
    virtual ~BicGreedyOpt();

    virtual float get_cur_score() const;

    // Improves `bic` in place.
    void grow(ExpVarBiclust& bic);
    // Sets the working bicluster to `bic` and gives every condition node's margin (0 for nodes
    // without an observer), by node id.
    void score(ExpVarBiclust& bic, std::vector<float>& out);

    const ExpVarGraphBase& m_graph;
    WgtSchemeBase& m_wgt;
    BicHeap m_heap;
    DynBiclust m_bic;
    std::vector<BicChangeVarObs> m_var_obs;
    std::vector<BicChangeVarBinObs> m_bin_obs;
    std::vector<BicChangeExpObs> m_exp_obs;
    ds_bitvec m_init_exps;
    ds_bitvec m_init_vars;
    bool m_can_del_init_exp;
    bool m_can_add_exp;
    bool m_can_del_exp;
    bool m_can_del_init_var;
    bool m_check_score;
    std::unique_ptr<GraphBaseEdgeIter> m_edge_iter;
    bool m_verify_gain;
    bool m_debug;
    // Counts of the last grow: moves made and moves refused.
    long m_moves;
    long m_drops;

protected:
    void read_flags(options& opts, const std::string& scope);
    // Attaches the condition, variable and bin observers (variables filtered by `vars` if given).
    // With `classes`, only condition nodes of class `cls` or -1 get an observer, and each variable
    // starts with its own weight as gain.
    void init_observ(options& opts, const std::string& scope, const ds_bitvec* vars,
                     const ExpClasses* classes = nullptr, int cls = -1);
    // Attaches a condition observer, on sub-heap `heap_idx`, to each used condition node (only those
    // of class `cls` or -1 if `classes` is given).
    void attach_exp_obs(int heap_idx, float add_factor, float del_factor, const ExpClasses* classes, int cls);
    // Attaches the variable observers (variables filtered by `vars` if given; each starting with its
    // own weight as gain if `own_weight`, else 0) and the bin observers.
    void attach_var_bin_obs(const ds_bitvec* vars, bool own_weight);
    // Would the move of variable `node` make the margin of a seed condition negative?
    bool var_will_turn_foc_exp_bad(int node, bool in);
    // Would the move of condition `node` make the margin of a seed variable negative?
    bool exp_will_turn_foc_var_bad(int node, bool in);
    int bins_num() const { return m_wgt.get_var_nodes_bins().m_bin_num; }

    // The steps of grow. take_kernel records the seed, keeps one node per variable id (of two, the
    // one of the lower non-zero group), marks the ids in use and loads the seed; walk takes the best
    // move while it gains.
    void take_kernel(ExpVarBiclust& bic, ds_bitvec& used_exp, ds_bitvec& used_var);
    void walk(ds_bitvec& used_exp, ds_bitvec& used_var);
    // Makes the move of `node` unless a rule refuses it: its id already in use by another node
    // (`used_text` is the trace), or the side's own rules.
    template <class Side> bool try_move(int node, ds_bitvec& used, const char* used_text);
    bool move_allowed(VarSide, int node, bool in);
    bool move_allowed(CondSide, int node, bool in);
    // Counts a refused move, tracing `why` if given; false.
    bool refuse(const char* why);
};

// Maximises the gap between the smallest margin of a condition inside and the largest of a condition
// of another class (AllCondSeperTrack). Conditions move by score (heap 0), variables by the gap
// (heap 1). CanDelInitVar must be non-zero.
class BicSeperGreedy : public BicGreedyOpt {
public:
    BicSeperGreedy(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, const ExpClasses& classes, int cls,
                   options& opts, const std::string& scope);
    ~BicSeperGreedy() override;

    // The track's separation, also printed on the error stream.
    float get_cur_score() const override;

    AllCondSeperTrack m_track;
    std::vector<BicChangeVarSepeObs> m_sepe_obs;
};

// Maximises the gap between the smallest score of a variable inside and the largest of a variable
// outside `vars` (AllVarSeperTrack). Variables move by score, conditions by the gap. VarTrackLogit
// (optional) traces the track.
class BicVarSeperGreedy : public BicGreedyOpt {
public:
    BicVarSeperGreedy(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, const ds_bitvec& vars, options& opts,
                      const std::string& scope);
    ~BicVarSeperGreedy() override;

    float get_cur_score() const override;

    AllVarSeperTrack m_track;
    std::vector<BicChangeExpSepeObs> m_sepe_obs;
};

#endif
