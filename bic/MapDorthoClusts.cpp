// Doc generators: hit-seeded growth with neighbourhood checks, and transitive breadth-first growth with
// gluing.
#include "MapDorthoClusts.h"

#include "IndirectSort.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <set>

namespace {
typedef DocGeneIndex::Key Key;

// The paralogue limits on a member set: false when a species holds too many genes; a species above
// `huge` is reported.
bool paralogues_ok(const std::vector<Key>& keys, int max_par, int huge, bool logit) {
    std::map<int, int> per_species;
    for (const Key& k : keys)
        ++per_species[k.first];
    for (const auto& [species, count] : per_species) {
        if (count > huge) {
            if (logit)
                std::cerr << "is huge, ospid " << species << std::endl;
            return false;
        }
        if (max_par > 0 && count > max_par)
            return false;
    }
    return true;
}

// The doc of a member map, with the domain of each member, species by species in key order.
void fill_doc(DorthoClust& doc, const std::map<Key, OrDomain>& doms) {
    doc.reset();
    for (const auto& [key, dom] : doms)
        doc.m_domains[key.first].push_back(dom);
}
} // namespace

std::vector<Key> DocGeneIndex::keys_of(const DorthoClust& doc) {
    std::vector<Key> keys;
    for (std::size_t s = 0; s < doc.m_domains.size(); ++s)
        for (const OrDomain& d : doc.m_domains[s])
            keys.emplace_back(static_cast<int>(s), d.gid);
    std::sort(keys.begin(), keys.end());
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    return keys;
}

int DocGeneIndex::find_equal(const std::vector<Key>& keys) const {
    if (keys.empty())
        return -1;
    auto it = m_by_first.find(keys[0]);
    if (it == m_by_first.end())
        return -1;
    for (const auto& [id, other] : it->second)
        if (other == keys)
            return id;
    return -1;
}

void DocGeneIndex::add(int id, const std::vector<Key>& keys) {
    if (!keys.empty())
        m_by_first[keys[0]].emplace_back(id, keys);
}

MapDorthoClusts::MapDorthoClusts(SpeciesDorthoGraph& graph, options& opt, const std::string& scope)
    : m_graph(graph), m_max_dom_delta(opt.get_int(scope, "MaxDomDelta", true)),
      m_wgt_margin(opt.get_float(scope, "WgtMargin", true)),
      m_max_paralouges(opt.get_int(scope, "MaxParalouges", true)),
      m_huge_paralouges(opt.get_int(scope, "HugeParalouges", true)),
      m_logit(opt.get_int(scope, "Logit", true)) {}

void MapDorthoClusts::init_neig(int s, int g) {
    m_neig.clear();
    for (int t : m_graph.species())
        for (const DorthoEdge& e : m_graph.edges(s, g, t))
            m_neig[Key(t, e.to_gid)] = e;
}

void MapDorthoClusts::calc() {
    for (int s : m_graph.species()) {
        const int genes = m_graph.m_tree.species_size(s);
        for (int g = 0; g < genes; ++g) {
            if (m_logit)
                std::cerr << "building from gid " << g << std::endl;
            init_neig(s, g);
            for (int t : m_graph.species()) {
                if (t == s)
                    continue;
                const std::vector<DorthoEdge>& edges = m_graph.edges(s, g, t);
                if (edges.empty())
                    continue;
                std::vector<float> scores(edges.size());
                std::vector<int> order(edges.size());
                for (std::size_t i = 0; i < edges.size(); ++i) {
                    scores[i] = edges[i].score;
                    order[i] = static_cast<int>(i);
                }
                IndirectSort<float>(order, scores);
                std::vector<const DorthoEdge*> accepted;
                for (int i : order) {
                    const DorthoEdge& e = edges[i];
                    bool near = false;
                    for (const DorthoEdge* a : accepted)
                        if (std::abs(int(e.from_start) - int(a->from_start)) <= m_max_dom_delta &&
                            std::abs(int(e.from_end) - int(a->from_end)) <= m_max_dom_delta) {
                            near = true;
                            break;
                        }
                    if (near)
                        continue;
                    accepted.push_back(&e);
                    if (m_logit)
                        std::cerr << "growing from " << e << std::endl;
                    grow_edge(s, t, e);
                }
            }
        }
    }
}

void MapDorthoClusts::grow_edge(int s, int t, const DorthoEdge& e) {
    std::map<Key, OrDomain> members;
    members[Key(s, e.from_gid)] = OrDomain{e.from_gid, e.from_start, e.from_end};
    members[Key(t, e.to_gid)] = OrDomain{e.to_gid, e.to_start, e.to_end};
    for (int k : m_graph.species())
        for (const DorthoEdge& f : m_graph.edges(t, e.to_gid, k)) {
            const Key key(k, f.to_gid);
            if (members.count(key))
                continue;
            auto it = m_neig.find(key);
            if (it == m_neig.end()) {
                if (f.score > e.score) {
                    // A stronger hit leads outside the seed gene's neighbourhood.
                    if (m_logit)
                        std::cerr << " skip\n";
                    return;
                }
                continue;
            }
            const DorthoEdge& n = it->second;
            if ((e.score <= n.score + m_wgt_margin || e.score <= f.score + m_wgt_margin) &&
                int(n.from_start) <= int(e.from_start) + m_max_dom_delta &&
                int(e.from_end) - m_max_dom_delta <= int(n.from_end))
                members[key] = OrDomain{n.to_gid, n.to_start, n.to_end};
        }
    DorthoClust doc(m_graph.m_tree);
    fill_doc(doc, members);
    const std::vector<Key> keys = DocGeneIndex::keys_of(doc);
    if (!paralogues_ok(keys, m_max_paralouges, m_huge_paralouges, m_logit))
        return;
    const int same = m_index.find_equal(keys);
    if (same >= 0) {
        if (m_logit)
            std::cerr << "new oc is identical to " << same << std::endl;
        return;
    }
    const int id = static_cast<int>(m_docs.size());
    if (m_logit)
        std::cerr << "new doc defined by " << e << " id " << id << " size " << keys.size() << std::endl;
    m_docs.push_back(doc);
    m_index.add(id, keys);
}

void MapDorthoClusts::dump_table(std::ostream& os) {
    std::cerr << "will dump table, docs size " << m_docs.size() << std::endl;
    for (std::size_t i = 0; i < m_docs.size(); ++i)
        m_docs[i].dump_to_table(static_cast<int>(i), os);
}

MapHDocs::MapHDocs(SpeciesDorthoGraph& graph, options& opt, const std::string& scope)
    : m_graph(graph), m_max_dom_delta(opt.get_int(scope, "MaxDomDelta", true)),
      m_wgt_margin(opt.get_float(scope, "WgtMargin", true)),
      m_max_paralouges(opt.get_int(scope, "MaxParalouges", true)),
      m_huge_paralouges(opt.get_int(scope, "HugeParalouges", true)),
      m_max_doc_size(opt.get_int(scope, "MaxDocSize", true)),
      m_only_complete(opt.get_int(scope, "OnlyComplete", true)), m_logit(opt.get_int(scope, "Logit", true)),
      m_glue_first(-1) {}

bool MapHDocs::acceptable(int s, int t, const DorthoEdge& f) const {
    if (!m_only_complete)
        return true;
    const SpeciesPhylogeny& tree = m_graph.m_tree;
    return tree.prot_length(s, f.from_gid) - m_max_dom_delta < int(f.from_end) - int(f.from_start) + 1 &&
           tree.prot_length(t, f.to_gid) - m_max_dom_delta < int(f.to_end) - int(f.to_start) + 1;
}

void MapHDocs::calc() {
    for (int s : m_graph.species()) {
        const int genes = m_graph.m_tree.species_size(s);
        for (int g = 0; g < genes; ++g) {
            if (m_logit)
                std::cerr << "building from gid " << g << std::endl;
            for (int t : m_graph.species()) {
                if (t == s)
                    continue;
                const std::vector<DorthoEdge>& edges = m_graph.edges(s, g, t);
                float w = 0.0f;
                bool any_ok = false;
                for (const DorthoEdge& f : edges)
                    if (acceptable(s, t, f)) {
                        any_ok = true;
                        w = std::max(w, f.score);
                    }
                if (!edges.empty() && !any_ok && m_logit)
                    std::cerr << "only incomp edge " << edges[0]
                              << " l1 = " << m_graph.m_tree.prot_length(s, g) << std::endl;
                if (w > 0.0f)
                    grow(s, g, w);
            }
        }
    }
    glue_docs();
}

void MapHDocs::grow(int s, int g, float w) {
    m_members.clear();
    m_degree.clear();
    m_member_dom.clear();
    m_work.clear();
    const Key seed(s, g);
    m_work.push_back(seed);
    m_members[seed] = 0;
    m_degree[seed] = 0;
    if (m_logit)
        std::cerr << "will grow spid " << s << " gid " << g << " w " << w << std::endl;
    while (!m_work.empty() && static_cast<int>(m_members.size()) <= m_max_doc_size) {
        const Key k = m_work.front();
        m_work.pop_front();
        grow_step(k.first, k.second, w);
    }
    const int size = static_cast<int>(m_members.size());
    if (size > m_max_doc_size)
        return;
    for (const auto& [key, deg] : m_degree)
        if (deg < size - 1) {
            if (m_logit)
                std::cerr << " NON TRAN" << std::endl;
            return;
        }
    DorthoClust doc(m_graph.m_tree);
    std::map<Key, OrDomain> doms;
    for (const auto& [key, idx] : m_members) {
        auto it = m_member_dom.find(key);
        doms[key] =
            it != m_member_dom.end() ? it->second : OrDomain{static_cast<std::uint16_t>(key.second), 0, 0};
    }
    fill_doc(doc, doms);
    const std::vector<Key> keys = DocGeneIndex::keys_of(doc);
    if (!paralogues_ok(keys, m_max_paralouges, m_huge_paralouges, m_logit))
        return;
    const int same = m_index.find_equal(keys);
    if (same >= 0) {
        if (m_logit)
            std::cerr << "new oc is identical to " << same << std::endl;
        return;
    }
    const int id = static_cast<int>(m_docs.size());
    m_docs.push_back(doc);
    m_alive.push_back(1);
    m_doc_w.push_back(w);
    m_index.add(id, keys);
    if (m_logit)
        std::cerr << "done growing: dsize " << size << std::endl;
}

void MapHDocs::grow_step(int sp, int g, float w) {
    for (int k : m_graph.species())
        for (const DorthoEdge& f : m_graph.edges(sp, g, k)) {
            if (!counts(sp, k, f, w))
                continue;
            const Key from(sp, g);
            if (!m_member_dom.count(from))
                m_member_dom[from] = OrDomain{f.from_gid, f.from_start, f.from_end};
            const Key to(k, f.to_gid);
            ++m_degree[to];
            if (!m_members.count(to)) {
                m_members[to] = static_cast<int>(m_members.size());
                m_member_dom[to] = OrDomain{f.to_gid, f.to_start, f.to_end};
                m_work.push_back(to);
            }
        }
}

bool MapHDocs::connected(const Key& x, const Key& y, float w) const {
    if (x == y)
        return true;
    for (const DorthoEdge& f : m_graph.edges(x.first, x.second, y.first))
        if (f.to_gid == y.second && counts(x.first, y.first, f, w))
            return true;
    return false;
}

bool MapHDocs::test_docs_con(int i) {
    const int a = m_glue_first;
    const std::vector<Key> ka = DocGeneIndex::keys_of(m_docs[a]);
    const std::vector<Key> kb = DocGeneIndex::keys_of(m_docs[i]);
    if (ka.size() != kb.size()) {
        if (m_logit)
            std::cerr << "no size match\n"
                      << "doc2_size " << kb.size() << std::endl;
        return false;
    }
    // The pair's weight is its best hit, as a growth takes the best hit towards a species.
    float w = 0.0f;
    for (const Key& x : ka)
        for (const Key& y : kb)
            for (const DorthoEdge& f : m_graph.edges(x.first, x.second, y.first))
                if (f.to_gid == y.second && acceptable(x.first, y.first, f))
                    w = std::max(w, f.score);
    int con = 0;
    for (const Key& x : ka)
        for (const Key& y : kb) {
            if (!connected(x, y, w))
                return false;
            ++con;
        }
    if (m_logit)
        std::cerr << " con deg " << con << std::endl;
    return true;
}

void MapHDocs::glue_docs() {
    const int ndocs = static_cast<int>(m_docs.size());
    // Live docs on each (species, gene).
    std::map<Key, std::vector<int>> docs_of;
    for (int d = 0; d < ndocs; ++d)
        for (const Key& k : DocGeneIndex::keys_of(m_docs[d]))
            docs_of[k].push_back(d);
    auto reach = [&](int d, std::set<int>& out) {
        for (const Key& x : DocGeneIndex::keys_of(m_docs[d]))
            for (int k : m_graph.species())
                for (const DorthoEdge& f : m_graph.edges(x.first, x.second, k)) {
                    auto it = docs_of.find(Key(k, f.to_gid));
                    if (it != docs_of.end())
                        out.insert(it->second.begin(), it->second.end());
                }
    };
    for (int a = 0; a < ndocs; ++a) {
        if (!m_alive[a])
            continue;
        std::set<int> cand;
        reach(a, cand);
        std::set<int> tried;
        // The smallest candidate above a not yet tried; a merge may add smaller ones, so each
        // round starts from a again.
        auto next_b = [&]() {
            for (auto it = cand.upper_bound(a); it != cand.end(); ++it)
                if (m_alive[*it] && !tried.count(*it))
                    return *it;
            return -1;
        };
        for (int b = next_b(); b >= 0; b = next_b()) {
            tried.insert(b);
            if (m_logit)
                std::cerr << "test join " << a << " and " << b << " dsize "
                          << DocGeneIndex::keys_of(m_docs[a]).size() << std::endl;
            m_glue_first = a;
            if (!test_docs_con(b))
                continue;
            if (m_logit)
                std::cerr << "can join " << a << " " << b << std::endl;
            const std::vector<Key> have = DocGeneIndex::keys_of(m_docs[a]);
            for (std::size_t s = 0; s < m_docs[b].m_domains.size(); ++s)
                for (const OrDomain& d : m_docs[b].m_domains[s])
                    if (!std::binary_search(have.begin(), have.end(), Key(static_cast<int>(s), d.gid)))
                        m_docs[a].m_domains[s].push_back(d);
            m_alive[b] = 0;
            reach(b, cand);
        }
    }
}

void MapHDocs::dump_table(std::ostream& os) {
    int live = 0;
    for (char a : m_alive)
        live += a ? 1 : 0;
    std::cerr << "will dump table, docs size " << live << std::endl;
    int next = 0;
    for (std::size_t i = 0; i < m_docs.size(); ++i) {
        if (!m_alive[i])
            continue;
        if (static_cast<int>(i) != next)
            std::cerr << "mapped " << i << " to " << next << std::endl;
        m_docs[i].dump_to_table(next, os);
        ++next;
    }
}
