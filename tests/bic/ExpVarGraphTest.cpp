// ExpVarGraphACO / ExpVarGraphClassify: a tiny data set worked out by hand, the thresholds, the edge
// table, and the fatal paths.
#include "BicTestUtil.h"
#include "ValSpace3.h"

#include <memory>
#include <tuple>

namespace {

// Rows of (zero, up, down). Row 3: zero probability exactly 1 - EdgeNonZeroP (0.25); row 4 just
// above it; row 5: up probability equal to EdgePThresh (0.5).
TableValSpace* tiny_space() {
    static TableValSpace vs({{1, 0, 0},
                             {0, 1, 0},
                             {0, 0, 1},
                             {0.75f, 0.6f, 0},
                             {0.76f, 0.9f, 0},
                             {0.2f, 0.5f, 0.3f},
                             {0.1f, 0.7f, 0.2f},
                             {0, 0.55f, 0.8f}});
    return &vs;
}

// Three conditions by three genes, cells as row codes:  g0: 1 2 3   g1: 4 5 6   g2: 7 0 2
const char* kKey = "0 c0 x 0 1 0\n1 c1 x 0 1 0\n2 c2 x 1 1 0\n";
const char* kCells = "0 0 1\n0 1 2\n0 2 3\n1 0 4\n1 1 5\n1 2 6\n2 0 7\n2 1 0\n2 2 2\n";

// Both orientations on both sides; (1, 1) is left out of StateOfGroupPair, so it has state 0.
std::string opts(const std::string& tail = "BuildEdgesFromFile = 0\n", const std::string& exp_card = "2") {
    return "[G]\nLogit = 0\nEdgePThresh = 0.5\nEdgeNonZeroP = 0.25\nAllowConditionOrientation = 1\n"
           "AllowVarOrientation = 1\nExpCardinality = " +
           exp_card +
           "\nVarCardinality = 2\nFactors = { f 1\n1.0\n}\nStateOfGroupPair = { i 9\n0 0 1\n0 1 2\n1 0 "
           "2\n}\n" +
           tail;
}

// Condition node = 3 * group + condition, variable node = 6 + 3 * group + gene. By hand, variable
// node by variable node in id order, conditions in order, condition groups in order:
const std::tuple<int, int, int, float> kEdges[] = {
    {0, 6, 1, 1.0f},  // g0 c0 (code 1) up
    {4, 6, 2, 1.0f},  // g0 c1 (code 2) down
    {2, 6, 1, 0.6f},  // g0 c2 (code 3) up: zero probability 0.75 counts as non-zero
    {2, 7, 1, 0.7f},  // g1 c2 (code 6) up; c0 (code 4) is zero, c1 (code 5) has p == EdgePThresh
    {0, 8, 1, 0.55f}, // g2 c0 (code 7) up
    {3, 8, 2, 0.8f},  // g2 c0 (code 7) down
    {5, 8, 2, 1.0f},  // g2 c2 (code 2) down
    {1, 9, 2, 1.0f},  // g0- c1 (code 2) down; condition group 1 meets variable group 1 in state 0
    {0, 11, 2, 0.8f}, // g2- c0 (code 7) down
    {2, 11, 2, 1.0f}, // g2- c2 (code 2) down
};

struct Tiny {
    explicit Tiny(const std::string& text, bool quiet = true) : d(3, tiny_space(), kKey, kCells, quiet) {
        Quiet q(quiet);
        g.reset(new ExpVarGraphACO(d.universe, d.data, bic_options(text), "G", true));
        log = q.done();
    }
    BicData d;
    std::unique_ptr<ExpVarGraphACO> g;
    std::string log;
};

void expect_tiny(const ExpVarGraphACO& g, bool states) {
    ASSERT_EQ(g.edges_num(), 10);
    ASSERT_EQ(g.m_edge_count, 10);
    for (int id = 0; id < 10; ++id) {
        EXPECT_EQ(g.edge_source(id), std::get<0>(kEdges[id])) << id;
        EXPECT_EQ(g.edge_dest(id), std::get<1>(kEdges[id])) << id;
        EXPECT_EQ(g.m_edge_state[id], states ? std::get<2>(kEdges[id]) : 0) << id;
        EXPECT_EQ(g.m_edge_weight[id], std::get<3>(kEdges[id])) << id;
    }
    // Sums of the list above: condition nodes by variable group, variable nodes by condition group.
    const float exp_vg[6][2] = {{1.55f, 0.8f}, {0, 1}, {1.3f, 1}, {0.8f, 0}, {1, 0}, {1, 0}};
    const float var_eg[6][2] = {{1.6f, 1}, {0.7f, 0}, {0.55f, 1.8f}, {1, 0}, {0, 0}, {1.8f, 0}};
    for (int n = 0; n < 6; ++n)
        for (int k = 0; k < 2; ++k) {
            EXPECT_FLOAT_EQ(g.m_node_var_group_degree(n, k), exp_vg[n][k]) << n << " " << k;
            EXPECT_FLOAT_EQ(g.m_node_exp_group_degree(6 + n, k), var_eg[n][k]) << n << " " << k;
            EXPECT_EQ(g.m_node_exp_group_degree(n, k) + g.m_node_var_group_degree(6 + n, k), 0.0f);
            EXPECT_FLOAT_EQ(g.m_node_degree[n], exp_vg[n][0] + exp_vg[n][1]);
            EXPECT_FLOAT_EQ(g.m_node_degree[6 + n], var_eg[n][0] + var_eg[n][1]);
        }
    EXPECT_FLOAT_EQ(g.m_max_var_degree, 2.6f); // node 6 after its third edge
    EXPECT_FLOAT_EQ(g.m_max_group_degree[0], 2.6f);
    EXPECT_FLOAT_EQ(g.m_max_group_degree[1], 1.8f);
}

const char* kStats =
    "Bipartite Condition-Genes graph statistics :\nNumber of conditions 3\nVar universe size 3\n"
    "Number of condition groups 2\nNumber of vars groups 2\nTotal number of nodes 12\n"
    "Total number of edges 10\negrp 0 vgrp 0 E 2.85\negrp 0 vgrp 1 E 2.8\negrp 1 vgrp 0 E 2.8\n"
    "egrp 1 vgrp 1 E 0\n";

} // namespace

TEST(ExpVarGraphACO, TinyDataSetByHand) {
    Tiny t(opts());
    const ExpVarGraphACO& g = *t.g;
    EXPECT_EQ(g.m_max_exp_group * 100 + g.m_max_var_group, 202);
    EXPECT_EQ(g.m_max_exp_node * 100 + g.m_max_var_node, 612);
    for (int n = 0; n < 12; ++n) // nodes numbered by group, then condition or gene
        EXPECT_EQ(n < 6 ? g.m_exp_group_nodes(n / 3, n % 3) : g.m_var_group_nodes((n - 6) / 3, n % 3), n);
    EXPECT_EQ(g.m_exp_group_factor, (std::vector<float>{1, -1}));
    EXPECT_EQ(g.m_var_group_factor, (std::vector<float>{1, -1}));
    EXPECT_EQ(g.m_group_pair_state.m_vals, (std::vector<int>{1, 2, 2, 0}));
    expect_tiny(g, true);
    EXPECT_TRUE(g.verify());
    std::ostringstream stats;
    g.print_stats(stats);
    EXPECT_EQ(stats.str(), kStats);
    for (const char* part : {"max_eid 3 max_vid 3\nEVACO will construct ACO graph\n",
                             "will alloc max exp group 2\nwill alloc max var group 2\n", "egrp 0 vgrp 1 2\n"})
        EXPECT_NE(t.log.find(part), std::string::npos) << part;
    EXPECT_NE(t.log.find(std::string("Max Exp Node 6\n") + kStats), std::string::npos);

    // The edge table, written and read back, loses the states.
    std::ostringstream table;
    g.write_table(table);
    EXPECT_EQ(table.str(), "0\t0\t6\t1\n1\t4\t6\t1\n2\t2\t6\t0.6\n3\t2\t7\t0.7\n4\t0\t8\t0.55\n"
                           "5\t3\t8\t0.8\n6\t5\t8\t1\n7\t1\t9\t1\n8\t0\t11\t0.8\n9\t2\t11\t1\n");
    TempDir dir;
    // Any white space on reading; a line of an unused id (-1 -1) is skipped.
    std::string text = table.str();
    text.replace(text.find("9\t2\t11\t1\n"), 9, "9  2 11\t1\n10 -1 -1 0\n");
    Tiny back(opts("BuildEdgesFromFile = 1\nEdgesTable = " + dir.write("e.tab", text) + "\n"));
    EXPECT_NE(back.log.find("will read\n"), std::string::npos);
    expect_tiny(*back.g, false);
    EXPECT_FLOAT_EQ(back.g->m_group_pair_edges(0, 0), 2.85f);
    // An unreadable table: the edges come from the data, states and all.
    Tiny fallback(opts("BuildEdgesFromFile = 1\nEdgesTable = " + dir.path() + "/none.tab\n"));
    EXPECT_EQ(fallback.log.find("will read\n"), std::string::npos);
    expect_tiny(*fallback.g, true);
}

TEST(ExpVarGraphACO, DefaultScopeAndEmptyConditionSide) {
    BicData d(3, tiny_space(), kKey, kCells);
    Quiet q;
    // No "Default::..." key exists: any read would be fatal. The thresholds admit no edge.
    ExpVarGraphACO g(d.universe, d.data, bic_options(""), "Default", false);
    EXPECT_EQ(g.m_node_count, 0);
    g.init(bic_options(opts()), "G", true, false);
    EXPECT_EQ(g.m_node_count, 9); // variables in group 0 only
    EXPECT_EQ(g.m_var_group_nodes(1, 0), -1);
    EXPECT_EQ(g.edges_num(), 0);
    q.done();
    Tiny one(opts("BuildEdgesFromFile = 0\n", "1")); // ExpCardinality 1: no condition groups
    EXPECT_EQ(one.g->m_max_exp_group + one.g->m_max_exp_node + one.g->edges_num(), 0);
    EXPECT_EQ(one.g->m_node_count, 6);
}

TEST(ExpVarGraphACO, StatesFromFactors) {
    ValSpace3 vs(bic_options(""), "V"); // 4 is state 1, -4 state 2
    BicData d(2, &vs, "0 c0 x 0 1 0\n", "");
    Quiet q;
    ExpVarGraphACO g(d.universe, d.data,
                     bic_options(opts("BuildEdgesFromFile = 0\nFactors = { f 1\n2.0\n}\n")), "G", true);
    g.setup_group_state_map();
    EXPECT_EQ(g.m_group_pair_state.m_vals, (std::vector<int>{1, 2, 2, 1}));
    EXPECT_NE(q.done().find("EGACO relation 1 0 2\n"), std::string::npos);
}

TEST(ExpVarGraphClassify, ConditionGroupsFollowTheClass) {
    BicData d(3, tiny_space(), kKey, kCells);
    Quiet q;
    std::istringstream key("0 heat\n1 cold\n"), assoc("9 0 0\n9 1 1\n"); // c2 has no class
    ExpClasses classes(key, assoc, 3);
    // AllowConditionOrientation / AllowVarOrientation are not read: both orientations are on.
    ExpVarGraphClassify g(d.universe, d.data, classes, 0, bic_options(opts()), "G");
    // Group 0: class 0 or none (c0, c2); group 1: any class but 0 (c1, c2).
    EXPECT_EQ(g.m_exp_group_nodes.m_vals, (std::vector<int>{0, -1, 1, -1, 2, 3}));
    EXPECT_EQ(g.m_node_count, 10);
    // Into g0+ (node 4): c0 up from node 0, c1 down from node 2, c2 (code 3) up from node 1.
    std::vector<std::tuple<int, int, float>> in;
    for (int e = g.web().root_head(1, 4); e != -1; e = g.web().next_node(1, e))
        in.emplace_back(g.edge_source(e), g.m_edge_state[e], g.m_edge_weight[e]);
    EXPECT_EQ(in, (std::vector<std::tuple<int, int, float>>{{0, 1, 1.0f}, {2, 2, 1.0f}, {1, 1, 0.6f}}));
}

// Class ids that would size the class table beyond memory: each class holds a bit vector of the
// conditions, so 2^27 words over 3126 words a class allow ids below 42935.
TEST(ExpClassesDeathTest, KeyIdsPastTheCeiling) {
    const struct {
        const char* key;
        int exps;
        const char* message;
    } cases[] = {{"0 a\n2147483647 b\n", 3, "Bad class id 2147483647 in key row 2"},
                 {"4194304 a\n", 3, "Bad class id 4194304 in key row 1"},
                 {"42935 a\n", 100000, "Bad class id 42935 in key row 1"}};
    for (const auto& c : cases) {
        std::istringstream key(c.key), assoc("");
        EXPECT_DEATH(ExpClasses(key, assoc, c.exps), std::string(R"(ExpClasses\([0-9]+\): )") + c.message);
    }
}

TEST(ExpVarGraphDeath, FatalTexts) {
    EXPECT_DEATH(Tiny t(opts("BuildEdgesFromFile = 0\n", "3"), false),
                 R"(ExpVarGraphACO\([0-9]+\): Factors has 1 values for 2 levels)");
    auto read_line = [](const char* line) {
        Tiny t(opts(), false);
        std::istringstream in(line);
        t.g->build_edges_from_table(in);
    };
    EXPECT_DEATH(read_line("0 6 0 1\n"), R"(ExpVarGraphACO\([0-9]+\): Bad edge 0 from node 6 to node 0)");
    EXPECT_DEATH(read_line("3 0 12 1\n"), R"(ExpVarGraphACO\([0-9]+\): Bad edge 3 from node 0 to node 12)");
    EXPECT_DEATH(
        {
            BicData d(1, nullptr, "0 c0 x 0 1 0\n", "", false);
            ExpVarGraphACO g(d.universe, d.data, bic_options(opts()), "G", true);
        },
        R"(ExpVarGraphACO\([0-9]+\): No value space in the universe: cannot make edges from data)");
    EXPECT_DEATH(Tiny t("[G]\nLogit = 0\nEdgeNonZeroP = 0.25\n", false),
                 R"(options\([0-9]+\): option does not exists: G::EdgePThresh)");
}
