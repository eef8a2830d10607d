// ExpVarBiclust, a bicluster of the condition-variable graph with a running score; WeightedVarSet, a
// seed of variable nodes with its weight; DynBiclust, a bicluster that announces every change.
#ifndef VESK_BIC_DYNBICLUST_H
#define VESK_BIC_DYNBICLUST_H

#include "ExpVarGraphBase.h"
#include "WgtSchemeBase.h"
#include "dispatch.h"
#include "ds/BitVec.h"
#include "ds/GraphBaseEdgeIter.h"

#include <cstdint>
#include <memory>
#include <ostream>
#include <set>
#include <vector>

// A set of variable nodes (or a single node, made into a set on first use; -1 for none) with the
// weight that the one who found it expects the bicluster to have.
class WeightedVarSet {
public:
    explicit WeightedVarSet(int node = -1, float weight = 0.0f);
    WeightedVarSet(const std::set<int>& nodes, float weight);

    // The nodes; a single node joins the set the first time it is asked for.
    std::set<int>& get_set();
    // Adds a node: the first one is held alone, later ones make the set.
    void add_var(int node);

    int m_node;
    float m_weight;
    std::set<int> m_set;
    bool m_made;
};

// The score of condition nodes `exps` and variable nodes `vars`, with n(b) the number of nodes of
// `vars` in bin b:
//   sum over e in exps and bins b of n(b) * non_edge(e, b)  +  sum of edge_cnc over the edges inside
//   +  sum of get_var_node_weight over vars.
// The first term is kept per bin (m_exp_bin_sum, m_bin_count), so that a change costs the degree of
// the node plus one step per bin. Copies and assignments are between biclusters of one graph and
// one weight scheme: they copy the sets and the running sums, each object keeps its own iterator.
class ExpVarBiclust {
public:
    ExpVarBiclust(const ExpVarGraphBase& graph, WgtSchemeBase& wgt);
    // Builds the bicluster of `vars` and `exps` through init (with its check of the weight).
    ExpVarBiclust(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, WeightedVarSet& vars,
                  const ds_bitvec& exps);
    ExpVarBiclust(const ExpVarBiclust& src);
    ExpVarBiclust& operator=(const ExpVarBiclust& src);
    virtual ~ExpVarBiclust();

    virtual void reset();
    virtual void add_var_node(int node);
    virtual void add_exp_node(int node);
    virtual void del_var_node(int node);
    virtual void del_exp_node(int node);

    // reset, add `exps` and `vars`, verify; the expected score (weight plus the variables' own
    // weights) must then agree with the running score within 1%, else fatal.
    void init(float weight, const std::set<int>& vars, const ds_bitvec& exps);

    // Sizes `out` to the universe and sets the variable ids of the variable nodes inside.
    void get_vars_set(ds_bitvec& out) const;
    // What the node's edges and non-edges to the other side of the bicluster add; the variable's
    // own weight isn't counted.
    float get_exp_margin(int node) const;
    float get_var_margin(int node) const;

    // Recomputes the score pair by pair; false, with "Bad weight verification at bic, ..." on the
    // error stream, when it is off the running score by more than 1%. An empty bicluster has score
    // 0 and passes.
    bool verify() const;
    void print(std::ostream& out) const;
    // Every member with its margin, for debugging.
    void log_dump_with_weights(std::ostream& out) const;
    // One bick line (id, score) and one bicd line per member: id, 0 for a condition or 1 for a
    // variable, its condition or variable id, its group, its margin; conditions first, node order.
    void dump_to_tables(int id, std::ostream& bick, std::ostream& bicd) const;

    bool operator==(const ExpVarBiclust& other) const {
        return m_exps == other.m_exps && m_vars == other.m_vars;
    }
    bool operator!=(const ExpVarBiclust& other) const { return !(*this == other); }
    std::uint32_t hash() const { return m_exps.hash() + m_vars.hash(); }

    int bins_num() const { return static_cast<int>(m_bin_count.size()); }

    const ExpVarGraphBase& m_graph;
    WgtSchemeBase& m_wgt;
    ds_bitvec m_exps; // condition nodes inside
    ds_bitvec m_vars; // variable nodes inside, over the node id space
    float m_score;
    std::vector<float> m_exp_bin_sum; // by bin: sum of non_edge(e, bin) over the conditions inside
    std::vector<int> m_bin_count;     // by bin: variable nodes inside
    std::unique_ptr<GraphBaseEdgeIter> m_edge_iter;

private:
    // Adds sign * get_edge_cnc of every edge of `node`, walked in `dir`, whose other end is in
    // `others` to `acc`, edge by edge.
    void add_edge_cnc(float& acc, int node, GraphBaseEdgeIter::Direction dir, const ds_bitvec& others,
                      float sign) const;
    // The score and the sums with a node joining (sign 1) or leaving (sign -1).
    void move_exp(int node, float sign);
    void move_var(int node, float sign);
    // The body of init. With `own` it goes through this class's operations rather than the
    // overrides, as the constructor must: no virtual call is made while a derived part is unbuilt.
    void load(float weight, const std::set<int>& vars, const ds_bitvec& exps, bool own);
};

// Hash functor for hashed containers keyed by biclusters.
struct ExpVarBiclustHash {
    std::size_t operator()(const ExpVarBiclust& b) const { return b.hash(); }
};

// ExpVarBiclust with an event channel. Codes: 0 reset (raised before the reset), 1 variable added,
// 2 condition added, 3 variable deleted, 4 condition deleted, 5 remember, 6 revert; for node k,
// 7 + 3k its own change of side, 8 + 3k a neighbour of k added, 9 + 3k a neighbour of k deleted.
// A change raises, after the score is updated: its general code, the node's own code, then the
// neighbour code of every node adjacent to it, inside the bicluster or not (outside nodes must know
// their gain). m_cur_* say what the event is about.
//
// ExpVarBiclust is a virtual base, so that a bicluster with further scores of its own (the property
// bicluster) and this channel can be joined in one class that holds a single set of members.
class DynBiclust : public virtual ExpVarBiclust {
public:
    DynBiclust(const ExpVarGraphBase& graph, WgtSchemeBase& wgt);
    // A copy has the sets and sums of the source and a channel of its own, with no subscribers.
    DynBiclust(const DynBiclust& src);
    DynBiclust& operator=(const DynBiclust&) = delete;
    ~DynBiclust() override;

    void reset() override;
    void add_var_node(int node) override;
    void add_exp_node(int node) override;
    void del_var_node(int node) override;
    void del_exp_node(int node) override;

    // reset, then every condition of `other`, then every variable, each with its events.
    void set_to_bic(const ExpVarBiclust& other);
    // Raises 5, then copies this bicluster's sets and sums to `target`.
    void remember(ExpVarBiclust& target);
    // Takes the sets and sums of `source` (no per-node events), then raises 6.
    void revert(const ExpVarBiclust& source);

    // Fills the code vectors: node k's own code is first + stride * k, its two neighbour codes follow
    // it. A derived channel with general codes of its own starts the node codes later, and one with
    // more codes per node takes a longer stride. The constructors call it, so it stays non-virtual.
    void setup_event_codes(int first, int stride);

    event_dispatch m_dispatch;
    std::vector<int> m_change_me;
    std::vector<int> m_exp_add_adj; // condition nodes: a neighbouring variable was added
    std::vector<int> m_exp_del_adj;
    std::vector<int> m_var_add_adj; // variable nodes: a neighbouring condition was added
    std::vector<int> m_var_del_adj;
    int m_cur_edge;
    int m_cur_var_bin;
    int m_cur_var_node;
    int m_cur_exp_node;

protected:
    // A channel whose node codes start at `first_code`, `stride` codes a node (the general codes
    // below `first_code` are the derived class's to define beyond 0 to 6), with room for `extra`
    // codes after the node codes.
    DynBiclust(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, int first_code, int stride, int extra);

    // After a variable (condition) node joined or left: sets m_cur_*, raises the side's general code
    // and the node's own code (the own code first with `own_first`), then the neighbour code of
    // every node adjacent to it.
    void announce_var(int node, bool added, bool own_first);
    void announce_exp(int node, bool added);

private:
    template <class Side> void announce(int node, bool added, bool own_first);
    // Walks for the neighbour events; observers may walk the bicluster's own iterator meanwhile.
    std::unique_ptr<GraphBaseEdgeIter> m_event_iter;
};

#endif
