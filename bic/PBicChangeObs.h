// Observers of a PDynBiclust that keep each candidate move's key in a composite heap: the node and
// bin observers of the condition-variable bicluster carried over to properties, the variable
// observer with its ranked and relation parts, and the ranked property observer.
#ifndef VESK_BIC_PBICCHANGEOBS_H
#define VESK_BIC_PBICCHANGEOBS_H

#include "BicChangeObs.h"
#include "PDynBiclust.h"
#include "PropVarBiclust.h"
#include "SpecialFunc.h"

#include <string>
#include <vector>

class options;

// An observer `Obs` of the condition-variable bicluster attached to a property bicluster: the events
// it follows (0 to 4 and its node's codes) mean the same there. m_pbic is the property bicluster.
template <class Obs> class PBicChangeObsBase : public Obs {
public:
    PDynBiclust* m_pbic = nullptr;
};

// A property node that isn't ranked: the condition observer (its margin, keys -add_factor * gain
// outside and gain * del_factor inside, on one heap for all property moves).
class PBicChangePropObs : public PBicChangeObsBase<BicChangeExpObs> {
public:
    void attach(PDynBiclust& bic, BicHeap& heap, int node, int heap_idx, float add_factor, float del_factor);
};

// A bin: the sum of non_edge(p, bin) over the properties inside, the weight of the bin's sub-heaps.
class PBicChangeVarBinObs : public PBicChangeObsBase<BicChangeVarBinObs> {
public:
    void attach(PDynBiclust& bic, BicHeap& heap, int bin, int add_heap, int del_heap);
};

class PBicChangeRankedObs;

// A variable node. m_gain is its full gain less the bin's common part: the edge part of its margin
// plus init_gain, plus m_ranked (what the ranked properties inside give it, from event 7), plus
// m_br_cost (the relation cost of its m_br_count relations to variables inside, renewed when a
// related variable moves and when the node itself moves). Keys as in BicChangeVarObs.
class PBicChangeVarObs : public PBicChangeObsBase<BicChangeVarObs> {
public:
    // `cost` may be null (no relation part); `ranked` (null: no ranked part) lists ranked observers,
    // of which those whose property is inside count: the optimiser hands the list of those inside.
    void attach(PDynBiclust& bic, BicHeap& heap, int node, int add_heap, int del_heap, float init_gain,
                BinRelGlobNodeCost* cost, const std::vector<PBicChangeRankedObs*>* ranked);

    // Sums, over the ranked observers whose property is inside, m_score_in if the variable's rank bin
    // is within the observer's threshold, else m_score_out; the entry follows.
    void on_ranked_prop_change_wgts(int code = 7);
    // The relation cost of the node's current count of relations inside; the entry follows.
    void update_br_cost();

    float m_ranked = 0.0f;
    float m_br_cost = 0.0f;
    int m_br_count = 0;
    BinRelGlobNodeCost* m_cost = nullptr;
    const std::vector<PBicChangeRankedObs*>* m_ranked_obs = nullptr;

private:
    void on_reset_parts(int code);
    void on_relation(int code);
    void on_own_move(int code);
    // Moves the entry to the current gain in the heap of its side.
    void rekey_entry();
};

// Keys of the scope "RankedObs", all required: AddPropFactor, DelPropFactor, NumOfAffinBins,
// ThreshUpdateFactor, ScoreDerivUpdateFactor, Logit, MinNumOfGenes, MinLogPV, FirstBinMinSize.
struct RankedObsParams {
    RankedObsParams() {}
    RankedObsParams(options& opts, const std::string& scope);

    float m_add_factor = 1.0f;
    float m_del_factor = 1.0f;
    int m_bins = 1;
    float m_thresh_update_factor = 0.0f;
    float m_deriv_update_factor = 0.0f;
    bool m_debug = false;
    int m_min_num_genes = 0;
    float m_min_log_pv = 0.0f;
    int m_first_bin_min_size = 0;
};

// A property of a ranked layer: its members are the variables ranked within a threshold, and the
// threshold is the cut over the ranking that the bicluster's variables make most significant.
// Variables are ranked by a value (smaller is better; 3.4028235e+37 and above: out of the ranking)
// and cut into NumOfAffinBins bins. For universe U (all variables), `all` the variables in the bins
// up to the threshold, n the bicluster's variables and `in` those of them within the threshold:
//   m_gain = -dbl_log_hg(U, all, n, in) - MinLogPV, and what one more variable within (beyond) the
//   threshold would add, m_score_in (m_score_out).
// The threshold is searched again, and the derivatives renewed, only after countdowns proportional
// to the bicluster's size; in between the gain moves by the derivatives. A renewal sets the
// bicluster's m_ranked_changed, so that the variable observers get event 7.
class PBicChangeRankedObs : public PBicChangeObsBase<NodeObs> {
public:
    // `values` by variable id; `table` serves the hypergeometric terms and must outlive the observer.
    // With `inside`, the observer keeps itself in that list while its property is inside.
    void attach(PDynBiclust& bic, BicHeap& heap, int node, int heap_idx, const std::vector<float>& values,
                const RankedObsParams& params, BinomFuncTable& table,
                std::vector<PBicChangeRankedObs*>* inside = nullptr);

    // Sorts the ranked values ascending and cuts the bins: each takes the remaining count over the
    // remaining bins (truncated), the first at least FirstBinMinSize (at most all), and a value equal
    // to the last one taken joins the same bin.
    void init_bins(const std::vector<float>& values);
    // The cut with the best -dbl_log_hg above MinLogPV sets the threshold (none: it stays); then
    // recalc_deriv.
    void update_thresh();
    void recalc_deriv();
    // Is the variable id ranked within the threshold?
    bool within(int var) const {
        const int b = m_var_bin[var];
        return b >= 0 && static_cast<float>(b) <= m_thresh_bin;
    }
    float add_key() const { return -m_params.m_add_factor * m_gain; }
    float del_key() const { return m_gain * m_params.m_del_factor; }

    int m_heap_idx = -1;
    int m_bin_count = 0;
    std::vector<int> m_bin_in;   // by bin: variables of the bin inside
    std::vector<int> m_bin_size; // by bin
    std::vector<int> m_var_bin;  // by variable id, -1 out of the ranking
    float m_thresh_bin = -100.0f;
    int m_thresh_all = 0;
    int m_thresh_in = 0;
    int m_universe_size = 0;
    float m_score_in = 0.0f;
    float m_score_out = 0.0f;
    int m_thresh_countdown = 0;
    int m_deriv_countdown = 0;
    long m_thresh_updates = 0;
    long m_deriv_updates = 0;
    float m_min_log_pv = 0.0f;
    int m_min_num_genes = 0;
    RankedObsParams m_params;
    BinomFuncTable* m_table = nullptr;
    std::vector<PBicChangeRankedObs*>* m_inside_list = nullptr;

private:
    void on_reset(int code);
    void on_add_var(int code);
    void on_del_var(int code);
    void on_change_me(int code);
    // The common part of on_add_var and on_del_var: sign 1 for a variable joining, -1 leaving.
    void on_var_move(int sign);
    void rekey_entry();
    void list_inside(bool inside);
    double neg_log_hg(int size, int in) const;
};

#endif
