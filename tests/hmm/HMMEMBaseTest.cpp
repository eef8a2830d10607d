// Tests of Baum-Welch training: one round against the double-precision model of
// tests/hmm/hmm_ref.py, pseudo counts, the stop rule and recovery of sampled parameters.
#include "HMMEMBase.h"
#include "HMMDecode.h"
#include "HMMTestUtil.h"
#include "LogSpace.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <random>

namespace {

SymbolSequenceSet one_set(const SymbolSequence& s) {
    SymbolSequenceSet set;
    set.push_back(s);
    return set;
}

TEST(HMMEMBase, OneCasinoRoundEqualsTextbookBaumWelch) {
    std::ifstream in(source_dir() + "/data/hmm/casino_em1.txt");
    ASSERT_TRUE(in);
    QuietCerr quiet;
    HMM h(6);
    build_casino(h);
    HMMEMBase em(h, 0.1f, false);
    em.resize_tabs();
    const float ll = em.expectation(one_set(digits(casino_rolls())));
    em.maximization();

    std::string line;
    std::getline(in, line); // comment
    std::string word;
    double expected_ll;
    in >> word >> expected_ll;
    EXPECT_NEAR(expected_ll, ll, 1e-5 * std::fabs(expected_ll));
    for (int e = 0; e < 8; ++e) {
        int from, to;
        double p;
        in >> from >> to >> p;
        EXPECT_NEAR(p, edge_p(h, from, to), 1e-5) << from << " -> " << to;
        // The incoming copy holds exactly the same value.
        for (const HMMAdjacency& a : h.m_back_adj[to]) {
            if (a.from == from) {
                EXPECT_EQ(edge_p(h, from, to), a.p);
            }
        }
    }
    for (int s = 0; s < 2; ++s) {
        int state;
        in >> state;
        for (int b = 0; b < 6; ++b) {
            double p;
            in >> p;
            EXPECT_NEAR(p, h.m_states[state].m_emit[b], 1e-5) << state << " " << b;
            EXPECT_FLOAT_EQ(logf(h.m_states[state].m_emit[b]), h.m_states[state].m_log_emit[b]);
        }
    }
    ASSERT_TRUE(static_cast<bool>(in));
    // Expected counts of the emissions: each emitting position once, over the two dice.
    EXPECT_NEAR(18.0, std::exp(em.m_ek_sum[1]) + std::exp(em.m_ek_sum[2]), 1e-3);
    EXPECT_FLOAT_EQ(ll / 18.0f, em.m_worst_seq_p);
}

TEST(HMMEMBase, UnusedStateGetsUniformParametersAndRowsSumToOne) {
    QuietCerr quiet;
    HMM h(6);
    build_casino(h);
    // A third die that no path reaches (its only way in has probability 0), with three out-edges.
    const int spare = h.new_state(false);
    h.add_transition(1, spare, 0.0f);
    h.add_transition(spare, 1, 0.7f);
    h.add_transition(spare, 2, 0.2f);
    h.add_transition(spare, spare, 0.1f);
    for (int b = 0; b < 6; ++b)
        h.set_state_emission(spare, b, b == 0 ? 1.0f : 0.0f);
    HMMEMBase em(h, 0.1f, false);
    em.resize_tabs();
    SymbolSequenceSet seqs = one_set(digits(casino_rolls()));
    seqs.push_back(digits("0123455"));
    em.expectation(seqs);
    em.maximization();
    for (const HMMAdjacency& a : h.m_adj[spare])
        EXPECT_NEAR(1.0f / 3.0f, a.p, 1e-6);
    for (int b = 0; b < 6; ++b)
        EXPECT_NEAR(1.0f / 6.0f, h.m_states[spare].m_emit[b], 1e-6);
    // The impossible edge has become possible.
    EXPECT_GT(edge_p(h, 1, spare), 0.0f);
    for (int k = 0; k < h.num_states(); ++k) {
        if (k == h.m_finish_state)
            continue;
        float sum = 0;
        for (const HMMAdjacency& a : h.m_adj[k])
            sum += a.p;
        EXPECT_NEAR(1.0f, sum, 1e-4) << "state " << k;
    }
}

TEST(HMMEMBase, HugeBoundReturnsOnePassUntrained) {
    QuietCerr quiet;
    HMM h(6);
    build_casino(h);
    const SymbolSequenceSet seqs = one_set(digits(casino_rolls()));
    HMMEMBase em(h, 3.4028235e38f, true);
    const float ll = em.local_opt(seqs);
    EXPECT_EQ(ForwardDecode(h).decode(seqs[0]), ll);
    EXPECT_EQ(0.95f, edge_p(h, 1, 1));
    EXPECT_EQ(0.5f, h.m_states[2].m_emit[5]);
    EXPECT_NE(std::string::npos, quiet.text().find("EM: start, eps is 3.40282e+38"));
}

TEST(HMMEMBase, LocalOptReturnsTheLikelihoodBeforeTheLastRound) {
    QuietCerr quiet;
    HMM h(6);
    build_casino(h);
    SymbolSequenceSet seqs = one_set(digits(casino_rolls()));
    seqs.push_back(digits("5555012345"));
    // A negative bound can never stop the loop on its own... a large one stops after two rounds.
    HMMEMBase em(h, 1e30f, false);
    const float ll = em.local_opt(seqs);
    // Two rounds ran (the first always goes on); the second expectation scored the model left by the
    // first maximization, and that is what comes back.
    HMM ref(6);
    build_casino(ref);
    HMMEMBase one(ref, 0.1f, false);
    one.resize_tabs();
    one.expectation(seqs);
    one.maximization();
    float expected = 0;
    for (const SymbolSequence& s : seqs)
        expected += ForwardDecode(ref).decode(s);
    EXPECT_EQ(expected, ll);
    EXPECT_NE(std::string::npos, quiet.text().find("EM : iter 1 LL = "));
    EXPECT_EQ(std::string::npos, quiet.text().find("EM : iter 2 LL = "));
    // The model after the second maximization differs from the one after the first.
    EXPECT_NE(edge_p(ref, 1, 1), edge_p(h, 1, 1));
}

TEST(HMMEMBase, RecoversSampledCasino) {
    const std::uint32_t seed = test_seed(4242);
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 rng(seed);
    auto uni = [&rng]() { return rng() / 4294967296.0; };
    // 10^5 rolls from the casino in 100 sequences of 1000, starting on either die.
    SymbolSequenceSet seqs;
    for (int n = 0; n < 100; ++n) {
        SymbolSequence s;
        bool loaded = uni() < 0.5;
        for (int i = 0; i < 1000; ++i) {
            const double u = uni();
            int roll;
            if (loaded)
                roll = u < 0.5 ? 5 : static_cast<int>((u - 0.5) / 0.1);
            else
                roll = static_cast<int>(u * 6.0);
            s.push_back(static_cast<char>(std::min(roll, 5)));
            loaded = loaded ? uni() < 0.9 : uni() < 0.05;
        }
        seqs.push_back(s);
    }
    // Start away from the truth.
    QuietCerr quiet;
    HMM h(6);
    build_casino(h, Casino{0.85f, 0.1f, 0.05f, 0.2f, 0.75f, 0.05f, 0.2f, 0.16f, 0.35f, 0.13f});
    const int fair = 1, loaded = 2;
    HMMEMBase em(h, 0.01f, false);
    em.local_opt(seqs);
    // A total of 1.7e5 in single precision is only good to a few tenths, so local_opt stops while the
    // slow casino parameters still creep; further single rounds take them to the fixed point.
    for (int r = 0; r < 100; ++r) {
        const float before = edge_p(h, loaded, loaded);
        em.resize_tabs();
        em.expectation(seqs);
        em.maximization();
        if (std::fabs(edge_p(h, loaded, loaded) - before) < 1e-4f)
            break;
    }
    EXPECT_NEAR(0.95, edge_p(h, fair, fair), 0.02);
    EXPECT_NEAR(0.05, edge_p(h, fair, loaded), 0.02);
    EXPECT_NEAR(0.9, edge_p(h, loaded, loaded), 0.02);
    EXPECT_NEAR(0.1, edge_p(h, loaded, fair), 0.02);
    for (int b = 0; b < 6; ++b) {
        EXPECT_NEAR(1.0 / 6.0, h.m_states[fair].m_emit[b], 0.02) << b;
        EXPECT_NEAR(b == 5 ? 0.5 : 0.1, h.m_states[loaded].m_emit[b], 0.02) << b;
    }
}

} // namespace
