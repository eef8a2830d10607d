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

bool verify_quiet(HeapBin& h, std::string* err = nullptr) {
    testing::internal::CaptureStderr();
    const bool ok = h.verify();
    const std::string text = testing::internal::GetCapturedStderr();
    if (err)
        *err = text;
    return ok;
}

} // namespace

TEST(HeapBin, EmptyHeapLeavesReferenceUntouched) {
    HeapBin h;
    int i = 7;
    float f = 7.5f;
    double d = 8.5;
    EXPECT_EQ(h.extract_min(), -1);
    EXPECT_EQ(h.extract_min(i), -1);
    EXPECT_EQ(h.extract_min(f), -1);
    EXPECT_EQ(h.extract_min(d), -1);
    EXPECT_EQ(i, 7);
    EXPECT_EQ(f, 7.5f);
    EXPECT_EQ(d, 8.5);
    EXPECT_TRUE(h.verify());
}

TEST(HeapBin, ReferenceFormsConvertTheKey) {
    HeapBin h;
    h.insert(1, -2.75);
    h.insert(2, 3.25f);
    h.insert(3, 4);
    int i = 0;
    EXPECT_EQ(h.extract_min(i), 1);
    EXPECT_EQ(i, -2); // toward zero
    float f = 0;
    EXPECT_EQ(h.extract_min(f), 2);
    EXPECT_EQ(f, 3.25f);
    double d = 0;
    EXPECT_EQ(h.extract_min(d), 3);
    EXPECT_EQ(d, 4.0);
}

// Three equal keys inserted as 1, 2, 3: 2 links under 1 (a tie goes to the later tree), 3 stays a
// root of degree 0 and holds the cached minimum, so the order is 3, 1, 2.
TEST(HeapBin, EqualKeysThree) {
    HeapBin h;
    h.insert(1, 5.0);
    h.insert(2, 5.0);
    h.insert(3, 5.0);
    ASSERT_TRUE(h.verify());
    EXPECT_EQ(h.cached_min()->m_id, 3);
    ASSERT_NE(h.roots(), nullptr);
    EXPECT_EQ(h.roots()->m_id, 3);
    EXPECT_EQ(h.roots()->m_sibling->m_id, 1);
    EXPECT_EQ(h.roots()->m_sibling->m_child->m_id, 2);
    EXPECT_EQ(drain(h), (std::vector<int>{3, 1, 2}));
}

// Four equal keys: 4 links under 3, then 3's tree under 1; 1 is the only root. After 1 goes, its
// children [3{4}, 2] become roots [2, 3{4}]; the root walk takes the last of equal roots, 3; then 4
// and 2 link with 2 on top.
TEST(HeapBin, EqualKeysFour) {
    HeapBin h;
    for (int id = 1; id <= 4; ++id)
        h.insert(id, 5.0);
    ASSERT_TRUE(h.verify());
    EXPECT_EQ(h.roots()->m_id, 1);
    EXPECT_EQ(h.roots()->m_degree, 2);
    EXPECT_EQ(h.roots()->m_sibling, nullptr);
    EXPECT_EQ(drain(h), (std::vector<int>{1, 3, 2, 4}));
}

TEST(HeapBin, ChangeRaisingTheMinimumTakesTheLastOfEqualChildren) {
    // Tree: 1(1){3(5){4(7)}, 2(5)}.
    HeapBin h;
    h.insert(1, 1.0);
    h.insert(2, 5.0);
    h.insert(3, 5.0);
    h.insert(4, 7.0);
    ASSERT_EQ(h.roots()->m_id, 1);
    EXPECT_EQ(h.change(1, 6.0), 1.0);
    EXPECT_EQ(h.cached_min(), nullptr); // raising the minimum only clears the cache
    ASSERT_TRUE(h.verify());
    // 2 came up (last of the equal children), 1 went down into its place.
    EXPECT_EQ(h.roots()->m_id, 2);
    EXPECT_EQ(h.roots()->m_child->m_id, 3);
    EXPECT_EQ(h.roots()->m_child->m_sibling->m_id, 1);
    EXPECT_EQ(h.value(1), 6.0);
    EXPECT_EQ(drain(h), (std::vector<int>{2, 3, 1, 4}));
}

TEST(HeapBin, ChangeLoweringAndSameKey) {
    HeapBin h;
    for (int id = 0; id < 8; ++id)
        h.insert(id, 10.0 + id);
    EXPECT_EQ(h.change(5, 15.0), 15.0); // same key: nothing happens
    ASSERT_TRUE(h.verify());
    EXPECT_EQ(h.change(7, 3), 17.0);
    ASSERT_TRUE(h.verify());
    EXPECT_EQ(h.cached_min()->m_id, 7);
    EXPECT_EQ(h.change(6, 10.0f), 16.0); // ties the minimum of 0: the cache stays on 7
    ASSERT_TRUE(h.verify());
    EXPECT_EQ(h.cached_min()->m_id, 7);
    // 0 and 6 tie at 10; after 7 leaves, the root walk over [1, 2, 0{6..}] ends on the root holding 0.
    EXPECT_EQ(drain(h), (std::vector<int>{7, 0, 6, 1, 2, 3, 4, 5}));
}

TEST(HeapBin, RemoveForgesAKeyBelowTheMinimum) {
    struct Case {
        double min, forged;
    };
    const Case cases[] = {{0.0, -2.0}, {3.0, 1.5}, {-3.0, -6.0}, {1.0, -1.0}, {-1.0, -3.0}, {0.5, -1.5}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.min);
        KeyTap h;
        h.insert(0, c.min);
        for (int id = 1; id < 6; ++id)
            h.insert(id, c.min + 10.0 * id);
        EXPECT_EQ(h.remove(3), c.min + 30.0);
        ASSERT_EQ(h.m_keys.size(), 1u);
        EXPECT_EQ(h.m_keys[0], c.forged);
        EXPECT_FALSE(h.is_used(3));
        EXPECT_TRUE(h.verify());
        // Removing the minimum itself needs no forged key.
        h.m_keys.clear();
        EXPECT_EQ(h.remove(0), c.min);
        ASSERT_EQ(h.m_keys.size(), 1u);
        EXPECT_EQ(h.m_keys[0], c.min);
        EXPECT_EQ(drain(h), (std::vector<int>{1, 2, 4, 5}));
    }
}

TEST(HeapBin, ResetKeepsTheTableMode) {
    HeapBin h;
    h.insert(3, 1.0);
    h.insert(9, 2.0);
    h.reset(0);
    EXPECT_FALSE(h.is_used(3));
    EXPECT_FALSE(h.is_used(9));
    EXPECT_EQ(h.extract_min(), -1);
    EXPECT_TRUE(h.has_table());
    h.insert(9, 4.0);
    h.insert(3, 5.0);
    EXPECT_TRUE(h.is_used(9));
    EXPECT_EQ(h.change(3, 1.0), 5.0);
    EXPECT_EQ(drain(h), (std::vector<int>{3, 9}));
}

TEST(HeapBin, IsUsedBounds) {
    HeapBin h;
    h.insert(4, 1.0);
    EXPECT_FALSE(h.is_used(-1));
    EXPECT_FALSE(h.is_used(3));
    EXPECT_TRUE(h.is_used(4));
    EXPECT_FALSE(h.is_used(5));
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
    testing::internal::CaptureStderr();
    EXPECT_TRUE(h.verify());
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_EQ(err.substr(0, 9), "no table\n");
    double k = 0;
    for (double want : model) {
        ASSERT_NE(h.extract_min(k), -1);
        ASSERT_EQ(k, want);
    }
    EXPECT_EQ(h.extract_min(), -1);
}

TEST(HeapBin, CopiesHoldTheSameEntries) {
    HeapBin h;
    for (int id = 0; id < 37; ++id)
        h.insert(id, static_cast<double>((id * 7) % 11));
    HeapBin c(h);
    EXPECT_TRUE(c.verify());
    HeapBin a;
    a.insert(99, -1.0);
    a = h;
    EXPECT_TRUE(a.verify());
    EXPECT_FALSE(a.is_used(99));
    HeapBin plain(false);
    plain.insert(5, 1.0);
    HeapBin with_table(plain);
    EXPECT_TRUE(with_table.is_used(5));
    EXPECT_EQ(with_table.value(5), 1.0);
    for (HeapBin* x : {&c, &a}) {
        std::map<int, double> seen;
        double k = 0, last = -1e300;
        for (int id = x->extract_min(k); id != -1; id = x->extract_min(k)) {
            EXPECT_GE(k, last);
            last = k;
            seen[id] = k;
        }
        ASSERT_EQ(seen.size(), 37u);
        for (const auto& e : seen)
            EXPECT_EQ(e.second, static_cast<double>((e.first * 7) % 11));
    }
    EXPECT_TRUE(h.verify()); // the source is untouched
    EXPECT_EQ(drain(h).size(), 37u);
}

TEST(HeapBin, VerifyReportsADuplicateId) {
    HeapBin h;
    h.insert(1, 0.5);
    h.insert(3, 1.0);
    h.insert(3, 2.0); // overwrites the table entry, the first node stays in the heap
    std::string err;
    EXPECT_FALSE(verify_quiet(h, &err));
    EXPECT_EQ(err, "node 3 appears twice\n");
    EXPECT_EQ(h.extract_min(), 1);
    EXPECT_EQ(h.extract_min(), 3); // the old node goes and clears the shared entry
    EXPECT_FALSE(verify_quiet(h, &err));
    EXPECT_EQ(err, "entry 3 in table has disappeared\n");
}

TEST(HeapBin, PrintForms) {
    HeapBin h;
    h.insert(4, 2.5);
    h.insert(6, 1.5);
    std::ostringstream a, b, c;
    h.print(a);
    EXPECT_EQ(a.str(), "NYI\n");
    h.HeapBase::print(b);
    EXPECT_EQ(b.str(), " Min: 6\n");
    h.min_node()->printon(c);
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
    auto pick_used = [&]() {
        auto it = model.begin();
        std::advance(it, rng() % model.size());
        return it->first;
    };
    for (int step = 0; step < 10000; ++step) {
        const unsigned op = rng() % 10;
        if (op < 4) {
            const int id = static_cast<int>(rng() % kIds);
            if (model.count(id))
                continue;
            const double k = any_key();
            // Each insert form keeps its key exactly: an int form gets the truncated key.
            switch (rng() % 3) {
            case 0:
                h.insert(id, k);
                model[id] = k;
                break;
            case 1:
                h.insert(id, static_cast<float>(k));
                model[id] = k;
                break;
            default:
                h.insert(id, static_cast<int>(k));
                model[id] = static_cast<double>(static_cast<int>(k));
                break;
            }
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
            double k = 0;
            const int id = h.extract_min(k);
            if (model.empty()) {
                ASSERT_EQ(id, -1);
            } else {
                double least = model.begin()->second;
                for (const auto& e : model)
                    least = std::min(least, e.second);
                ASSERT_TRUE(model.count(id)) << "step " << step;
                ASSERT_EQ(k, least) << "step " << step;
                ASSERT_EQ(model[id], least);
                model.erase(id);
            }
        }
        ASSERT_TRUE(h.verify()) << "step " << step;
        const int probe = static_cast<int>(rng() % (kIds + 5));
        ASSERT_EQ(h.is_used(probe), model.count(probe) == 1) << "step " << step;
        if (model.count(probe)) {
            ASSERT_EQ(h.value(probe), model[probe]);
        }
    }
    double k = 0, last = -1e300;
    size_t n = 0;
    while (h.extract_min(k) != -1) {
        ASSERT_GE(k, last);
        last = k;
        ++n;
    }
    EXPECT_EQ(n, model.size());
}
