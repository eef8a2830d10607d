// Separation trackers and observers: how far the members of a bicluster on one side stand apart
// from a set of non-members, and what each candidate move would do to that gap.
#ifndef VESK_BIC_BICSEPEROBS_H
#define VESK_BIC_BICSEPEROBS_H

#include "BicChangeObs.h"
#include "BicSide.h"
#include "ExpClasses.h"

#include <algorithm>
#include <memory>
#include <vector>

template <class Side> class SeperScores;

// A variable node on one of the track's lists, ordered by the track's score of the node.
class VarTracker {
public:
    VarTracker(const SeperScores<VarSide>* track, int node, int bin)
        : m_track(track), m_node(node), m_bin(bin) {}
    bool operator<(const VarTracker& o) const;
    int wkey() const { return m_bin; }

    const SeperScores<VarSide>* m_track;
    int m_node;
    int m_bin;
};

// A condition node on one of the track's lists, ordered by the track's score of the node. A
// condition node is its own weight key, so the third argument (the key) is not kept.
class CondTracker {
public:
    CondTracker(const SeperScores<CondSide>* track, int node, int = -1) : m_track(track), m_node(node) {}
    bool operator<(const CondTracker& o) const;
    int wkey() const { return m_node; }

    const SeperScores<CondSide>* m_track;
    int m_node;
};

// The part of a separation track that differs by side: the score vector, the tracker type, the
// trace texts (a null text is not traced) and whether the sums are checked as the other side joins.
template <> class SeperScores<VarSide> {
public:
    typedef VarTracker Tracker;
    float score(int node) const { return m_var_score[node - m_first_var]; }

    std::vector<float> m_var_score; // by variable node, from the first variable node

protected:
    static constexpr const char* kName = "ALLVar";
    static constexpr bool kTraceSizes = true;
    static constexpr bool kCheckSums = true;
    static constexpr const char* kOwnTrace[2] = {"ALL new seper del var ", "ALL new seper add var "};
    static constexpr const char* kOtherTrace[2] = {"ALL aft del exp, sorted class",
                                                   "ALL aft add, sorted class"};

    float& score_at(int node) { return m_var_score[node - m_first_var]; }
    std::vector<float>& scores() { return m_var_score; }
    void size_scores(const ExpVarGraphBase& g) {
        m_first_var = g.m_max_exp_node;
        m_var_score.assign(std::max(0, g.m_node_count - m_first_var), 0.0f);
    }

    int m_first_var = 0;
};

template <> class SeperScores<CondSide> {
public:
    typedef CondTracker Tracker;
    float score(int node) const { return m_exp_score[node]; }

    std::vector<float> m_exp_score; // by condition node

protected:
    static constexpr const char* kName = "ALLCond";
    static constexpr bool kTraceSizes = false;
    static constexpr bool kCheckSums = false;
    static constexpr const char* kOwnTrace[2] = {nullptr, nullptr};
    static constexpr const char* kOtherTrace[2] = {nullptr, nullptr};

    float& score_at(int node) { return m_exp_score[node]; }
    std::vector<float>& scores() { return m_exp_score; }
    void size_scores(const ExpVarGraphBase& g) { m_exp_score.assign(g.m_max_exp_node, 0.0f); }
};

// The separation of one side's members from a set of non-members. The score of a node is what the
// other side's members give it (non-edge weights plus edge_cnc), whether the node is inside or not.
// m_in lists the nodes inside, m_out the non-members given to attach; both ascending by score.
// m_seper is the smallest score inside minus the largest outside; it is left as it was while m_in
// or m_out is empty, and a reset keeps it.
template <class Side> class SeperTrack : public BicChangeObsBase, public SeperScores<Side> {
public:
    typedef typename SeperScores<Side>::Tracker Tracker;

    void update_seper();

    std::vector<Tracker> m_in;
    std::vector<Tracker> m_out;
    float m_seper = 0.0f;
    bool m_debug = false;

protected:
    // Binds to `bic`, sizes the scores, lists in m_out the nodes of this side that `admit` takes,
    // and subscribes.
    template <class Admit> void attach_side(DynBiclust& bic, Admit admit);

private:
    void on_reset(int code);
    void on_own_change(int code);
    void on_other_change(int code);
    void sort_lists();
    void print_lists(const char* title) const;

    std::unique_ptr<GraphBaseEdgeIter> m_iter;
};

// Variable nodes, scored by the conditions inside; m_out holds the variable nodes whose variable
// is not in the set given to attach.
class AllVarSeperTrack : public SeperTrack<VarSide> {
public:
    void attach(DynBiclust& bic, const ds_bitvec& vars);
};

// Condition nodes, scored by their margin in the bicluster; m_out holds those whose class is
// neither the given class nor -1.
class AllCondSeperTrack : public SeperTrack<CondSide> {
public:
    void attach(DynBiclust& bic, const ExpClasses& classes, int cls);
};

// A node of one side whose move is scored by the change of the other side's separation (`Track`):
// m_delta is the separation the track would have after the move minus the one it has. Only nodes
// with a positive own gain (margin plus init_gain) stand as add candidates; the bounds
// m_min_contrib and m_max_contrib (over all nodes of the other side) end the scans of the sorted
// lists early. `Obs` gives the node's weight key (wkey), its heaps (add_heap, del_heap) and the keys
// of a separation change (add_key, del_key).
template <class Obs, class Side, class Track> class SepeObs : public NodeObs {
public:
    // The separation with the node in (out), and its key in the heap.
    void recalc_outside();
    void recalc_inside();

    Track* m_track = nullptr;
    float m_init_gain = 0.0f;
    float m_min_contrib = 0.0f;
    float m_max_contrib = 0.0f;
    float m_delta = 0.0f;
    bool m_debug = false;

protected:
    // After bind and the shell's own fields: the common fields, the bounds and the subscriptions.
    void attach_side(Track* track, int node, float init_gain, bool debug);

private:
    Obs& self() { return static_cast<Obs&>(*this); }
    void on_reset(int code);
    void on_own_change(int code);
    void on_other_change(int code);
    void on_adj(int code);
    void on_change_me(int code);
    void after_gain(float old);
    // What the node gives a node of the other side: the edge's weight, else the non-edge weight.
    float contrib(int other) const;
};

// A condition node and the variable separation; keys -add_factor * m_delta (add) and
// -del_factor * m_delta (delete), both on one heap.
class BicChangeExpSepeObs : public SepeObs<BicChangeExpSepeObs, CondSide, AllVarSeperTrack> {
public:
    void attach(DynBiclust& bic, BicHeap& heap, AllVarSeperTrack* track, int node, int heap_idx,
                float add_factor, float del_factor, float init_gain, bool debug);

    int wkey() const { return m_node; }
    int add_heap() const { return m_heap_idx; }
    int del_heap() const { return m_heap_idx; }
    float add_key(float delta) const { return -m_add_factor * delta; }
    float del_key(float delta) const { return -m_del_factor * delta; }

    int m_heap_idx = -1;
    float m_add_factor = 1.0f;
    float m_del_factor = 1.0f;
};

// The mirror for a variable node and the condition separation; keys are -m_delta, with no factor.
class BicChangeVarSepeObs : public SepeObs<BicChangeVarSepeObs, VarSide, AllCondSeperTrack> {
public:
    void attach(DynBiclust& bic, BicHeap& heap, AllCondSeperTrack* track, int node, int add_heap,
                int del_heap, float init_gain, bool debug);

    int wkey() const { return m_bin; }
    int add_heap() const { return m_add_heap; }
    int del_heap() const { return m_del_heap; }
    float add_key(float delta) const { return -delta; }
    float del_key(float delta) const { return -delta; }

    int m_bin = -1;
    int m_add_heap = -1;
    int m_del_heap = -1;
};

// The bodies are in BicSeperObs.tcc, instantiated for these sides in BicSeperObs.cpp; a file that
// adds a side includes the .tcc and instantiates its own.
extern template class SeperTrack<VarSide>;
extern template class SeperTrack<CondSide>;
extern template class SepeObs<BicChangeExpSepeObs, CondSide, AllVarSeperTrack>;
extern template class SepeObs<BicChangeVarSepeObs, VarSide, AllCondSeperTrack>;

#endif
