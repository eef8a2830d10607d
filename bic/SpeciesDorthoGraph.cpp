// Domain similarity hits: the per-pair graph, its table and similarity-file readers, and the all-species
// graph.
#include "SpeciesDorthoGraph.h"

#include "error.h"

#include <cstdlib>
#include <fstream>
#include <iostream>

static constexpr char kSrc[] = "SpeciesDorthoGraph";

namespace {
const std::vector<DorthoEdge> kNoEdges;

int lookup_name(const VarUniverse* u, const std::string& name) {
    if (!u)
        return -1;
    int id = VarUniverse::find(u->m_name_to_id, name);
    if (id < 0)
        id = VarUniverse::find(u->m_short_to_id, name);
    if (id < 0)
        id = VarUniverse::find(u->m_alias_to_id, name);
    return id;
}

// Splits a line at blanks, tabs and carriage returns.
void split_blanks(const std::string& line, std::vector<std::string>& out) {
    out.clear();
    std::size_t i = 0;
    const std::size_t n = line.size();
    while (i < n) {
        while (i < n && (line[i] == ' ' || line[i] == '\t' || line[i] == '\r'))
            ++i;
        std::size_t j = i;
        while (j < n && line[j] != ' ' && line[j] != '\t' && line[j] != '\r')
            ++j;
        if (j > i)
            out.emplace_back(line, i, j - i);
        i = j;
    }
}

bool parse_ushort(const std::string& s, std::uint16_t& v) {
    char* end = nullptr;
    const unsigned long x = std::strtoul(s.c_str(), &end, 10);
    if (end == s.c_str() || *end != '\0')
        return false;
    v = static_cast<std::uint16_t>(x);
    return true;
}
} // namespace

void DorthoEdge::print(std::ostream& os) const {
    os << from_gid << " (" << from_start << "," << from_end << ") -> " << to_gid << " (" << to_start << ","
       << to_end << ") +" << score;
}

std::ostream& operator<<(std::ostream& os, const DorthoEdge& e) {
    e.print(os);
    return os;
}

DomainOrthoGraph::DomainOrthoGraph(SpeciesPhylogeny& tree, int species_a, int species_b, int genes_a,
                                   int domain_slack)
    : m_tree(tree), m_species_a(species_a), m_species_b(species_b), m_edges(genes_a),
      m_domain_slack(domain_slack) {}

void DomainOrthoGraph::insert_edge(std::uint16_t from_gid, std::uint16_t from_start, std::uint16_t from_end,
                                   std::uint16_t to_gid, std::uint16_t to_start, std::uint16_t to_end,
                                   float score) {
    if (from_gid >= m_edges.size())
        m_edges.resize(static_cast<std::size_t>(from_gid) + 1);
    m_edges[from_gid].push_back(DorthoEdge{from_gid, from_start, from_end, to_gid, to_start, to_end, score});
}

const std::vector<DorthoEdge>& DomainOrthoGraph::edges_of(int gid) const {
    return gid >= 0 && gid < static_cast<int>(m_edges.size()) ? m_edges[gid] : kNoEdges;
}

void DomainOrthoGraph::read_table(std::istream& is) {
    std::uint16_t sa, sb, ga, a0, a1, gb, b0, b1;
    float score;
    while (is >> sa >> sb >> ga >> a0 >> a1 >> gb >> b0 >> b1 >> score)
        if (sa == m_species_a && sb == m_species_b)
            insert_edge(ga, a0, a1, gb, b0, b1, score);
}

void DomainOrthoGraph::read_blast(std::istream& is, float threshold) {
    std::cerr << "from spid " << m_species_a << " to spid " << m_species_b << std::endl;
    const VarUniverse* ua = m_tree.species_univ(m_species_a);
    const VarUniverse* ub = m_tree.species_univ(m_species_b);
    std::string line;
    std::vector<std::string> tok;
    long inserted = 0;
    while (std::getline(is, line)) {
        split_blanks(line, tok);
        if (tok.size() < 11)
            continue;
        char* end = nullptr;
        const float score = std::strtof(tok[2].c_str(), &end);
        if (end == tok[2].c_str())
            continue;
        std::uint16_t v[7];
        bool ok = true;
        for (int i = 0; i < 7 && ok; ++i)
            ok = parse_ushort(tok[3 + i], v[i]);
        const double last = std::strtod(tok[10].c_str(), &end);
        if (!ok || end == tok[10].c_str() || !(last > threshold))
            continue;
        const int qa = lookup_name(ua, tok[0]);
        const int sb = lookup_name(ub, tok[1]);
        if (qa < 0 || sb < 0 || qa == sb)
            continue;
        insert_edge(static_cast<std::uint16_t>(qa), v[3], v[4], static_cast<std::uint16_t>(sb), v[5], v[6],
                    score);
        if (++inserted % 1000 == 0)
            std::cerr << "got " << inserted << " interactions" << std::endl;
    }
    std::cerr << "got " << inserted << " interactions" << std::endl;
}

SpeciesDorthoGraph::SpeciesDorthoGraph(SpeciesPhylogeny& tree, float score_bound, int domain_slack)
    : m_tree(tree), m_score_bound(score_bound), m_domain_slack(domain_slack) {
    const int n = tree.nodes_num();
    std::vector<int> sizes(n, -1);
    for (int s = 0; s < n; ++s)
        if (tree.is_species(s)) {
            sizes[s] = tree.get_specie_univ(s)->size();
            m_species.push_back(s);
        }
    m_graphs.resize(n);
    for (int s = 0; s < n; ++s) {
        m_graphs[s].resize(n);
        if (sizes[s] < 0)
            continue;
        for (int t = 0; t < n; ++t)
            if (sizes[t] >= 0)
                m_graphs[s][t] = std::make_unique<DomainOrthoGraph>(tree, s, t, sizes[s], domain_slack);
    }
}

DomainOrthoGraph* SpeciesDorthoGraph::graph(int s, int t) const {
    const int n = static_cast<int>(m_graphs.size());
    if (s < 0 || t < 0 || s >= n || t >= n)
        return nullptr;
    return m_graphs[s][t].get();
}

const std::vector<DorthoEdge>& SpeciesDorthoGraph::edges(int s, int gid, int t) const {
    const DomainOrthoGraph* g = graph(s, t);
    return g ? g->edges_of(gid) : kNoEdges;
}

void SpeciesDorthoGraph::read_table(std::istream& is) {
    int sa, sb;
    std::uint16_t ga, a0, a1, gb, b0, b1;
    float score;
    while (is >> sa >> ga >> a0 >> a1 >> sb >> gb >> b0 >> b1 >> score) {
        if (!(score < m_score_bound))
            continue;
        DomainOrthoGraph* g = graph(sa, sb);
        if (!g) {
            std::cerr << "no species pair " << sa << " " << sb << ", record skipped" << std::endl;
            continue;
        }
        g->insert_edge(ga, a0, a1, gb, b0, b1, score);
    }
}

void SpeciesDorthoGraph::read_blast_dir(const std::string& dir) {
    for (int a : m_species)
        for (int b : m_species) {
            if (a == b)
                continue;
            const std::string path =
                dir + "/" + m_tree.m_node_name[a] + "." + m_tree.m_node_name[b] + ".fixed";
            std::ifstream in(path);
            if (!in)
                VESK_FATAL(kSrc, "cannot open ortho table " << path);
            std::cerr << "will read dorthos from " << path << std::endl;
            m_graphs[a][b]->read_blast(in, m_score_bound);
        }
}
