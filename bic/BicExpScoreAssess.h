// BicExpScoreAssess: chance tables of condition scores in biclusters of random variable sets, by size.
#ifndef VESK_BIC_BICEXPSCOREASSESS_H
#define VESK_BIC_BICEXPSCOREASSESS_H

#include "ExpVarGraphBase.h"
#include "Matrix.h"
#include "WgtSchemeBase.h"
#include "ds/BitVec.h"

#include <ostream>
#include <string>
#include <vector>

class options;

// How high does a condition's margin go in a bicluster of `count` random variables? For every
// condition id and every count from 1 to m_max_vars - 1 the sampler keeps the mean, the largest and
// the second largest of the condition's best margin over its orientations, each variable standing
// in through its node of its typical group. score_exp then puts a margin on a scale from the mean
// (0) to the largest sample (1); a margin at or below the second largest scores 0.
//
// Each sample draws its variables without replacement from one UniformUrn over m_vars, made once
// per condition (and once for the pass over whole sets) and filled again before each sample.
//
// The constructor is the whole run. Keys in `scope`: NumAssessSamp, NumGlobAssessSamp,
// AssessMaxVars, ExpGroupForTypic (int, required); GeneGroups (list of int), Logit (int), StatTable,
// GlobStatTable (paths) optional. A table that can't be opened gets nothing.
//
// The tables have m_max_vars + 1 columns: the sampler fills counts 1 to m_max_vars - 1, but a
// reader of a set of exactly AssessMaxVars genes (ASAPCalc) reads the column AssessMaxVars, and
// must not fall past the end. Cells that no sample reached (count 0, the last column, conditions
// with no node) hold the mean 0 and 3.4028235e+38 as both maxima, the mark of a distribution that
// can't be scaled, so that score_exp gives 0 there.
class BicExpScoreAssess {
public:
    BicExpScoreAssess(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, const ds_bitvec& vars, options& opts,
                      const std::string& scope);

    // For each variable id, the group of GeneGroups whose node of the variable has the largest margin
    // in the bicluster of all condition nodes of ExpGroupForTypic; the first of the list wins ties;
    // -1 with no such node.
    void calc_typical_groups();
    // One sample for condition `exp`, with a trace of the running best per count; returns the best
    // over the whole sample (-3.4028235e+38 if the condition has no node or nothing is drawn).
    float test(int exp);
    // Fills the three rows of condition `exp`.
    void assess_exp_score_dist(int exp);
    // Fills m_glob_max and m_glob_max2 from whole random sets scored condition by condition.
    void assess_set_score_dist();
    // 0 if `weight` is at most the second largest sample, else (weight - mean) / (max - mean).
    float score_exp(int exp, float weight, int count) const;
    // stats: condition, count, mean, max, second max; glob: count, max, second max; counts from 1 to
    // m_max_vars - 1, by tabs.
    void dump_stats(std::ostream& stats, std::ostream& glob) const;

    // The condition's contribution rows, one per condition group (empty where the condition has no
    // node), by variable id; -3.4028235e+38 for a variable with no node in its typical group.
    void calc_contribs(int exp, std::vector<std::vector<float>>& contrib) const;

    const ExpVarGraphBase& m_graph;
    WgtSchemeBase& m_wgt;
    std::vector<int> m_vars;
    int m_num_samp;
    int m_num_glob_samp;
    int m_max_vars;
    Matrix<float> m_exp_avg;  // condition id by count
    Matrix<float> m_exp_max;  // condition id by count
    Matrix<float> m_exp_max2; // condition id by count
    std::vector<float> m_glob_max;
    std::vector<float> m_glob_max2;
    std::vector<int> m_gene_groups;
    std::vector<int> m_typical_group; // by variable id
    int m_exp_group_for_typic;
    bool m_debug;

private:
    // Node of condition `exp` in condition group `group`, -1 if none.
    int exp_node(int group, int exp) const;
    // Node of variable `var` in variable group `group`, -1 if none (also for group -1).
    int var_node(int group, int var) const;
};

#endif
