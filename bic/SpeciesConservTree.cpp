// SpeciesHomologyGraph and SpeciesConservTree: homology tables and the conserved gene sets of the tree's
// nodes.
#include "SpeciesConservTree.h"

#include <iostream>

SpeciesHomologyGraph::SpeciesHomologyGraph(int species_a, int species_b, int genes_a, int genes_b)
    : m_species_a(species_a), m_species_b(species_b), m_out(genes_a), m_in(genes_b) {}

void SpeciesHomologyGraph::insert_edge(int a, int b, float score) {
    if (a < 0 || b < 0)
        return;
    if (a >= static_cast<int>(m_out.size()))
        m_out.resize(a + 1);
    if (b >= static_cast<int>(m_in.size()))
        m_in.resize(b + 1);
    m_out[a].push_back(HomologyEdge{a, b, score});
    m_in[b].push_back(HomologyEdge{b, a, score});
}

void SpeciesHomologyGraph::read_table(std::istream& is) {
    int sa, ga, sb, gb;
    float score;
    while (is >> sa >> ga >> sb >> gb >> score)
        if (sa == m_species_a && sb == m_species_b)
            insert_edge(ga, gb, score);
}

SpeciesConservTree::SpeciesConservTree(SpeciesPhylogeny& tree, float threshold)
    : m_tree(tree), m_threshold(threshold) {
    const int n = tree.nodes_num();
    m_graphs.resize(n);
    std::vector<int> sizes(n, -1);
    for (int s = 0; s < n; ++s)
        if (tree.is_species(s))
            sizes[s] = tree.get_specie_univ(s)->size();
    for (int s = 0; s < n; ++s) {
        m_graphs[s].resize(n);
        if (sizes[s] < 0)
            continue;
        for (int t = 0; t < n; ++t)
            if (sizes[t] >= 0)
                m_graphs[s][t] = std::make_unique<SpeciesHomologyGraph>(s, t, sizes[s], sizes[t]);
    }
}

SpeciesHomologyGraph* SpeciesConservTree::graph(int s, int t) const {
    const int n = static_cast<int>(m_graphs.size());
    if (s < 0 || t < 0 || s >= n || t >= n)
        return nullptr;
    return m_graphs[s][t].get();
}

void SpeciesConservTree::read_table(std::istream& is) {
    int sa, ga, sb, gb;
    float score;
    while (is >> sa >> ga >> sb >> gb >> score) {
        if (!(score < m_threshold))
            continue;
        SpeciesHomologyGraph* ab = graph(sa, sb);
        SpeciesHomologyGraph* ba = graph(sb, sa);
        if (!ab || !ba) {
            std::cerr << "no species pair " << sa << " " << sb << ", record skipped" << std::endl;
            continue;
        }
        ab->insert_edge(ga, gb, score);
        ba->insert_edge(gb, ga, score);
    }
}

void SpeciesConservTree::recalc() {
    const int n = m_tree.nodes_num();
    m_conserv.assign(n, std::vector<ds_bitvec>());
    for (int node = 0; node < n; ++node) {
        m_conserv[node].reserve(n);
        for (int s = 0; s < n; ++s)
            m_conserv[node].emplace_back(m_tree.species_size(s));
    }
    for (int node = 0; node < n; ++node) {
        if (!m_tree.m_is_inner[node]) {
            m_conserv[node][node].set(true);
            std::cerr << "SpCon set sp node " << node << std::endl;
            continue;
        }
        std::cerr << "SpCon set inner node " << node << "\nL: " << m_tree.m_l_set[node]
                  << "\nR: " << m_tree.m_r_set[node] << "\nU: " << m_tree.m_u_set[node] << std::endl;
        update_conserv_pair(node, m_tree.m_l_set[node], m_tree.m_r_set[node]);
        update_conserv_pair(node, m_tree.m_l_set[node], m_tree.m_u_set[node]);
        update_conserv_pair(node, m_tree.m_r_set[node], m_tree.m_u_set[node]);
    }
}

void SpeciesConservTree::update_conserv_pair(int node, const ds_bitvec& a, const ds_bitvec& b) {
    std::vector<ds_bitvec>& cons = m_conserv[node];
    for (int s = 0; s < a.size(); ++s) {
        if (!a.get_ind(s))
            continue;
        for (int t = 0; t < b.size(); ++t) {
            if (!b.get_ind(t))
                continue;
            const SpeciesHomologyGraph* g = graph(s, t);
            if (!g)
                continue;
            for (const std::vector<HomologyEdge>& out : g->m_out)
                for (const HomologyEdge& e : out) {
                    if (!(e.score < m_threshold))
                        continue;
                    if (e.from < cons[s].size())
                        cons[s].set_ind(e.from);
                    if (e.to < cons[t].size())
                        cons[t].set_ind(e.to);
                }
        }
    }
}
