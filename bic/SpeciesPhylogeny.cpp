// SpeciesPhylogeny: tree table reader, subtree and leaf sets, L/R/U splits, leaf-pair ancestors.
#include "SpeciesPhylogeny.h"

#include "error.h"

#include <fstream>
#include <iostream>

static constexpr char kSrc[] = "SpeciesPhylogeny";

SpeciesPhylogeny::SpeciesPhylogeny(options& opt) : m_options(opt), m_root(-1) {}

SpeciesPhylogeny::~SpeciesPhylogeny() {
    for (VarUniverse* u : m_species_univ)
        delete u;
}

void SpeciesPhylogeny::grow_to(int id) {
    if (id < nodes_num())
        return;
    const std::size_t n = static_cast<std::size_t>(id) + 1;
    m_species_univ.resize(n, nullptr);
    m_univ_map.resize(n, -1);
    m_node_name.resize(n);
    m_is_inner.resize(n, false);
    m_prot_length.resize(n);
    m_parent.resize(n, -1);
    m_left.resize(n, -1);
    m_right.resize(n, -1);
    m_node_rank.resize(n, -1);
}

void SpeciesPhylogeny::read_tables(std::istream& is) {
    int id, kind, parent, rank;
    float unused_f1, unused_f2;
    std::string name, var_file, unused_s, plen_file;
    while (is >> id >> name >> kind >> var_file >> parent >> rank >> unused_f1 >> unused_f2 >> unused_s >>
           plen_file) {
        std::cerr << "read id " << id << std::endl;
        grow_to(id);
        if (parent >= 0)
            grow_to(parent);
        if (kind >= 1) {
            m_is_inner[id] = true;
        } else if (var_file == "map") {
            m_univ_map[id] = ~kind;
            std::cerr << "will map for " << id << " inne " << m_univ_map[id] << std::endl;
            m_node_name[id] = name;
        } else {
            m_node_name[id] = name;
            delete m_species_univ[id];
            m_species_univ[id] = new VarUniverse();
            std::ifstream vin(var_file);
            if (!vin)
                VESK_FATAL(kSrc, "cannot open var table file " << var_file);
            m_species_univ[id]->read_tabs(vin, vin);
            if (plen_file != "none") {
                std::ifstream pin(plen_file);
                if (!pin)
                    VESK_FATAL(kSrc, "Cannot open plength table " << plen_file);
                read_prot_length(id, pin);
            }
        }
        m_parent[id] = parent;
        m_node_rank[id] = rank;
        if (parent == -1) {
            m_root = id;
        } else if (m_left[parent] == -1) {
            m_left[parent] = id;
        } else if (m_right[parent] == -1) {
            m_right[parent] = id;
        } else {
            VESK_FATAL(kSrc,
                       "Non binary tree at " << parent << " " << m_left[parent] << " " << m_right[parent]);
        }
    }
    // A table of fewer than three nodes has no entry to show: those lines are left out.
    for (int i = 0; i < 3 && i < nodes_num(); ++i)
        std::cerr << "map of " << i << " is " << m_univ_map[i] << std::endl;
    calc_rlu();
    calc_lca();
}

void SpeciesPhylogeny::dive_subtree(int n) {
    const int size = nodes_num();
    if (static_cast<int>(m_subtree.size()) != size) {
        m_subtree.assign(size, ds_bitvec(size));
        m_leaves.assign(size, ds_bitvec(size));
    }
    ds_bitvec& sub = m_subtree[n];
    ds_bitvec& lv = m_leaves[n];
    if (m_left[n] == -1) {
        sub.clear();
        lv.clear();
        sub.set_ind(n);
        lv.set_ind(n);
        return;
    }
    dive_subtree(m_left[n]);
    sub.copy(m_subtree[m_left[n]]);
    lv.copy(m_leaves[m_left[n]]);
    if (m_right[n] != -1) {
        dive_subtree(m_right[n]);
        sub.oreq(m_subtree[m_right[n]]);
        lv.oreq(m_leaves[m_right[n]]);
    }
    sub.set_ind(n);
}

void SpeciesPhylogeny::calc_rlu() {
    const int size = nodes_num();
    // Every table is laid out anew, so a node outside the root's subtree has empty sets.
    m_subtree.assign(size, ds_bitvec(size));
    m_leaves.assign(size, ds_bitvec(size));
    if (m_root >= 0)
        dive_subtree(m_root);
    m_below_leaves.assign(size, std::vector<int>());
    m_other_leaves.assign(size, std::vector<int>());
    m_l_set.assign(size, ds_bitvec(size));
    m_r_set.assign(size, ds_bitvec(size));
    m_u_set.assign(size, ds_bitvec(size));
    const ds_bitvec none(size);
    for (int n = 0; n < size; ++n) {
        for (int i = 0; i < size; ++i)
            (m_leaves[n].get_ind(i) ? m_below_leaves[n] : m_other_leaves[n]).push_back(i);
        const ds_bitvec& left = m_left[n] >= 0 ? m_leaves[m_left[n]] : none;
        const ds_bitvec& right = m_right[n] >= 0 ? m_leaves[m_right[n]] : none;
        if (n == m_root) {
            m_l_set[n].copy(left);
            m_r_set[n].copy(right);
        } else if (!m_is_inner[n]) {
            m_l_set[n].copy(m_leaves[n]);
            m_r_set[n].copy(m_leaves[n]);
            m_u_set[n].set(true);
            m_u_set[n].clr_ind(n);
        } else {
            m_l_set[n].copy(left);
            m_r_set[n].copy(right);
            m_u_set[n].set(true);
            m_u_set[n].minus(left);
            m_u_set[n].minus(right);
        }
        std::cerr << "node " << n << "\nL: " << m_l_set[n] << "\nR: " << m_r_set[n] << "\nU: " << m_u_set[n]
                  << std::endl;
    }
}

void SpeciesPhylogeny::calc_lca() {
    const int size = nodes_num();
    m_lca.assign(size, std::vector<int>(size, 0));
    for (int n = 0; n < size; ++n) {
        if (!m_is_inner[n]) {
            m_lca[n][n] = n;
            continue;
        }
        if (m_left[n] < 0 || m_right[n] < 0)
            continue;
        for (int a : m_below_leaves[m_left[n]])
            for (int b : m_below_leaves[m_right[n]]) {
                m_lca[a][b] = n;
                m_lca[b][a] = n;
            }
    }
}

void SpeciesPhylogeny::read_prot_length(int node, std::istream& is) {
    grow_to(node);
    std::vector<int>& len = m_prot_length[node];
    if (len.empty() && m_species_univ[node])
        len.assign(m_species_univ[node]->size(), 0);
    int gid, length;
    while (is >> gid >> length) {
        if (gid < 0)
            continue;
        if (gid >= static_cast<int>(len.size()))
            len.resize(gid + 1, 0);
        len[gid] = length;
    }
}

VarUniverse* SpeciesPhylogeny::get_specie_univ(int node) {
    std::cerr << "get sp for " << node << std::endl;
    const int m = m_univ_map[node];
    if (m != -1) {
        std::cerr << "will return " << m << std::endl;
        return m_species_univ[m];
    }
    return m_species_univ[node];
}

bool SpeciesPhylogeny::is_species(int node) const { return species_univ(node) != nullptr; }

const VarUniverse* SpeciesPhylogeny::species_univ(int node) const {
    if (node < 0 || node >= nodes_num() || m_is_inner[node])
        return nullptr;
    const int m = m_univ_map[node];
    if (m == -1)
        return m_species_univ[node];
    return m >= 0 && m < nodes_num() ? m_species_univ[m] : nullptr;
}

int SpeciesPhylogeny::species_size(int node) const {
    const VarUniverse* u = species_univ(node);
    return u ? u->size() : 0;
}

int SpeciesPhylogeny::prot_length(int node, int gid) const {
    if (node < 0 || node >= nodes_num())
        return 0;
    int src = node;
    if (m_prot_length[src].empty() && m_univ_map[src] >= 0 && m_univ_map[src] < nodes_num())
        src = m_univ_map[src];
    const std::vector<int>& len = m_prot_length[src];
    return gid >= 0 && gid < static_cast<int>(len.size()) ? len[gid] : 0;
}
