// StateDataSetReal readers: the same small data set in every table format, and their failures.
#include "StateDataSetReal.h"
#include "ArraysGeneSets.h"
#include "ModelTestUtil.h"

#include <cmath>

namespace {

struct SmallSet : testing::Test {
    void SetUp() override { load_small_universe(u); }
    // Runs f with the error stream captured and returns what it printed.
    template <class F>
    std::string quiet(F f) {
        testing::internal::CaptureStderr();
        f();
        return testing::internal::GetCapturedStderr();
    }
    std::map<std::string, std::string> wide_params() {
        return {{"file", model_data("small_wide.txt")}, {"first_data_col", "2"}};
    }
    VarUniverse u;
    StateDataSetReal ds{u};
};

auto cells(const StateDataSetReal& ds) {
    return [&ds](int e, int v) { return ds.get_var_in_state(e, v); };
}

} // namespace

TEST_F(SmallSet, PairFormatKeyBeforeData) {
    std::ifstream key(model_data("small_tab/expk.txt").c_str()),
        data(model_data("small_tab/expr.txt").c_str());
    ds.read(key, data, NA);
    ASSERT_EQ(ds.m_E, 3);
    expect_small_cells(cells(ds), 0);
    EXPECT_EQ(ds.m_e_names, (std::vector<std::string>{"A", "B", "C"}));
    EXPECT_EQ(ds.m_e_series, (std::vector<int>{0, 0, 1}));
    EXPECT_EQ(ds.m_e_weight, (std::vector<float>{1.0f, 1.0f, 2.0f}));
    EXPECT_EQ(ds.m_e_array, (std::vector<int>{1, 1, 0}));
    // Key order 2, 0, 1: the newest member stands at the head.
    EXPECT_EQ(ds.m_series[0].m_members, (std::list<int>{1, 0}));
    EXPECT_EQ(ds.m_series[1].m_members, (std::list<int>{2}));
    std::ostringstream dump;
    ds.dump_expk(dump);
    EXPECT_EQ(dump.str(), "0\tA\n1\tB\n2\tC\n");

    // The two-stream read fills absent cells with 0.
    StateDataSetReal zero(u);
    std::ifstream key2(model_data("small_tab/expk.txt").c_str()),
        data2(model_data("small_tab/expr.txt").c_str());
    zero.read(key2, data2);
    EXPECT_EQ(zero.get_var_s_state(1, 1), 0.0f);
    EXPECT_EQ(zero.get_var_s_state(2, 3), 0.0f);
    EXPECT_EQ(zero.get_var_s_state(2, 4), -3.0f);
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
    for (int e = 0; e < 3; ++e)
        EXPECT_EQ(ds.get_var_s_state(e, 4), -1.0f);

    std::istringstream nan_data("0 0 nan\n");
    std::istringstream key1("0 a x 0 1 0\n");
    ds.read(key1, nan_data, 0.0f);
    EXPECT_EQ(ds.get_var_s_state(0, 0), NA);

    auto read_pair = [this](const char* k, const char* d) {
        std::istringstream key_in(k), data_in(d);
        ds.read(key_in, data_in, 0.0f);
    };
    EXPECT_DEATH(read_pair("0 a x 0 1 0\n", "5 0 1\n"), R"(StateDataSetReal\([0-9]+\): Bad var num 5)");
    EXPECT_DEATH(read_pair("0 a x 0 1 0\n", "-1 0 1\n"), R"(StateDataSetReal\([0-9]+\): Bad var num -1)");
    EXPECT_DEATH(read_pair("", "0 4 1\n"), R"(StateDataSetReal\([0-9]+\): Bad exp num 4)");
    EXPECT_DEATH(read_pair("-2 a x 0 1 0\n", ""), R"(StateDataSetReal\([0-9]+\): Bad exp num -2)");
}

TEST_F(SmallSet, WideTableThroughEveryNameMap) {
    auto params = wide_params();
    params["nonparametric"] = "1";
    const std::string err = quiet([&] { ds.read_txt(params, 7); });
    ASSERT_EQ(ds.m_E, 3);
    expect_small_cells(cells(ds), 0);
    EXPECT_EQ(ds.m_e_names, (std::vector<std::string>{"A", "B", "C"}));
    EXPECT_EQ(ds.m_e_key, (std::vector<int>{7, 7, 7}));
    EXPECT_EQ(ds.m_e_series, (std::vector<int>{0, 0, 0}));
    EXPECT_NE(err.find("take log is 0\n"), std::string::npos);
    EXPECT_NE(err.find("got ptop B 1\n"), std::string::npos);
    EXPECT_NE(err.find("max pid 3\n"), std::string::npos);
    EXPECT_NE(err.find("cannot match props for var NOSUCH\n"), std::string::npos);
    EXPECT_NE(err.find("match count = 5\n"), std::string::npos);
    // One array type: the union of the variables present anywhere.
    EXPECT_EQ(ds.m_e_array, (std::vector<int>{0, 0, 0}));
    ASSERT_NE(ds.m_arrays, nullptr);
    ASSERT_EQ(ds.m_arrays->size(), 1);
    EXPECT_EQ((*ds.m_arrays)[0].on_bits(), 5);
}

TEST_F(SmallSet, KeyLineFileWithTabDirectoryAndWideTable) {
    TempDir dir;
    const std::string key_file = dir.write(
        "props.key", "1\ttab\tfile\t" + model_data("small_tab") + "\tdefault_val\t-3.4028235e+38\r\n" +
                         "2\ttxt\tfile\t" + model_data("small_wide.txt") + "\tfirst_data_col\t2\n" +
                         "3\tgeo\tfile\tnowhere\n4\tweird\tfile\tnowhere\n");
    const std::string err = quiet([&] { ds.read_prop_key(key_file); });
    ASSERT_EQ(ds.m_E, 6);
    expect_small_cells(cells(ds), 0);
    expect_small_cells(cells(ds), 3);
    EXPECT_EQ(ds.m_e_key, (std::vector<int>{1, 1, 1, 2, 2, 2}));
    EXPECT_EQ(ds.m_e_names, (std::vector<std::string>{"A", "B", "C", "A", "B", "C"}));
    EXPECT_NE(err.find("will read, file is " + model_data("small_wide.txt") + "\n"), std::string::npos);

    std::map<std::string, std::string> params{{"file", dir.path()}};
    const std::string err2 = quiet([&] { ds.read_key("tab", params, 9); });
    EXPECT_EQ(err2, "cannot open expk " + dir.path() + "/expk.txt\n");
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
    ASSERT_EQ(ds.m_E, 3);
    expect_small_cells(cells(ds), 0);

    StateDataSetReal click(u);
    std::map<std::string, std::string> params{{"file", model_data("small_click.txt")}, {"click_format", "1"}};
    const std::string err = quiet([&] { click.read_txt(params, 5); });
    ASSERT_EQ(click.m_E, 3);
    expect_small_cells(cells(click), 0);
    EXPECT_EQ(click.m_e_names, (std::vector<std::string>(3, "click_fmt")));
    EXPECT_EQ(click.m_e_key, (std::vector<int>{0, 0, 0}));
    EXPECT_NE(err.find("click mode, num e is 3\n"), std::string::npos);

    std::istringstream short_row("\ng0 1 2\n");
    EXPECT_DEATH(ds.read_mat(short_row, 3), "StateDataSetReal\\([0-9]+\\): Bad number of filed in line 2 of "
                                            "expression matrix, should be 3 but count is 2");
}

TEST_F(SmallSet, SecondWideTableAppendsAndNormalisesOnlyItsColumns) {
    auto params = wide_params();
    quiet([&] { ds.read_txt(params, 1); });
    params["normalize_cond"] = "just_mean";
    quiet([&] { ds.read_txt(params, 2); });
    ASSERT_EQ(ds.m_E, 6);
    expect_small_cells(cells(ds), 0);
    // Column means over present cells: A 8.25 / 5, B 3.25 / 4, C 2.5 / 4.
    const float means[3] = {1.65f, 0.8125f, 0.625f};
    for (int v = 0; v < 5; ++v)
        for (int e = 0; e < 3; ++e) {
            if (kSmall[v][e] == NA)
                EXPECT_EQ(ds.get_var_s_state(3 + e, v), NA);
            else
                EXPECT_NEAR(ds.get_var_s_state(3 + e, v), kSmall[v][e] - means[e], 1e-6);
        }
    EXPECT_EQ(ds.m_series.size(), 1u);
    EXPECT_EQ(ds.m_series[0].m_members.size(), 6u);
}

TEST_F(SmallSet, DosLineEndsAndEmptyHeaderColumns) {
    std::map<std::string, std::string> params{{"file", model_data("dos_table.txt")}};
    const std::string err = quiet([&] { ds.read_txt(params, 0); });
    // Header ORF, A, (empty), C, (empty): the inner empty column stays, the trailing one goes.
    ASSERT_EQ(ds.m_E, 3);
    EXPECT_EQ(ds.m_e_names, (std::vector<std::string>{"A", "", "C"}));
    EXPECT_NE(err.find("striping empty fields from 4 to 2\n"), std::string::npos);
    EXPECT_EQ(ds.m_series[0].m_members, (std::list<int>{3, 2, 1, 0}));
    const float want[2][3] = {{1.5f, 7.0f, -2.0f}, {NA, 0.0f, 4.0f}};
    for (int v = 0; v < 2; ++v)
        for (int e = 0; e < 3; ++e)
            EXPECT_EQ(ds.get_var_s_state(e, v), want[v][e]);
    for (int e = 0; e < 3; ++e)
        EXPECT_EQ(ds.get_var_s_state(e, 4), NA); // rows without a match stay missing
}

TEST_F(SmallSet, NumericIdsAffyClampAndLogs) {
    TempDir dir;
    const std::string table = dir.write("t.txt", "Var_id\tA\tB\n2\t5\t64\n0\tx\t40000\n9\t1\t1\n4\t-3\t0\n");
    std::map<std::string, std::string> params{{"file", table}, {"is_affy", "1"}, {"take_log", "1"}};
    const std::string err = quiet([&] { ds.read_txt(params, 0); });
    EXPECT_NEAR(ds.get_var_s_state(0, 2), std::log2(20.0), 1e-5); // 5 clamps to 20 before the log
    EXPECT_EQ(ds.get_var_s_state(1, 2), 6.0f);
    EXPECT_EQ(ds.get_var_s_state(0, 0), NA); // unparsable: missing, not 20
    EXPECT_NEAR(ds.get_var_s_state(1, 0), std::log2(16000.0), 1e-5);
    EXPECT_NEAR(ds.get_var_s_state(0, 4), std::log2(20.0), 1e-5);
    EXPECT_NE(err.find("cannot match props for var 9\n"), std::string::npos);

    StateDataSetReal plain(u);
    const std::string t2 = dir.write("t2.txt", "ORF\tA\tB\nTFC3\t0\t-4\nVPS8\t2\t1e39\n");
    std::map<std::string, std::string> log2p{{"file", t2}, {"take_log", "1"}};
    quiet([&] { plain.read_txt(log2p, 0); });
    EXPECT_TRUE(std::isinf(plain.get_var_s_state(0, 0))); // log of 0: minus infinity, missing later
    EXPECT_TRUE(is_missing_val(plain.get_var_s_state(0, 0)));
    EXPECT_EQ(plain.get_var_s_state(1, 0), NA); // log of a negative value
    EXPECT_EQ(plain.get_var_s_state(1, 1), NA); // beyond the float range
    std::map<std::string, std::string> log10p{{"file", t2}, {"take_log", "10"}};
    quiet([&] { plain.read_txt(log10p, 0); });
    EXPECT_NEAR(plain.get_var_s_state(2, 1), 2.0 / std::log10(2.0), 1e-5);
}

TEST_F(SmallSet, MissingTablesLeaveTheSetAlone) {
    std::map<std::string, std::string> none;
    EXPECT_EQ(quiet([&] { ds.read_txt(none, 0); }), "missing options: file, giving up on these props\n");
    std::map<std::string, std::string> gone{{"file", "/nonexistent/t.txt"}};
    EXPECT_EQ(quiet([&] { ds.read_txt(gone, 0); }), "cannot open table /nonexistent/t.txt\n");
    EXPECT_EQ(ds.m_E, 0);
    EXPECT_EQ(ds.m_arrays, nullptr);
}

TEST_F(SmallSet, SettersTestTheExperimentAgainstTheRowCount) {
    ds.set_max_eid(3, 1.0f);
    ASSERT_EQ(ds.m_data.rows(), 5);
    ds.set_var_in_state(1, 2, 9.0f);
    EXPECT_EQ(ds.get_var_out_state(1, 2), 9.0f);
    // Experiment 3 is past the 3 columns but below the 5 rows: nothing grows, nothing is written.
    ds.set_var_s_state(3, 0, 4.0f);
    EXPECT_EQ(ds.m_data.rows(), 5);
    EXPECT_EQ(ds.m_data.cols(), 3);
    // Experiment 6 is not below the 5 rows: the matrix grows to 7 rows of 0.0 first.
    ds.set_var_s_state(6, 0, 4.0f);
    EXPECT_EQ(ds.m_data.rows(), 7);
    EXPECT_EQ(ds.get_var_s_state(2, 6), 0.0f);
    EXPECT_EQ(ds.get_var_s_state(2, 0), 1.0f);
    EXPECT_FALSE(ds.is_dataset_io());
    EXPECT_FALSE(ds.is_perturbed(0, 0));
    ds.reset();
    EXPECT_EQ(ds.m_data.rows(), 0);
    EXPECT_EQ(ds.m_E, 3);
}
