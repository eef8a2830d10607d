// StateDataSetBV: the discrete table, value moves, the value-0 hole and the in-out split.
#include "StateDataSetBV.h"
#include "ModelTestUtil.h"

namespace {

struct BV : testing::Test {
    void SetUp() override { load_small_universe(u); }
    void read_small(const std::string& extra = "") {
        std::ifstream key(model_data("small_tab/expk.txt").c_str()),
            expd(model_data("small_expd.txt").c_str());
        std::stringstream data;
        data << expd.rdbuf() << extra;
        quiet([&] { bv.read(key, data, 0.8f); });
    }
    VarUniverse u;
    StateDataSetBV bv{u, 3};
};

// The ValSpace3 states of the small data set (up above 1, down below -1), missing cells at 0.
const int kStates[5][3] = {{0, 1, 2}, {0, 0, 1}, {2, 0, 1}, {1, 0, 0}, {0, 1, 2}};

} // namespace

TEST_F(BV, ReadsTheLastValueAtOrAboveTheThreshold) {
    read_small();
    ASSERT_EQ(bv.m_E, 3);
    for (int v = 0; v < 5; ++v)
        for (int e = 0; e < 3; ++e)
            EXPECT_EQ(bv.get_var_in_state(e, v), kStates[v][e]) << "v " << v << " e " << e;
    EXPECT_TRUE(bv.verify());
    // This reader takes the series from the sixth key column.
    EXPECT_EQ(bv.m_e_series, (std::vector<int>{1, 1, 0}));

    // With the default threshold 1.0 a probability of 0.85 picks nothing.
    StateDataSetBV strict(u, 3);
    std::istringstream key("0 a x 0 0 0\n"), data("0 0 7 3 0.1 0.85 0.05\n1 0 7 3 0 0 1\n");
    quiet([&] { strict.read(key, data); });
    EXPECT_EQ(strict.get_var_s_state(0, 0), 0.0f);
    EXPECT_EQ(strict.get_var_s_state(0, 1), 2.0f);
}

TEST_F(BV, PickedValueZeroLeavesAHole) {
    read_small("3 1 7 3 0.9 0 0\n");
    EXPECT_EQ(bv.get_var_in_state(0, 3), 1.0f);
    bool ok = true;
    EXPECT_EQ(quiet([&] { ok = bv.verify(); }), "no val at e 1 v 3\n");
    EXPECT_FALSE(ok);
    EXPECT_DEATH(bv.get_var_in_state(1, 3),
                 R"(StateDataSetBV\([0-9]+\): Should always have one value bv on, e=1 3)");
    bv.set_var_s_state(1, 3, 2.0f); // setting a value fills the hole
    EXPECT_EQ(bv.get_var_s_state(1, 3), 2.0f);
    EXPECT_TRUE(bv.verify());
}

TEST_F(BV, SettersMoveTheBitSplitInAndOutAndRejectBadValues) {
    read_small();
    bv.set_var_in_state(2, 0, 0.0f);
    bv.set_var_out_state(0, 0, 2.0f); // not in-out: the in state
    EXPECT_EQ(bv.get_var_in_state(2, 0), 0.0f);
    EXPECT_EQ(bv.get_var_in_state(0, 0), 2.0f);
    EXPECT_TRUE(bv.verify());
    EXPECT_DEATH(bv.set_var_in_state(0, 1, 1.5f),
                 R"(StateDataSetBV\([0-9]+\): Cant set value of eid 0 1 to new_val 1\.5)");
    EXPECT_DEATH(bv.set_var_in_state(0, 1, 3.0f),
                 R"(StateDataSetBV\([0-9]+\): Cant set value of eid 0 1 to new_val 3)");

    // Growing adds experiments at value 0; in and out then split, out starting as the in state.
    bv.set_max_eid(5, true);
    EXPECT_TRUE(bv.is_dataset_io());
    EXPECT_EQ(bv.get_var_in_state(4, 2), 0.0f);
    EXPECT_EQ(bv.get_var_out_state(1, 0), 1.0f);
    bv.set_var_out_state(4, 1, 2.0f);
    EXPECT_EQ(bv.get_var_out_state(4, 1), 2.0f);
    EXPECT_EQ(bv.get_var_in_state(4, 1), 0.0f);
    EXPECT_TRUE(bv.verify());
}

TEST_F(BV, FatalReads) {
    auto read = [this](const char* d) {
        std::istringstream key("0 a x 0 0 0\n"), data(d);
        bv.read(key, data, 0.5f);
    };
    EXPECT_DEATH(read("0 0 7 4 0 0 0 1\n"),
                 R"(StateDataSetBV\([0-9]+\): Remove the temorary hardwired 3 cardinality limit)");
    EXPECT_DEATH(read("0 1 7 3 0 1 0\n"), R"(StateDataSetBV\([0-9]+\): Too big e_id)");
    EXPECT_DEATH(read("5 0 7 3 0 1 0\n"), R"(StateDataSetBV\([0-9]+\): Bad var num 5)");
}
