// SpeciesPhylogeny: the rooted binary species tree with a gene universe per leaf and its derived tables.
#ifndef VESK_BIC_SPECIESPHYLOGENY_H
#define VESK_BIC_SPECIESPHYLOGENY_H

#include "VarUniverse.h"
#include "ds/BitVec.h"
#include "options.h"

#include <istream>
#include <string>
#include <vector>

// Nodes are addressed by the ids of the tree table. A leaf is either a real species, owning the
// universe read from its variable table, or a mapped node that shares the universe of another node.
// After read_tables the subtree and leaf sets, the three-way split (L, R, U) around each node and
// the lowest common ancestors of leaf pairs are ready.
class SpeciesPhylogeny {
public:
    explicit SpeciesPhylogeny(options& opt);
    ~SpeciesPhylogeny();
    SpeciesPhylogeny(const SpeciesPhylogeny&) = delete;
    SpeciesPhylogeny& operator=(const SpeciesPhylogeny&) = delete;

    // Reads the ten-field tree table, builds children from parents, then the derived tables.
    void read_tables(std::istream& is);
    // The L, R and U leaf sets of every node; runs dive_subtree from the root first.
    void calc_rlu();
    // Lowest common ancestors of leaf pairs across each inner node's children.
    void calc_lca();
    // Subtree and leaf sets of `n` and everything below it.
    void dive_subtree(int n);
    // Pairs of gene id and protein length for `node`.
    void read_prot_length(int node, std::istream& is);
    // The universe of `node`, following one step of mapping.
    VarUniverse* get_specie_univ(int node);

    int nodes_num() const { return static_cast<int>(m_parent.size()); }
    // A node that carries genes: a real species or a mapped node (no trace, unlike get_specie_univ).
    bool is_species(int node) const;
    // The universe of a species node without trace; null elsewhere.
    const VarUniverse* species_univ(int node) const;
    // Gene count of a species node through its universe; 0 elsewhere.
    int species_size(int node) const;
    // Protein length of `gid` in `node` (following one step of mapping); 0 when unknown.
    int prot_length(int node, int gid) const;

    options& m_options;
    std::vector<VarUniverse*> m_species_univ;
    std::vector<int> m_univ_map;
    std::vector<std::string> m_node_name;
    std::vector<bool> m_is_inner;
    std::vector<std::vector<int>> m_prot_length;
    int m_root;
    std::vector<int> m_parent;
    std::vector<int> m_left;
    std::vector<int> m_right;
    std::vector<int> m_node_rank;
    std::vector<std::vector<int>> m_lca;
    std::vector<std::vector<int>> m_below_leaves;
    std::vector<std::vector<int>> m_other_leaves;
    std::vector<ds_bitvec> m_subtree;
    std::vector<ds_bitvec> m_leaves;
    std::vector<ds_bitvec> m_l_set;
    std::vector<ds_bitvec> m_r_set;
    std::vector<ds_bitvec> m_u_set;

private:
    // Grows every per-node table to hold `id`.
    void grow_to(int id);
};

#endif
