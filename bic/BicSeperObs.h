// Separation trackers and observers: how far the members of a bicluster on one side stand apart
// from a set of non-members, and what each candidate move would do to that gap.
#ifndef VESK_BIC_BICSEPEROBS_H
#define VESK_BIC_BICSEPEROBS_H

#include "BicChangeObs.h"
#include "ExpClasses.h"

#include <memory>
#include <vector>

class AllVarSeperTrack;
class AllCondSeperTrack;

// A variable node on one of the track's lists, ordered by the track's score of the node.
class VarTracker {
public:
    VarTracker(const AllVarSeperTrack* track, int node, int bin) : m_track(track), m_node(node), m_bin(bin) {}
    bool operator<(const VarTracker& o) const;

    const AllVarSeperTrack* m_track;
    int m_node;
    int m_bin;
};

// A condition node on one of the track's lists, ordered by the track's score of the node.
class CondTracker {
public:
    CondTracker(const AllCondSeperTrack* track, int node) : m_track(track), m_node(node) {}
    bool operator<(const CondTracker& o) const;

    const AllCondSeperTrack* m_track;
    int m_node;
};

// The score of every variable node is what the conditions inside give it (non-edge weights plus
// edge_cnc), whether the node is inside or not. m_in lists the variable nodes inside, m_out the
// ones whose variable is not in the set given to attach; both ascending by score. m_seper is the
// smallest score inside minus the largest outside; it is left as it was while m_in or m_out is
// empty, and a reset keeps it.
class AllVarSeperTrack : public BicChangeObsBase {
public:
    AllVarSeperTrack() : m_seper(0.0f), m_debug(false) {}

    void attach(DynBiclust& bic, const ds_bitvec& vars);
    float score(int node) const { return m_var_score[node - m_first_var]; }
    void update_seper();

    std::vector<float> m_var_score; // by variable node, from the first variable node
    std::vector<VarTracker> m_in;
    std::vector<VarTracker> m_out;
    float m_seper;
    bool m_debug;

private:
    void on_reset(int code);
    void on_add_var(int code);
    void on_del_var(int code);
    void on_add_exp(int code);
    void on_del_exp(int code);
    void sort_lists();
    void print_lists(const char* title) const;

    int m_first_var = 0;
    std::unique_ptr<GraphBaseEdgeIter> m_iter;
};

// The same across conditions: a condition node's score is its margin in the bicluster; m_in lists
// the condition nodes inside, m_out those whose class is neither the given class nor -1.
class AllCondSeperTrack : public BicChangeObsBase {
public:
    AllCondSeperTrack() : m_seper(0.0f), m_debug(false) {}

    void attach(DynBiclust& bic, const ExpClasses& classes, int cls);
    float score(int node) const { return m_exp_score[node]; }
    void update_seper();

    std::vector<float> m_exp_score; // by condition node
    std::vector<CondTracker> m_in;
    std::vector<CondTracker> m_out;
    float m_seper;
    bool m_debug;

private:
    void on_reset(int code);
    void on_var_change(int code);
    void on_add_exp(int code);
    void on_del_exp(int code);
    void sort_lists();

    std::unique_ptr<GraphBaseEdgeIter> m_iter;
};

// A condition node whose move is scored by the change of the variable separation: m_delta is the
// separation the track would have after the move minus the one it has. Only conditions with a
// positive own gain (margin plus init_gain) stand as add candidates; the bounds m_min_contrib and
// m_max_contrib (over all variable nodes) end the scans of the sorted lists early.
class BicChangeExpSepeObs : public BicChangeObsBase {
public:
    BicChangeExpSepeObs()
        : m_track(nullptr), m_node(-1), m_heap_idx(-1), m_add_factor(1.0f), m_del_factor(1.0f),
          m_init_gain(0.0f), m_gain(0.0f), m_outside(true), m_min_contrib(0.0f), m_max_contrib(0.0f),
          m_delta(0.0f), m_debug(false) {}

    void attach(DynBiclust& bic, BicHeap& heap, AllVarSeperTrack* track, int node, int heap_idx,
                float add_factor, float del_factor, float init_gain, bool debug);
    // The separation with the node in (out), and its key in the heap.
    void recalc_outside();
    void recalc_inside();

    AllVarSeperTrack* m_track;
    int m_node;
    int m_heap_idx;
    float m_add_factor;
    float m_del_factor;
    float m_init_gain;
    float m_gain;
    bool m_outside;
    float m_min_contrib;
    float m_max_contrib;
    float m_delta;
    bool m_debug;

private:
    void on_reset(int code);
    void on_change_exps(int code);
    void on_var_change(int code);
    void on_adj(int code);
    void on_change_me(int code);
    void after_gain(float old);
    float contrib(int var_node) const;
};

// The mirror for a variable node and the condition separation; keys are -m_delta, with no factor.
class BicChangeVarSepeObs : public BicChangeObsBase {
public:
    BicChangeVarSepeObs()
        : m_track(nullptr), m_node(-1), m_bin(-1), m_add_heap(-1), m_del_heap(-1), m_init_gain(0.0f),
          m_gain(0.0f), m_outside(true), m_min_contrib(0.0f), m_max_contrib(0.0f), m_delta(0.0f),
          m_debug(false) {}

    void attach(DynBiclust& bic, BicHeap& heap, AllCondSeperTrack* track, int node, int add_heap,
                int del_heap, float init_gain, bool debug);
    void recalc_outside();
    void recalc_inside();

    AllCondSeperTrack* m_track;
    int m_node;
    int m_bin;
    int m_add_heap;
    int m_del_heap;
    float m_init_gain;
    float m_gain;
    bool m_outside;
    float m_min_contrib;
    float m_max_contrib;
    float m_delta;
    bool m_debug;

private:
    void on_reset(int code);
    void on_change_vars(int code);
    void on_exp_change(int code);
    void on_adj(int code);
    void on_change_me(int code);
    void after_gain(float old);
    float contrib(int exp_node) const;
};

#endif
