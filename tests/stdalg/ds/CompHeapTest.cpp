// CompHeap<HeapBin>: sub-heap weights, ties to the first sub-heap, growth, fatal texts, and a random
// run against a map of ((heap, id), key).
#include "ds/CompHeap.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <utility>
#include <vector>

typedef CompHeap<HeapBin> Comp;

TEST(CompHeap, InsertGrowsWithEmptyHeapsOfWeightZero) {
    Comp c;
    c.insert(3, 7, 1.5);
    ASSERT_EQ(c.subheaps_num(), 4);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(c.get_subheap_wgt(i), 0.0f);
        EXPECT_EQ(c.subheap(i).extract_min(), -1);
        EXPECT_TRUE(c.subheap(i).has_table());
    }
    EXPECT_TRUE(c.is_used(3, 7));
    EXPECT_FALSE(c.is_used(4, 7));
    EXPECT_FALSE(c.is_used(-1, 7));
    c.set_subheap_wgt(6, 2.0f);
    EXPECT_EQ(c.subheaps_num(), 7);
    EXPECT_EQ(c.get_subheap_wgt(5), 0.0f);
    EXPECT_EQ(c.get_subheap_wgt(6), 2.0f);
}

TEST(CompHeap, ValueAddsTheWeightAndAnswersMinusOneForMissing) {
    Comp c;
    c.insert(0, 1, 2.5);
    c.insert(1, 1, 4.0f);
    c.set_subheap_wgt(1, -1.25f);
    EXPECT_EQ(c.value(0, 1), 2.5);
    EXPECT_EQ(c.value(1, 1), 2.75);
    EXPECT_EQ(c.value(0, 2), -1.0);
    EXPECT_EQ(c.value(9, 1), -1.0); // no sub-heap 9, and no death
    EXPECT_EQ(c.value(-3, 1), -1.0);
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
    EXPECT_TRUE(c.is_used(0, 20)); // peeking leaves it
    EXPECT_EQ(c.extract_min(d), 20);
    EXPECT_EQ(d, 2.0);
    EXPECT_EQ(c.get_min_heap(), 1);
    EXPECT_EQ(c.extract_min(), 10);
    EXPECT_EQ(c.get_min_heap(), -1);
    d = 99.0;
    EXPECT_EQ(c.extract_min(d), -1);
    EXPECT_EQ(c.peek_min(d), -1);
    EXPECT_EQ(d, 99.0);
}

TEST(CompHeap, WeightsReorderSubheaps) {
    Comp c;
    c.insert(0, 1, 1.0);
    c.insert(1, 2, 5.0);
    c.insert(2, 3, 3.0);
    EXPECT_EQ(c.peek_min(), 1);
    c.set_subheap_wgt(1, -4.5f);
    EXPECT_EQ(c.peek_min(), 2);
    c.set_subheap_wgt(2, -10.0f);
    float f = 0;
    EXPECT_EQ(c.extract_min(f), 3);
    EXPECT_EQ(f, -7.0f);
}

TEST(CompHeap, KeysAtTheLargestFloatAreNeverPicked) {
    Comp c;
    c.insert(0, 1, 3.4028235e38);
    c.insert(1, 2, 1e39);
    EXPECT_EQ(c.get_min_heap(), -1);
    EXPECT_EQ(c.extract_min(), -1);
    c.set_subheap_wgt(0, -1e30f);
    EXPECT_EQ(c.get_min_heap(), 0);
}

// The reference gets the sub-heap's key in its own type, and the weight is added to that.
TEST(CompHeap, WeightIsAddedInTheReferenceType) {
    Comp c;
    c.insert(0, 1, 2.7);
    c.set_subheap_wgt(0, 0.5f);
    int i = 0;
    EXPECT_EQ(c.peek_min(i), 1);
    EXPECT_EQ(i, 2); // trunc(2.7) = 2, then trunc(2 + 0.5)
    float f = 0;
    EXPECT_EQ(c.peek_min(f), 1);
    EXPECT_EQ(f, static_cast<float>(2.7) + 0.5f);
    double d = 0;
    EXPECT_EQ(c.extract_min(d), 1);
    EXPECT_EQ(d, 2.7 + 0.5);
}

TEST(CompHeap, RemoveChangeAndResetAreForwarded) {
    Comp c;
    c.insert(0, 4, 1.0);
    c.insert(0, 5, 2.0);
    c.insert(1, 4, 3.0);
    c.set_subheap_wgt(0, 10.0f);
    EXPECT_EQ(c.change(0, 5, -1), 2.0); // the sub-heap's own keys
    EXPECT_EQ(c.remove(0, 5), -1.0);
    EXPECT_EQ(c.change(1, 4, 0.5f), 3.0);
    EXPECT_EQ(c.peek_min(), 4);
    EXPECT_EQ(c.get_min_heap(), 1);
    c.reset(0);
    EXPECT_EQ(c.subheaps_num(), 2);
    EXPECT_EQ(c.get_subheap_wgt(0), 10.0f);
    EXPECT_EQ(c.extract_min(), -1);
    c.insert(1, 4, 1.0);
    EXPECT_EQ(c.extract_min(), 4);
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
    std::vector<float> wgts;
    auto weight = [&](int heap) { return heap < static_cast<int>(wgts.size()) ? wgts[heap] : 0.0f; };
    auto key = [&]() { return static_cast<double>(static_cast<int>(rng() % 30) - 10); };
    auto pick = [&]() {
        auto it = model.begin();
        std::advance(it, rng() % model.size());
        return it->first;
    };
    for (int step = 0; step < 8000; ++step) {
        const unsigned op = rng() % 12;
        if (op < 4) {
            const int heap = static_cast<int>(rng() % kHeaps), id = static_cast<int>(rng() % kIds);
            if (model.count({heap, id}))
                continue;
            const double k = key();
            c.insert(heap, id, k);
            model[{heap, id}] = k;
            if (static_cast<int>(wgts.size()) <= heap)
                wgts.resize(heap + 1, 0.0f);
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
            const float w = static_cast<float>(static_cast<int>(rng() % 9) - 4) * 0.5f;
            c.set_subheap_wgt(heap, w);
            if (static_cast<int>(wgts.size()) <= heap)
                wgts.resize(heap + 1, 0.0f);
            wgts[heap] = w;
        } else {
            // Expected: the smallest key + weight, the first sub-heap among equals.
            int want_heap = -1;
            double best = 0;
            for (const auto& e : model) {
                const double v = e.second + static_cast<double>(weight(e.first.first));
                if (want_heap == -1 || v < best || (v == best && e.first.first < want_heap)) {
                    best = v;
                    want_heap = e.first.first;
                }
            }
            ASSERT_EQ(c.get_min_heap(), want_heap) << "step " << step;
            double v = 0;
            const int id = op < 10 ? c.peek_min(v) : c.extract_min(v);
            if (want_heap == -1) {
                ASSERT_EQ(id, -1);
            } else {
                ASSERT_TRUE(model.count({want_heap, id})) << "step " << step;
                ASSERT_EQ(v, best);
                if (op >= 10)
                    model.erase({want_heap, id});
            }
        }
        ASSERT_TRUE(c.verify()) << "step " << step;
        const int ph = static_cast<int>(rng() % (kHeaps + 1)), pid = static_cast<int>(rng() % kIds);
        const auto it = model.find({ph, pid});
        ASSERT_EQ(c.value(ph, pid), it == model.end() ? -1.0 : it->second + static_cast<double>(weight(ph)));
    }
}
