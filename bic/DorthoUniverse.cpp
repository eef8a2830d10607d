// Docs: printing, table output, ancestral presence; the doc universe with LCAs, containment and independence.
#include "DorthoUniverse.h"

#include "Random.h"

#include <algorithm>
#include <iostream>
#include <map>
#include <set>
#include <utility>

DorthoClust::DorthoClust(SpeciesPhylogeny& tree)
    : m_tree(tree), m_domains(tree.nodes_num()), m_ancestor(-1), m_presence(tree.nodes_num(), 0) {}

void DorthoClust::reset() {
    for (std::vector<OrDomain>& d : m_domains)
        d.clear();
}

int DorthoClust::size() const {
    int n = 0;
    for (const std::vector<OrDomain>& d : m_domains)
        n += static_cast<int>(d.size());
    return n;
}

void DorthoClust::print(std::ostream& os) const {
    for (std::size_t s = 0; s < m_domains.size(); ++s) {
        if (m_domains[s].empty())
            continue;
        os << "Sp" << s << ":";
        for (const OrDomain& d : m_domains[s])
            os << " " << d.gid << "(" << d.start << "," << d.end << ")";
        os << "\n";
    }
    os << "appeared in " << m_ancestor << "\n";
}

void DorthoClust::compute_ancestral_presence() {
    std::vector<int> present;
    for (std::size_t s = 0; s < m_domains.size(); ++s)
        if (!m_domains[s].empty())
            present.push_back(static_cast<int>(s));
    std::fill(m_presence.begin(), m_presence.end(), 0);
    m_ancestor = present.empty() ? -1 : present[0];
    for (std::size_t i = 0; i < present.size(); ++i)
        for (std::size_t j = i + 1; j < present.size(); ++j) {
            const int c = m_tree.m_lca[present[i]][present[j]];
            if (m_tree.m_node_rank[c] > m_tree.m_node_rank[m_ancestor])
                m_ancestor = c;
        }
    if (m_ancestor >= 0)
        for (int leaf : m_tree.m_below_leaves[m_ancestor])
            m_presence[leaf] = 1;
}

void DorthoClust::dump_to_table(int id, std::ostream& os) const {
    for (std::size_t s = 0; s < m_domains.size(); ++s)
        for (const OrDomain& d : m_domains[s])
            os << id << "\t" << s << "\t" << d.gid << "\t" << d.start << "\t" << d.end << "\n";
}

OrthoCluster::OrthoCluster(SpeciesPhylogeny& tree) : m_tree(tree), m_genes(tree.nodes_num()) {}

void OrthoCluster::add_gene(int species, int gid) { m_genes[species].push_back(gid); }

void OrthoCluster::print(std::ostream& os, int node) const {
    int l = 0, r = 0, u = 0;
    for (std::size_t s = 0; s < m_genes.size(); ++s) {
        if (m_genes[s].empty())
            continue;
        os << "Sp" << s << ":";
        for (int g : m_genes[s])
            os << " " << g;
        os << "\n";
        const int n = static_cast<int>(m_genes[s].size());
        const int si = static_cast<int>(s);
        if (m_tree.m_l_set[node].get_ind(si))
            l += n;
        if (m_tree.m_r_set[node].get_ind(si))
            r += n;
        if (m_tree.m_u_set[node].get_ind(si))
            u += n;
    }
    os << "l count " << l << " r count " << r << " u count " << u << "\n";
}

DorthoUniverse::DorthoUniverse(SpeciesPhylogeny& tree, options& opt, const std::string& scope)
    : m_tree(tree), m_options(opt), m_scope(scope) {
    const int n = tree.nodes_num();
    m_gene_docs.resize(n);
    for (int s = 0; s < n; ++s)
        m_gene_docs[s].resize(tree.species_size(s));
}

void DorthoUniverse::read_tab(std::istream& is) {
    int id, species, gid, start, end;
    while (is >> id >> species >> gid >> start >> end) {
        if (id < 0 || species < 0 || species >= m_tree.nodes_num() || gid < 0) {
            std::cerr << "bad doc line " << id << " " << species << " " << gid << ", skipped" << std::endl;
            continue;
        }
        if (id >= static_cast<int>(m_docs.size())) {
            while (static_cast<int>(m_docs.size()) <= id)
                m_docs.emplace_back(m_tree);
            if (id % 1000 == 0)
                std::cerr << "id " << id << std::endl;
        }
        m_docs[id].m_domains[species].push_back(OrDomain{static_cast<std::uint16_t>(gid),
                                                         static_cast<std::uint16_t>(start),
                                                         static_cast<std::uint16_t>(end)});
        std::vector<std::vector<int>>& by_gene = m_gene_docs[species];
        if (gid >= static_cast<int>(by_gene.size()))
            by_gene.resize(static_cast<std::size_t>(gid) + 1);
        by_gene[gid].push_back(id);
    }
}

void DorthoUniverse::analyze() {
    calc_lcas();
    calc_dep_graph();
    calc_indep_docs();
}

void DorthoUniverse::calc_lcas() {
    m_doc_lca.assign(m_docs.size(), -1);
    for (std::size_t d = 0; d < m_docs.size(); ++d) {
        const std::vector<std::vector<OrDomain>>& doms = m_docs[d].m_domains;
        int first = -1, lca = -1;
        for (std::size_t s = 0; s < doms.size(); ++s) {
            if (doms[s].empty())
                continue;
            if (first < 0) {
                first = lca = static_cast<int>(s);
                continue;
            }
            const int c = m_tree.m_lca[first][s];
            if (m_tree.m_node_rank[lca] < m_tree.m_node_rank[c])
                lca = c;
        }
        m_doc_lca[d] = lca;
    }
}

void DorthoUniverse::calc_dep_graph() {
    const int ndocs = static_cast<int>(m_docs.size());
    m_sub_docs.assign(ndocs, std::vector<int>());
    m_super_docs.assign(ndocs, std::vector<int>());
    typedef std::pair<int, int> Key;
    // Docs on each (species, gene), once per domain.
    std::map<Key, std::vector<int>> docs_of;
    for (int d = 0; d < ndocs; ++d)
        for (std::size_t s = 0; s < m_docs[d].m_domains.size(); ++s)
            for (const OrDomain& dom : m_docs[d].m_domains[s])
                docs_of[Key(static_cast<int>(s), dom.gid)].push_back(d);
    for (int d = 0; d < ndocs; ++d) {
        std::set<Key> genes;
        const std::vector<std::vector<OrDomain>>& doms = m_docs[d].m_domains;
        for (std::size_t s = 0; s < doms.size(); ++s)
            for (const OrDomain& dom : doms[s])
                genes.insert(Key(static_cast<int>(s), dom.gid));
        for (std::size_t s = 0; s < doms.size(); ++s)
            for (const OrDomain& dom : doms[s])
                for (int o : docs_of[Key(static_cast<int>(s), dom.gid)]) {
                    if (o == d)
                        continue;
                    bool inside = true;
                    const std::vector<std::vector<OrDomain>>& odoms = m_docs[o].m_domains;
                    for (std::size_t os = 0; os < odoms.size() && inside; ++os)
                        for (const OrDomain& od : odoms[os])
                            if (!genes.count(Key(static_cast<int>(os), od.gid))) {
                                inside = false;
                                break;
                            }
                    if (inside) {
                        m_sub_docs[d].push_back(o);
                        m_super_docs[o].push_back(d);
                    }
                }
    }
    // Transitive reduction: a doc below b is no direct sub of a doc above b.
    auto erase_all = [](std::vector<int>& v, int x) { v.erase(std::remove(v.begin(), v.end(), x), v.end()); };
    for (int b = 0; b < ndocs; ++b) {
        const std::vector<int> supers = m_super_docs[b];
        const std::vector<int> subs = m_sub_docs[b];
        for (int c : supers)
            for (int a : subs) {
                erase_all(m_sub_docs[c], a);
                erase_all(m_super_docs[a], c);
            }
    }
}

void DorthoUniverse::calc_indep_docs() {
    const int nnodes = m_tree.nodes_num();
    m_indep_docs.assign(nnodes, std::vector<int>());
    std::vector<char> marked(nnodes);
    for (int d = 0; d < static_cast<int>(m_docs.size()); ++d) {
        const int lca = m_doc_lca[d];
        if (lca < 0)
            continue;
        const std::vector<int>& sup = m_super_docs[d];
        if (sup.size() == 1 && m_doc_lca[sup[0]] == lca)
            continue;
        std::fill(marked.begin(), marked.end(), 0);
        const std::vector<int>& sub = m_sub_docs[d];
        const bool lone_same = sub.size() == 1 && m_doc_lca[sub[0]] == lca;
        for (int o : sub) {
            if (lone_same || m_doc_lca[o] < 0)
                continue;
            const ds_bitvec& below = m_tree.m_subtree[m_doc_lca[o]];
            for (int n = 0; n < nnodes; ++n)
                if (below.get_ind(n))
                    marked[n] = 1;
        }
        const ds_bitvec& here = m_tree.m_subtree[lca];
        for (int n = 0; n < nnodes; ++n)
            if (here.get_ind(n) && !marked[n] && m_tree.m_is_inner[n])
                m_indep_docs[n].push_back(d);
    }
    for (int n = 0; n < nnodes; ++n)
        std::cerr << "INDEP\t" << n << "\t" << m_indep_docs[n].size() << "\n";
    std::cerr.flush();
}

void DorthoUniverse::calc_ancest_vid_doc_map() {
    const int nnodes = m_tree.nodes_num();
    m_ancest_map.assign(nnodes, std::vector<std::vector<int>>());
    for (int n = 0; n < nnodes; ++n) {
        m_ancest_map[n].resize(nnodes);
        for (int s = 0; s < nnodes; ++s)
            m_ancest_map[n][s].assign(m_tree.species_size(s), -1);
    }
    for (int n = 0; n < static_cast<int>(m_indep_docs.size()) && n < nnodes; ++n)
        for (int d : m_indep_docs[n])
            for (std::size_t s = 0; s < m_docs[d].m_domains.size(); ++s)
                for (const OrDomain& dom : m_docs[d].m_domains[s]) {
                    std::vector<int>& row = m_ancest_map[n][s];
                    if (dom.gid >= row.size())
                        row.resize(static_cast<std::size_t>(dom.gid) + 1, -1);
                    row[dom.gid] = d;
                }
}

void DorthoUniverse::randomize() {
    for (DorthoClust& doc : m_docs)
        for (std::size_t s = 0; s < doc.m_domains.size(); ++s) {
            const int genes = m_tree.species_size(static_cast<int>(s));
            for (OrDomain& dom : doc.m_domains[s]) {
                const double u = Random::bits() / 4294967295.0;
                int g = static_cast<int>(u * genes);
                // u may be exactly 1: keep the draw inside the species.
                if (g >= genes)
                    g = genes - 1;
                dom.gid = static_cast<std::uint16_t>(g < 0 ? 0 : g);
            }
        }
}
