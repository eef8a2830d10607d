// BicSetCoverGreedy: picks from candidate property biclusters a subset that best explains the graph,
// by greedy toggling with exact incremental gains.
#ifndef VESK_BIC_BICSETCOVERGREEDY_H
#define VESK_BIC_BICSETCOVERGREEDY_H

#include "Matrix.h"
#include "PropVarBiclust.h"
#include "PropVarGraphBase.h"
#include "PropWgtScheme.h"
#include "ds/BitVec.h"
#include "ds/GraphBaseEdgeIter.h"
#include "ds/HeapBin.h"

#include <cstdint>
#include <list>
#include <memory>
#include <vector>

// A pair (focus property p, variable node v) weighs w(p, v): the edge weight of p to v's bin if the
// graph has the edge, else the non-edge weight. The selection explains the pairs covered by at
// least one selected bicluster; a bicluster covers the pairs of its variables with its focus
// properties and, for each, the lower levels of the same orientation (group - 2, - 4, ... within the
// layer). It holds only the pairs of its own properties: its gain counts those alone.
//
// The gain of adding an inactive bicluster is the weight of the pairs it holds that nothing covers
// yet, less its prior share; of removing an active one, minus the weight of the pairs only it
// covers, plus its prior share. Steps take the best gain while it is above 1.0.
class BicSetCoverGreedy {
public:
    // `prior_set` (may be null) marks the biclusters whose gain has `prior_factor` of it held back.
    BicSetCoverGreedy(const PropVarGraphBase& graph, PropWgtSchemeBase& wgt, PBicSet& set,
                      const ds_bitvec* prior_set, float prior_factor, bool debug, bool verify_each);

    // `focus_groups`: the property nodes that count.
    void optimize(const ds_bitvec& focus_groups);
    // The active biclusters in id order: their ids in `ids`, copies appended to `out`.
    void get_active_list(std::list<PropVarBiclust>& out, std::vector<int>& ids) const;
    // Recomputes every gain from the counters; fatal on a disagreement. True otherwise.
    bool verify() const;
    // The weight explained by the selection: w over the pairs of used variable nodes and focus
    // properties with a non-zero count.
    double total() const;
    bool is_active(int bic) const { return m_active.get_ind(bic); }

    const PropVarGraphBase& m_graph;
    PropWgtSchemeBase& m_wgt;
    PBicSet& m_set;
    ds_bitvec m_focus_groups;
    std::vector<int> m_focus_props;
    std::vector<int> m_focus_index;
    std::vector<double> m_delta;
    std::vector<double> m_prior;
    std::vector<ds_bitvec> m_prop_bics;
    std::vector<ds_bitvec> m_var_bics;
    std::vector<std::list<int>> m_bic_props;
    Matrix<std::uint16_t> m_cover; // focus index by variable node
    HeapBin m_heap;
    ds_bitvec m_active;
    ds_bitvec m_changed;
    std::unique_ptr<GraphBaseEdgeIter> m_edge_iter;
    const ds_bitvec* m_prior_set;
    float m_prior_factor;
    bool m_debug;
    bool m_verify_each;
    std::vector<int> m_used_vars; // variable nodes of some candidate

    static constexpr std::uint16_t kEdgeBit = 0x8000;
    static constexpr std::uint16_t kCountMask = 0x7fff;

private:
    void init_bic_prop_adjs();
    void init_deltas();
    void update_add_bic(int b);
    void update_del_bic(int b);
    double pair_weight(int p, int v) const;
    bool holds(int b, int p, int v) const { return m_prop_bics[p].get_ind(b) && m_var_bics[v].get_ind(b); }
    // The counter of one pair moved by `step`; adjusts the gains of the others holding it.
    void move_pair(int b, int p, int v, int step);
    void update_heap();
};

#endif
