// KMerDistrib: the entry is the last value over n; a broken line ends the read.
#include "KMerDistrib.h"

#include <gtest/gtest.h>

#include <sstream>

TEST(KMerDistribTest, KeepsLastValueOverN) {
    std::istringstream in("ACGT 1 2 6\nTTTT 3 3 3\nGG*A 9 0 1.5\nCCCC 1 x 2\nAAAA 1 1 1\n");
    KMerDistrib d;
    d.read(in, 3);
    EXPECT_FLOAT_EQ(d.get("ACGT"), 2.0f); // 6 / 3, not the mean 3
    EXPECT_FLOAT_EQ(d.get("TTTT"), 1.0f);
    EXPECT_FLOAT_EQ(d.get("GG*A"), 0.5f);
    EXPECT_FALSE(d.has("CCCC"));
    EXPECT_FALSE(d.has("AAAA")); // after the failed value
    EXPECT_EQ(d.m_dist.size(), 3u);
}
