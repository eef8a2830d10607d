// VarClasses readers and the enrichment test functions on small hand-worked cases.
#include "Annot.h"
#include "Bootstrap.h"
#include "Random.h"
#include "VarClasses.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

namespace {

VarClasses read_classes(const std::string& keys, const std::string& assoc, int n, const ds_bitvec* mask,
                        std::string* err = nullptr) {
    VarClasses c;
    std::istringstream k(keys), a(assoc);
    const std::string e = quiet([&] { c.read(k, a, n, mask); });
    if (err)
        *err = e;
    return c;
}

ds_bitvec set_of(int n, std::initializer_list<int> ids) {
    ds_bitvec v(n);
    for (int i : ids)
        v.set_ind(i);
    return v;
}

} // namespace

// Class ids of the key table that name no slot, or would size the class table beyond memory (each
// class holds a bit vector of the universe's width), are fatal with the id and the row.
TEST(VarClassesDeathTest, KeyIdsOutsideTheCeiling) {
    const struct {
        const char* keys;
        int n;
        const char* message;
    } cases[] = {
        {"0\tA\ta\t0\n2147483647\tB\tb\t0\n", 3, "Bad class id 2147483647 in key row 2"},
        {"300000000\tA\ta\t0\n", 3, "Bad class id 300000000 in key row 1"},
        {"-1\tA\ta\t0\n", 3, "Bad class id -1 in key row 1"},
        {"4194304\tA\ta\t0\n", 3, "Bad class id 4194304 in key row 1"},
        // 2^27 words over 626 words a class: ids from 214405 on would pass the cell ceiling.
        {"214405\tA\ta\t0\n", 20000, "Bad class id 214405 in key row 1"},
    };
    for (const auto& c : cases) {
        VarClasses cls;
        std::istringstream k(c.keys), a("");
        EXPECT_DEATH(cls.read(k, a, c.n, nullptr), std::string(R"(vesk\([0-9]+\): )") + c.message) << c.keys;
    }
    // A large id that fits is read, with holes below it.
    VarClasses ok = read_classes("100000\tA\ta\t0\n", "", 3, nullptr);
    EXPECT_EQ(ok.m_class_bits.size(), 100001u);
}

TEST(VarClasses, KeyTableWithHolesBlanksRepeatsAndMask) {
    std::string err;
    VarClasses c = read_classes("3\tGO:3\tcell wall\t0\n"
                                "0\tGO:0\tnucleus and more\t12\r\n"
                                "3\tGO:3b\tcell wall again\t1\n",
                                "0 1\n3 2\n3 4\n0 4\n", 6, nullptr, &err);
    EXPECT_EQ(err, "max class id 4\nout of here\n");
    ASSERT_EQ(c.class_count(), 4);
    EXPECT_EQ(c.m_class_names[0], "nucleus and more");
    EXPECT_EQ(c.m_class_keys[3], "GO:3b");
    EXPECT_EQ(c.m_class_names[3], "cell wall again");
    EXPECT_EQ(c.m_class_names[1], ""); // a hole
    EXPECT_EQ(c.m_class_bits[1].size(), 6);
    EXPECT_EQ(c.m_key_to_class.at("GO:3"), 3); // the overwritten key still maps
    EXPECT_EQ(c.m_class_bits[3].on_bits(), 2);
    EXPECT_EQ(c.m_var_classes[4], (std::vector<int>{3, 0})); // file order
    EXPECT_TRUE(c.m_var_classes[0].empty());

    // The mask keeps chip genes only.
    ds_bitvec mask = set_of(5, {0, 2});
    c = read_classes("0\tK\tN\t0\n", "0 0\n0 1\n0 2\n", 5, &mask);
    EXPECT_EQ(c.m_class_bits[0].on_bits(), 2);
    EXPECT_TRUE(c.m_var_classes[1].empty());
}

TEST(VarClasses, PathsOpenBothBeforeReadingAndClassPastTheKeyTable) {
    TempDir dir;
    const std::string k = dir.write("k.tab", "0\tK\tN\t0\n"), a = dir.write("a.tab", "0 1\n");
    VarClasses c;
    bool ok = true;
    EXPECT_EQ(quiet([&] { ok = c.read(dir.path() + "/missing", a, 3, nullptr); }),
              "Cannot open annok file " + dir.path() + "/missing\n");
    EXPECT_FALSE(ok);
    EXPECT_EQ(quiet([&] { ok = c.read(k, dir.path() + "/gone", 3, nullptr); }),
              "Cannot open annod file " + dir.path() + "/gone\n");
    EXPECT_FALSE(ok);
    EXPECT_EQ(c.class_count(), 0); // nothing was read
    quiet([&] { ok = c.read(k, a, 3, nullptr); });
    EXPECT_TRUE(ok);
    EXPECT_EQ(c.class_count(), 1);

    std::istringstream keys("0\tK\tN\t0\n2\tL\tM\t0\n"), assoc("1 0\n7 1\n");
    EXPECT_DEATH(c.read(keys, assoc, 3, nullptr), R"(Class 7 size 3.*vesk\([0-9]+\): Table id mismatch)");
}

// Universe of 10 chip genes; class A = {0..4}, class B = {0..3} (nested in A), class C = {5..9}.
class AnnotCase : public ::testing::Test {
protected:
    void SetUp() override {
        classes = read_classes("0\tA\tclass a\t0\n1\tB\tclass b\t0\n2\tC\tclass c\t0\n",
                               "0 0\n0 1\n0 2\n0 3\n0 4\n1 0\n1 1\n1 2\n1 3\n2 5\n2 6\n2 7\n2 8\n2 9\n", 10,
                               nullptr);
        g_min_cls_size = 1;
        g_max_cls_size = 100;
        g_min_inter = 1;
        g_univ_size = 10;
        g_max_pv_to_rep = logf(0.5f);
        g_filter_red_pv_thresh = logf(0.5f);
    }
    std::string annotate_quietly(const ds_bitvec& s) {
        return quiet([&] { annotate(classes, s, out, order); });
    }
    VarClasses classes;
    const ds_bitvec s = set_of(10, {0, 1, 2, 3});
    std::vector<Annot> out;
    std::vector<int> order;
};

TEST_F(AnnotCase, BestAndDependentPvalues) {
    // Class B: C(4,4) C(6,0) / C(10,4) = 1/210; class A: C(4,4) C(6,1) / C(10,5) = 6/252.
    const float best = get_best_pval(classes, s);
    EXPECT_NEAR(best, -std::log(210.0), 1e-5);
    EXPECT_EQ(best, g_hg_func.log_hg(10, 4, 4, 4));
    // Given B, A adds gene 4 only: inside B: log_hg(4, 4, 4, 4) = 0; outside B: N=6, K=1, n=0, k=0:
    // expectation 0 is not above 0, so the term is C(0,0) C(6,1) / C(6,1) = 1, log 0.
    EXPECT_EQ(dep_hg_pv(classes, 1, 0, s), 0.0f);
    // Given A, B: inside A: N=5, K=4, n=4, k=4: C(4,4) C(1,0) / C(5,4) = 1/5; outside: all zero.
    EXPECT_NEAR(dep_hg_pv(classes, 0, 1, s), std::log(0.2), 1e-6);
    // Size filter drops B (size 4): A is best.
    g_min_cls_size = 5;
    EXPECT_NEAR(get_best_pval(classes, s), std::log(6.0 / 252.0), 1e-5);
    // Overlap filter: an overlap of 4 passes at 4, nothing passes at 5 and the value stays 0.
    g_min_inter = 4;
    EXPECT_NEAR(get_best_pval(classes, s), std::log(6.0 / 252.0), 1e-5);
    g_min_inter = 5;
    EXPECT_EQ(get_best_pval(classes, s), 0.0f);
}

TEST_F(AnnotCase, AnnotateOrdersAndFiltersRedundantClasses) {
    EXPECT_EQ(annotate_quietly(s), "Filter 0 by 1 deppv 0\n"); // dep of A given B is 0 > ln 0.5
    // C has overlap 0 (filtered by MinClsInter); B (1/210) comes before A (6/252).
    ASSERT_EQ(out.size(), 2u);
    ASSERT_EQ(order.size(), 2u);
    EXPECT_EQ(out[order[0]].m_cls, 1);
    EXPECT_EQ(out[order[1]].m_cls, 0);
    EXPECT_EQ(out[order[0]].m_inter, 4);
    EXPECT_EQ(out[order[0]].m_frac, 1.0f);
    EXPECT_EQ(out[order[1]].m_frac, 1.0f);
    EXPECT_FALSE(out[order[0]].m_filtered);
    EXPECT_TRUE(out[order[1]].m_filtered);
}

TEST_F(AnnotCase, TiesKeepClassIdOrderAndPvTrace) {
    // Two identical classes tie; the stable sort keeps ids 0 then 1.
    classes = read_classes("0\tA\ta\t0\n1\tB\tb\t0\n", "0 0\n0 1\n1 0\n1 1\n", 40, nullptr);
    g_univ_size = 40;
    g_filter_red_pv_thresh = 0.0f; // nothing passes a strict test against 0
    // 1 / C(40,2) = 1/780: ln is -6.659, no "pv" trace (not below -8).
    EXPECT_EQ(annotate_quietly(set_of(40, {0, 1})).find("pv "), std::string::npos);
    ASSERT_EQ(order.size(), 2u);
    EXPECT_EQ(out[order[0]].m_cls, 0);
    EXPECT_EQ(out[order[1]].m_cls, 1);
    EXPECT_NEAR(out[0].m_log_pv, -std::log(780.0), 1e-5);

    // A rarer overlap prints the trace line: 3 of 3 in a universe of 40, class size 3.
    classes = read_classes("0\tA\ta\t0\n", "0 0\n0 1\n0 2\n", 40, nullptr);
    EXPECT_EQ(annotate_quietly(set_of(40, {0, 1, 2})),
              "pv -9.19827 size 40 fp 3 m 3 inter 3\n"); // ln(1/9880) = -9.198268
}

TEST(Bootstrap, ShuffleWritesImagesDuringSwaps) {
    // Three chip lines: ids 7, 8, 9. Replaying the draws independently, the images follow the swaps.
    BootstrapState st;
    bootstrap_init(st, 3, 10);
    std::vector<int> chip_ids{7, 8, 9};
    Random::reset(42);
    std::vector<int> slots{0, 1, 2};
    std::vector<int> image(10, -1);
    for (int i = 2; i >= 1; --i) {
        const double u = static_cast<float>(Random::bits() / 4294967295.0);
        int j = static_cast<int>(u * i);
        if (j == i)
            j = i - 1;
        image[chip_ids[slots[j]]] = chip_ids[slots[i]];
        std::swap(slots[i], slots[j]);
    }
    Random::reset(42);
    bootstrap_shuffle(st, chip_ids);
    EXPECT_EQ(st.slots, slots);
    EXPECT_EQ(st.image, image);
    // Fewer than two chip lines: no step runs.
    BootstrapState one;
    bootstrap_init(one, 1, 4);
    bootstrap_shuffle(one, std::vector<int>{2});
    EXPECT_EQ(one.image, std::vector<int>(4, -1));
}
