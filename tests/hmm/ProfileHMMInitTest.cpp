// The random star initialiser on three sequences whose star alignment and counts are worked out by
// hand (the same whichever centre is drawn), and its pass counter.
#include "ProfileHMMInit.h"
#include "HMMTestUtil.h"
#include "Random.h"

#include <gtest/gtest.h>

namespace {

typedef ProfileHMM P;

class Store : public ProfilerStoreBase {
public:
    const SymbolSequenceSet& get_seq_family() override { return seqs; }
    ProfileHMM& get_target_profile() override { return prof; }
    SymbolSequenceSet seqs;
    ProfileHMM prof{4, 0};
};

TEST(ProfileHMMInitRandStar, CountsOfAHandAlignment) {
    QuietCerr quiet;
    SymbSubstMat m(4);
    for (int i = 0; i < 16; ++i)
        m.m_matrix.push_back(i % 5 == 0 ? 5.0f : -5.0f);
    Store st;
    // Codes A 0, B 1, C 2: AB, AB, ACB. Either centre gives match columns A and B and C as an insert
    // after the first column (with centre ACB the C column has 2 gaps to 1 residue).
    for (const char* s : {"01", "01", "021"})
        st.seqs.push_back(digits(s));
    for (int seed : {1, 2, 3, 4, 5, 6}) {
        Random::reset(seed);
        ProfileHMMInitRandStar init(m, -3, 3, 1.0f, false);
        init.attach_profiler(&st);
        init.reinit();
        const ProfileHMM& h = st.prof;
        ASSERT_EQ(2, h.m_length);
        struct E {
            int fp, ft, tp, tt;
            float p;
        };
        const E edges[] = {
            // Out of Start: 3 M->M seen of 3 + 3 pseudo.
            {0, P::M, 1, P::M, 4.f / 6},
            {0, P::M, 1, P::D, 1.f / 6},
            {0, P::M, 0, P::I, 1.f / 6},
            {0, P::I, 1, P::M, 1.f / 3},
            {0, P::I, 0, P::I, 1.f / 3},
            {0, P::I, 1, P::D, 1.f / 3},
            // Out of column 1: two M->M, one M->I, one I->M.
            {1, P::M, 2, P::M, 3.f / 6},
            {1, P::M, 1, P::I, 2.f / 6},
            {1, P::M, 2, P::D, 1.f / 6},
            {1, P::I, 2, P::M, 2.f / 4},
            {1, P::I, 1, P::I, 1.f / 4},
            {1, P::I, 2, P::D, 1.f / 4},
            {1, P::D, 2, P::M, 1.f / 3},
            {1, P::D, 1, P::I, 1.f / 3},
            {1, P::D, 2, P::D, 1.f / 3},
            // At the end only pseudo counts, the totals less one.
            {2, P::M, 3, P::M, 0.5f},
            {2, P::M, 2, P::I, 0.5f},
            {2, P::I, 3, P::M, 0.5f},
            {2, P::I, 2, P::I, 0.5f},
            {2, P::D, 3, P::M, 0.5f},
            {2, P::D, 2, P::I, 0.5f},
        };
        for (const E& e : edges)
            EXPECT_FLOAT_EQ(e.p, edge_p(h, h.state_at(e.fp, e.ft), h.state_at(e.tp, e.tt)))
                << e.fp << " " << e.ft << " " << e.tt;
        for (int b = 0; b < 4; ++b) {
            EXPECT_FLOAT_EQ(b == 0 ? 4.f / 7 : 1.f / 7, h.m_states[h.state_at(1, P::M)].m_emit[b]);
            EXPECT_FLOAT_EQ(b == 1 ? 4.f / 7 : 1.f / 7, h.m_states[h.state_at(2, P::M)].m_emit[b]);
            EXPECT_FLOAT_EQ(0.25f, h.m_states[h.state_at(0, P::I)].m_emit[b]);
            EXPECT_FLOAT_EQ(b == 2 ? 2.f / 5 : 1.f / 5, h.m_states[h.state_at(1, P::I)].m_emit[b]);
            EXPECT_FLOAT_EQ(0.25f, h.m_states[h.state_at(2, P::I)].m_emit[b]);
        }
        // MaxIter 3 gives two passes.
        EXPECT_TRUE(init.carry_on());
        EXPECT_TRUE(init.carry_on());
        EXPECT_FALSE(init.carry_on());
    }
}

} // namespace
