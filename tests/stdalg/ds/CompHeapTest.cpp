// CompHeap<HeapBin>: sub-heap weights, ties to the first sub-heap, growth, the largest float and
// fatal texts (the random run against a model is in the heap contract).
#include "ds/CompHeap.h"

#include <gtest/gtest.h>

#include <limits>

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

// Peeking, the reference gets the sub-heap's key in its own type, and the weight is added to that.
TEST(CompHeap, PeekAddsTheWeightInTheReferenceType) {
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
    EXPECT_EQ(c.peek_min(d), 1);
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
