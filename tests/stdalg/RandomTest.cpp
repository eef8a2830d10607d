// Random against golden sequences from an independent model of the generator.
#include "Random.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

TEST(Random, GoldenSequencesAndReservoir) {
    std::ifstream in(source_dir() + "/data/random_golden.txt");
    ASSERT_TRUE(in) << "data/random_golden.txt";
    std::string line;
    int seeds = 0, calls = 0;
    bool script_started = false;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#')
            continue;
        std::istringstream ls(line);
        std::string first;
        ls >> first;
        if (first == "call") {
            if (!script_started) {
                Random::reset(7);
                script_started = true;
            }
            std::string op, n;
            unsigned long want;
            ls >> op >> n >> want;
            unsigned long got = 0;
            if (op == "bits")
                got = Random::bits(std::stoi(n));
            else if (op == "boolean")
                got = Random::boolean();
            else if (op == "raw")
                got = Random::bits();
            else
                FAIL() << "unknown op " << op;
            EXPECT_EQ(got, want) << "call " << calls << ": " << line;
            ++calls;
        } else {
            Random::reset(std::stoi(first));
            unsigned long want;
            int k = 0;
            while (ls >> want) {
                EXPECT_EQ(Random::bits(), want) << "seed " << first << " draw " << k;
                ++k;
            }
            EXPECT_EQ(k, 20);
            ++seeds;
        }
    }
    EXPECT_EQ(seeds, 4);
    EXPECT_GT(calls, 10);
}

TEST(Random, SeedEquivalencesAndReservoirCount) {
    auto first_draws = [](int seed) {
        Random::reset(seed);
        std::vector<std::uint32_t> v;
        for (int i = 0; i < 50; ++i)
            v.push_back(Random::bits());
        return v;
    };
    EXPECT_EQ(first_draws(0), first_draws(1));
    EXPECT_EQ(first_draws(-5), first_draws(5));
    EXPECT_EQ(first_draws(-123456), first_draws(123456));
    EXPECT_NE(first_draws(2), first_draws(3));
    // The top bit is used: the last step spreads the value over all 32 bits.
    bool top = false;
    for (std::uint32_t x : first_draws(11))
        top = top || (x >> 31);
    EXPECT_TRUE(top);

    Random::bits(32);
    EXPECT_EQ(Random::reservoir_bits(), 0);
    Random::bits(5);
    EXPECT_EQ(Random::reservoir_bits(), 27);
    Random::boolean();
    EXPECT_EQ(Random::reservoir_bits(), 26);
    Random::bits(30); // too few left: thrown away and refilled
    EXPECT_EQ(Random::reservoir_bits(), 2);
}
