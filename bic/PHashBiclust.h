// SmallPropSet, a key of up to six property nodes; PNeigHash, the table of property sets shared by
// variable neighbourhoods; PHashBiclust, the search that keeps the best kernels of every node and
// grows them into property biclusters.
#ifndef VESK_BIC_PHASHBICLUST_H
#define VESK_BIC_PHASHBICLUST_H

#include "NBestMonotone.h"
#include "PBicLocalOpt.h"
#include "PropVarBiclust.h"
#include "PropVarGraphBase.h"
#include "PropWgtScheme.h"
#include "ds/BitVec.h"
#include "ds/HeapBin.h"

#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <unordered_map>
#include <vector>

class options;
class PropPairCorr;

// Six 16-bit property nodes kept in ascending order, unused slots 0xFFFF at the end: 12 bytes, so a
// node id must stay below 0xFFFF.
class SmallPropSet {
public:
    static constexpr int kSlots = 6;
    static constexpr std::uint16_t kUnused = 0xFFFF;

    SmallPropSet() { clear(); }
    void clear();
    // Inserts `node` in its place; a node already held is left. Adding to a full set, or a node that
    // doesn't fit 16 bits, is fatal.
    void add(int node);
    // Removes `node` if held.
    void del(int node);
    bool contains(int node) const;
    int size() const;
    int operator[](int i) const { return m_nodes[i]; }

    bool operator==(const SmallPropSet& o) const;
    bool operator!=(const SmallPropSet& o) const { return !(*this == o); }
    // The six slots mixed as one 96-bit word.
    std::size_t hash() const;

    std::uint16_t m_nodes[kSlots];
};

struct SmallPropSetHash {
    std::size_t operator()(const SmallPropSet& k) const { return k.hash(); }
};

// Keys in the scope given, required: MinHashDegree, MaxHashDegree, MaxHashSize, MinHashSize,
// MaxHashSizeMB, TopValNonForcedNeigToSamp. Optional: RandomExpSubsetSize (for randomize_prop_subset).
//
// One pass of hash(start) walks the variable nodes from `start` to the end of the node ids (no
// wrap-around). A variable is hashed when not filtered out, of an active group and with an edge count
// from MinHashDegree to MaxHashDegree. Its neighbourhood is the properties of its in-edges of positive
// weight, of active groups and not ignored: those of forced groups all stand in every key; of the
// others only TopValNonForcedNeigToSamp are kept, by highest raw edge value through an
// NBestMonotone<int> (whose bar only rises, so a neighbour below every one kept before it is refused
// even with room left). Keys are the forced nodes plus every subset of the kept ones (ascending node
// order, one orientation of a property at most) with a total size from MinHashSize to MaxHashSize;
// MaxHashSize is capped at six, the key's room, and a variable with more forced neighbours than that
// records nothing. A key's entry sums the edge weights of its nodes over the variables that reach it.
// The table holds (MaxHashSizeMB * 15625 mod 2^26) * 4 entries, in 32-bit unsigned arithmetic; once
// full, no key is opened but keys already in it keep collecting.
class PNeigHash {
public:
    PNeigHash(const PropVarGraphBase& graph, PropWgtSchemeBase& wgt, options& opts, const std::string& scope);

    // Only RandomExpSubsetSize property nodes, drawn with a UniformUrn, are left unignored.
    void randomize_prop_subset();
    // Only property nodes set in `props` (by node) are used.
    void set_prop_filter(const ds_bitvec& props);
    // Only variable nodes whose variable id is in `vars` are hashed.
    void set_var_filter(const ds_bitvec& vars);
    // Groups whose neighbours stand in every key (a bit set by property group).
    void set_forced_groups(const ds_bitvec& groups) { m_forced_groups = groups; }
    // One pass; the variable node at which the table filled, or -1.
    int hash(int start);
    // Clears the table, sizes the buffers and sets the table's limit.
    void prepare_table();
    // Whether variable node `v` is hashed at all.
    bool admits(int v) const;
    // Fills m_cur_forced and the kept non-forced neighbours of `v` into m_cur_list (forced first).
    void gather_neighbourhood(int v);
    // Records `key` (of `depth` nodes) and grows it by each listed neighbour from `next` on.
    void hash_up_count(SmallPropSet& key, float wgt, std::vector<int>::const_iterator next, int depth);

    // The table limit for a size in millions of bytes.
    static unsigned int table_limit(int max_hash_size_mb);

    typedef std::unordered_map<SmallPropSet, float, SmallPropSetHash> Table;

    const PropVarGraphBase& m_graph;
    PropWgtSchemeBase& m_wgt;
    Table m_table;
    int m_cur_var;
    std::vector<float> m_cur_wgt; // by node
    int m_min_hash_degree;
    int m_max_hash_degree;
    int m_max_hash_size;
    int m_min_hash_size;
    int m_max_hash_size_mb;
    unsigned int m_max_hash_table_size;
    std::vector<int> m_prop_ignored; // by node
    std::vector<int> m_var_ignored;  // by node
    int m_random_exp_subset_size;
    bool m_filter_prop_groups;
    ds_bitvec m_active_prop_groups;
    bool m_filter_var_groups;
    ds_bitvec m_active_var_groups;
    int m_top_val_non_forced;
    NBestMonotone<int> m_non_forced_best;
    std::vector<int> m_cur_forced;
    ds_bitvec m_forced_groups;

    // The subset list of the current variable: forced neighbours, then the kept ones by node.
    std::vector<int> m_cur_list;
    // Dense number of a property node's (layer, property id), so two orientations of one property
    // share it; and the numbers in the current key.
    std::vector<int> m_prop_slot;
    ds_bitvec m_used_props;

private:
    void number_properties();
};

// Keys in the scope given, required: FocusallProp, FocusallVar, MaxGrowBics, MinVarSetSize,
// ShouldLocal, TopValNonForcedNeigToSamp (through PNeigHash); in go, NBestEach. Optional: DesiredIterNum
// (absent or 0 reads as 1), ShouldRandConds, ForcePropGroup (prints "will force grp "),
// HashCandTotPThresh, HashCandLocTotPThresh, Logit. The first constructor also requires ActivePropGroup
// and ActiveVarGroup and runs the search at once; the second reads them when present, filters the
// variables and leaves go to its owner.
//
// A table entry has no variables of its own: gen_n_bests makes each key a candidate through
// PropVarBiclust::init_prop_set_clique (defined with this class): a reset, the key's properties and
// every variable node adjacent to all of them (none for an empty key). The hash weight isn't checked
// against the candidate's score, as the clique may hold variables the pass didn't hash; it ranks the
// candidate in the N-best stores, and the running score is the candidate's score.
// Candidates are shared (boost::shared_ptr) by the stores that keep them.
class PHashBiclust {
public:
    PHashBiclust(const PropVarGraphLayers& graph, PropWgtSchemeBase& wgt, PBicLocalOpt& opt, options& opts,
                 const std::string& scope);
    PHashBiclust(const PropVarGraphLayers& graph, PropWgtSchemeBase& wgt, PBicLocalOpt& opt,
                 const ds_bitvec& vars, options& opts, const std::string& scope);
    virtual ~PHashBiclust();

    void go(options& opts, const std::string& scope);
    // After a table pass: offers every entry to the N-best stores of its focus nodes.
    void gen_n_bests();
    // Grows the kept candidates of every node, worst first, and gathers the distinct results.
    void grow_biclusts();
    // Drops the lower scoring of every two results whose cells overlap by more than `max_overlap`; a
    // property is its (layer, property id), so both orientations of a condition count as one.
    void reduce_bic_set(float max_overlap);
    // Samples the property nodes of the next passes: one uniform number per property node, in node
    // order, from the random source; a node of layer 0 is taken when it is below HashCandTotPThresh,
    // a node of any later layer (promoter locations, classes) when below HashCandLocTotPThresh.
    // Prints "max exp grp is ", "base loc grp ", "total pnodes to samp " and "mark node " per node taken.
    void gen_prop_filter();
    // Thins the current sample: for the nodes in it, in node order, each pair (a, b) with a before b
    // and |r(a, b)| above `max_corr` drops b; a node dropped no longer drops others.
    void prepare_prop_corr_filter(PropPairCorr& corr, float max_corr);

    typedef boost::shared_ptr<PropVarBiclust> BicPtr;

    const PropVarGraphLayers& m_graph;
    PropWgtSchemeBase& m_wgt;
    PNeigHash m_neig;
    bool m_focus_all_prop;
    bool m_focus_all_var;
    int m_desired_iter_num;
    std::vector<NBestMonotone<BicPtr>> m_n_bests;
    int m_cand_count;
    HeapBin m_focus_heap;
    float m_min_wgt;
    PBicLocalOpt& m_opt;
    ds_bitvec m_grown;
    int m_max_grow_bics;
    int m_min_var_set_size;
    std::unordered_map<PropVarBiclust, int, ExpVarBiclustHash> m_bic_hash;
    std::list<PropVarBiclust> m_bics;
    bool m_should_local;
    bool m_should_rand_conds;
    float m_hash_cand_tot_p;
    float m_hash_cand_loc_tot_p;
    bool m_debug;

private:
    void read_common(options& opts, const std::string& scope);
    void offer(int node, const BicPtr& cand, float w, bool& changed);
};

#endif
