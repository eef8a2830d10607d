// Log-space helpers: hand values, the infinite operands, the first-order switch and the shortcut.
#include "LogSpace.h"

#include <gtest/gtest.h>

#include <cmath>

TEST(LogSpace, HandValuesAndInfiniteOperands) {
    EXPECT_FLOAT_EQ(logf(0.75f), log_sum(logf(0.25f), logf(0.5f)));
    EXPECT_FLOAT_EQ(logf(0.75f), log_sum(logf(0.5f), logf(0.25f)));
    EXPECT_FLOAT_EQ(logf(2.0f), log_sum(0.0f, 0.0f));
    EXPECT_EQ(-1.0f, log_sum(-1.0f, kLogZero));
    EXPECT_EQ(kLogZero, log_sum(kLogZero, kLogZero));
    EXPECT_EQ(kLogZero, log_prob(0.0f));

    // The updating form: an infinite a becomes b, an infinite smaller b leaves a, both infinite stay.
    float a = logf(0.2f);
    EXPECT_FLOAT_EQ(log_sum_log(a, logf(0.3f)), logf(0.5f));
    EXPECT_FLOAT_EQ(a, logf(0.5f));
    const float cases[][3] = {
        {-INFINITY, -2.0f, -2.0f}, {-1.0f, -INFINITY, -1.0f}, {-INFINITY, -INFINITY, -INFINITY}};
    for (const auto& c : cases) {
        a = c[0];
        log_sum_log(a, c[1]);
        EXPECT_EQ(a, c[2]) << c[0] << " " << c[1];
    }
}

TEST(LogSpace, OneMinusSwitchesAtTheDoubleThousandth) {
    EXPECT_EQ(log_one_minus(0.0005f), -0.0005f);
    EXPECT_EQ(log_one_minus(0.001f), logf(1.0f - 0.001f));
    EXPECT_NE(log_one_minus(0.001f), -0.001f);
    EXPECT_FLOAT_EQ(log_one_minus_exp(logf(0.25f)), logf(0.75f));
}

// The shortcut for far-apart values gives the very float of the plain formula.
TEST(LogSpace, ShortcutEqualsPlainFormula) {
    auto plain = [](float x, float y) {
        const float hi = x > y ? x : y;
        const float lo = x > y ? y : x;
        return hi + logf(1.0f + expf(lo - hi));
    };
    // Around 2^24 and 2^25 in magnitude adding log 2 still moves a float or no longer does.
    const float his[] = {0.0f,         -0.0f,       -1.5f,          -1000.25f,    -3.0e37f,
                         -16777216.0f, -16777218.f, -33554428.0f,   -33554432.0f, -33554436.0f,
                         16777216.0f,  33554432.0f, -4.2535293e37f, kLogZero};
    for (float hi : his) {
        float near = hi;
        for (int step = 0; step < 8; ++step, near = std::nextafter(near, -INFINITY)) {
            EXPECT_EQ(plain(hi, near), log_sum(hi, near)) << hi << " " << near;
            EXPECT_EQ(plain(near, hi), log_sum(near, hi)) << hi << " " << near;
        }
        for (float d = -40.0f; d <= 0.0f; d += 0.03125f) {
            const float lo = hi + d;
            EXPECT_EQ(plain(hi, lo), log_sum(hi, lo)) << hi << " " << d;
            EXPECT_EQ(plain(lo, hi), log_sum(lo, hi)) << hi << " " << d;
        }
        EXPECT_EQ(plain(hi, kLogZero), log_sum(hi, kLogZero));
        EXPECT_EQ(plain(hi, -INFINITY), log_sum(-INFINITY, hi));
    }
}
