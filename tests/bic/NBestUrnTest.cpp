// NBestMonotone against a plain model of its refusal rule, value release through shared pointers;
// UniformUrn draws against the rule it documents.
#include "NBestMonotone.h"
#include "Random.h"
#include "UniformUrn.h"

#include "TestSupport.h"

#include <boost/shared_ptr.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>

namespace {

TEST(NBestMonotone, RefusesBelowTheBarEvenWithFreeSlots) {
    // The random sequences below cover the rule; here the start, and extraction keeping the bar.
    NBestMonotone<int> nb(3);
    EXPECT_FLOAT_EQ(nb.m_worst_best, -3.4028235e+38f);
    EXPECT_TRUE(nb.attempt_insert(1, 10, 5.0f));
    EXPECT_FALSE(nb.attempt_insert(2, 20, 3.0f)); // two slots free, still refused
    EXPECT_EQ(nb.extract_worst_best().m_val, 10);
    EXPECT_EQ(nb.m_worst_best, 5.0f);
    EXPECT_FALSE(nb.attempt_insert(2, 20, 4.0f));

    NBestMonotone<int> none(0);
    EXPECT_FALSE(none.attempt_insert(1, 1, 100.0f));
}

TEST(NBestMonotone, MatchesAPlainModelOverRandomSequences) {
    const std::uint32_t seed = test_seed(777);
    std::mt19937 rng(seed);
    for (int round = 0; round < 200; ++round) {
        const int n = 1 + static_cast<int>(rng() % 6);
        NBestMonotone<int> nb(n);
        std::multimap<float, int> model; // score -> id
        float bar = -3.4028235e+38f;
        // A value leaving the set: of the lowest score, one of the model's entries of that score.
        const auto leave = [&](const NBestScoredVal<int>& r) {
            ASSERT_EQ(r.m_score, model.begin()->first) << "seed " << seed;
            auto range = model.equal_range(r.m_score);
            auto hit =
                std::find_if(range.first, range.second, [&](const auto& p) { return p.second == r.m_id; });
            ASSERT_TRUE(hit != range.second);
            ASSERT_EQ(r.m_val, r.m_id * 3);
            model.erase(hit);
        };
        for (int step = 0; step < 60; ++step) {
            if (!model.empty() && rng() % 7 == 0) {
                leave(nb.extract_worst_best());
                continue;
            }
            const float score = static_cast<float>(rng() % 50);
            const bool expect = !(score < bar);
            NBestScoredVal<int> dropped;
            ASSERT_EQ(nb.attempt_insert(step, step * 3, score, &dropped), expect) << "seed " << seed;
            if (!expect)
                continue;
            if (static_cast<int>(model.size()) == n) {
                ASSERT_NE(dropped.m_id, -1);
                leave(dropped);
            } else {
                ASSERT_EQ(dropped.m_id, -1);
            }
            model.emplace(score, step);
            bar = model.begin()->first;
            ASSERT_EQ(nb.m_worst_best, bar);
            ASSERT_EQ(nb.size(), static_cast<int>(model.size()));
        }
    }
}

TEST(NBestMonotone, SharedValuesAreReleasedWhenDroppedOrExtracted) {
    boost::shared_ptr<int> a(new int(1)), b(new int(2)), c(new int(3));
    {
        NBestMonotone<boost::shared_ptr<int>> nb(2);
        EXPECT_TRUE(nb.attempt_insert(0, a, 1.0f));
        EXPECT_TRUE(nb.attempt_insert(1, b, 2.0f));
        EXPECT_EQ(a.use_count(), 2);
        EXPECT_TRUE(nb.attempt_insert(2, c, 3.0f)); // a is pushed out
        EXPECT_EQ(a.use_count(), 1);
        EXPECT_EQ(quiet([&] { nb.del_worst_best(); }), "1\n"); // b
        EXPECT_EQ(b.use_count(), 1);
        EXPECT_EQ(c.use_count(), 2);
    }
    EXPECT_EQ(c.use_count(), 1);
}

TEST(UniformUrn, DrawsEveryItemOnceByTheDocumentedRule) {
    const std::vector<int> items = {10, 11, 12, 13, 14, 15, 16};
    Random::reset(4242);
    std::vector<std::uint32_t> raw;
    for (int k = 0; k < 7; ++k)
        raw.push_back(Random::bits());
    // The same draws by hand: slot floor(u * left), swapped with the last slot still in the urn.
    std::vector<int> model = items, expect;
    for (int k = 0, left = 7; k < 7; ++k, --left) {
        int j = static_cast<int>(raw[k] / 4294967295.0 * left);
        j = std::min(j, left - 1);
        std::swap(model[j], model[left - 1]);
        expect.push_back(model[left - 1]);
    }
    Random::reset(4242);
    UniformUrn urn(items);
    std::vector<int> got;
    for (int k = 0; k < 7; ++k)
        got.push_back(urn.draw());
    EXPECT_EQ(got, expect);
    EXPECT_EQ(urn.draw(), -1);
    EXPECT_EQ(std::set<int>(got.begin(), got.end()), std::set<int>(items.begin(), items.end()));
    urn.reset();
    EXPECT_EQ(urn.left(), 7);
}

} // namespace
