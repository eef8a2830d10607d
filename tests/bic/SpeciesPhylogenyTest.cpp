// SpeciesPhylogeny: the hand-worked five-node tree (children, root, leaf sets, L/R/U, ancestors,
// mapping), protein lengths, and the fatal texts of the tree reader.
#include "OrthoTestTree.h"

#include <set>

namespace {

TEST(SpeciesPhylogeny, FiveNodeTreeByHand) {
    FiveNodeTree f;
    const SpeciesPhylogeny& t = *f.tree;
    ASSERT_EQ(t.nodes_num(), 5);
    EXPECT_EQ(t.m_root, 2);
    EXPECT_EQ(t.m_parent, (std::vector<int>{4, 2, -1, 4, 2}));
    // The first child read is the left one: 3 before 0 under 4, 4 before 1 under 2.
    EXPECT_EQ(t.m_left, (std::vector<int>{-1, -1, 4, -1, 3}));
    EXPECT_EQ(t.m_right, (std::vector<int>{-1, -1, 1, -1, 0}));
    EXPECT_EQ(t.m_node_rank, (std::vector<int>{0, 0, 2, 0, 1}));
    EXPECT_EQ(t.m_is_inner, (std::vector<bool>{false, false, true, false, true}));
    EXPECT_EQ(t.m_univ_map, (std::vector<int>{-1, 0, -1, -1, -1}));
    // Inner nodes keep no name.
    EXPECT_EQ(t.m_node_name, (std::vector<std::string>{"sA", "sC", "", "sB", ""}));
    std::vector<int> univ_size; // -1 for none
    for (int n = 0; n < 5; ++n)
        univ_size.push_back(t.m_species_univ[n] ? t.m_species_univ[n]->size() : -1);
    EXPECT_EQ(univ_size, (std::vector<int>{3, -1, -1, 2, -1}));
    EXPECT_EQ(t.m_prot_length[0], (std::vector<int>{120, 0, 300}));
    EXPECT_TRUE(t.m_prot_length[3].empty());

    const std::vector<std::set<int>> subtree = {{0}, {1}, {0, 1, 2, 3, 4}, {3}, {0, 3, 4}};
    const std::vector<std::vector<int>> below = {{0}, {1}, {0, 1, 3}, {3}, {0, 3}};
    const std::vector<std::vector<int>> other = {{1, 2, 3, 4}, {0, 2, 3, 4}, {2, 4}, {0, 1, 2, 4}, {1, 2, 4}};
    const std::vector<std::set<int>> l = {{0}, {1}, {0, 3}, {3}, {3}};
    const std::vector<std::set<int>> r = {{0}, {1}, {1}, {3}, {0}};
    const std::vector<std::set<int>> u = {{1, 2, 3, 4}, {0, 2, 3, 4}, {}, {0, 1, 2, 4}, {1, 2, 4}};
    for (int n = 0; n < 5; ++n) {
        SCOPED_TRACE(n);
        EXPECT_EQ(ortho_bits(t.m_subtree[n]), subtree[n]);
        EXPECT_EQ(ortho_bits(t.m_leaves[n]), std::set<int>(below[n].begin(), below[n].end()));
        EXPECT_EQ(t.m_below_leaves[n], below[n]);
        EXPECT_EQ(t.m_other_leaves[n], other[n]);
        EXPECT_EQ(ortho_bits(t.m_l_set[n]), l[n]);
        EXPECT_EQ(ortho_bits(t.m_r_set[n]), r[n]);
        EXPECT_EQ(ortho_bits(t.m_u_set[n]), u[n]);
    }
    const std::vector<std::vector<int>> lca = {
        {0, 2, 0, 4, 0}, {2, 1, 0, 2, 0}, {0, 0, 0, 0, 0}, {4, 2, 0, 3, 0}, {0, 0, 0, 0, 0}};
    EXPECT_EQ(t.m_lca, lca);

    EXPECT_NE(f.trace.find("read id 3\n"), std::string::npos);
    EXPECT_NE(f.trace.find("will map for 1 inne 0\n"), std::string::npos);
    EXPECT_NE(f.trace.find("map of 0 is -1\nmap of 1 is 0\nmap of 2 is -1\n"), std::string::npos);
}

TEST(SpeciesPhylogeny, MappedLeafGetsItsTargetsUniverseOneStepOnly) {
    FiveNodeTree f;
    EXPECT_EQ(quiet([&] {
                  EXPECT_EQ(f.tree->get_specie_univ(1), f.tree->m_species_univ[0]);
                  EXPECT_EQ(f.tree->get_specie_univ(3), f.tree->m_species_univ[3]);
                  EXPECT_EQ(f.tree->get_specie_univ(4), nullptr);
              }),
              "get sp for 1\nwill return 0\nget sp for 3\nget sp for 4\n");
    // A map onto a mapped node is not followed further.
    f.tree->m_univ_map[3] = 1;
    quiet([&] { EXPECT_EQ(f.tree->get_specie_univ(3), nullptr); });
    EXPECT_EQ(f.tree->prot_length(1, 2), 300);
    EXPECT_EQ(f.tree->prot_length(0, 1), 0);
}

TEST(SpeciesPhylogeny, ThreeLeafTreeWithMappedLeafAndLengthTableGrowth) {
    TempDir dir;
    options opt;
    const std::string a = dir.write("a.tab", ortho_var_table("g", 2));
    const std::string len = dir.write("a.len", "5 77 1 10\n");
    // Kind -2 maps onto node 1.
    auto t = ortho_read_tree(opt, "0 r 1 none -1 1 0 0 x none\n"
                                  "1 a 0 " +
                                      a + " 0 0 0 0 x " + len +
                                      "\n"
                                      "2 b -2 map 0 0 0 0 x none\n");
    EXPECT_EQ(t->m_univ_map[2], 1);
    EXPECT_EQ(t->species_univ(2), t->m_species_univ[1]);
    EXPECT_EQ(t->m_prot_length[1], (std::vector<int>{0, 10, 0, 0, 0, 77}));
    EXPECT_EQ(t->m_lca[1][2], 0);
    EXPECT_EQ(t->m_lca[2][2], 2);
    EXPECT_EQ(t->m_lca[0][0], 0);
}

TEST(SpeciesPhylogenyDeath, ReaderFatals) {
    TempDir dir;
    const std::string a = dir.write("a.tab", ortho_var_table("g", 2));
    const struct {
        std::string table, regex;
    } cases[] = {
        {"0 r 1 none -1 1 0 0 x none\n1 a 0 " + dir.path() + "/none.tab 0 0 0 0 x none\n",
         R"(SpeciesPhylogeny\([0-9]+\): cannot open var table file .*/none\.tab)"},
        {"0 r 1 none -1 1 0 0 x none\n1 a 0 " + a + " 0 0 0 0 x " + dir.path() + "/no.len\n",
         R"(SpeciesPhylogeny\([0-9]+\): Cannot open plength table .*/no\.len)"},
        {"0 r 1 none -1 1 0 0 x none\n5 a -1 map 0 0 0 0 x none\n3 b -1 map 0 0 0 0 x none\n"
         "4 c -1 map 0 0 0 0 x none\n",
         R"(SpeciesPhylogeny\([0-9]+\): Non binary tree at 0 5 3)"},
    };
    for (const auto& c : cases) {
        options opt;
        SpeciesPhylogeny t(opt);
        std::istringstream in(c.table);
        EXPECT_DEATH(t.read_tables(in), c.regex) << c.table;
    }
}

} // namespace
