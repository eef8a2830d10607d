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

// One network built by either builder from inline tables; every in_logic names logic node 0, a
// max node without inputs, so the logic value is always 0.
struct Built {
    BNet<int> net;
    BNStateDispatch<int> state{net};
    LocalDistSet<int> dists;
    std::unique_ptr<LocalLogicSet> logic;

    Built(bool consist, const std::string& nodes, const std::string& attrs, bool add_first = false,
          bool quiet = true) {
        if (quiet)
            testing::internal::CaptureStderr();
        if (add_first) {
            std::istringstream ns(nodes);
            net.add_all_nodes(ns);
        }
        logic.reset(new LocalLogicSet(net));
        std::istringstream ln("0 max 0 0 x\n"), la("");
        logic->read(ln, la);
        std::istringstream ns(nodes), as(attrs);
        if (consist)
            build_fbn_from_logic_with_disp_ldtabs(net, state, ns, as, 0.1f, *logic, dists);
        else
            build_bnet_from_logic_with_disp_ldtabs(net, state, ns, as, 0.1f, *logic, dists);
        if (quiet)
            testing::internal::GetCapturedStderr();
    }
    std::vector<int> parents(int r) const {
        return std::vector<int>(net.get_parents(r).begin(), net.get_parents(r).end());
    }
};

// Attribute records of a variable: its logic, optionally its prior, its regulators.
std::string attrs_of(int vid, int values, std::vector<int> regs, const char* prior = nullptr) {
    const std::string tail = values == 3 ? " 0 0\n" : " 0\n";
    std::string s = std::to_string(vid) + " in_logic 0" + tail;
    if (prior)
        s += std::to_string(vid) + " uniform_prior " + prior + tail;
    for (std::size_t k = 0; k < regs.size(); ++k)
        s += std::to_string(vid) + " regulator" + std::to_string(k) + " " + std::to_string(regs[k]) + tail;
    return s;
}

template <class T> bool is(const LocalDist<int>* ld) { return dynamic_cast<const T*>(ld) != nullptr; }

TEST(BNLogicBuild, PlainFormThresholdAndPriors) {
    // s: node 0 10^4 = 10000, node 4 10001^1, node 5 3^9 = 19683, the binary ones 2.
    const std::string nodes = "0 0 10\n0 1 2\n0 2 2\n0 3 2\n0 4 10001\n0 5 3\n0 6 3\n";
    std::string attrs = attrs_of(0, 3, {1, 2, 3}) + attrs_of(1, 3, {}, "0.3") + attrs_of(2, 3, {}) +
                        attrs_of(3, 3, {}) + attrs_of(4, 3, {}) + attrs_of(5, 3, {6, 6, 6, 6, 6, 6, 6, 6}) +
                        attrs_of(6, 3, {});
    Built b(false, nodes, attrs);
    ASSERT_EQ(b.net.get_nodes_num(), 7);
    EXPECT_EQ(b.dists.size(), 7);
    EXPECT_EQ(b.parents(0), (std::vector<int>{1, 2, 3}));
    for (int r : {0, 1, 2, 3, 6})
        EXPECT_TRUE(is<LDSoftLogic>(b.net.get_ldist(r))) << r;
    for (int r : {4, 5})
        EXPECT_TRUE(is<LDTableDispatch>(b.net.get_ldist(r))) << r;
    // Soft logic: the prior is the diagonal; table: the prior is the noise.
    const auto* p1 = dynamic_cast<const LDSoftLogic*>(b.net.get_ldist(1));
    const auto* p2 = dynamic_cast<const LDSoftLogic*>(b.net.get_ldist(2));
    EXPECT_FLOAT_EQ(p1->get_priors()[0], logf(0.3f));
    EXPECT_FLOAT_EQ(p2->get_priors()[3], logf(0.1f));
    const auto* t4 = dynamic_cast<const LDTable*>(b.net.get_ldist(4));
    ASSERT_EQ(t4->get_tab_size(), 10001);
    EXPECT_FLOAT_EQ(t4->get_table()[0], logf(0.9f));
    EXPECT_FLOAT_EQ(t4->get_table()[10000], logf(0.1f / 10000));
}

TEST(BNLogicBuild, ConsistencyFormNodesEdgesThresholdAndPriors) {
    // Variables 0..3: 2 regulated by 0 and 1, 1 by 0; s of 3 is 9999^1, of 2 2^3.
    const std::string nodes = "0 0 2\n0 1 2\n0 2 2\n0 3 9999\n";
    std::string attrs =
        attrs_of(0, 2, {}) + attrs_of(1, 2, {0}, "0.3") + attrs_of(2, 2, {0, 1}) + attrs_of(3, 2, {});
    for (bool add_first : {false, true}) {
        Built b(true, nodes, attrs, add_first);
        const int n = 4;
        ASSERT_EQ(b.net.get_nodes_num(), 3 * n);
        for (int r = n; r < 3 * n; ++r) {
            EXPECT_EQ(b.net.get_rvar_card(r), 2);
            EXPECT_EQ(b.net.get_vid(r), r);
        }
        EXPECT_EQ(b.net.get_edges_num(), 2 * n + 3);
        const std::vector<std::vector<int>> want = {{},        {},  {},  {},  {0}, {1, 0},
                                                    {2, 0, 1}, {3}, {0}, {1}, {2}, {3}};
        for (int r = 0; r < 3 * n; ++r)
            EXPECT_EQ(b.parents(r), want[r]) << r;
        EXPECT_EQ(b.dists.size(), n);
        for (int r = 0; r < 3 * n; ++r)
            EXPECT_EQ(b.net.get_ldist(r) != nullptr, r >= n && r < 2 * n) << r;
        for (int r = n; r < 2 * n; ++r)
            EXPECT_TRUE(is<LDTableDispatch>(b.net.get_ldist(r))) << r;
        // Consistency of variable 1 (prior 0.3) at variable 1 = 0 (agrees with logic 0), parent 0 = 0.
        const auto* t5 = dynamic_cast<const LDTable*>(b.net.get_ldist(5));
        EXPECT_FLOAT_EQ(t5->get_table()[1], logf(0.7f));
        EXPECT_FLOAT_EQ(t5->get_table()[3], logf(0.3f));
        const auto* t6 = dynamic_cast<const LDTable*>(b.net.get_ldist(6));
        EXPECT_FLOAT_EQ(t6->get_table()[1], logf(0.9f));
    }
    // s = 100^2 = 10000 gives soft logic.
    Built big(true, "0 0 100\n0 1 2\n", attrs_of(0, 2, {1}) + attrs_of(1, 2, {}));
    EXPECT_TRUE(is<LDConsistSoftLogic>(big.net.get_ldist(2)));
    EXPECT_TRUE(is<LDTableDispatch>(big.net.get_ldist(3)));
}

TEST(BNLogicBuildDeathTest, MissingLogicAttribute) {
    for (bool consist : {false, true}) {
        const int values = consist ? 2 : 3;
        const std::string attrs = attrs_of(0, values, {}) + "1 regulator0 0 0" + (consist ? "\n" : " 0\n");
        EXPECT_DEATH(Built(consist, "0 0 2\n0 1 2\n", attrs, false, false),
                     R"(BNLogicBuild\([0-9]+\): ERROR no back logic attrib for node 1)");
    }
}

} // namespace
