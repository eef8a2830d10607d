// Tests of bicluster_search's report statistics: empirical p-values, BH q-values, the report order,
// degree quantiles and the chance count behind the automatic minimum gene set size.
#include "BicSearchReport.h"

#include <gtest/gtest.h>

#include <random>

TEST(BicSearchReport, EmpiricalPCountsNullsOfAtLeastTheSameWidth) {
    // Nulls: (score, conditions). Hand counts for each query below.
    const std::vector<BicSizeScore> nulls = {{10, 2, 50}, {30, 3, 20}, {30, 5, 10}, {8, 6, 5}, {50, 2, 90}};
    struct Case {
        BicSizeScore real;
        bool per_cond;
        double p;
    };
    const Case cases[] = {
        {{30, 3, 9}, false, (1 + 2) / 6.0}, // 30@3 and 30@5 tie or beat it; 50@2 is narrower
        {{31, 3, 9}, false, 1 / 6.0},       // nothing as wide scores 31
        {{5, 2, 9}, false, 6 / 6.0},        // everything counts
        {{5, 7, 9}, false, 1 / 6.0},        // nothing is as wide
        // per condition: 10/3 per condition against 5, 10, 6, 1.33, 25 -> 30@3 (10), 30@5 (6); 8@6 is 1.33
        {{10, 3, 9}, true, (1 + 2) / 6.0},
        {{24, 4, 9}, true, (1 + 1) / 6.0}, // 6 per condition: only 30@5 (6) among the wide ones
    };
    for (const Case& c : cases)
        EXPECT_DOUBLE_EQ(empirical_p(c.real, nulls, c.per_cond), c.p) << c.real.score << "@" << c.real.conds;
    EXPECT_DOUBLE_EQ(empirical_p({1, 1, 1}, {}, false), 1.0);
}

TEST(BicSearchReport, BhQValuesByHandAndAgainstTheDefinition) {
    // Sorted p: .005 .01 .03 .04 .5 -> p n / rank: .025 .025 .05 .05 .5; step-up minimum keeps them.
    const std::vector<double> p = {0.01, 0.04, 0.03, 0.005, 0.5};
    const std::vector<double> want = {0.025, 0.05, 0.05, 0.025, 0.5};
    const std::vector<double> q = bh_q_values(p);
    for (std::size_t i = 0; i < p.size(); ++i)
        EXPECT_NEAR(q[i], want[i], 1e-12) << i;
    // A later smaller ratio pulls earlier ones down: .04 .041 -> .08 .041 -> both .041.
    const std::vector<double> q2 = bh_q_values({0.04, 0.041});
    EXPECT_NEAR(q2[0], 0.041, 1e-12);
    EXPECT_NEAR(q2[1], 0.041, 1e-12);

    // The definition written another way: q_i = min over p_j >= p_i of p_j n / #{p_l <= p_j}, capped at 1.
    std::mt19937 rng(20240511);
    for (int round = 0; round < 200; ++round) {
        const int n = 1 + static_cast<int>(rng() % 30);
        std::vector<double> ps(n);
        for (double& x : ps)
            x = (rng() % 4 == 0) ? 1.0 / (1 + rng() % 5) : (rng() % 100000) / 100000.0; // with ties
        const std::vector<double> got = bh_q_values(ps);
        for (int i = 0; i < n; ++i) {
            double best = 1.0;
            for (int j = 0; j < n; ++j) {
                if (ps[j] < ps[i])
                    continue;
                int rank = 0;
                for (int l = 0; l < n; ++l)
                    rank += ps[l] <= ps[j];
                best = std::min(best, ps[j] * n / rank);
            }
            ASSERT_NEAR(got[i], best, 1e-12) << "round " << round << " index " << i;
        }
    }
}

TEST(BicSearchReport, ReportOrderIsByQThenScore) {
    const std::vector<double> q = {0.2, 0.01, 0.01, 0.2, 0.01};
    const std::vector<float> score = {5, 3, 9, 7, 3};
    // q .01: scores 9 (2), 3 (1), 3 (4, after 1); q .2: 7 (3), 5 (0).
    EXPECT_EQ(report_order(q, score), (std::vector<int>{2, 1, 4, 3, 0}));
}

TEST(BicSearchReport, DegreeQuantilesAndWindow) {
    const std::vector<int> d = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
    EXPECT_EQ(sorted_quantile(d, 0.0), 1);
    EXPECT_EQ(sorted_quantile(d, 0.5), 6);
    EXPECT_EQ(sorted_quantile(d, 0.25), 3); // floor(2.5) = element 2
    EXPECT_EQ(sorted_quantile(d, 1.0), 11);
    EXPECT_EQ(sorted_quantile({}, 0.5), 0);
    EXPECT_EQ(count_in_range(d, 3, 24), 9);
    EXPECT_EQ(count_in_range(d, 12, 24), 0);
    EXPECT_EQ(count_in_range(d, 11, 11), 1);
}

TEST(BicSearchReport, ChanceKeyCountAndAutoMinVarSetSize) {
    // 10 condition nodes, keys of 3: degree 5 -> 5*4*3/(10*9*8) = 1/12; degree 20 is cut to 12 and
    // then to the 10 nodes there are -> 1; degree 2 can't hold a key of 3 -> 0.
    EXPECT_NEAR(chance_key_count({5, 20, 2}, 12, 10, 3), 1.0 / 12 + 1.0, 1e-12);
    // A key of 2 with the neighbourhood cut to 4 of 100 nodes: 4*3/(100*99) for each of 990 genes.
    EXPECT_NEAR(chance_key_count(std::vector<int>(990, 40), 4, 100, 2), 990 * 12.0 / 9900, 1e-9);
    // ceil(c + 5 sqrt(c)), at least 3: 0 -> 3, 1.2 -> ceil(6.677) = 7, 16 -> 36.
    EXPECT_EQ(auto_min_var_set_size(0.0), 3);
    EXPECT_EQ(auto_min_var_set_size(1.2), 7);
    EXPECT_EQ(auto_min_var_set_size(16.0), 36);
}
