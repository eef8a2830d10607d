// NeigHash, the table of condition subsets shared by variable neighbourhoods, and HashBiclust, the
// search that keeps the best kernels of every node and grows them into biclusters.
#ifndef VESK_BIC_HASHBICLUST_H
#define VESK_BIC_HASHBICLUST_H

#include "BicGreedyOpt.h"
#include "DynBiclust.h"
#include "ExpClasses.h"
#include "NBestMonotone.h"
#include "ds/BitVec.h"
#include "ds/HeapBin.h"

#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class options;

// Keys in the scope given, required: MaxNeigSize, MinHashDegree, MaxHashDegree, MaxHashSize,
// MinHashSize, MaxHashSizeMB. Optional (0 when absent): RandomExpSubsetSize, ShouldRandomizeSubset.
//
// One pass of hash(start) walks every variable node once, from `start` round the node id space.
// Each hashed variable enumerates the subsets of its (thinned) neighbourhood of sizes MinHashSize to
// MaxHashSize, at most one orientation per condition, and adds its node and the subset's edge
// weight to the subset's entry. Once the table holds m_max_hash_table_size entries no new key is
// opened, but keys already there keep collecting. A variable met a second time (position above the
// node count) has every edge weight lowered by 3.4028234e+35, so it opens nothing and spoils the
// keys it reaches: they were complete in the earlier pass.
// Hash of table keys: the words mixed one by one. (The bit vector's own hash, a plain sum of its
// words, sends keys with the same bit positions in different words to one bucket.)
struct NeigKeyHash {
    std::size_t operator()(const ds_bitvec& key) const {
        std::uint64_t h = 0x9e3779b97f4a7c15ull;
        for (int w = 0; w < key.word_count(); ++w) {
            h ^= key.word(w) + 0x9e3779b97f4a7c15ull + (h << 6) + (h >> 2);
            h *= 0xff51afd7ed558ccdull;
        }
        return static_cast<std::size_t>(h ^ (h >> 33));
    }
};

class NeigHash {
public:
    NeigHash(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, options& opts, const std::string& scope);

    // Leaves RandomExpSubsetSize condition nodes, drawn with a UniformUrn, out of the ignored set.
    void randomize_exp_subset();
    // Only condition nodes of class `cls` are used (class -1 stays ignored).
    void ignore_non_class(const ExpClasses& classes, int cls);
    // Only variable nodes whose variable is in `vars` are hashed.
    void set_var_filter(const ds_bitvec& vars);
    // One pass; the variable node at which the table filled, or -1.
    int hash(int start);
    // The steps of hash: clear and size the table and the buffers and set the table's limit; is
    // variable node `v` hashed at all (not ignored, in an active group, of a degree in range); its
    // neighbourhood of positive-weight active conditions, thinned to MaxNeigSize at random.
    void prepare_table();
    bool admits(int v) const;
    void gather_neighbourhood(int v, GraphBaseEdgeIter& it, bool lowered);
    // Enumeration of the current neighbourhood's subsets by growing `key` past position `last`.
    void hash_up_count(ds_bitvec& key, float wgt, int last, int depth);
    // The same by shrinking `key` (removing bits past `last`).
    void hash_count(ds_bitvec& key, float wgt, int last, int depth);
    // Diagnostic: every triple of condition nodes and the size of their common neighbourhood.
    void calc_binary_inter(std::ostream& out) const;
    void calc_binary_inter() const;

    typedef std::unordered_map<ds_bitvec, WeightedVarSet, NeigKeyHash> Table;

    const ExpVarGraphBase& m_graph;
    WgtSchemeBase& m_wgt;
    Table m_table;
    int m_cur_var;
    std::vector<float> m_cur_wgt;
    int m_max_neig_size;
    int m_min_hash_degree;
    int m_max_hash_degree;
    int m_max_hash_size;
    int m_min_hash_size;
    int m_key_bits;
    int m_max_hash_size_mb;
    unsigned int m_max_hash_table_size;
    ds_bitvec m_cur_neig;
    ds_bitvec m_used_exps;
    HeapBin m_neig_heap;
    std::vector<int> m_exp_ignored;
    std::vector<int> m_var_ignored;
    int m_random_exp_subset_size;
    bool m_filter_exp_groups;
    ds_bitvec m_active_exp_groups;
    bool m_filter_var_groups;
    ds_bitvec m_active_var_groups;

private:
    void record(const ds_bitvec& key, float wgt);
};

// Number of variable nodes in a seed.
int weighted_var_set_size(const WeightedVarSet& set);

// Keys in the scope given, required: FocusallExp, FocusallVar, DesiredIterNum, MaxGrowBics,
// MinVarSetSize, ShouldGreedy; in go, NBestEach. Optional: Logit. The first constructor also
// requires ActiveExpGroup and ActiveVarGroup, the class constructor reads ShouldRandomHashConds
// (optional). Candidates are shared by the N-best stores of the nodes that keep them and freed when
// the last store lets go of them.
class HashBiclust {
public:
    // Hashes only the listed groups and runs the search at once.
    HashBiclust(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, BicGreedyOpt& opt, options& opts,
                const std::string& scope);
    // Hashes only variables in `vars`; the owner calls go.
    HashBiclust(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, BicGreedyOpt& opt, const ds_bitvec& vars,
                options& opts, const std::string& scope);
    // Uses only conditions of class `cls`; the owner calls go.
    HashBiclust(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, BicGreedyOpt& opt,
                const ExpClasses& classes, int cls, options& opts, const std::string& scope);
    virtual ~HashBiclust();

    void go(options& opts, const std::string& scope);
    // After a table pass: offers every entry to the N-best stores of its focus nodes.
    void gen_n_bests();
    // Grows the kept candidates of every node, worst first, and gathers the distinct results.
    void grow_biclusts();
    // Drops the lower scoring of every two results whose cells overlap by more than `max_overlap`.
    void reduce_bic_set(float max_overlap);

    const ExpVarGraphBase& m_graph;
    WgtSchemeBase& m_wgt;
    NeigHash m_neig;
    bool m_focus_all_exp;
    bool m_focus_all_var;
    int m_desired_iter_num;
    std::vector<NBestMonotone<ExpVarBiclust*>> m_n_bests;
    int m_cand_count;
    HeapBin m_focus_heap;
    float m_min_wgt;
    BicGreedyOpt& m_opt;
    ds_bitvec m_grown;
    int m_max_grow_bics;
    int m_min_var_set_size;
    std::unordered_map<ExpVarBiclust, int, ExpVarBiclustHash> m_bic_hash;
    std::list<ExpVarBiclust> m_bics;
    bool m_should_greedy;
    bool m_should_random_hash_conds;
    bool m_debug;

    // Candidates by id and the number of stores holding each.
    std::vector<std::unique_ptr<ExpVarBiclust>> m_cands;
    std::vector<int> m_cand_refs;

private:
    void read_common(options& opts, const std::string& scope);
    void release_cand(int id);
    void offer(int node, ExpVarBiclust* cand, float w, bool& changed);
};

#endif
