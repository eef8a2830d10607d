// BicAssocPatScore: the genes matched by a pattern, fed as a bicluster, rated against chance tables of
// random gene sets; BicAssocPatCondObs keeps one condition's best margin over its group nodes.
#ifndef VESK_SEQPACK_BICSEARCH_BICASSOCPATSCORE_H
#define VESK_SEQPACK_BICSEARCH_BICASSOCPATSCORE_H

#include "AssocPatternBase.h"
#include "BicExpScoreAssess.h"
#include "Dna8MerPattern.h"
#include "DynBiclust.h"
#include "Matrix.h"
#include "NBestHeapSum.h"

#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

class options;

// Watches condition `m_cond` of a DynBiclust: for each of the condition's nodes (one per condition
// group) its margin in the bicluster, kept through the variable and adjacency events, and the largest
// of them (the first of equals). After each change *m_sum holds the sum of the positive best margins
// of all observed conditions and the heap the condition's best.
class BicAssocPatCondObs {
public:
    BicAssocPatCondObs();
    BicAssocPatCondObs(const BicAssocPatCondObs&) : BicAssocPatCondObs() {}
    BicAssocPatCondObs& operator=(const BicAssocPatCondObs&) = delete;
    ~BicAssocPatCondObs() { unsubscribe_all(); }

    void attach(DynBiclust& bic, WgtSchemeBase& wgt, NBestHeapSum* heap, double* sum, int cond);
    // The best margin against the bicluster's own margin of that node; fatal beyond 0.1% apart.
    bool verify() const;

    DynBiclust* m_bic;
    WgtSchemeBase* m_wgt;
    NBestHeapSum* m_heap;
    double* m_sum;
    std::vector<int> m_var_bins;
    int m_cond;
    std::vector<int> m_exp_nodes;
    std::vector<float> m_margins;
    float m_best_margin;
    int m_best_node;
    std::vector<int> m_adj_counts;
    int m_best_count;
    std::vector<float> m_saved_margins;
    float m_saved_best_margin;
    int m_saved_best_node;
    std::vector<int> m_saved_adj_counts;
    int m_saved_best_count;

private:
    void on_var(int code);
    void on_adj(int code);
    void on_reset(int code);
    void on_remember(int code);
    void on_revert(int code);
    void find_best();
    void update_sum_val(float old_val, float new_val);
    void unsubscribe_all();

    std::vector<std::pair<int, int>> m_subs;
};

// Keys in the scope: NumOfScoreConds, VarGroup, AssessMaxVars (int, required); CacheCondScores,
// Logit (int). The chance tables are by condition id and gene count (0 .. AssessMaxVars).
class BicAssocPatScore {
public:
    BicAssocPatScore(const ExpVarGraphBase& graph, WgtSchemeBase& wgt,
                     AssocPatternBase<Dna8MerPattern>& assoc, options& opts, const std::string& scope);
    // Without a pattern: for score_set.
    BicAssocPatScore(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, options& opts,
                     const std::string& scope);
    ~BicAssocPatScore();
    BicAssocPatScore(const BicAssocPatScore&) = delete;
    BicAssocPatScore& operator=(const BicAssocPatScore&) = delete;

    // Lines of condition, gene count, avg, max2, thresh from `stats`; `glob` is not read.
    void read_score_stat(std::istream& stats, std::istream& glob);
    // avg, max and second max of the assessment as avg, max2 and thresh.
    void init_from_assess(const BicExpScoreAssess& assess);

    // Sum over the conditions whose (scaled) best margin is above thresh of
    // (x - avg) / (max2 - avg); a line per condition to `out` when it is given and e >= 0.
    float score(std::ostream* out = nullptr, int e = -1);
    // The conditions that count, with each one's best node.
    void get_conds(std::vector<int>& conds, std::vector<int>& groups) const;
    float score_set(const ds_bitvec& genes, std::ostream* out = nullptr, int e = -1);
    // A gene by its node in `group` (-1: VarGroup).
    void add_gene(int gene, int group = -1);
    bool verify() const;

    int get_gene_count() const { return m_gene_count; }
    const ds_bitvec& get_genes() const { return m_genes; }
    const BicAssocPatCondObs& get_obs(int cond) const { return m_obs[static_cast<std::size_t>(cond)]; }

    const ExpVarGraphBase& m_graph;
    WgtSchemeBase& m_wgt;
    AssocPatternBase<Dna8MerPattern>* m_assoc;
    DynBiclust m_bic;
    ExpVarBiclust m_saved_bic;
    std::vector<BicAssocPatCondObs> m_obs;
    NBestHeapSum m_heap;
    double m_sum;
    ds_bitvec m_genes;
    int m_gene_count;
    int m_degree_sum;
    ds_bitvec m_saved_genes;
    int m_saved_gene_count;
    int m_saved_degree_sum;
    Matrix<float> m_avg;
    Matrix<float> m_max2;
    Matrix<float> m_thresh;
    std::vector<float> m_cond_scores;
    int m_var_group;
    int m_max_vars;
    bool m_cache;
    bool m_debug;
    float m_score;

private:
    void setup(options& opts, const std::string& scope);
    void on_add_gene(int code);
    void on_del_gene(int code);
    void on_remember(int code);
    void on_revert(int code);
    void on_reset(int code);
    void del_gene(int gene);
    void clear_genes();
    // The column to read and the factor of the margins for the present gene count.
    int scaled_count(float& factor) const;

    std::vector<std::pair<int, int>> m_subs;
};

#endif
