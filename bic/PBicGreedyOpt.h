// PBicGreedyOpt: grows a property bicluster by always taking the best single-node move, with ranked
// properties, a relation cost, and the walk opened up into steps.
#ifndef VESK_BIC_PBICGREEDYOPT_H
#define VESK_BIC_PBICGREEDYOPT_H

#include "BinRelGraphLayers.h"
#include "PBicChangeObs.h"
#include "PBicLocalOpt.h"
#include "PDynBiclust.h"
#include "PropVarBiclust.h"
#include "PropVarGraphBase.h"
#include "PropWgtScheme.h"
#include "SpecialFunc.h"
#include "ds/BitVec.h"
#include "ds/GraphBaseEdgeIter.h"

#include <memory>
#include <string>
#include <vector>

class options;

// Keys in the scope given: CanDelInitProp, CanAddProp, CanDelProp, CanDelInitVar, Logit (trace each
// step and verify the bicluster at each step), AddPropCostFactor, DelPropCostFactor, all required;
// IsPropRankedLayer (list by layer, non-zero: ranked; absent: none), PSSMPruneFactor (float, 0 when
// absent) and, with a relation graph, BinRelGlobCostScope (the scope of the relation cost), optional.
// With a ranked layer, the scope "RankedObs" (see RankedObsParams) is read too.
//
// Heap layout, with B bins: sub-heap 2b holds the add moves of the variables of bin b, 2b + 1 their
// delete moves, 2B all property moves. Keys are negated gains. A property of a ranked layer is
// watched by a PBicChangeRankedObs (its values from generate_pssm_affins), any other by a
// PBicChangePropObs. One variable id and one property id (by layer) stand in the bicluster in one
// group only.
//
// Blocking moves of one kind shifts the weight of sub-heap 2B by m_key_shift: blocking properties
// puts every property move behind all gene moves; blocking genes gives every property move a bonus
// of m_key_shift, which is taken back from each extracted key while genes are blocked, so that a
// gene move then ends the walk.
class PBicGreedyOpt : public PBicLocalOpt {
public:
    // All variable nodes take part. `br_graph` (may be null) scores the relations among the
    // bicluster's variables, with weights `br_wgt`.
    PBicGreedyOpt(const PropVarGraphLayers& graph, PropWgtSchemeBase& wgt, options& opts,
                  const std::string& scope, const BinRelGraphLayers* br_graph = nullptr,
                  BinRelWgtSchemeBase* br_wgt = nullptr);
    // Variable nodes whose variable isn't in `vars` get no observer and never become candidates; a
    // null `vars` admits all.
    PBicGreedyOpt(const PropVarGraphLayers& graph, PropWgtSchemeBase& wgt, const ds_bitvec* vars,
                  options& opts, const std::string& scope, const BinRelGraphLayers* br_graph = nullptr,
                  BinRelWgtSchemeBase* br_wgt = nullptr);
    ~PBicGreedyOpt() override;

    // grow(bic, true).
    void grow(PropVarBiclust& bic) override;
    // With `init`, init_grow(bic) first; without it the walk goes on from the working bicluster as it
    // stands. Takes moves while one gains, copies the result to `bic` and sets its m_ranked_score.
    void grow(PropVarBiclust& bic, bool init);
    virtual float get_cur_score() const;

    // Records the seed, keeps one node per variable id, marks the ids in use and loads the seed into
    // the working bicluster (every heap entry made anew).
    void init_grow(PropVarBiclust& bic);
    // The best move that the rules allow, refused ones taken out of the heap on the way: false (with
    // "neg score ") when the best gain is at most 0.00001 or no move is left.
    bool get_next_opti_cand(int& node, bool& is_del, float& gain);
    // Makes the move and keeps the sets of ids in use.
    void apply_oper(int node, bool is_del);
    // Adds each property id whose best group outside has a positive gain, in that group.
    void complete_props();

    void block_prop_modif();
    void allow_prop_modif();
    void block_gene_modif();
    void allow_gene_modif();

    // What variable node `node` gains by a move: its bin's common part plus its own.
    float get_var_node_score(int node) const;
    // A value for each variable id by which property node `node` of a PSSM layer ranks it:
    // get_max_ll() less the score of the best site on the variable's promoter (0 for a perfect site,
    // more for worse). No promoter, or a value above PSSMPruneFactor when that is positive, gives
    // 3.4028235e+38 (out of the ranking). For a property of another kind the ranking goes by the
    // raw values of its edges, largest first (the value negated); a variable without an edge is out.
    void generate_pssm_affins(int node, std::vector<float>& out);

    const PropVarGraphLayers& m_graph;
    PropWgtSchemeBase& m_wgt;
    BicHeap m_heap;
    PDynBiclust m_bic;
    std::vector<PBicChangeVarObs> m_var_obs;
    std::vector<PBicChangeVarBinObs> m_bin_obs;
    std::vector<PBicChangePropObs> m_prop_obs;
    ds_bitvec m_init_props;
    ds_bitvec m_init_vars;
    bool m_can_del_init_prop;
    bool m_can_add_prop;
    bool m_can_del_prop;
    bool m_can_del_init_var;
    bool m_check_score;
    std::unique_ptr<GraphBaseEdgeIter> m_edge_iter;
    bool m_verify_gain;
    bool m_debug;

    std::vector<ds_bitvec> m_used_props;              // by layer: property ids in use
    ds_bitvec m_used_vars;                            // variable ids in use
    std::vector<std::vector<float>> m_best_prop_gain; // by layer and property id
    std::vector<std::vector<int>> m_best_prop_node;
    std::vector<PBicChangeRankedObs*> m_ranked_obs; // one per property node of a ranked layer
    std::vector<PBicChangeRankedObs*> m_ranked_in;  // those whose property is inside
    std::unique_ptr<BinRelGlobNodeCost> m_br_cost;
    int m_prop_modif_on;
    int m_gene_modif_on;
    float m_key_shift;
    float m_ranked_score;
    float m_pssm_prune_factor;
    std::vector<char> m_ranked_layer; // by layer, from IsPropRankedLayer
    // Counts of the last grow: moves made and moves refused.
    long m_moves;
    long m_drops;

protected:
    // The relation cost first (with a relation graph), then the property, variable and bin observers.
    void init_observ(options& opts, const std::string& scope, const ds_bitvec* vars);
    int bins_num() const { return m_wgt.get_var_nodes_bins().m_bin_num; }
    int prop_heap() const { return 2 * bins_num(); }
    // Layers of the graph: those of its groups, also in a graph built without layer objects.
    int layers_num() const;
    // The gain that the observer of property node `node` holds (ranked or not); 0 without one.
    float prop_gain(int node) const;
    bool prop_in_use(int node) const;
    void mark_prop(int node, bool used);
    // The rules of a move: false (counted as refused) when it must not be made.
    bool move_allowed(int node, bool in);
    bool refuse(const char* why);
    // Would the move of variable `node` make the margin of a seed property negative?
    bool var_will_turn_foc_prop_bad(int node, bool in);
    // Would the move of property `node` make the margin of a seed variable negative?
    bool prop_will_turn_foc_var_bad(int node, bool in);

private:
    // By property node; null for nodes of unranked layers.
    std::vector<std::unique_ptr<PBicChangeRankedObs>> m_ranked_own;
    std::unique_ptr<BinomFuncTable> m_hg_table;
};

#endif
