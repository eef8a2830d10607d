// CompHeap<HeapBin>: sub-heap weights, ties to the first sub-heap, growth, fatal texts, and a random
// run against a map of ((heap, id), key).
#include "ds/CompHeap.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <random>
#include <utility>
#include <vector>

typedef CompHeap<HeapBin> Comp;

TEST(CompHeap, GrowthWeightsAndReset) {
    Comp c;
    c.insert(3, 7, 1.5);
    EXPECT_EQ(c.subheaps_num(), 4);
    EXPECT_EQ(c.get_subheap_wgt(2), 0.0f);
    EXPECT_TRUE(c.subheap(0).has_table());
    c.set_subheap_wgt(6, 2.0f);
    EXPECT_EQ(c.subheaps_num(), 7);
    EXPECT_EQ(c.get_subheap_wgt(5), 0.0f);
    EXPECT_EQ(c.value(-3, 1), -1.0); // no sub-heap, and no death
    EXPECT_FALSE(c.is_used(-1, 7));
    // reset empties every sub-heap but keeps their number and weights.
    c.reset(0);
    EXPECT_EQ(c.subheaps_num(), 7);
    EXPECT_EQ(c.get_subheap_wgt(6), 2.0f);
    EXPECT_EQ(c.extract_min(), -1);
    c.insert(1, 4, 1.0);
    EXPECT_EQ(c.extract_min(), 4);
}

TEST(CompHeap, TiesGoToTheFirstSubheap) {
    Comp c;
    c.insert(1, 10, 2.0);
    c.insert(0, 20, 3.0);
    c.set_subheap_wgt(0, -1.0f); // both minima are 2 with weights
    EXPECT_EQ(c.get_min_heap(), 0);
    double d = 0;
    EXPECT_EQ(c.peek_min(d), 20);
    EXPECT_EQ(d, 2.0);
    EXPECT_EQ(c.extract_min(d), 20); // peeking left it
    EXPECT_EQ(c.get_min_heap(), 1);
    EXPECT_EQ(c.extract_min(), 10);
    EXPECT_EQ(c.get_min_heap(), -1);
    d = 99.0;
    EXPECT_EQ(c.extract_min(d), -1);
    EXPECT_EQ(c.peek_min(d), -1);
    EXPECT_EQ(d, 99.0);
}

TEST(CompHeap, KeysAtTheLargestFloatAreNeverPicked) {
    Comp c;
    c.insert(0, 1, 3.4028235e38);
    c.insert(1, 2, 1e39);
    c.insert(2, 3, std::numeric_limits<float>::max());
    c.insert(3, 4, 3e38f); // plus the weight below: exactly the largest float
    c.set_subheap_wgt(3, std::numeric_limits<float>::max() - 3e38f);
    EXPECT_EQ(c.get_min_heap(), -1);
    EXPECT_EQ(c.extract_min(), -1);
    c.set_subheap_wgt(0, -1e32f);
    EXPECT_EQ(c.get_min_heap(), 0);
}

// The reference gets the sub-heap's key in its own type, and the weight is added to that.
TEST(CompHeap, WeightIsAddedInTheReferenceType) {
    Comp c;
    c.insert(0, 1, 2.7);
    c.set_subheap_wgt(0, 0.5f);
    int i = 0;
    float f = 0;
    double d = 0;
    EXPECT_EQ(c.peek_min(i), 1);
    EXPECT_EQ(i, 2); // trunc(2.7) = 2, then trunc(2 + 0.5)
    EXPECT_EQ(c.peek_min(f), 1);
    EXPECT_EQ(f, static_cast<float>(2.7) + 0.5f);
    EXPECT_EQ(c.extract_min(d), 1);
    EXPECT_EQ(d, 2.7 + 0.5);
}

TEST(CompHeapDeathTest, MissingSubheapIsFatalForRemoveAndChange) {
    Comp c;
    c.insert(1, 0, 1.0);
    EXPECT_DEATH(c.remove(2, 0),
                 R"(\.\./stdalg/ds/CompHeap\([0-9]+\): Trying to remove from non existent bin 2)");
    EXPECT_DEATH(c.change(5, 0, 1.0),
                 R"(\.\./stdalg/ds/CompHeap\([0-9]+\): Trying to change from non existent bin 5)");
    EXPECT_DEATH(c.change(7, 0, 1),
                 R"(\.\./stdalg/ds/CompHeap\([0-9]+\): Trying to change from non existent bin 7)");
}

TEST(CompHeap, RandomAgainstModel) {
    const std::uint32_t seed = test_seed();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 rng(seed);
    const int kHeaps = 6, kIds = 80;
    Comp c;
    std::map<std::pair<int, int>, double> model;
    std::vector<float> wgts(kHeaps + 1, 0.0f); // a sub-heap not yet made weighs 0
    auto key = [&]() { return static_cast<double>(static_cast<int>(rng() % 30) - 10); };
    auto pick = [&]() { return std::next(model.begin(), rng() % model.size())->first; };
    for (int step = 0; step < 8000; ++step) {
        SCOPED_TRACE(testing::Message() << "step " << step);
        const unsigned op = rng() % 12;
        if (op < 4) {
            const int heap = static_cast<int>(rng() % kHeaps);
            const std::pair<int, int> at(heap, static_cast<int>(rng() % kIds));
            if (model.count(at))
                continue;
            c.insert(at.first, at.second, model[at] = key());
        } else if (op < 6 && !model.empty()) {
            const auto at = pick();
            const double k = key();
            ASSERT_EQ(c.change(at.first, at.second, k), model[at]);
            model[at] = k;
        } else if (op < 7 && !model.empty()) {
            const auto at = pick();
            ASSERT_EQ(c.remove(at.first, at.second), model[at]);
            model.erase(at);
        } else if (op < 8) {
            const int heap = static_cast<int>(rng() % kHeaps);
            wgts[heap] = static_cast<float>(static_cast<int>(rng() % 9) - 4) * 0.5f;
            c.set_subheap_wgt(heap, wgts[heap]);
        } else {
            // Expected: the smallest key + weight, the first sub-heap among equals.
            int want_heap = -1;
            double best = 0;
            for (const auto& e : model) {
                const double v = e.second + static_cast<double>(wgts[e.first.first]);
                if (want_heap == -1 || v < best || (v == best && e.first.first < want_heap)) {
                    best = v;
                    want_heap = e.first.first;
                }
            }
            ASSERT_EQ(c.get_min_heap(), want_heap);
            double v = 0;
            const int id = op < 10 ? c.peek_min(v) : c.extract_min(v);
            if (want_heap == -1) {
                ASSERT_EQ(id, -1);
            } else {
                ASSERT_TRUE(model.count({want_heap, id}));
                ASSERT_EQ(v, best);
                if (op >= 10)
                    model.erase({want_heap, id});
            }
        }
        ASSERT_TRUE(c.verify());
        const int ph = static_cast<int>(rng() % (kHeaps + 1)), pid = static_cast<int>(rng() % kIds);
        const auto it = model.find({ph, pid});
        ASSERT_EQ(c.value(ph, pid), it == model.end() ? -1.0 : it->second + static_cast<double>(wgts[ph]));
        ASSERT_EQ(c.is_used(ph, pid), it != model.end());
    }
}
