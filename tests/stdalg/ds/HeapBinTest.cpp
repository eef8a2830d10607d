// HeapBin: tie rules worked out by hand, forged removal keys, verify texts, and a random run
// against a map of (id, key).
#include "ds/HeapBin.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <vector>

namespace {

std::vector<int> drain(HeapBin& h) {
    std::vector<int> ids;
    for (int id = h.extract_min(); id != -1; id = h.extract_min())
        ids.push_back(id);
    return ids;
}

// Records the key of the minimum each time it is extracted.
class KeyTap : public HeapBin {
public:
    using HeapBase::extract_min;
    int extract_min() override {
        const HeapBase::Node* m = min_node();
        m_keys.push_back(m ? m->m_value : 0.0);
        return HeapBase::extract_min();
    }
    std::vector<double> m_keys;
};

std::string verify_text(HeapBin& h, bool want) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(h.verify(), want);
    return testing::internal::GetCapturedStderr();
}

} // namespace

// Tie rules worked out by hand: keys inserted as ids 0, 1, ..., then changes, then the drain order.
// - Three equal keys: 1 links under 0 (a tie goes to the later tree), 2 stays a root of degree 0
//   and holds the cached minimum (a new equal key takes it), so the order is 2, 0, 1.
// - Four: 3 links under 2, then 2's tree under 0; 0 is the only root. After 0 goes, its children
//   [2{3}, 1] become roots [1, 2{3}]; the root walk takes the last of equal roots, 2; then 3 and 1
//   link with 1 on top.
// - Tree 0(1){2(5){3(7)}, 1(5)}; raising 0 to 6 clears the cached minimum and sifts down: the
//   smallest child, the last of equal ones, 1 comes up and 0 takes its place.
// - 0..7 keyed 10..17: a change to the same key does nothing; 7 lowered to 3 becomes the minimum;
//   6 lowered to 10 ties 0. After 7 leaves, the root walk over [1, 2, 0{6..}] ends on 0.
TEST(HeapBin, TiesLeaveInHandWorkedOrder) {
    const struct {
        std::vector<double> keys;
        std::vector<std::pair<int, double>> changes;
        std::vector<int> order;
    } cases[] = {
        {{5, 5, 5}, {}, {2, 0, 1}},
        {{5, 5, 5, 5}, {}, {0, 2, 1, 3}},
        {{1, 5, 5, 7}, {{0, 6}}, {1, 2, 0, 3}},
        {{10, 11, 12, 13, 14, 15, 16, 17}, {{5, 15}, {7, 3}, {6, 10}}, {7, 0, 6, 1, 2, 3, 4, 5}},
    };
    for (const auto& c : cases) {
        HeapBin h;
        for (size_t id = 0; id < c.keys.size(); ++id)
            h.insert(static_cast<int>(id), c.keys[id]);
        for (const auto& ch : c.changes) {
            EXPECT_EQ(h.change(ch.first, ch.second), c.keys[ch.first]);
            EXPECT_TRUE(h.verify());
        }
        EXPECT_EQ(drain(h), c.order);
    }
}

TEST(HeapBin, RemoveForgesAKeyBelowTheMinimum) {
    struct Case {
        double min, forged;
    };
    const Case cases[] = {{0.0, -2.0}, {3.0, 1.5}, {-3.0, -6.0}, {1.0, -1.0}, {-1.0, -3.0}, {0.5, -1.5}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.min);
        KeyTap h;
        for (int id = 0; id < 6; ++id)
            h.insert(id, c.min + 10.0 * id);
        EXPECT_EQ(h.remove(3), c.min + 30.0);
        // Removing the minimum itself needs no forged key.
        EXPECT_EQ(h.remove(0), c.min);
        EXPECT_EQ(h.m_keys, (std::vector<double>{c.forged, c.min}));
        EXPECT_EQ(drain(h), (std::vector<int>{1, 2, 4, 5}));
    }
}

TEST(HeapBin, ResetKeepsTheTableModeAndAnEmptyHeapLeavesTheReference) {
    HeapBin h;
    h.insert(0, 1.0);
    h.reset(0);
    EXPECT_FALSE(h.is_used(0));
    EXPECT_FALSE(h.is_used(-1));
    int i = 7;
    float f = 7.5f;
    double d = 8.5;
    EXPECT_EQ(h.extract_min(i), -1);
    EXPECT_EQ(h.extract_min(f), -1);
    EXPECT_EQ(h.extract_min(d), -1);
    EXPECT_TRUE(i == 7 && f == 7.5f && d == 8.5);
    h.insert(9, 4.0);
    h.insert(3, 5.0);
    EXPECT_EQ(h.change(3, 1.0), 5.0);
    EXPECT_EQ(drain(h), (std::vector<int>{3, 9}));
}

TEST(HeapBin, NoTableIsAPlainQueue) {
    HeapBin h(false);
    std::mt19937 rng(test_seed(7));
    std::multiset<double> model;
    for (int i = 0; i < 500; ++i) {
        const double k = static_cast<double>(rng() % 50);
        h.insert(i, k);
        model.insert(k);
    }
    EXPECT_FALSE(h.is_used(3));
    EXPECT_EQ(verify_text(h, true).substr(0, 9), "no table\n");
    double k = 0;
    for (double want : model) {
        ASSERT_NE(h.extract_min(k), -1);
        ASSERT_EQ(k, want);
    }
    EXPECT_EQ(h.extract_min(), -1);
}

TEST(HeapBin, CopiesHoldTheSameEntries) {
    HeapBin h;
    std::map<int, double> want;
    for (int id = 0; id < 37; ++id)
        h.insert(id, want[id] = (id * 7) % 11);
    HeapBin c(h), a;
    a.insert(99, -1.0);
    a = h;
    for (HeapBin* x : {&c, &a, &h}) {
        EXPECT_TRUE(x->verify());
        std::map<int, double> seen;
        double k = 0, last = -1e300;
        for (int id = x->extract_min(k); id != -1; id = x->extract_min(k)) {
            EXPECT_GE(k, last);
            last = seen[id] = k;
        }
        EXPECT_EQ(seen, want);
    }
    HeapBin plain(false);
    plain.insert(5, 1.0);
    HeapBin copied(plain); // a copy always has a table
    EXPECT_TRUE(copied.is_used(5));
    EXPECT_EQ(copied.value(5), 1.0);
}

TEST(HeapBin, VerifyTextsAndPrintForms) {
    HeapBin h;
    h.insert(1, 0.5);
    h.insert(3, 1.0);
    h.insert(3, 2.0); // overwrites the table entry, the first node stays in the heap
    EXPECT_EQ(verify_text(h, false), "node 3 appears twice\n");
    EXPECT_EQ(h.extract_min(), 1);
    EXPECT_EQ(h.extract_min(), 3); // the old node goes and clears the shared entry
    EXPECT_EQ(verify_text(h, false), "entry 3 in table has disappeared\n");

    HeapBin p;
    p.insert(4, 2.5);
    p.insert(6, 1.5);
    std::ostringstream a, b, c;
    p.print(a);
    p.HeapBase::print(b);
    p.min_node()->printon(c);
    EXPECT_EQ(a.str(), "NYI\n");
    EXPECT_EQ(b.str(), " Min: 6\n");
    EXPECT_EQ(c.str(), " node 6 {\n  Value: 1.5\n }\n");
}

// Random inserts, changes, removals and extractions against a map; verify after every step.
TEST(HeapBin, RandomAgainstModel) {
    const std::uint32_t seed = test_seed();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 rng(seed);
    HeapBin h;
    std::map<int, double> model;
    const int kIds = 300;
    auto any_key = [&]() {
        // Few distinct values, so that ties are frequent; some fractional and negative.
        const int r = static_cast<int>(rng() % 40) - 10;
        return (rng() % 4 == 0) ? r + 0.25 : static_cast<double>(r);
    };
    auto pick_used = [&]() { return std::next(model.begin(), rng() % model.size())->first; };
    for (int step = 0; step < 10000; ++step) {
        SCOPED_TRACE(testing::Message() << "step " << step);
        const unsigned op = rng() % 10;
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
        } else if (op < 8 && !model.empty()) {
            const int id = pick_used();
            ASSERT_EQ(h.remove(id), model[id]);
            model.erase(id);
        } else {
            // Into an int (toward zero), a float or a double. The references start as 7 and 7.5: the
            // two that aren't used, or all three on an empty heap, must keep that, so `least` is
            // 7.5 when the model is empty.
            double least = 7.5;
            for (auto e = model.begin(); e != model.end(); ++e)
                least = e == model.begin() ? e->second : std::min(least, e->second);
            int i = 7;
            float f = 7.5f;
            double d = 7.5;
            const unsigned form = rng() % 3;
            const int id = form == 0 ? h.extract_min(i) : form == 1 ? h.extract_min(f) : h.extract_min(d);
            ASSERT_EQ(id == -1, model.empty());
            ASSERT_TRUE(id == -1 || model.count(id));
            ASSERT_EQ(i, static_cast<int>(form == 0 ? least : 7.5));
            ASSERT_EQ(f, static_cast<float>(form == 1 ? least : 7.5));
            ASSERT_EQ(d, form == 2 ? least : 7.5);
            if (id != -1) {
                ASSERT_EQ(model[id], least);
                model.erase(id);
            }
        }
        ASSERT_TRUE(h.verify());
        const int probe = static_cast<int>(rng() % (kIds + 5));
        ASSERT_EQ(h.is_used(probe), model.count(probe) == 1);
        if (model.count(probe)) {
            ASSERT_EQ(h.value(probe), model[probe]);
        }
    }
    EXPECT_EQ(drain(h).size(), model.size());
}
