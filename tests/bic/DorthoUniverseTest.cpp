// DorthoUniverse on a hand doc table over four species: LCAs (first-species pairs) beside the
// ancestral presence (all pairs), the containment graph with its repeated entries and reduction,
// the docs independent at each node, the ancestral gene map, and the randomised null model.
#include "DorthoUniverse.h"

#include "OrthoTestTree.h"
#include "Random.h"

namespace {

// Docs d0 to d9 by their members; lines of d9 first, bounds 1..50.
std::string doc_table() {
    const char* docs[] = {"A0 B0 C0 D0", "A0 B0", "C0 D0", "A0", "A0 B0",
                          "B1 C1",       "C2",    "C3 C4", "C3", "A0 C1"};
    std::ostringstream os;
    for (int d : {9, 0, 1, 2, 3, 4, 5, 6, 7, 8}) {
        std::istringstream in(docs[d]);
        for (std::string m; in >> m;)
            os << d << "\t" << m[0] - 'A' << "\t" << m.substr(1) << "\t1\t50\n";
    }
    return os.str();
}

struct UnivFix {
    UnivFix() : u(*t.tree, t.opt, "Doc") {
        std::istringstream in(doc_table());
        trace = quiet([&] {
            u.read_tab(in);
            u.analyze();
        });
    }
    FourSpeciesTree t;
    DorthoUniverse u;
    std::string trace;
};

TEST(DorthoUniverse, HandTableLcasDependenciesAndIndependence) {
    UnivFix f;
    ASSERT_EQ(f.u.m_docs.size(), 10u);
    EXPECT_EQ(f.u.m_docs[7].m_domains[2].size(), 2u);
    EXPECT_EQ(f.u.m_gene_docs[0][0], (std::vector<int>{9, 0, 1, 3, 4}));
    EXPECT_EQ(f.u.m_doc_lca, (std::vector<int>{6, 4, 5, 0, 4, 6, 2, 2, 2, 6}));
    const std::vector<std::vector<int>> sub = {{1, 1, 2, 2}, {3, 4, 4}, {}, {}, {1, 1}, {}, {}, {8}, {}, {3}};
    const std::vector<std::vector<int>> super = {{}, {0, 0, 4, 4}, {0, 0}, {1, 9}, {1, 1},
                                                 {}, {},           {},     {7},    {}};
    EXPECT_EQ(f.u.m_sub_docs, sub);
    EXPECT_EQ(f.u.m_super_docs, super);
    const std::vector<std::vector<int>> indep = {{}, {}, {}, {}, {5, 9}, {2, 5, 9}, {0, 5, 9}};
    EXPECT_EQ(f.u.m_indep_docs, indep);
    EXPECT_NE(f.trace.find("INDEP\t4\t2\nINDEP\t5\t3\nINDEP\t6\t3\n"), std::string::npos);

    f.u.calc_ancest_vid_doc_map();
    const auto& m = f.u.m_ancest_map;
    // At the root d0, d5 and d9 write in turn: the later doc wins on A0 and C1.
    const std::vector<std::vector<int>> root = {
        {9, -1, -1, -1, -1, -1}, {0, 5, -1, -1, -1, -1}, {0, 9, -1, -1, -1, -1}, {0, -1, -1, -1, -1, -1}};
    EXPECT_EQ(std::vector<std::vector<int>>(m[6].begin(), m[6].begin() + 4), root);
    EXPECT_EQ(m[4][1], (std::vector<int>{-1, 5, -1, -1, -1, -1}));
    EXPECT_EQ(m[0][0], (std::vector<int>(6, -1)));
}

TEST(DorthoUniverse, LcaComparesWithFirstSpeciesWhilePresenceUsesAllPairs) {
    // Node 5 ranked older (4) than the root (3): {A0, C0, D0} meets the root through A, and node 5
    // through the pair C-D that the first-species walk never looks at.
    FourSpeciesTree t(4);
    DorthoUniverse u(*t.tree, t.opt, "Doc");
    std::istringstream in("0 0 0 1 9\n0 2 0 1 9\n0 3 0 1 9\n1 1 2 3 4\n");
    quiet([&] {
        u.read_tab(in);
        u.calc_lcas();
    });
    EXPECT_EQ(u.m_doc_lca, (std::vector<int>{6, 1}));
    u.m_docs[0].compute_ancestral_presence();
    EXPECT_EQ(u.m_docs[0].m_ancestor, 5);
    EXPECT_EQ(u.m_docs[0].m_presence, (std::vector<int>{0, 0, 1, 1, 0, 0, 0}));
    u.m_docs[1].compute_ancestral_presence();
    EXPECT_EQ(u.m_docs[1].m_ancestor, 1);
    EXPECT_EQ(u.m_docs[1].m_presence, (std::vector<int>{0, 1, 0, 0, 0, 0, 0}));
    std::ostringstream os;
    u.m_docs[0].print(os);
    EXPECT_EQ(os.str(), "Sp0: 0(1,9)\nSp2: 0(1,9)\nSp3: 0(1,9)\nappeared in 5\n");
    u.m_docs[0].reset();
    u.calc_lcas();
    EXPECT_EQ(u.m_doc_lca[0], -1);
}

TEST(DorthoUniverse, RandomizeDrawsOnceADomainAndRepeatsWithTheSeed) {
    std::vector<std::vector<std::size_t>> counts[2];
    std::vector<std::vector<int>> gids[2];
    for (int rep = 0; rep < 2; ++rep) {
        UnivFix g;
        Random::reset(31);
        for (int run = 0; run < 2; ++run) {
            quiet([&] {
                g.u.randomize();
                g.u.analyze();
            });
            std::vector<std::size_t> c;
            for (const auto& l : g.u.m_indep_docs)
                c.push_back(l.size());
            counts[rep].push_back(c);
        }
        for (const DorthoClust& d : g.u.m_docs) {
            std::vector<int> x;
            for (const auto& sp : d.m_domains)
                for (const OrDomain& dom : sp) {
                    EXPECT_LT(dom.gid, 6);
                    EXPECT_EQ(dom.start, 1);
                    EXPECT_EQ(dom.end, 50);
                    x.push_back(dom.gid);
                }
            gids[rep].push_back(x);
        }
    }
    EXPECT_EQ(counts[0], counts[1]);
    EXPECT_EQ(gids[0], gids[1]);
    // The table has 19 domains: two runs take 38 draws, each u * 6 truncated.
    Random::reset(31);
    std::vector<int> want;
    for (int k = 0; k < 38; ++k)
        want.push_back(static_cast<int>(Random::bits() / 4294967295.0 * 6));
    std::vector<int> got;
    for (const auto& d : gids[0])
        got.insert(got.end(), d.begin(), d.end());
    EXPECT_EQ(got, std::vector<int>(want.begin() + 19, want.end()));
}

TEST(OrthoCluster, PrintsGenesAndTalliesAroundANode) {
    FourSpeciesTree t;
    OrthoCluster c(*t.tree);
    c.add_gene(0, 4);
    c.add_gene(0, 1);
    c.add_gene(1, 2);
    c.add_gene(3, 5);
    // Node 4: L = {A}, R = {B}, U = every other node (C and D among them).
    std::ostringstream os;
    c.print(os, 4);
    EXPECT_EQ(os.str(), "Sp0: 4 1\nSp1: 2\nSp3: 5\nl count 2 r count 1 u count 1\n");
}

} // namespace
