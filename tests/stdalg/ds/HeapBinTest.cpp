// HeapBin: tie rules worked out by hand, forged removal keys, verify texts, copies and the plain
// queue without a table (the random run against a model is in the heap contract).
#include "ds/HeapBin.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

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
    return quiet([&] { EXPECT_EQ(h.verify(), want); });
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

TEST(HeapBin, ResetKeepsTheTableMode) {
    HeapBin h;
    h.insert(0, 1.0);
    h.reset(0);
    EXPECT_FALSE(h.is_used(0));
    EXPECT_FALSE(h.is_used(-1));
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
