// ASAPCalc: how far above chance a gene set, changed one gene at a time, stands in each condition.
#ifndef VESK_BIC_ASAPCALC_H
#define VESK_BIC_ASAPCALC_H

#include "BicChangeObs.h"
#include "DynBiclust.h"
#include "ExpVarGraphBase.h"
#include "Matrix.h"
#include "WgtSchemeBase.h"
#include "ds/BitVec.h"
#include "ds/CompHeap.h"

#include <istream>
#include <ostream>
#include <string>
#include <vector>

class options;
class BicExpScoreAssess;

// The genes are the variable nodes of a DynBiclust with no condition inside; one BicChangeExpObs per
// condition node keeps that node's margin over the genes. A margin v (scaled down for a set larger
// than the tables) counts for its condition only above the second largest chance score plus 0.001,
// as (v - mean) / (max - mean), capped at NodeMaxScore; a condition counts once, by its best
// orientation.
//
// Keys in `scope`, all required: VarGroup, AssessMaxVars, NodeMaxScore, Logit (int).
//
// The chance tables are by condition node and count, all 0 until filled. A set of exactly
// AssessMaxVars genes reads the column AssessMaxVars, so the tables have AssessMaxVars + 1 columns
// (and at least one row per condition node) whatever fills them. The observers are bound to this
// object's bicluster: it can't be copied.
class ASAPCalc {
public:
    // `focus`, if not null, holds the condition nodes that take part; it must outlive this object.
    ASAPCalc(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, options& opts, const std::string& scope,
             ds_bitvec* focus);
    ASAPCalc(const ASAPCalc&) = delete;
    ASAPCalc& operator=(const ASAPCalc&) = delete;

    // `group` -1 means m_var_group. Adding a gene that is inside, or deleting one that isn't, is
    // fatal in the bicluster.
    void add_gene(int gene, int group);
    void del_gene(int gene);
    void on_reset();
    // Scores the current set; with `os` and `tag` >= 0 writes "condition\tscore" for each condition
    // that counts.
    void score(std::ostream* os, int tag);
    // Replaces the set by `set` (gene ids), scores it and returns the score.
    float score_set(const ds_bitvec& set, std::ostream* os, int tag);
    // The conditions that counted in the last scoring, ascending, with the group that gave each.
    void get_conds(std::vector<int>& conds, std::vector<int>& groups) const;
    // The assessment's three tables, with their shape, then grown to this object's needs; cells
    // added by growing are cells the assessment never sampled: mean 0, maxima 3.4028235e+38.
    void init_from_assess(const BicExpScoreAssess& assess);
    // Rows "condition count mean max second-max", white-space separated, until the stream fails; a
    // row whose condition node or count lies outside the tables is passed over.
    void read_score_stat(std::istream& in);

    const ExpVarGraphBase& m_graph;
    WgtSchemeBase& m_wgt;
    DynBiclust m_bic;
    ds_bitvec m_set;
    ExpVarBiclust m_scratch;
    CompHeap<HeapBin> m_heap;
    std::vector<BicChangeExpObs> m_obs;
    int m_var_group;
    int m_count;
    int m_group_num;
    int m_max_vars;
    Matrix<float> m_exp_avg;
    Matrix<float> m_exp_max;
    Matrix<float> m_exp_max2;
    std::vector<float> m_node_score; // by condition id
    std::vector<int> m_node_group;   // by condition id
    float m_score;
    float m_max_node_score;
    float m_node_cap;
    ds_bitvec* m_focus;
    bool m_logit;

private:
    int var_node(int group, int gene) const;
    // Grows the tables to one row per condition node and m_max_vars + 1 columns.
    void fit_tables(float avg_fill, float max_fill);
};

#endif
