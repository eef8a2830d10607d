// Builders from logic tables: the kind of distribution on both sides of each form's threshold, the
// 3n nodes and edges of the consistency form, priors from the table against the default, nodes
// added by the caller, and the missing logic attribute.
#include "BNLogicBuild.h"
#include "LDSoftLogic.h"
#include "LDTable.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

namespace {

// A network built by either builder from inline tables, default noise 0.1; every in_logic names
// logic node 0, a max node without inputs, so the logic value is always 0.
struct Built {
    BNet<int> net;
    BNStateDispatch<int> state{net};
    LocalDistSet<int> dists;
    std::unique_ptr<LocalLogicSet> logic;

    Built(bool consist, const std::string& nodes, const std::string& attrs, bool add_first = false) {
        if (add_first) {
            std::istringstream ns(nodes);
            net.add_all_nodes(ns);
        }
        logic.reset(new LocalLogicSet(net));
        std::istringstream ln("0 max 0 0 x\n"), la(""), ns(nodes), as(attrs);
        logic->read(ln, la);
        (consist ? build_fbn_from_logic_with_disp_ldtabs
                 : build_bnet_from_logic_with_disp_ldtabs)(net, state, ns, as, 0.1f, *logic, dists);
    }
    const LDTable& table(int r) const { return dynamic_cast<const LDTable&>(*net.get_ldist(r)); }
};

// Records of a variable: its logic, its prior if given, its regulators.
std::string attrs_of(bool consist, int vid, std::vector<int> regs, const char* prior = nullptr) {
    const std::string head = std::to_string(vid), tail = consist ? " 0\n" : " 0 0\n";
    std::string s = head + " in_logic 0" + tail + (prior ? head + " uniform_prior " + prior + tail : "");
    for (std::size_t k = 0; k < regs.size(); ++k)
        s += head + " regulator" + std::to_string(k) + " " + std::to_string(regs[k]) + tail;
    return s;
}

template <class T> bool is(const LocalDist<int>* ld) { return dynamic_cast<const T*>(ld) != nullptr; }

TEST(BNLogicBuild, PlainFormThresholdAndPriors) {
    // s: node 0 10^4 = 10000, node 4 10001^1, node 5 3^9 = 19683, the binary ones 2.
    std::string attrs = attrs_of(false, 0, {1, 2, 3}) + attrs_of(false, 1, {}, "0.3") +
                        attrs_of(false, 5, {6, 6, 6, 6, 6, 6, 6, 6});
    for (int v : {2, 3, 4, 6})
        attrs += attrs_of(false, v, {});
    testing::internal::CaptureStderr();
    Built b(false, "0 0 10\n0 1 2\n0 2 2\n0 3 2\n0 4 10001\n0 5 3\n0 6 3\n", attrs);
    testing::internal::GetCapturedStderr();
    ASSERT_EQ(b.net.get_nodes_num(), 7);
    EXPECT_EQ(b.dists.size(), 7);
    EXPECT_EQ(std::vector<int>(b.net.get_parents(0).begin(), b.net.get_parents(0).end()),
              (std::vector<int>{1, 2, 3}));
    for (int r = 0; r < 7; ++r)
        EXPECT_EQ(is<LDTableDispatch>(b.net.get_ldist(r)), r == 4 || r == 5) << r;
    // Soft logic: the prior is the diagonal; table: the prior is the noise.
    EXPECT_FLOAT_EQ(dynamic_cast<const LDSoftLogic*>(b.net.get_ldist(1))->get_priors()[0], logf(0.3f));
    EXPECT_FLOAT_EQ(dynamic_cast<const LDSoftLogic*>(b.net.get_ldist(2))->get_priors()[3], logf(0.1f));
    ASSERT_EQ(b.table(4).get_tab_size(), 10001);
    EXPECT_FLOAT_EQ(b.table(4).get_table()[0], logf(0.9f));
    EXPECT_FLOAT_EQ(b.table(4).get_table()[10000], logf(0.1f / 10000));
}

TEST(BNLogicBuild, ConsistencyFormNodesEdgesThresholdAndPriors) {
    // Variables 0..3: 2 regulated by 0 and 1, 1 by 0; s of 3 is 9999^1, of 2 2^3.
    const std::string attrs = attrs_of(true, 0, {}) + attrs_of(true, 1, {0}, "0.3") +
                              attrs_of(true, 2, {0, 1}) + attrs_of(true, 3, {});
    const int n = 4;
    testing::internal::CaptureStderr();
    for (bool add_first : {false, true}) {
        Built b(true, "0 0 2\n0 1 2\n0 2 2\n0 3 9999\n", attrs, add_first);
        ASSERT_EQ(b.net.get_nodes_num(), 3 * n);
        EXPECT_EQ(b.net.get_edges_num(), 2 * n + 3);
        const std::vector<std::vector<int>> want = {{},        {},  {},  {},  {0}, {1, 0},
                                                    {2, 0, 1}, {3}, {0}, {1}, {2}, {3}};
        for (int r = 0; r < 3 * n; ++r) {
            EXPECT_EQ(std::vector<int>(b.net.get_parents(r).begin(), b.net.get_parents(r).end()), want[r])
                << r;
            EXPECT_EQ(is<LDTableDispatch>(b.net.get_ldist(r)), r >= n && r < 2 * n) << r;
            EXPECT_TRUE(r < n || (b.net.get_rvar_card(r) == 2 && b.net.get_vid(r) == r)) << r;
        }
        EXPECT_EQ(b.dists.size(), n);
        // Variable 1 (prior 0.3) at 0 agrees with the logic, at 1 not; variable 2 has the default.
        EXPECT_FLOAT_EQ(b.table(5).get_table()[1], logf(0.7f));
        EXPECT_FLOAT_EQ(b.table(5).get_table()[3], logf(0.3f));
        EXPECT_FLOAT_EQ(b.table(6).get_table()[1], logf(0.9f));
    }
    // s = 100^2 = 10000 gives soft logic.
    Built big(true, "0 0 100\n0 1 2\n", attrs_of(true, 0, {1}) + attrs_of(true, 1, {}));
    testing::internal::GetCapturedStderr();
    EXPECT_TRUE(is<LDConsistSoftLogic>(big.net.get_ldist(2)));
    EXPECT_TRUE(is<LDTableDispatch>(big.net.get_ldist(3)));
}

TEST(BNLogicBuildDeathTest, MissingLogicAttribute) {
    for (bool consist : {false, true}) {
        const std::string attrs = attrs_of(consist, 0, {}) + "1 regulator0 0 0" + (consist ? "\n" : " 0\n");
        EXPECT_DEATH(Built(consist, "0 0 2\n0 1 2\n", attrs),
                     R"(BNLogicBuild\([0-9]+\): ERROR no back logic attrib for node 1)");
    }
}

} // namespace
