// Value spaces and scalar functions: the contract every probability space keeps, then hand-worked
// bins, states, clamping and ties.
#include "ModelTestUtil.h"
#include "ValSpace3.h"
#include "ValSpaceAutoProb.h"
#include "ValSpaceDiscrete.h"
#include "ValSpaceK.h"
#include "ValSpaceProb.h"
#include "plinear.h"

#include <memory>

namespace {

// Every value space whose get_val_state_prob is a probability, built as the cases below build it.
struct Crisp3 {
    static constexpr int kStates = 3;
    static ValSpaceBase* make() { return new ValSpace3(test_options(""), "V"); }
};
struct Discrete {
    static constexpr int kStates = 4;
    static ValSpaceBase* make() {
        options& o = test_options("[D]\nRanges = { f 3\n-1 0 1\n}\nBinSize = 0.5\n");
        ValSpaceBase* vs = nullptr;
        quiet([&] { vs = new ValSpaceDiscrete(o, "D"); });
        return vs;
    }
};
// Down through (-1,1),(0,0); a hat through (-1,0),(0,1),(1,0); up through (0,0),(1,1) (flat past (5,1)).
// Bins of 0.5 from -2 to 2.
struct Prob {
    static constexpr int kStates = 3;
    static ValSpaceProb* make() {
        options& o = test_options(
            "[S0]\nPoints = { f 4\n-1 1 0 0\n}\n[S1]\nPoints = { f 6\n-1 0 0 1 1 0\n}\n"
            "[S2]\nPoints = { f 8\n0 0 1 1 5 1 6 1\n}\n[VS]\nFuncScopes = { s 3\nS0\nS1\nS2\n}\nLogit = 0\n"
            "BinSize = 0.5\nRangeMax = 2\nZeroState = 1.7\nRangeBase = -2\n");
        ValSpaceProb* vs = nullptr;
        quiet([&] { vs = new ValSpaceProb(o, "VS", false); });
        return vs;
    }
};
struct AutoProb {
    static constexpr int kStates = 3;
    static ValSpaceBase* make() {
        Grid g(2, 3, {-1.75f, -0.75f, -0.25f, 0.25f, 1.25f, 1.75f});
        ValSpaceAutoProb* vs = new ValSpaceAutoProb(
            test_options(
                "[Auto]\nLogit = 0\nSureFactor = 0.1\nSoSoFactor = 0.3\nOffset = 2\nMaxDiscBins = 8\n"),
            "Auto", true);
        quiet([&] { vs->reinit_auto(g.ds); });
        return vs;
    }
};

template <class S> class ValSpaceContract : public testing::Test {};
typedef testing::Types<Crisp3, Discrete, Prob, AutoProb> ProbSpaces;
TYPED_TEST_SUITE(ValSpaceContract, ProbSpaces);

} // namespace

// Every state lies in range, every probability in [0, 1], and no state is likelier than the state
// of the value (all may be 0 where no state function reaches). The values sit in the middle of the
// tabulation bins (0.5 wide from -2 or -1), away from the bin edges where the state and the
// probability row are looked up by different roundings.
TYPED_TEST(ValSpaceContract, StatesInRangeAndProbabilitiesAgreeWithTheState) {
    const std::unique_ptr<ValSpaceBase> vs(TypeParam::make());
    for (float v = -5.75f; v < 6.0f; v += 0.5f) {
        SCOPED_TRACE(v);
        const int s = vs->get_state_of_val(v);
        ASSERT_GE(s, 0);
        ASSERT_LT(s, TypeParam::kStates);
        const float own = vs->get_val_state_prob(s, v);
        for (int t = 0; t < TypeParam::kStates; ++t) {
            const float p = vs->get_val_state_prob(t, v);
            EXPECT_GE(p, 0.0f);
            EXPECT_LE(p, own) << "state " << t;
        }
        EXPECT_LE(own, 1.0f);
    }
    const int zero = vs->get_zero_state();
    EXPECT_TRUE(zero >= 0 && zero < TypeParam::kStates);
}

TEST(ScalarFunc, PiecewiseLinearAndFriends) {
    options& o =
        test_options("[P]\nPoints = { f 8\n0 0 1 2\n3 2 4 0\n}\n[C]\nConstVal = 2.5\n[L]\ny0 = 1\nk = -2\n"
                     "[D]\nDeltaVal = 0.5\n");
    sf_plinear<4> hat;
    hat.init_from_options(o, "P");
    sf_const c;
    c.init_from_options(o, "C");
    sf_linear l;
    l.init_from_options(o, "L");
    sf_delta d;
    d.init_from_options(o, "D");
    // Points (0,0), (1,2), (3,2), (4,0); flat outside them.
    const float xs[] = {-1.0f, 0.5f, 2.0f, 3.5f, 9.0f}, ys[] = {0.0f, 1.0f, 2.0f, 1.0f, 0.0f};
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(hat(xs[i]), ys[i]) << xs[i];
    EXPECT_EQ(c(-7.0f), 2.5f);
    EXPECT_EQ(l(3.0f), -5.0f);
    EXPECT_EQ(d(0.5f), 1.0f);
    EXPECT_EQ(d(0.51f), 0.0f);
}

TEST(ValSpaceK, TruncatesAndClampsAndValSpace3HasStrictThresholds) {
    options o;
    ValSpaceK k(o, "any", 3);
    ValSpace3 v3(o, "kaka");
    const float vals[] = {5.0f, -0.5f, 2.7f, 1.0f, -1.0f, 1.0001f, -1.0001f};
    const int k_states[] = {3, 0, 2, 1, 0, 1, 0}, v3_states[] = {1, 0, 1, 0, 0, 1, 2};
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(k.get_state_of_val(vals[i]), k_states[i]) << vals[i];
        EXPECT_EQ(v3.get_state_of_val(vals[i]), v3_states[i]) << vals[i];
    }
    EXPECT_EQ(k.get_val_state_prob(0, 2.7f), 2.7f);
    EXPECT_EQ(k.get_val_state_prob(1, 9.0f), 3.0f);
    EXPECT_EQ(k.get_val_state_prob(2, -1.0f), 0.0f);
    EXPECT_EQ(v3.get_val_state_prob(2, -3.0f), 1.0f);
    EXPECT_EQ(v3.get_val_state_prob(0, -3.0f), 0.0f);
    EXPECT_EQ(v3.get_zero_state(), 0);
}

TEST(ValSpaceDiscrete, AllBinsBelowTheTopGetStateOne) {
    options& o = test_options(
        "[D]\nRanges = { f 3\n-1 0 1\n}\nBinSize = 0.5\n[Q]\nRanges = { f 2\n2 3\n}\nBinSize = 0.5\n");
    std::unique_ptr<ValSpaceDiscrete> d, q;
    EXPECT_EQ(quiet([&] { d.reset(new ValSpaceDiscrete(o, "D")); }),
              "max range size 5 base -1 factor 2 max_state_id 4\n");
    // cur runs -0.5, 0, 0.5 below the top 1: three 1s, then n = 3.
    EXPECT_EQ(d->m_state_of_bin, (std::vector<int>{0, 1, 1, 1, 3}));
    EXPECT_EQ(d->get_state_of_val(-0.4f), 0); // trunc(2 * -0.4 + 1) = 0
    EXPECT_EQ(d->get_state_of_val(0.0f), 1);
    EXPECT_EQ(d->get_state_of_val(-9.0f), 0);
    EXPECT_EQ(d->get_state_of_val(50.0f), 3);
    EXPECT_EQ(d->get_val_state_prob(1, 0.6f), 1.0f);
    EXPECT_EQ(d->get_val_state_prob(3, 0.6f), 0.0f);

    // The base is not scaled: 2.2 looks up trunc(2 * 2.2 - 2) = 2, the top state.
    quiet([&] { q.reset(new ValSpaceDiscrete(o, "Q")); });
    EXPECT_EQ(q->m_state_of_bin, (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(q->get_state_of_val(2.2f), 2);
}

namespace {

// The table of the three functions of Prob.
void expect_hand_table(const ValSpaceProb& p) {
    ASSERT_EQ(p.m_probs.rows(), 9);
    ASSERT_EQ(p.m_states, 3);
    const float probs[9][3] = {{1, 0, 0},       {1, 0, 0}, {1, 0, 0}, {0.5f, 0.5f, 0}, {0, 1, 0},
                               {0, 0.5f, 0.5f}, {0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
    for (int i = 0; i < 9; ++i)
        for (int s = 0; s < 3; ++s)
            EXPECT_EQ(p.m_probs(i, s), probs[i][s]) << "bin " << i << " state " << s;
    // Ties at -0.5 and 0.5 go to the lower state.
    EXPECT_EQ(p.m_state_of_bin, (std::vector<int>{0, 0, 0, 0, 1, 1, 2, 2, 2}));
    EXPECT_EQ(p.get_zero_state(), 1);
}

} // namespace

TEST(ValSpaceProb, TabulatesAndLooksUp) {
    options o;
    ValSpaceProb p(o, "unused", true);
    EXPECT_EQ(p.get_state_of_val(0.3f), 0); // deferred: nothing tabulated yet
    sf_plinear<2> down, up;
    sf_plinear<3> hat;
    down.init({-1, 0}, {1, 0});
    hat.init({-1, 0, 1}, {0, 1, 0});
    up.init({0, 1}, {0, 1});
    p.init({&down, &hat, &up}, -2.0f, 1.9f, 2.0f, 0.5f, 0);
    expect_hand_table(p);
    // Position (v + 2) * 2: rounded up for v >= 0, truncated below.
    EXPECT_EQ(p.get_state_of_val(0.25f), 1);  // 4.5 -> 5
    EXPECT_EQ(p.get_state_of_val(-0.25f), 0); // 3.5 -> 3
    EXPECT_EQ(p.get_state_of_val(-5.0f), 0);  // below the range
    EXPECT_EQ(p.get_state_of_val(10.0f), 2);  // above it
    // On a whole position the probability comes from the next bin: at 0.5 the state is 1, yet
    // bin 6 gives state 2 probability 1.
    EXPECT_EQ(p.get_state_of_val(0.5f), 1);
    EXPECT_EQ(p.get_val_state_prob(2, 0.5f), 1.0f);
    EXPECT_EQ(p.get_val_state_prob(0, -0.75f), 1.0f); // 2.5 -> bin 2
    EXPECT_EQ(p.get_val_state_prob(2, 50.0f), 1.0f);
}

TEST(ValSpaceProb, FromOptions) {
    expect_hand_table(*std::unique_ptr<ValSpaceProb>(Prob::make()));

    options& bad =
        test_options("[S]\nPoints = { f 10\n0 0 1 1 2 2 3 3 4 4\n}\n[VS]\nFuncScopes = { s 1\nS\n}\n");
    EXPECT_DEATH(ValSpaceProb(bad, "VS", false),
                 R"(ValSpaceProb\([0-9]+\): No support for more then 4 point in discretization functions)");
}
