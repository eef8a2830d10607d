// StateDataSetReal normalisations and array types, against hand-computed values.
#include "ArraysGeneSets.h"
#include "ModelTestUtil.h"

#include <cmath>

TEST(StateDataSetNorm, CondStandartizeOverPresentCells) {
    // One column 2, 4, NA, 6, 8: mean 5, variance (4+16+36+64)/4 - 25 = 5.
    Grid g(5, 2, {9, 2, 9, 4, 9, NA, 9, 6, 9, 8});
    quiet([&] { g.ds.cond_standartize(false, 1); });
    const double sd = std::sqrt(5.0);
    EXPECT_NEAR(g.at(0, 1), (2 - 5) / sd, 1e-6);
    EXPECT_EQ(g.at(2, 1), NA);
    EXPECT_NEAR(g.at(4, 1), (8 - 5) / sd, 1e-6);
    EXPECT_EQ(g.at(0, 0), 9.0f); // before first_e: untouched
    quiet([&] { g.ds.cond_standartize(true, 0); });
    EXPECT_EQ(g.at(0, 0), 0.0f);
}

TEST(StateDataSetNorm, CondStandartizeMasksTheMeanButMovesEveryCell) {
    Grid g(5, 1, {});
    // Array type 0 measures 0, 1, 2 and 4; variable 3 has a value it shouldn't count.
    std::istringstream key("0 e x 0 1 0\n"), data("0 0 2\n1 0 4\n3 0 100\n4 0 6\n"), arrk("0 chipA\n"),
        arrd("0 0\n0 1\n0 2\n0 4\n");
    quiet([&] {
        g.ds.read_multi(key, data, arrk, arrd, NA);
        g.ds.cond_standartize(false, 0);
    });
    // Mean over 2, 4, 6 is 4, variance 56/3 - 16 = 8/3.
    const double sd = std::sqrt(8.0 / 3.0);
    EXPECT_NEAR(g.at(0, 0), -2 / sd, 1e-5);
    EXPECT_NEAR(g.at(3, 0), 96 / sd, 1e-4);
    EXPECT_EQ(g.at(2, 0), NA);
}

TEST(StateDataSetNorm, GeneStandartizeKeepsTheLogMismatchAndNormByReference) {
    Grid g(4, 3, {100, 2, 8, /**/ 7, 2, 8, /**/ 0, 3, 3, /**/ 5, NA, NA});
    quiet([&] { g.ds.gene_standartize(true, 1); });
    // log2 of 2 and 8 is 1 and 3: mean 2, sd 1; the cells enter as natural logs.
    EXPECT_NEAR(g.at(0, 1), std::log(2.0) - 2.0, 1e-6);
    EXPECT_NEAR(g.at(0, 2), std::log(8.0) - 2.0, 1e-6);
    EXPECT_EQ(g.at(0, 0), 100.0f);
    EXPECT_EQ(g.at(3, 0), 5.0f); // no value from first_e on: row left alone

    Grid h(3, 2, {2, 8, /**/ 3, 3, /**/ NA, NA});
    h.ds.gene_standartize(false, 0);
    EXPECT_EQ(h.at(0, 0), -1.0f); // mean 5, variance 9
    EXPECT_EQ(h.at(0, 1), 1.0f);
    EXPECT_EQ(h.at(1, 0), 0.0f); // no variance: sd 1
    EXPECT_EQ(h.at(2, 0), NA);

    Grid r(2, 3, {5, 1, 4, /**/ 2, NA, 7});
    r.ds.gene_norm_by_ref(1, 0);
    EXPECT_EQ(r.at(0, 0), 4.0f);
    EXPECT_EQ(r.at(0, 1), 0.0f);
    EXPECT_EQ(r.at(1, 1), NA);
    EXPECT_EQ(r.at(1, 2), 7.0f + FLT_MAX); // a missing reference is subtracted as it is
}

TEST(StateDataSetNorm, ArrayTypesFromMissingPatterns) {
    // Patterns: e0 {0,1}, e1 {0}, e2 {0,1}, e3 {} .
    Grid g(2, 4, {1, 1, 1, NA, /**/ 1, NA, 1, NA});
    quiet([&] { g.ds.calc_array_type(0); });
    EXPECT_EQ(g.ds.m_e_array, (std::vector<int>{0, 1, 0, 2}));
    ASSERT_EQ(g.ds.m_arrays->size(), 3);
    EXPECT_EQ((*g.ds.m_arrays)[0].on_bits(), 2);
    EXPECT_EQ((*g.ds.m_arrays)[1].on_bits(), 1);
    quiet([&] { g.ds.calc_array_type(0); }); // a second pass finds the same patterns again
    EXPECT_EQ(g.ds.m_arrays->size(), 3);

    // One type: the union of the variables present anywhere.
    Grid one(3, 2, {NA, 1, /**/ 1, NA, /**/ NA, NA});
    quiet([&] { one.ds.calc_array_type(1); });
    EXPECT_EQ(one.ds.m_e_array, (std::vector<int>{0, 0}));
    ASSERT_EQ(one.ds.m_arrays->size(), 1);
    const ds_bitvec& uni = (*one.ds.m_arrays)[0];
    EXPECT_TRUE(uni.get_ind(0) && uni.get_ind(1));
    EXPECT_FALSE(uni.get_ind(2));
}

TEST(StateDataSetNorm, WideTableRunsTheRequestedStepsInOrder) {
    TempDir dir;
    // ref column B; after subtraction each row is centred by gene_standartize.
    const std::string t = dir.write("t.txt", "ORF\tA\tB\tC\nTFC3\t3\t1\t5\nVPS8\t4\t4\tNA\n");
    VarUniverse u;
    load_small_universe(u);
    StateDataSetReal ds(u);
    Params params{{"file", t}, {"norm_gene_by_ref", "1"}, {"reference_col", "1"}};
    params["normalize_gene"] = "1", params["one_array_type"] = "0";
    quiet([&] { ds.read_txt(params, 0); });
    // TFC3: 2, 0, 4 -> mean 2, variance 8/3.
    const double sd = std::sqrt(8.0 / 3.0);
    EXPECT_NEAR(ds.get_var_s_state(1, 0), -2 / sd, 1e-5);
    EXPECT_NEAR(ds.get_var_s_state(2, 0), 2 / sd, 1e-5);
    // VPS8: 0, 0 -> no variance.
    EXPECT_EQ(ds.get_var_s_state(0, 1), 0.0f);
    EXPECT_EQ(ds.get_var_s_state(2, 1), NA);
    // Patterns {0,1}, {0,1}, {0}: two array types.
    EXPECT_EQ(ds.m_e_array, (std::vector<int>{0, 0, 1}));
}
