// ValSpaceAutoProb::reinit_auto: cut points from the histogram of a small data set, worked by hand.
#include "ValSpaceAutoProb.h"
#include "ModelTestUtil.h"

#include <memory>

namespace {

struct Auto : testing::Test {
    // Runs reinit_auto with Logit 1 and the given factors; returns what it printed.
    std::string run(Grid& g, const std::string& factors) {
        vs.reset(new ValSpaceAutoProb(test_options("[Auto]\nLogit = 1\n" + factors), "Auto", true));
        return quiet([&] { vs->reinit_auto(g.ds); });
    }
    std::unique_ptr<ValSpaceAutoProb> vs;
};

} // namespace

TEST_F(Auto, QuantileCutPoints) {
    // Offset 2 and 8 bins of 0.5; one value at the centre of each bin, counts 1 1 2 4 5 1 4 1 1 0
    // (the last value sits on +Offset itself and falls in bin 8). Cumulative shares:
    // .05 .10 .20 .40 .65 .70 .90 .95 1 1.
    Grid g(4, 5, {-1.75f, -1.25f, -0.75f, -0.75f, -0.25f, -0.25f, -0.25f, -0.25f, 0.25f, 0.25f,
                  0.25f,  0.25f,  0.25f,  0.75f,  1.25f,  1.25f,  1.25f,  1.25f,  1.75f, 2.0f});
    const std::string err = run(g, "SureFactor = 0.07\nSoSoFactor = 0.28\nOffset = 2\n"
                                   "MaxDiscBins = 8\n");
    // sure: first share above .07 is bin 1 -> 0.5 * 1 - 2; above .93 is bin 7 -> 0.5 * 6 - 2.
    // soso: above .28 is bin 3 -> -0.5; above .72 is bin 6 -> 0.5 * 5 - 2.
    EXPECT_NE(err.find("AutoDisc minus_sure = -1.5\nAutoDisc minus_soso = -0.5\nAutoDisc plus_soso = 0.5\n"
                       "AutoDisc plus_sure = 1\n"),
              std::string::npos);
    EXPECT_EQ(err.find("AutoDisc recount"), std::string::npos);
    // Down through (-1.5,1),(-0.5,0); hat through (-0.5,0),(0,1),(0.5,0); up through (0.5,0),(1,1),
    // tabulated at -2, -1.5, ..., 2: only 0 belongs to the hat, and 0.5 where all are 0 falls to state 0.
    EXPECT_EQ(vs->m_state_of_bin, (std::vector<int>{0, 0, 0, 0, 1, 0, 2, 2, 2}));
    EXPECT_EQ(vs->m_base, -2.0f);
    EXPECT_EQ(vs->m_inv_bin, 2.0f);
    EXPECT_EQ(vs->get_zero_state(), 1);
}

TEST_F(Auto, RecountFollowsTheActualSpan) {
    // Values -1.5, 0, 0, 10 with Offset 2: min_v stays at -2, max_v is 10, so Offset becomes 10 and
    // the bin (10 - -2) / 4 = 3, not 2 * 10 / 4. Recount: -1.5 in bin 2, 0 in bin 3 (twice); 10 would
    // be bin 6, outside the 6 counters, and is dropped.
    Grid g(2, 2, {-1.5f, 0.0f, 0.0f, 10.0f});
    const std::string err = run(g, "SureFactor = 0.1\nSoSoFactor = 0.2\nOffset = 2\n"
                                   "MaxDiscBins = 4\n");
    EXPECT_NE(err.find("AutoDisc min_v = -2\nAutoDisc max_v = 10\nAutoDisc recount\nAutoDisc binsize 3\n"
                       "AutoDisc offset 10\n"),
              std::string::npos);
    // Shares .25 at bin 2 and .75 at bin 3: both minus points at 3 * 2 - 10; the plus points are never
    // reached and keep their start value -1.
    EXPECT_NE(err.find("AutoDisc minus_sure = -4\nAutoDisc minus_soso = -4\nAutoDisc plus_soso = -1\n"
                       "AutoDisc plus_sure = -1\n"),
              std::string::npos);
    EXPECT_EQ(vs->m_base, -10.0f);
    EXPECT_FLOAT_EQ(vs->m_inv_bin, 1.0f / 3.0f);
    EXPECT_EQ(vs->m_state_of_bin.size(), 7u); // trunc(20 / 3) + 1
}

TEST_F(Auto, OneValueGivesNeighbouringBins) {
    // All at 0.3 with Offset 1 and bins of 0.2: everything in bin trunc(1.3 / 0.2) = 6, so the minus
    // points sit at bin 6 and the plus points at bin 5.
    Grid g(2, 3, std::vector<float>(6, 0.3f));
    const std::string err = run(g, "SureFactor = 0.025\nSoSoFactor = 0.2\nOffset = 1\n"
                                   "MaxDiscBins = 10\n");
    EXPECT_NE(err.find("AutoDisc minus_sure = 0.2\nAutoDisc minus_soso = 0.2\nAutoDisc plus_soso = 0\n"
                       "AutoDisc plus_sure = 0\n"),
              std::string::npos);
}
