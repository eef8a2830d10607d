// The heap contract, run on every keyed heap: random inserts (in each key type), changes, removals
// and extractions (into each reference type) against one plain model, with verify after each step.
#include "ds/CompHeap.h"
#include "ds/HeapBin.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <vector>

namespace {

// A heap seen through its ids: HeapBin holds every id in its one heap, with no weight.
struct BinHeap {
    static constexpr int kHeaps = 1;
    static int heap_of(int) { return 0; }
    template <class K> void insert(int id, K key) { h.insert(id, key); }
    double change(int id, double key) { return h.change(id, key); }
    double remove(int id) { return h.remove(id); }
    template <class T> int extract_min(T& x) { return h.extract_min(x); }
    void set_weight(int, float) {}
    bool is_used(int id) const { return h.is_used(id); }
    double value(int id) const { return h.value(id); }
    bool verify() { return h.verify(); }
    HeapBin h;
};

// CompHeap<HeapBin> with id i in sub-heap i % 3; the sub-heaps carry weights, ties go to the first.
struct CompOfBins {
    static constexpr int kHeaps = 3;
    static int heap_of(int id) { return id % kHeaps; }
    template <class K> void insert(int id, K key) { c.insert(heap_of(id), id, key); }
    double change(int id, double key) { return c.change(heap_of(id), id, key); }
    double remove(int id) { return c.remove(heap_of(id), id); }
    template <class T> int extract_min(T& x) { return c.extract_min(x); }
    void set_weight(int heap, float w) { c.set_subheap_wgt(heap, w); }
    bool is_used(int id) const { return c.is_used(heap_of(id), id); }
    double value(int id) const { return c.value(heap_of(id), id); }
    bool verify() { return c.verify(); }
    CompHeap<HeapBin> c;
};

template <class H> class HeapContract : public testing::Test {};
typedef testing::Types<BinHeap, CompOfBins> Heaps;
TYPED_TEST_SUITE(HeapContract, Heaps);

} // namespace

TYPED_TEST(HeapContract, RandomAgainstModel) {
    const std::uint32_t seed = test_seed();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 rng(seed);
    TypeParam h;
    std::map<int, double> model;                     // id -> key
    std::vector<float> wgt(TypeParam::kHeaps, 0.0f); // by heap
    const int kIds = 300;
    auto any_key = [&]() {
        // Few distinct values, so that ties are frequent; some fractional and negative.
        const int r = static_cast<int>(rng() % 40) - 10;
        return (rng() % 4 == 0) ? r + 0.25 : static_cast<double>(r);
    };
    auto pick_used = [&]() { return std::next(model.begin(), rng() % model.size())->first; };
    for (int step = 0; step < 10000; ++step) {
        SCOPED_TRACE(testing::Message() << "step " << step);
        const unsigned op = rng() % 11;
        if (op < 4) {
            const int id = static_cast<int>(rng() % kIds);
            if (model.count(id))
                continue;
            const double k = any_key();
            // Each insert form keeps its key exactly: an int form gets the truncated key.
            const unsigned form = rng() % 3;
            model[id] = form == 2 ? static_cast<int>(k) : k;
            if (form == 0)
                h.insert(id, k);
            else if (form == 1)
                h.insert(id, static_cast<float>(k));
            else
                h.insert(id, static_cast<int>(k));
        } else if (op < 6 && !model.empty()) {
            const int id = pick_used();
            const double k = any_key();
            ASSERT_EQ(h.change(id, k), model[id]);
            model[id] = k;
        } else if (op < 7 && !model.empty()) {
            const int id = pick_used();
            ASSERT_EQ(h.remove(id), model[id]);
            model.erase(id);
        } else if (op < 8 && TypeParam::kHeaps > 1) {
            const int heap = static_cast<int>(rng() % TypeParam::kHeaps);
            wgt[heap] = static_cast<float>(static_cast<int>(rng() % 9) - 4) * 0.5f;
            h.set_weight(heap, wgt[heap]);
        } else {
            // Expected: the smallest key plus weight, the first heap among equals. The references
            // start as 7 and 7.5: the two that aren't used, or all three on an empty heap, keep that.
            int want_heap = -1;
            double best = 0.0, key = 0.0;
            for (const auto& e : model) {
                const int heap = TypeParam::heap_of(e.first);
                const double v = e.second + static_cast<double>(wgt[heap]);
                if (want_heap == -1 || v < best || (v == best && heap < want_heap)) {
                    best = v;
                    key = e.second;
                    want_heap = heap;
                }
            }
            int i = 7;
            float f = 7.5f;
            double d = 7.5;
            const unsigned form = rng() % 3;
            const int id = form == 0 ? h.extract_min(i) : form == 1 ? h.extract_min(f) : h.extract_min(d);
            ASSERT_EQ(id == -1, model.empty());
            // The reference gets the key in its own type, then the weight added in that type.
            const float w = want_heap == -1 ? 0.0f : wgt[want_heap];
            const bool got = id != -1;
            ASSERT_EQ(i, got && form == 0 ? static_cast<int>(static_cast<int>(key) + w) : 7);
            ASSERT_EQ(f, got && form == 1 ? static_cast<float>(static_cast<float>(key) + w) : 7.5f);
            ASSERT_EQ(d, got && form == 2 ? best : 7.5);
            if (id != -1) {
                ASSERT_TRUE(model.count(id));
                ASSERT_EQ(TypeParam::heap_of(id), want_heap);
                ASSERT_EQ(model[id] + static_cast<double>(w), best);
                model.erase(id);
            }
        }
        ASSERT_TRUE(h.verify());
        const int probe = static_cast<int>(rng() % (kIds + 5));
        ASSERT_EQ(h.is_used(probe), model.count(probe) == 1);
        if (model.count(probe)) {
            ASSERT_EQ(h.value(probe), model[probe] + static_cast<double>(wgt[TypeParam::heap_of(probe)]));
        }
    }
    size_t left = 0;
    for (double x = 0.0; h.extract_min(x) != -1;)
        ++left;
    EXPECT_EQ(left, model.size());
}
