// SpeciesHomologyGraph and SpeciesConservTree: homology between species pairs and the conserved genes per
// tree node.
#ifndef VESK_BIC_SPECIESCONSERVTREE_H
#define VESK_BIC_SPECIESCONSERVTREE_H

#include "SpeciesPhylogeny.h"
#include "ds/BitVec.h"

#include <istream>
#include <memory>
#include <vector>

struct HomologyEdge {
    int from;
    int to;
    float score;
};

// The homology edges from the genes of species a to the genes of species b, kept both ways: outgoing
// by gene of a and incoming by gene of b.
class SpeciesHomologyGraph {
public:
    SpeciesHomologyGraph(int species_a, int species_b, int genes_a, int genes_b);
    virtual ~SpeciesHomologyGraph() = default;

    // A null model hook; the plain graph keeps its edges.
    virtual void randomize(int) {}
    // Five-field records (species a, gene a, species b, gene b, score); only this graph's pair, in
    // this order, is kept.
    void read_table(std::istream& is);
    void insert_edge(int a, int b, float score);

    int m_species_a;
    int m_species_b;
    std::vector<std::vector<HomologyEdge>> m_out;
    std::vector<std::vector<HomologyEdge>> m_in;
};

// For each tree node and each species, the genes that have a homolog across one of the node's three
// splits (L-R, L-U, R-U), counting only edges scored strictly below the threshold.
class SpeciesConservTree {
public:
    SpeciesConservTree(SpeciesPhylogeny& tree, float threshold);

    // Homology table records scored below the threshold, entered in both directions.
    void read_table(std::istream& is);
    void recalc();
    void update_conserv_pair(int node, const ds_bitvec& a, const ds_bitvec& b);

    // The graph of the ordered species pair (s, t); null when either is no species.
    SpeciesHomologyGraph* graph(int s, int t) const;

    SpeciesPhylogeny& m_tree;
    std::vector<std::vector<std::unique_ptr<SpeciesHomologyGraph>>> m_graphs;
    std::vector<std::vector<ds_bitvec>> m_conserv;
    float m_threshold;
};

#endif
