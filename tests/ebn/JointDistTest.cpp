// JointDist counters: linear and log counting, the unweighted log count's factor e, totals,
// normalization on demand, the tabular index, and the input limit.
#include "JointDist.h"
#include "LocalDist.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <sstream>

namespace {

TEST(JointDist, LinearVectorCountsAndNormalizesOnce) {
    JDVector v(3);
    EXPECT_FALSE(v.is_log_space());
    EXPECT_EQ(v.get_total(), 0.0f);
    v.count({2});
    v.count({2}, 2.0f);
    std::vector<int> state = {0, 1, 0}, vars = {1};
    v.count(state, vars);       // value of rvid 1: 1
    v.count(state, vars, 4.0f); // weight 4
    EXPECT_EQ(v.get_total(), 8.0f);
    std::ostringstream os;
    v.print(os);
    EXPECT_EQ(os.str(), " 0 5 3");
    EXPECT_FLOAT_EQ(v.density({1}), 5.0f / 8);
    EXPECT_EQ(v.get_total(), 1.0f);
    // Normalized: density no longer changes the entries.
    EXPECT_FLOAT_EQ(v.density(state, vars), 5.0f / 8);
    EXPECT_FLOAT_EQ(v.entry(0) + v.entry(1) + v.entry(2), 1.0f);
    std::unique_ptr<JointDist<int>> c(v.clone());
    EXPECT_FLOAT_EQ(c->density({2}), 3.0f / 8);
}

TEST(JointDist, LogVectorWeightsAndTheUnweightedFactorE) {
    JDLogVector v(2);
    EXPECT_TRUE(v.is_log_space());
    EXPECT_EQ(v.get_total(), kLogZero);
    EXPECT_EQ(v.entry(0), kLogZero);
    // count(vals) adds log weight 1 to the entry and 0 to the total: e against 1.
    v.count({1});
    EXPECT_FLOAT_EQ(v.get_total(), 0.0f);
    EXPECT_FLOAT_EQ(v.entry(1), 1.0f);
    // count(state, vars) adds 0 to both.
    std::vector<int> state = {0}, vars = {0};
    v.count(state, vars);
    EXPECT_FLOAT_EQ(v.get_total(), logf(2.0f));
    EXPECT_FLOAT_EQ(v.entry(0), 0.0f);
    // Weighted: log 3 to both.
    v.count({0}, logf(3.0f));
    EXPECT_FLOAT_EQ(v.entry(0), logf(4.0f));
    EXPECT_FLOAT_EQ(v.get_total(), logf(5.0f));
    // density gives the log of entry over total: entries 4 and e against 5.
    EXPECT_NEAR(v.density({0}), logf(4.0f / 5), 1e-6);
    EXPECT_NEAR(v.density({1}), 1.0f - logf(5.0f), 1e-6);
    EXPECT_EQ(v.get_total(), 0.0f);
}

TEST(JointDist, TabularIndexFirstVariableFastest) {
    JDTabular t({2, 3});
    EXPECT_FALSE(t.is_log_space());
    ASSERT_EQ(t.size(), 6);
    t.count({1, 2});
    std::vector<int> state = {0, 0, 1, 1}, vars = {3, 2}; // values (1, 1)
    t.count(state, vars, 3.0f);
    EXPECT_EQ(t.entry(1 + 2 * 2), 1.0f);
    EXPECT_EQ(t.entry(1 + 2 * 1), 3.0f);
    EXPECT_FLOAT_EQ(t.density({1, 1}), 0.75f);
    t.init_prior(0.5f);
    EXPECT_EQ(t.entry(4), 0.5f);
    t.set_log_space(true);
    EXPECT_TRUE(t.is_log_space());
    t.count({0, 1}, logf(2.0f));
    t.count({0, 2});
    EXPECT_NEAR(t.density({0, 1}), logf(2.0f / 3), 1e-6);
    std::ostringstream os;
    t.print(os);
    EXPECT_EQ(os.str(), "") << "the tabular counter prints nothing on the stream it is given";
}

TEST(JointDistDeathTest, TenInputsAreFatal) {
    JDTabular nine(std::vector<int>(9, 2));
    EXPECT_EQ(nine.size(), 512);
    EXPECT_DEATH(
        JDTabular(std::vector<int>(10, 2)),
        R"(JointDist\([0-9]+\): Cannot init JDTable with more than 10 inputs, exiting on attempt to init with 10 inputs)");
}

} // namespace
