// Soft-logic distributions: the prior table read at (logic value, own value), the uniform prior
// with its NaN off-diagonal, the four consistency log values, and the fatal texts.
#include "LDSoftLogic.h"
#include "LocalLogic.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace {

// Node 0 (card 3) whose logic copies node 1 (card 3); node 2 binary.
struct SoftNet {
    BNet<int> net;
    std::unique_ptr<BNState<int>> st;
    std::unique_ptr<LocalLogicSet> logic;
    SoftNet() {
        net.add_rand_var(0, 3);
        net.add_rand_var(1, 3);
        net.add_rand_var(2, 2);
        st.reset(new BNState<int>(net));
        net.set_state_ref(*st);
        logic.reset(new LocalLogicSet(net));
    }
};

TEST(LDSoftLogic, PriorTableIsReadAtLogicValueAndOwnValue) {
    SoftNet s;
    LDSoftLogic ld(s.net, *s.st, 0);
    EXPECT_EQ(ld.get_priors(), std::vector<float>(9, 0.0f));
    ld.set_root(s.logic->get_variable_inp_node(1));
    std::vector<float> t(9);
    for (int i = 0; i < 9; ++i)
        t[i] = -static_cast<float>(i);
    ld.set_priors(t);
    ld.set_prior(2, 1, 5.0f);
    testing::internal::CaptureStderr();
    for (int a = 0; a < 3; ++a)
        for (int y = 0; y < 3; ++y) {
            s.st->set_rv_state(1, a);
            s.st->set_rv_state(0, y);
            EXPECT_EQ(ld.logp(), a == 2 && y == 1 ? 5.0f : -static_cast<float>(3 * a + y)) << a << " " << y;
        }
    testing::internal::GetCapturedStderr();

    // (1 - p) / (1 - card) is negative: off-diagonal NaN, diagonal log p.
    ld.set_uniform_prior(0.8f);
    for (int i = 0; i < 9; ++i) {
        if (i % 4 == 0)
            EXPECT_FLOAT_EQ(ld.get_priors()[i], logf(0.8f)) << i;
        else
            EXPECT_TRUE(std::isnan(ld.get_priors()[i])) << i;
    }
}

TEST(LDSoftLogic, ConsistencyLogValues) {
    SoftNet s;
    LDConsistSoftLogic ld(s.net, *s.st, 2);
    ld.set_logic(s.logic->get_variable_inp_node(1));
    ld.set_logic_out_var(0);
    // Output card 3: p spread over the two other values.
    const struct {
        float p, agree_t, agree_f, dis_t, dis_f;
    } cases[] = {
        {0.2f, logf(0.8f), logf(0.2f), logf(0.1f), logf(0.9f)},
        {0.0006f, -0.0006f, logf(0.0006f), logf(0.0003f), -0.0003f},
    };
    testing::internal::CaptureStderr();
    for (const auto& c : cases) {
        ld.set_consist_prior(c.p);
        const struct {
            int out, logic, self;
            float want;
        } states[] = {{2, 2, 1, c.agree_t}, {2, 2, 0, c.agree_f}, {0, 1, 1, c.dis_t}, {1, 2, 0, c.dis_f}};
        for (const auto& x : states) {
            s.st->set_rv_state(0, x.out);
            s.st->set_rv_state(1, x.logic);
            s.st->set_rv_state(2, x.self);
            EXPECT_FLOAT_EQ(ld.logp(), x.want) << c.p << " " << x.out << x.logic << x.self;
        }
    }
    testing::internal::GetCapturedStderr();
}

TEST(LDSoftLogicDeathTest, FatalTexts) {
    SoftNet s;
    LDSoftLogic ld(s.net, *s.st, 0);
    std::vector<float> four(4, 0.0f);
    const struct {
        std::function<void()> call;
        const char* text;
    } cases[] = {
        {[&] { ld.set_uniform_prior(1.0f); },
         R"(LDSoftLogic\([0-9]+\): Cannot set a prior 1 larger than 1  in set unif prior, rvid 0)"},
        {[&] { ld.set_priors(four); },
         R"(LDSoftLogic\([0-9]+\): Tried to set priors for soft logic of rvid 0 with table of size 4 for card 3 needed size 9)"},
    };
    for (const auto& c : cases)
        EXPECT_DEATH(c.call(), c.text);
}

} // namespace
