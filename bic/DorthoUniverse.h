// DorthoClust, OrthoCluster and DorthoUniverse: domain orthology clusters (docs) and their analysis on the
// tree.
#ifndef VESK_BIC_DORTHOUNIVERSE_H
#define VESK_BIC_DORTHOUNIVERSE_H

#include "SpeciesDorthoGraph.h"
#include "SpeciesPhylogeny.h"
#include "options.h"

#include <istream>
#include <ostream>
#include <string>
#include <vector>

// A doc: the domains it holds in each species, and where on the tree it arose.
class DorthoClust {
public:
    explicit DorthoClust(SpeciesPhylogeny& tree);

    void reset();
    // Per present species "Sp<id>:" and its domains "<gid>(<start>,<end>)", then "appeared in <ancestor>".
    void print(std::ostream& os) const;
    // The oldest (highest rank) ancestor over all pairs of present species, and presence on the
    // leaves below it.
    void compute_ancestral_presence();
    // One tab-separated line per domain: doc id, species, gene, start, end.
    void dump_to_table(int id, std::ostream& os) const;

    // Domains over all species.
    int size() const;

    SpeciesPhylogeny& m_tree;
    std::vector<std::vector<OrDomain>> m_domains;
    int m_ancestor;
    std::vector<int> m_presence;
};

// The older form of a cluster: gene ids only, tallied around a node's three splits.
class OrthoCluster {
public:
    explicit OrthoCluster(SpeciesPhylogeny& tree);

    void add_gene(int species, int gid);
    // "Sp<id>:" with the gene ids of each present species, then "l count ", "r count " and "u count "
    // of the genes whose species lie in the L, R and U sets of `node`.
    void print(std::ostream& os, int node) const;

    SpeciesPhylogeny& m_tree;
    std::vector<std::vector<int>> m_genes;
};

// Finished docs read from a doc table, with their tree placement, containment graph and the docs
// independent at each inner node.
class DorthoUniverse {
public:
    DorthoUniverse(SpeciesPhylogeny& tree, options& opt, const std::string& scope);

    // Doc table lines (doc, species, gene, start, end) until the stream fails.
    void read_tab(std::istream& is);
    // calc_lcas, calc_dep_graph and calc_indep_docs, each from empty tables.
    void analyze();
    void calc_lcas();
    void calc_dep_graph();
    void calc_indep_docs();
    void calc_ancest_vid_doc_map();
    // Draws a new gene for every domain, uniformly over its species's genes: a null model.
    void randomize();

    SpeciesPhylogeny& m_tree;
    options& m_options;
    std::string m_scope;
    std::vector<DorthoClust> m_docs;
    std::vector<int> m_doc_lca;
    std::vector<std::vector<int>> m_sub_docs;
    std::vector<std::vector<int>> m_super_docs;
    std::vector<std::vector<int>> m_indep_docs;
    std::vector<std::vector<std::vector<int>>> m_ancest_map;
    std::vector<std::vector<std::vector<int>>> m_gene_docs;
};

#endif
