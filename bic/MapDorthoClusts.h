// MapDorthoClusts and MapHDocs: two generators that grow domain orthology clusters (docs) from similarity
// hits.
//
// Where the hit semantics leave room, these choices hold:
//  - IndirectSort orders a gene's hits by rising score.
//  - Two docs are identical when they hold the same set of (species, gene) pairs; docs are indexed
//    by their smallest such pair ("first gene") for that check.
//  - MapHDocs: a member's domain bounds come from the first hit that brought it in (the seed's from
//    its first counted outgoing hit); the paralogue limits apply after the transitivity check as in
//    MapDorthoClusts; "OnlyComplete" measures the slack with "MaxDomDelta".
//  - glue_docs tries live pairs (a, b), a < b, in doc id order, each pair once, where b holds a gene
//    that a hit of a member of a reaches; a merge moves b's new members into a and kills b. Two docs
//    connect when every member x of a has a hit to every member y of b (or x is y) that passes the
//    grow_step test with the pair's weight: the best acceptable hit from a member of a to one of b.
#ifndef VESK_BIC_MAPDORTHOCLUSTS_H
#define VESK_BIC_MAPDORTHOCLUSTS_H

#include "DorthoUniverse.h"
#include "SpeciesDorthoGraph.h"
#include "options.h"

#include <deque>
#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

// Stored docs indexed by their smallest (species, gene) pair, to find one with the same gene set.
class DocGeneIndex {
public:
    typedef std::pair<int, int> Key;

    // The sorted distinct (species, gene) pairs of a doc.
    static std::vector<Key> keys_of(const DorthoClust& doc);
    // The id of a stored doc with exactly these pairs, or -1.
    int find_equal(const std::vector<Key>& keys) const;
    void add(int id, const std::vector<Key>& keys);

private:
    std::map<Key, std::vector<std::pair<int, std::vector<Key>>>> m_by_first;
};

// Grows a doc from every accepted hit of every gene: the hit's two domains, then the neighbours of
// the hit's target that the seed gene also reaches with a comparable score and overlapping domain.
class MapDorthoClusts {
public:
    MapDorthoClusts(SpeciesDorthoGraph& graph, options& opt, const std::string& scope);

    void calc();
    // "will dump table, docs size <n>", then every doc's table lines under its index.
    void dump_table(std::ostream& os);

    std::vector<DorthoClust> m_docs;

private:
    typedef DocGeneIndex::Key Key;

    void init_neig(int s, int g);
    void grow_edge(int s, int t, const DorthoEdge& e);

    SpeciesDorthoGraph& m_graph;
    int m_max_dom_delta;
    float m_wgt_margin;
    int m_max_paralouges;
    int m_huge_paralouges;
    int m_logit;
    std::map<Key, DorthoEdge> m_neig;
    DocGeneIndex m_index;
};

// Grows a doc from each gene by breadth-first search over hits within a margin of the gene's best
// hit, keeps transitive clusters only, and at the end glues docs that connect completely.
class MapHDocs {
public:
    MapHDocs(SpeciesDorthoGraph& graph, options& opt, const std::string& scope);

    void calc();
    // Live docs renumbered densely ("mapped <a> to <b>" for a changed number).
    void dump_table(std::ostream& os);

    std::vector<DorthoClust> m_docs;
    std::vector<char> m_alive;
    // The weight each doc was grown with.
    std::vector<float> m_doc_w;

private:
    typedef DocGeneIndex::Key Key;

    void grow(int s, int g, float w);
    void grow_step(int sp, int g, float w);
    void glue_docs();
    // Judges the pair (m_glue_first, i).
    bool test_docs_con(int i);

    // With "OnlyComplete", a hit must cover both proteins up to the slack.
    bool acceptable(int s, int t, const DorthoEdge& f) const;
    // A hit that passes the grow_step test for weight w.
    bool counts(int s, int t, const DorthoEdge& f, float w) const {
        return f.score + m_wgt_margin >= w && acceptable(s, t, f);
    }
    bool connected(const Key& x, const Key& y, float w) const;

    SpeciesDorthoGraph& m_graph;
    int m_max_dom_delta;
    float m_wgt_margin;
    int m_max_paralouges;
    int m_huge_paralouges;
    int m_max_doc_size;
    int m_only_complete;
    int m_logit;
    std::map<Key, int> m_members;
    std::map<Key, int> m_degree;
    std::map<Key, OrDomain> m_member_dom;
    std::deque<Key> m_work;
    DocGeneIndex m_index;
    int m_glue_first;
};

#endif
