// RatioExperDataSetReal: experiments merged by condition pair, absent cells as 0, the variable-91 trace.
#include "RatioExperDataSetReal.h"
#include "ModelTestUtil.h"

#include <cmath>

TEST(RatioExperDataSetReal, MergesPairsIntoMeans) {
    VarUniverse u;
    load_small_universe(u);
    RatioExperDataSetReal r(u);
    std::ifstream key(model_data("ratio_key.txt").c_str()), data(model_data("ratio_data.txt").c_str());
    testing::internal::CaptureStderr();
    r.read(key, data, 5.0f);
    const std::string err = testing::internal::GetCapturedStderr();
    ASSERT_EQ(r.m_E, 3);
    for (int v = 0; v < 5; ++v)
        for (int c = 0; c < 3; ++c)
            EXPECT_EQ(r.m_data(v, c), kSmall[v][c] == NA ? 0.0f : kSmall[v][c]) << v << " " << c;
    EXPECT_EQ(r.m_e_cond_a, (std::vector<int>{1, 1, 2}));
    EXPECT_EQ(r.m_e_cond_b, (std::vector<int>{2, 3, 3}));
    EXPECT_EQ(r.m_e_series, (std::vector<int>{1, 0, 1}));
    EXPECT_EQ(r.m_series[0].m_members, (std::list<int>{1, 0}));
    EXPECT_EQ(r.m_series[1].m_members, (std::list<int>{2, 2, 0}));
    EXPECT_EQ(err, "m_E is 3\nout of here\n");
}

TEST(RatioExperDataSetReal, TracesVariable91AndStandardises) {
    VarUniverse u;
    u.init_idspace(92);
    RatioExperDataSetReal r(u);
    std::istringstream key("0 a x 0 1 2\n1 b x 0 1 2\n"), data("0 91 1.5\n1 91 2.5\n0 3 1\n");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    r.read(key, data, 0.0f);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "0 added 1.5\n0 added 2.5\nexp0 val2 counter2\n");
    EXPECT_EQ(r.m_data(3, 0), 0.5f);

    // Mean of 92 cells: (2 + 0.5) / 92; every cell moves by it and is scaled by the sd.
    r.cond_standartize();
    long double mean = 2.5L / 92, ss = 0;
    for (int v = 0; v < 92; ++v) {
        const long double x = (v == 91 ? 2.0L : v == 3 ? 0.5L : 0.0L) - mean;
        ss += x * x;
    }
    const double sd = std::sqrt(static_cast<double>(ss / 92));
    EXPECT_NEAR(r.m_data(91, 0), (2.0 - static_cast<double>(mean)) / sd, 1e-5);
    EXPECT_NEAR(r.m_data(0, 0), -static_cast<double>(mean) / sd, 1e-5);

    std::istringstream key2("0 a x 0 1 2\n"), bad("0 92 1\n");
    EXPECT_DEATH(r.read(key2, bad, 0.0f), R"(RatioExperDataSetReal\([0-9]+\): Bad var num 92)");
}
