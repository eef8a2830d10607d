// Real inputs fetched by bench/data/fetch_ortho.sh (skipped when absent): the bird.orders tree of R
// ape against ape's own leaf sets and ancestors, random homology on it against brute force, and the
// proteinortho example proteomes through both doc generators.
#include "MapDorthoClusts.h"
#include "SpeciesConservTree.h"

#include "OrthoTestTree.h"

#include <array>
#include <fstream>
#include <map>
#include <random>
#include <set>

namespace {

std::string scratch(const std::string& rel) { return source_dir() + "/bench/data/scratch/ortho/" + rel; }

std::set<int> parse_set(const std::string& s) {
    std::set<int> out;
    std::istringstream in(s);
    for (std::string x; std::getline(in, x, ',');)
        out.insert(std::stoi(x));
    return out;
}

struct BirdExpect {
    std::map<int, std::array<std::set<int>, 3>> nodes; // tips below, below the first and second child
    std::vector<std::array<int, 3>> lcas;
};

bool read_bird(std::unique_ptr<SpeciesPhylogeny>& tree, options& opt, BirdExpect& e) {
    std::ifstream tab(scratch("bird/tree.tab")), exp(scratch("bird/expected.tsv"));
    if (!tab || !exp)
        return false;
    std::stringstream ss;
    ss << tab.rdbuf();
    tree = ortho_read_tree(opt, ss.str());
    for (std::string kind; exp >> kind;) {
        if (kind == "node") {
            int k;
            std::string a, b, c;
            exp >> k >> a >> b >> c;
            e.nodes[k] = {parse_set(a), parse_set(b), parse_set(c)};
        } else {
            std::array<int, 3> l;
            exp >> l[0] >> l[1] >> l[2];
            e.lcas.push_back(l);
        }
    }
    return true;
}

TEST(OrthoRealData, BirdOrdersLeafSetsAndAncestorsMatchApe) {
    options opt;
    std::unique_ptr<SpeciesPhylogeny> t;
    BirdExpect e;
    if (!read_bird(t, opt, e))
        GTEST_SKIP() << "run bench/data/fetch_ortho.sh first";
    ASSERT_EQ(t->nodes_num(), 45);
    ASSERT_EQ(e.nodes.size(), 22u);
    ASSERT_EQ(e.lcas.size(), 276u);
    for (const auto& [k, sets] : e.nodes) {
        SCOPED_TRACE(k);
        const std::vector<int>& below = t->m_below_leaves[k];
        EXPECT_EQ(std::set<int>(below.begin(), below.end()), sets[0]);
        EXPECT_EQ(ortho_bits(t->m_leaves[k]), sets[0]);
        EXPECT_EQ(ortho_bits(t->m_l_set[k]), sets[1]);
        EXPECT_EQ(ortho_bits(t->m_r_set[k]), sets[2]);
    }
    for (const auto& l : e.lcas) {
        EXPECT_EQ(t->m_lca[l[0]][l[1]], l[2]) << l[0] << " " << l[1];
        EXPECT_EQ(t->m_lca[l[1]][l[0]], l[2]) << l[0] << " " << l[1];
    }
}

TEST(OrthoRealData, BirdOrdersRandomHomologyMatchesBruteForce) {
    options opt;
    std::unique_ptr<SpeciesPhylogeny> t;
    BirdExpect e;
    if (!read_bird(t, opt, e))
        GTEST_SKIP() << "run bench/data/fetch_ortho.sh first";
    const std::uint32_t seed = test_seed(77);
    SCOPED_TRACE(seed);
    std::mt19937 rng(seed);
    std::vector<HomRec> recs;
    for (int k = 0; k < 400; ++k)
        recs.push_back(
            {int(rng() % 23), int(rng() % 3), int(rng() % 23), int(rng() % 3), float(rng() % 21) / 20.0f});
    auto c = ortho_conserv(*t, 0.5f, recs);
    for (const auto& [k, sets] : e.nodes) {
        const std::vector<std::set<int>> want = ortho_brute(recs, 23, 0.5f, [&](int x) {
            return sets[1].count(x) ? 0 : sets[2].count(x) ? 1 : 2;
        });
        for (int s = 0; s < 23; ++s)
            EXPECT_EQ(ortho_bits(c->m_conserv[k][s]), want[s]) << "node " << k << " species " << s;
    }
}

// Docs whose gene names form exactly one group of equal numeric suffix (C_10, E_10, L_10, M_10).
struct SuffixScore {
    int docs = 0, pure = 0, exact = 0;
};

SuffixScore score_docs(const SpeciesPhylogeny& t, const std::vector<DorthoClust>& docs,
                       const std::vector<char>* alive,
                       const std::map<std::string, std::set<std::string>>& groups) {
    SuffixScore sc;
    for (std::size_t d = 0; d < docs.size(); ++d) {
        if (alive && !(*alive)[d])
            continue;
        ++sc.docs;
        std::set<std::string> names, suffixes;
        for (int s = 0; s < 4; ++s)
            for (const OrDomain& dom : docs[d].m_domains[s]) {
                const std::string& n = t.species_univ(s)->m_vars[dom.gid]->m_name;
                names.insert(n);
                suffixes.insert(n.substr(n.find('_') + 1));
            }
        if (suffixes.size() == 1) {
            ++sc.pure;
            if (groups.at(*suffixes.begin()) == names)
                ++sc.exact;
        }
    }
    return sc;
}

// Both generators on the proteomes under one tree table; prints and returns the scores.
std::pair<SuffixScore, SuffixScore> run_proteomes(const std::string& tree_table, int& groups_multi) {
    std::ifstream tab(scratch("prot/" + tree_table));
    std::stringstream ss;
    ss << tab.rdbuf();
    options opt;
    ortho_read_options(opt,
                       "[Docs]\nMaxDomDelta = 30\nWgtMargin = 100\nMaxParalouges = 3\nHugeParalouges = 6\n"
                       "MaxDocSize = 8\nOnlyComplete = 0\nLogit = 0\n");
    auto t = ortho_read_tree(opt, ss.str());
    std::map<std::string, std::set<std::string>> groups;
    for (int s = 0; s < 4; ++s)
        for (const ModelVarBase* v : t->species_univ(s)->m_vars)
            groups[v->m_name.substr(v->m_name.find('_') + 1)].insert(v->m_name);
    testing::internal::CaptureStderr();
    SpeciesDorthoGraph g(*t, 100.0f, 30);
    g.read_blast_dir(scratch("prot"));
    MapDorthoClusts edges(g, opt, "Docs");
    edges.calc();
    MapHDocs hdocs(g, opt, "Docs");
    hdocs.calc();
    testing::internal::GetCapturedStderr();
    const SuffixScore a = score_docs(*t, edges.m_docs, nullptr, groups);
    const SuffixScore b = score_docs(*t, hdocs.m_docs, &hdocs.m_alive, groups);
    groups_multi = 0;
    for (const auto& [suffix, names] : groups)
        groups_multi += names.size() > 1 ? 1 : 0;
    std::cout << tree_table << ": suffix groups with two or more genes: " << groups_multi << "\n"
              << "  edges: " << a.docs << " docs, " << a.pure << " of one suffix, " << a.exact
              << " equal to a group\n"
              << "  hdocs: " << b.docs << " docs, " << b.pure << " of one suffix, " << b.exact
              << " equal to a group\n";
    return {a, b};
}

TEST(OrthoRealData, ProteomeDocsAgainstSuffixGroups) {
    if (!std::ifstream(scratch("prot/tree_offset.tab")))
        GTEST_SKIP() << "run bench/data/fetch_ortho.sh first";
    int multi = 0;
    const auto own = run_proteomes("tree.tab", multi);
    const auto offset = run_proteomes("tree_offset.tab", multi);
    EXPECT_GT(own.first.exact, 0);
    EXPECT_GT(own.second.exact, 0);
    // The sample's orthologs stand at the same position in every file, and the similarity reader
    // drops hits between equal ids: numbered apart, more groups come back whole.
    EXPECT_GT(offset.first.exact, own.first.exact);
    EXPECT_GT(offset.second.exact, own.second.exact);
    EXPECT_LE(offset.second.exact, multi);
}

} // namespace
