// Logic nodes on hand cases, a small regulatory network read from both streams and printed, the
// reader out of step after an unknown type, variable-input nodes, and the fatal texts.
#include "LocalLogic.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <sstream>
#include <string>

namespace {

struct LogicNet {
    Net net;
    BNState<int> st{net};
    explicit LogicNet(std::vector<int> cards) {
        for (std::size_t v = 0; v < cards.size(); ++v)
            net.add_rand_var(static_cast<int>(v), cards[v]);
        st.reset();
    }
    void set(std::vector<int> vals) {
        for (std::size_t v = 0; v < vals.size(); ++v)
            st.set_rv_state(static_cast<int>(v), vals[v]);
    }
};

void wire(LocalLogicHNode& node, std::vector<LocalLogicHNode*> ins) {
    for (std::size_t k = 0; k < ins.size(); ++k)
        node.set_input(static_cast<int>(k), ins[k]);
}

TEST(LocalLogic, NodeClassesOnHandCases) {
    LogicNet ln({3, 3, 3});
    LocalLogicSet set(ln.net);
    LocalLogicHNode* v0 = set.get_variable_inp_node(0);
    LocalLogicHNode* v1 = set.get_variable_inp_node(1);
    LocalLogicHNode* v2 = set.get_variable_inp_node(2);
    EXPECT_EQ(v0, set.get_variable_inp_node(0));

    LocalLogicHNodeSum orn(1), half(10);
    LocalLogicHNodeMax mx, empty_max;
    LocalLogicHNodeMin mn, empty_min;
    LocalLogicHNodeEqual eq1, eq3;
    LocalLogicHNodeDiscTable tab(2, 3);
    wire(orn, {v0, v1});
    half.set_attr(set, "factor", "0.5", "0", "0");
    half.set_attr(set, "input1", "1", "2", "0"); // positions in any order
    half.set_attr(set, "input0", "1", "0", "0");
    wire(mx, {v0, v2});
    mx.set_attr(set, "add", "-0.5", "0", "0");
    empty_max.set_attr(set, "add", "2.7", "0", "0");
    wire(mn, {v0, v2});
    mn.set_attr(set, "max", "1", "0", "0");
    wire(eq1, {v2});
    wire(eq3, {v0, v1, v2});
    wire(tab, {v0, v1});
    std::vector<int> at = {2, 1};
    tab.set_val(at, 7); // entry 2 + 3 * 1

    const struct {
        std::vector<int> vals;
        int orn, half, mx, mn, eq3, tab;
    } cases[] = {
        // OR capped at 1; 0.5 * (x0 + x2) truncated; max - 0.5 truncated; min capped at 1.
        {{0, 0, 0}, 0, 0, 0, 0, 1, 0},
        {{1, 0, 0}, 1, 0, 0, 0, 0, 0},
        {{1, 1, 1}, 1, 1, 0, 1, 1, 0},
        {{2, 1, 0}, 1, 1, 1, 0, 0, 7},
        {{2, 2, 2}, 1, 2, 1, 1, 1, 0},
        {{-3, 1, 0}, -2, -1, 0, -3, 0, 0}, // truncation toward zero: -1.5 -> -1, -0.5 -> 0
    };
    for (const auto& c : cases) {
        ln.set(c.vals);
        const std::vector<int> got = {orn.eval(ln.st), half.eval(ln.st), mx.eval(ln.st), mn.eval(ln.st),
                                      eq1.eval(ln.st), eq3.eval(ln.st),  tab.eval(ln.st)};
        EXPECT_EQ(got, (std::vector<int>{c.orn, c.half, c.mx, c.mn, 1, c.eq3, c.tab}))
            << testing::PrintToString(c.vals);
    }
    EXPECT_EQ(empty_max.eval(ln.st), 2);
    EXPECT_EQ(empty_min.eval(ln.st), INT_MAX);

    EXPECT_EQ(quiet([&] { EXPECT_EQ(v2->eval(ln.st) + v2->eval(ln.st), 0); }),
              "Inp var is 2\nInp var is 2\n");
}

TEST(LocalLogic, RegulatoryNetworkFromBothStreams) {
    LogicNet ln({2, 2, 2, 3});
    LocalLogicSet set(ln.net);
    std::istringstream nodes("0 sum 0 2 x\n1 min 0 0 x\n2 table 2 2 x\n3 max 0 0 x\n");
    // lid 3 = min(1 + AND(OR(g0, g1), g2), 2); lid 2 = XOR(g1, g2).
    std::istringstream attrs("0\tinput0\t1\t0\t0\n0\tinput1\t1\t1\t0\n"
                             "1\tinput1\t1\t2\t0\n1\tinput0\t0\t0\t0\n"
                             "2\ttable\t0 1 1 0\t0\t0\n2\tinput0\t1\t1\t0\n2\tinput1\t1\t2\t0\n"
                             "3\tadd\t1\t0\t0\n3\tmax\t2\t0\t\n3\tinput0\t0\t1\t0\n"
                             "3\tbogus\t1\t0\t0\n2\tcolour\t1\t0\t0\n");
    const std::string err = quiet([&] { set.read(nodes, attrs); });
    EXPECT_NE(err.find("Unrecognized attribute for Max node, name = bogus\n"), std::string::npos);
    EXPECT_NE(err.find("Unrecognized attribute for Min node, name = colour\n"), std::string::npos);
    EXPECT_NE(err.find("will set attr of sum : input1 i 1 lid 1 is dir 1\n"), std::string::npos);
    ASSERT_EQ(set.get_nodes_num(), 4);

    for (int x = 0; x < 8; ++x) {
        const int g0 = x & 1, g1 = (x >> 1) & 1, g2 = x >> 2;
        ln.set({g0, g1, g2, 0});
        EXPECT_EQ(set.get_node(3)->eval(ln.st), 1 + ((g0 | g1) & g2)) << x;
        EXPECT_EQ(set.get_node(2)->eval(ln.st), g1 ^ g2) << x;
    }
    std::ostringstream a, b;
    set.get_node(3)->print("", a);
    set.get_node(2)->print(">", b);
    EXPECT_EQ(a.str(), "MAX\n\tMIN\n\t\tSUM\n\t\t\tVar 0\n\t\t\tVar 1\n\t\tVar 2\n");
    EXPECT_EQ(b.str(), ">TABLE 0 1 1 0 \n>\tVar 1\n>\tVar 2\n");
}

TEST(LocalLogic, ReaderOutOfStepAfterAnUnknownTypeAndLateVariables) {
    LogicNet ln({2, 2});
    LocalLogicSet set(ln.net);
    std::istringstream nodes("0 sum 0 2 x\n1 nand 0 0 x\n2 max 0 0 x\n3 min 0 0 x\n"), attrs("");
    EXPECT_NE(quiet([&] { set.read(nodes, attrs); }).find("Unkown logic node type nand\n"),
              std::string::npos);
    // "2" is read as the next type and "max" fails as its first number: nothing more is made.
    EXPECT_EQ(set.get_nodes_num(), 1);
    EXPECT_NE(dynamic_cast<LocalLogicHNodeSum*>(set.get_node(0)), nullptr);
    // Nodes added after the set get their input nodes on demand.
    ln.net.add_rand_var(2, 3);
    ln.net.add_rand_var(3, 2);
    EXPECT_EQ(set.get_variable_inp_node(3)->get_rvid(), 3);
    EXPECT_EQ(set.get_variable_inp_node(2)->get_rvid(), 2);
}

TEST(LocalLogicDeathTest, FatalTextsAndTheShortTable) {
    LogicNet ln({2, 2});
    const struct {
        std::string nodes, attrs, text;
    } cases[] = {
        {"0 sum 0 2 x\n", "0\tinput0\t1\t0\n",
         R"(LocalLogic\([0-9]+\): Bad number of field in logic attr, should be 5, attr_name = input0 f1 1 f\[2\] 0 f\[3\]  lid = 0)"},
        {"0 max 0 0 x\n", "0\tinput0\t1\t9\t0\n",
         R"(LocalLogic\([0-9]+\): No rvid for vid 9 when attempting to get inp node)"},
        {"0 table 2 2 x\n", "0\ttable\t0 1 1\t0\t0\n", "basic_string::substr"},
        // Node ids and table sizes that would size tables beyond memory; attributes of missing nodes.
        {"2147483647 max 0 0 x\n", "",
         R"(LocalLogic\([0-9]+\): Bad logic node id 2147483647)"
         "\n"},
        {"-1 min 0 0 x\n", "",
         R"(LocalLogic\([0-9]+\): Bad logic node id -1)"
         "\n"},
        {"0 table 40 2 x\n", "",
         R"(LocalLogic\([0-9]+\): Bad logic table size 40 inputs of 2 values at node 0)"},
        {"0 table 2 -3 x\n", "", R"(Bad logic table size 2 inputs of -3 values at node 0)"},
        {"0 max 0 0 x\n", "7\tinput0\t1\t0\t0\n",
         R"(LocalLogic\([0-9]+\): Bad logic node id 7 in logic attrs)"},
        {"0 max 0 0 x\n", "-2\tinput0\t1\t0\t0\n", R"(Bad logic node id -2 in logic attrs)"},
        {"0 max 0 0 x\n", "0\tinput33333333333\t1\t0\t0\n",
         R"(LocalLogic\([0-9]+\): Bad input position -?[0-9]+ in logic attr input33333333333)"},
        {"0 sum 0 2 x\n", "0\tinput-1\t1\t0\t0\n", R"(Bad input position -1 in logic attr input-1)"},
    };
    for (const auto& c : cases) {
        const auto read = [&]() noexcept {
            LocalLogicSet set(ln.net);
            std::istringstream n(c.nodes), a(c.attrs);
            set.read(n, a);
        };
        EXPECT_DEATH(read(), c.text);
    }
}

} // namespace
