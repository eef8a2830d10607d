// Random against golden sequences from an independent model of the generator.
#include "Random.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

// Seed lines give the first 20 draws after reset(seed) (seeds 0 and 1, and 5 and -5, agree);
// call lines are one reservoir call each, in order, after reset(7).
TEST(Random, GoldenSequencesAndReservoir) {
    std::ifstream in(source_dir() + "/data/random_golden.txt");
    ASSERT_TRUE(in) << "data/random_golden.txt";
    std::string line, first;
    int seeds = 0, calls = 0;
    while (std::getline(in, line)) {
        std::istringstream ls(line);
        if (line.empty() || line[0] == '#' || !(ls >> first))
            continue;
        unsigned long want = 0;
        if (first == "call") {
            if (calls++ == 0)
                Random::reset(7);
            std::string op, n;
            ls >> op >> n >> want;
            ASSERT_TRUE(op == "bits" || op == "boolean" || op == "raw") << line;
            const unsigned long got = op == "bits"      ? Random::bits(std::stoi(n))
                                      : op == "boolean" ? Random::boolean()
                                                        : Random::bits();
            EXPECT_EQ(got, want) << "call " << calls << ": " << line;
        } else {
            Random::reset(std::stoi(first));
            int k = 0;
            for (; ls >> want; ++k)
                EXPECT_EQ(Random::bits(), want) << "seed " << first << " draw " << k;
            EXPECT_EQ(k, 20);
            ++seeds;
        }
    }
    EXPECT_EQ(seeds, 4);
    EXPECT_GT(calls, 10);
}

TEST(Random, NegativeSeedsAndReservoirCount) {
    Random::reset(-123456);
    const std::uint32_t a = Random::bits(), b = Random::bits();
    Random::reset(123456);
    EXPECT_EQ(Random::bits(), a);
    EXPECT_EQ(Random::bits(), b);

    Random::bits(32);
    EXPECT_EQ(Random::reservoir_bits(), 0);
    Random::bits(5);
    EXPECT_EQ(Random::reservoir_bits(), 27);
    Random::boolean();
    EXPECT_EQ(Random::reservoir_bits(), 26);
    Random::bits(30); // too few left: thrown away and refilled
    EXPECT_EQ(Random::reservoir_bits(), 2);
}
