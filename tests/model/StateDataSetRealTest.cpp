// StateDataSetReal and RatioExperDataSetReal readers: the same small data set in every table format, and
// their failures.
#include "StateDataSetReal.h"
#include "ArraysGeneSets.h"
#include "ModelTestUtil.h"
#include "RatioExperDataSetReal.h"

#include <cmath>
#include <functional>

namespace {

struct SmallSet : testing::Test {
    void SetUp() override { load_small_universe(u); }
    Params wide_params() { return {{"file", model_data("small_wide.txt")}, {"first_data_col", "2"}}; }
    VarUniverse u;
    StateDataSetReal ds{u};
};

// Checks that ds has ne experiments and holds the small data set from column first on.
void expect_small(const StateDataSetReal& ds, int ne, int first = 0) {
    ASSERT_EQ(ds.m_E, ne);
    expect_small_cells([&ds](int e, int v) { return ds.get_var_in_state(e, v); }, first);
}

} // namespace

TEST_F(SmallSet, PairFormatKeyBeforeData) {
    read_small_pair(ds, NA);
    expect_small(ds, 3);
    EXPECT_EQ(ds.m_e_names, (std::vector<std::string>{"A", "B", "C"}));
    EXPECT_EQ(ds.m_e_series, (std::vector<int>{0, 0, 1}));
    EXPECT_EQ(ds.m_e_weight, (std::vector<float>{1.0f, 1.0f, 2.0f}));
    EXPECT_EQ(ds.m_e_array, (std::vector<int>{1, 1, 0}));
    // Key order 2, 0, 1: the newest member stands at the head.
    EXPECT_EQ(ds.m_series[0].m_members, (std::list<int>{1, 0}));
    std::ostringstream dump;
    ds.dump_expk(dump);
    EXPECT_EQ(dump.str(), "0\tA\n1\tB\n2\tC\n");

    // The two-stream read fills absent cells with 0.
    StateDataSetReal zero(u);
    read_small_pair(zero);
    EXPECT_EQ(zero.get_var_s_state(1, 1), 0.0f);
    EXPECT_EQ(zero.get_var_s_state(2, 3), 0.0f);
}

TEST_F(SmallSet, PairFormatSparseKeyAndBadIds) {
    // Ids need not be dense: experiment 3 alone makes four; 0..2 have no data and keep the default.
    std::istringstream key("3 late x 2 0.5 1 trailing words\n"), data("4 3 7.5\nNaN 1 1\n");
    ds.read(key, data, -1.0f);
    ASSERT_EQ(ds.m_E, 4);
    EXPECT_EQ(ds.m_e_names, (std::vector<std::string>{"", "", "", "late"}));
    EXPECT_EQ(ds.m_e_weight, (std::vector<float>{0.0f, 0.0f, 0.0f, 0.5f}));
    EXPECT_EQ(ds.m_e_array, (std::vector<int>{0, 0, 0, 1}));
    EXPECT_EQ(ds.get_var_s_state(3, 4), 7.5f);
    EXPECT_EQ(ds.get_var_s_state(1, 4), -1.0f);

    auto read_pair = [this](const char* k, const char* d) {
        std::istringstream key_in(k), data_in(d);
        ds.read(key_in, data_in, 0.0f);
    };
    read_pair("0 a x 0 1 0\n", "0 0 nan\n");
    EXPECT_EQ(ds.get_var_s_state(0, 0), NA);
    EXPECT_DEATH(read_pair("0 a x 0 1 0\n", "5 0 1\n"), R"(StateDataSetReal\([0-9]+\): Bad var num 5)");
    EXPECT_DEATH(read_pair("0 a x 0 1 0\n", "-1 0 1\n"), R"(StateDataSetReal\([0-9]+\): Bad var num -1)");
    EXPECT_DEATH(read_pair("", "0 4 1\n"), R"(StateDataSetReal\([0-9]+\): Bad exp num 4)");
    EXPECT_DEATH(read_pair("-2 a x 0 1 0\n", ""), R"(StateDataSetReal\([0-9]+\): Bad exp num -2)");
}

TEST_F(SmallSet, WideTableThroughEveryNameMap) {
    auto params = wide_params();
    params["nonparametric"] = "1";
    const std::string err = quiet([&] { ds.read_txt(params, 7); });
    expect_small(ds, 3);
    EXPECT_EQ(ds.m_e_names, (std::vector<std::string>{"A", "B", "C"}));
    EXPECT_EQ(ds.m_e_key, (std::vector<int>{7, 7, 7}));
    EXPECT_EQ(ds.m_e_series, (std::vector<int>{0, 0, 0}));
    EXPECT_NE(err.find("cannot match props for var NOSUCH\n"), std::string::npos);
    EXPECT_NE(err.find("match count = 5\n"), std::string::npos);
    // One array type: the union of the variables present anywhere.
    EXPECT_EQ(ds.m_e_array, (std::vector<int>{0, 0, 0}));
    EXPECT_EQ(ds.m_arrays->m_array_vars.at(0).on_bits(), 5);
}

TEST_F(SmallSet, KeyLineFileWithTabDirectoryAndWideTableAndMissingTables) {
    // Missing tables leave the set alone.
    Params none, gone{{"file", "/nonexistent/t.txt"}};
    EXPECT_EQ(quiet([&] { ds.read_txt(none, 0); }), "missing options: file, giving up on these props\n");
    EXPECT_EQ(quiet([&] { ds.read_txt(gone, 0); }), "cannot open table /nonexistent/t.txt\n");
    EXPECT_EQ(ds.m_E, 0);
    EXPECT_EQ(ds.m_arrays, nullptr);

    TempDir dir;
    const std::string key_file = dir.write(
        "props.key", "1\ttab\tfile\t" + model_data("small_tab") + "\tdefault_val\t-3.4028235e+38\r\n" +
                         "2\ttxt\tfile\t" + model_data("small_wide.txt") + "\tfirst_data_col\t2\n" +
                         "3\tgeo\tfile\tnowhere\n4\tweird\tfile\tnowhere\n");
    quiet([&] { ds.read_prop_key(key_file); });
    expect_small(ds, 6);
    expect_small(ds, 6, 3);
    EXPECT_EQ(ds.m_e_key, (std::vector<int>{1, 1, 1, 2, 2, 2}));

    Params params{{"file", dir.path()}};
    EXPECT_EQ(quiet([&] { ds.read_key("tab", params, 9); }),
              "cannot open expk " + dir.path() + "/expk.txt\n");
    EXPECT_EQ(ds.m_E, 6);

    const std::string bad = dir.write("bad.key", "3\ttxt\n");
    EXPECT_DEATH(ds.read_prop_key(bad),
                 R"(StateDataSetReal\([0-9]+\): no params at property key table line 3)");
    EXPECT_DEATH(ds.read_prop_key(dir.path() + "/none.key"),
                 R"(StateDataSetReal\([0-9]+\): cannot open propkey file .*/none\.key)");
}

TEST_F(SmallSet, PlainMatrixAndClickFormat) {
    std::ifstream mat(model_data("small_mat.txt").c_str());
    ds.read_mat(mat, 3);
    expect_small(ds, 3);

    StateDataSetReal click(u);
    Params params{{"file", model_data("small_click.txt")}, {"click_format", "1"}};
    quiet([&] { click.read_txt(params, 5); });
    expect_small(click, 3);
    EXPECT_EQ(click.m_e_names, (std::vector<std::string>(3, "click_fmt")));
    EXPECT_EQ(click.m_e_key, (std::vector<int>{0, 0, 0}));

    std::istringstream short_row("\ng0 1 2\n");
    EXPECT_DEATH(ds.read_mat(short_row, 3), "StateDataSetReal\\([0-9]+\\): Bad number of filed in line 2 of "
                                            "expression matrix, should be 3 but count is 2");
}

TEST_F(SmallSet, SecondWideTableAppendsAndNormalisesOnlyItsColumns) {
    auto params = wide_params();
    quiet([&] { ds.read_txt(params, 1); });
    params["normalize_cond"] = "just_mean";
    quiet([&] { ds.read_txt(params, 2); });
    expect_small(ds, 6);
    // Column means over present cells: A 8.25 / 5, B 3.25 / 4, C 2.5 / 4.
    const float means[3] = {1.65f, 0.8125f, 0.625f};
    for (int v = 0; v < 5; ++v)
        for (int e = 0; e < 3; ++e) {
            if (kSmall[v][e] == NA)
                EXPECT_EQ(ds.get_var_s_state(3 + e, v), NA);
            else
                EXPECT_NEAR(ds.get_var_s_state(3 + e, v), kSmall[v][e] - means[e], 1e-6);
        }
    EXPECT_EQ(ds.m_series[0].m_members.size(), 6u);
}

TEST_F(SmallSet, DosLineEndsAndEmptyHeaderColumns) {
    Params params{{"file", model_data("dos_table.txt")}};
    const std::string err = quiet([&] { ds.read_txt(params, 0); });
    // Header ORF, A, (empty), C, (empty): the inner empty column stays, the trailing one goes.
    ASSERT_EQ(ds.m_E, 3);
    EXPECT_EQ(ds.m_e_names, (std::vector<std::string>{"A", "", "C"}));
    EXPECT_NE(err.find("striping empty fields from 4 to 2\n"), std::string::npos);
    EXPECT_EQ(ds.m_series[0].m_members, (std::list<int>{3, 2, 1, 0}));
    const float want[3][3] = {{1.5f, 7.0f, -2.0f}, {NA, 0.0f, 4.0f}, {NA, NA, NA}}; // gene 4 has no row
    for (int v = 0; v < 3; ++v)
        for (int e = 0; e < 3; ++e)
            EXPECT_EQ(ds.get_var_s_state(e, v == 2 ? 4 : v), want[v][e]);
}

TEST_F(SmallSet, NumericIdsAffyClampAndLogs) {
    TempDir dir;
    const std::string table = dir.write("t.txt", "Var_id\tA\tB\n2\t5\t64\n0\tx\t40000\n9\t1\t1\n4\t-3\t0\n");
    Params params{{"file", table}, {"is_affy", "1"}, {"take_log", "1"}};
    const std::string err = quiet([&] { ds.read_txt(params, 0); });
    EXPECT_NEAR(ds.get_var_s_state(0, 2), std::log2(20.0), 1e-5); // 5 clamps to 20 before the log
    EXPECT_EQ(ds.get_var_s_state(1, 2), 6.0f);
    EXPECT_EQ(ds.get_var_s_state(0, 0), NA); // unparsable: missing, not 20
    EXPECT_NEAR(ds.get_var_s_state(1, 0), std::log2(16000.0), 1e-5);
    EXPECT_NEAR(ds.get_var_s_state(0, 4), std::log2(20.0), 1e-5);
    EXPECT_NE(err.find("cannot match props for var 9\n"), std::string::npos);

    StateDataSetReal plain(u);
    const std::string t2 = dir.write("t2.txt", "ORF\tA\tB\nTFC3\t0\t-4\nVPS8\t2\t1e39\n");
    Params log2p{{"file", t2}, {"take_log", "1"}};
    quiet([&] { plain.read_txt(log2p, 0); });
    EXPECT_TRUE(std::isinf(plain.get_var_s_state(0, 0))); // log of 0: minus infinity
    EXPECT_EQ(plain.get_var_s_state(1, 0), NA);           // log of a negative value
    EXPECT_EQ(plain.get_var_s_state(1, 1), NA);           // beyond the float range
    Params log10p{{"file", t2}, {"take_log", "10"}};
    quiet([&] { plain.read_txt(log10p, 0); });
    EXPECT_NEAR(plain.get_var_s_state(2, 1), 2.0 / std::log10(2.0), 1e-5);
}

TEST_F(SmallSet, SettersTestTheExperimentAgainstTheRowCount) {
    ds.set_max_eid(3, 1.0f);
    ds.set_var_in_state(1, 2, 9.0f);
    EXPECT_EQ(ds.get_var_out_state(1, 2), 9.0f);
    // Experiment 3 is past the 3 columns but below the 5 rows: nothing grows, nothing is written.
    ds.set_var_s_state(3, 0, 4.0f);
    EXPECT_EQ(ds.m_data.rows(), 5);
    // Experiment 6 is not below the 5 rows: the matrix grows to 7 rows of 0.0 first.
    ds.set_var_s_state(6, 0, 4.0f);
    EXPECT_EQ(ds.m_data.rows(), 7);
    EXPECT_EQ(ds.get_var_s_state(2, 6), 0.0f);
    EXPECT_EQ(ds.get_var_s_state(2, 0), 1.0f);
    ds.reset();
    EXPECT_EQ(ds.m_data.rows(), 0);
}

TEST_F(SmallSet, RatioExperimentsMergePairsIntoMeans) {
    RatioExperDataSetReal r(u);
    std::ifstream key(model_data("ratio_key.txt").c_str()), data(model_data("ratio_data.txt").c_str());
    EXPECT_EQ(quiet([&] { r.read(key, data, 5.0f); }), "m_E is 3\nout of here\n");
    ASSERT_EQ(r.m_E, 3);
    for (int v = 0; v < 5; ++v)
        for (int c = 0; c < 3; ++c)
            EXPECT_EQ(r.m_data(v, c), kSmall[v][c] == NA ? 0.0f : kSmall[v][c]) << v << " " << c;
    EXPECT_EQ(r.m_e_cond_a, (std::vector<int>{1, 1, 2}));
    EXPECT_EQ(r.m_e_cond_b, (std::vector<int>{2, 3, 3}));
    EXPECT_EQ(r.m_e_series, (std::vector<int>{1, 0, 1}));
    EXPECT_EQ(r.m_series[1].m_members, (std::list<int>{2, 2, 0}));
}

TEST(RatioExperDataSetReal, TracesVariable91AndStandardises) {
    VarUniverse u;
    u.init_idspace(92);
    RatioExperDataSetReal r(u);
    std::istringstream key("0 a x 0 1 2\n1 b x 0 1 2\n"), data("0 91 1.5\n1 91 2.5\n0 3 1\n");
    testing::internal::CaptureStdout();
    quiet([&] { r.read(key, data, 0.0f); });
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "0 added 1.5\n0 added 2.5\nexp0 val2 counter2\n");
    EXPECT_EQ(r.m_data(3, 0), 0.5f);

    // Cells 2 (var 91), 0.5 (var 3) and 90 zeros: mean 2.5 / 92; every cell moves by it and is scaled by the
    // sd.
    r.cond_standartize();
    const double mean = 2.5 / 92;
    const double sd = std::sqrt((4.0 + 0.25) / 92 - mean * mean);
    EXPECT_NEAR(r.m_data(91, 0), (2.0 - mean) / sd, 1e-5);
    EXPECT_NEAR(r.m_data(0, 0), -mean / sd, 1e-5);

    std::istringstream key2("0 a x 0 1 2\n"), bad("0 92 1\n");
    EXPECT_DEATH(r.read(key2, bad, 0.0f), R"(RatioExperDataSetReal\([0-9]+\): Bad var num 92)");
}

// Ids and counts that would size the data matrix beyond memory, or overflow on `id + 1`, are fatal
// in every reader, each naming the number it read.
TEST_F(SmallSet, IdsAndCountsOutsideTheCeilingAreFatal) {
    TempDir dir;
    auto read_pair = [this](const char* k) {
        std::istringstream key_in(k), data_in("");
        ds.read(key_in, data_in, 0.0f);
    };
    auto read_click = [&](const char* header) {
        Params params{{"file", dir.write("click.txt", std::string(header) + "\n1 2\n")},
                      {"click_format", "1"}};
        ds.read_txt(params, 1);
    };
    auto read_mat = [this](int cols) {
        std::istringstream in("g0 1\n");
        ds.read_mat(in, cols);
    };
    const struct {
        std::function<void()> read;
        const char* message;
    } cases[] = {
        {[&] { read_pair("2147483647 a x 0 1 0\n"); },
         R"(StateDataSetReal\([0-9]+\): Bad exp num 2147483647)"},
        {[&] { read_pair("4194304 a x 0 1 0\n"); }, R"(StateDataSetReal\([0-9]+\): Bad exp num 4194304)"},
        {[&] { read_pair("0 a x 2147483647 1 0\n"); },
         R"(StateDataSetBase\([0-9]+\): Bad series num 2147483647)"},
        {[&] { read_mat(-3); },
         R"(StateDataSetReal\([0-9]+\): Bad number of columns -3 for expression matrix)"},
        {[&] { read_mat(100000000); }, R"(Bad number of columns 100000000 for expression matrix)"},
        {[&] { read_click("2 99999999999"); }, R"(Bad experiment count 2147483647 in click format header)"},
        {[&] { read_click("2 -3"); }, R"(StateDataSetReal\([0-9]+\): Bad experiment count -3 in click)"},
        {[&] { read_click("2 x"); }, R"(StateDataSetReal\([0-9]+\): Bad experiment count 0 in click)"},
    };
    for (const auto& c : cases)
        EXPECT_DEATH(c.read(), c.message);

    // Just inside the ceiling all is read: 4194303 experiments of five variables.
    read_pair("4194303 a x 0 1 0\n");
    EXPECT_EQ(ds.m_E, 4194304);
    EXPECT_EQ(ds.m_data.cols(), 4194304);
}
