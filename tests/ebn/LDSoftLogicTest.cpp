// Soft-logic distributions: the prior table read at (logic value, own value), the uniform prior
// with its NaN off-diagonal, the four consistency log values, and the fatal texts of the soft
// logic and of the cached consistency table.
#include "LDSoftLogic.h"
#include "LDTable.h"
#include "LocalLogic.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace {

// Node 0 (card 3) whose logic copies node 1 (card 3); node 2 binary.
struct SoftNet {
    BNet<int> net;
    BNState<int> st{net};
    std::unique_ptr<LocalLogicSet> logic;
    SoftNet() {
        for (int card : {3, 3, 2})
            net.add_rand_var(net.get_nodes_num(), card);
        st.reset();
        logic.reset(new LocalLogicSet(net));
    }
    float logp(const LocalDist<int>& ld, std::vector<int> vals) {
        for (int v = 0; v < 3; ++v)
            st.set_rv_state(v, vals[v]);
        return ld.logp();
    }
};

TEST(LDSoftLogic, PriorTablesAndConsistencyLogValues) {
    SoftNet s;
    LDSoftLogic ld(s.net, s.st, 0);
    EXPECT_EQ(ld.get_priors(), std::vector<float>(9, 0.0f));
    ld.set_root(s.logic->get_variable_inp_node(1));
    std::vector<float> t(9);
    for (int i = 0; i < 9; ++i)
        t[i] = -static_cast<float>(i);
    ld.set_priors(t);
    ld.set_prior(2, 1, 5.0f);
    testing::internal::CaptureStderr();
    for (int a = 0; a < 3; ++a)
        for (int y = 0; y < 3; ++y)
            EXPECT_EQ(s.logp(ld, {y, a, 0}), a == 2 && y == 1 ? 5.0f : -static_cast<float>(3 * a + y))
                << a << y;
    // (1 - p) / (1 - card) is negative: off-diagonal NaN, diagonal log p.
    ld.set_uniform_prior(0.8f);
    for (int i = 0; i < 9; ++i)
        EXPECT_TRUE(i % 4 == 0 ? ld.get_priors()[i] == logf(0.8f) : std::isnan(ld.get_priors()[i])) << i;

    LDConsistSoftLogic cs(s.net, s.st, 2);
    cs.set_logic(s.logic->get_variable_inp_node(1));
    cs.set_logic_out_var(0);
    // Output card 3: p spread over the two other values; below 0.001 log(1 - p) is -p.
    const struct {
        float p, agree_t, agree_f, dis_t, dis_f;
    } cases[] = {
        {0.2f, logf(0.8f), logf(0.2f), logf(0.1f), logf(0.9f)},
        {0.0006f, -0.0006f, logf(0.0006f), logf(0.0003f), -0.0003f},
    };
    for (const auto& c : cases) {
        cs.set_consist_prior(c.p);
        EXPECT_FLOAT_EQ(s.logp(cs, {2, 2, 1}), c.agree_t) << c.p;
        EXPECT_FLOAT_EQ(s.logp(cs, {2, 2, 0}), c.agree_f) << c.p;
        EXPECT_FLOAT_EQ(s.logp(cs, {0, 1, 1}), c.dis_t) << c.p;
        EXPECT_FLOAT_EQ(s.logp(cs, {1, 2, 0}), c.dis_f) << c.p;
    }
    testing::internal::GetCapturedStderr();
}

TEST(LDSoftLogicDeathTest, FatalTexts) {
    SoftNet s;
    LDSoftLogic ld(s.net, s.st, 0);
    std::vector<float> four(4, 0.0f);
    s.net.insert_edge(1, 2, -1);
    s.net.insert_edge(0, 2, -1);
    LDTable consist(s.net, s.st, 2);
    LocalLogicHNodeMax zero;
    const struct {
        std::function<void()> call;
        const char* text;
    } cases[] = {
        {[&] { ld.set_uniform_prior(1.0f); },
         R"(LDSoftLogic\([0-9]+\): Cannot set a prior 1 larger than 1  in set unif prior, rvid 0)"},
        {[&] { ld.set_priors(four); },
         R"(LDSoftLogic\([0-9]+\): Tried to set priors for soft logic of rvid 0 with table of size 4 for card 3 needed size 9)"},
        {[&] { consist.cache_consist_from_hnode(zero, 0, 0.1f, s.st); },
         R"(LDTable\([0-9]+\): First paretn max equal out rvid when init consist from hnode, m_rvid was 2)"},
    };
    for (const auto& c : cases)
        EXPECT_DEATH(c.call(), c.text);
}

} // namespace
