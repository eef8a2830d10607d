// The direct pair HMM against brute-force enumeration of all alignments (totals and expected counts),
// parameter normalisation by hand, table round trips and format fatals, and the one-sequence profile.
#include "ProfileAlign.h"
#include "HMMTestUtil.h"
#include "LogSpace.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

namespace {

PairAlignParams sample_params() {
    PairAlignParams p(3);
    p.m_mm = logf(0.7f), p.m_mg = logf(0.1f), p.m_mf = logf(0.1f);
    p.m_gg = logf(0.5f), p.m_gm = logf(0.4f), p.m_gf = logf(0.1f);
    const float xg[] = {0.2f, 0.3f, 0.5f}, yg[] = {0.6f, 0.3f, 0.1f};
    for (int i = 0; i < 3; ++i) {
        p.m_x_gap[i] = logf(xg[i]);
        p.m_y_gap[i] = logf(yg[i]);
        for (int j = 0; j < 3; ++j)
            p.subs(i, j) = logf((i == j ? 0.2f : 0.05f) + 0.01f * static_cast<float>(i + 2 * j));
    }
    return p;
}

// Every alignment of x and y enumerated: the total probability and the expected transition counts
// (mm, mg, gg, gm, mf, gf), in double.
struct Brute {
    const PairAlignParams& p;
    const SymbolSequence &x, &y;
    double total = 0.0;
    double counts[6] = {0, 0, 0, 0, 0, 0};
    int used[6] = {0, 0, 0, 0, 0, 0};

    // state 0 M, 1 X (gap in y), 2 Y (gap in x).
    void walk(int i, int j, int state, double lp) {
        const int n = static_cast<int>(x.size()), m = static_cast<int>(y.size());
        if (i == n && j == m) {
            const int end = state == 0 ? 4 : 5;
            const double pr = std::exp(lp + (state == 0 ? p.m_mf : p.m_gf));
            total += pr;
            ++used[end];
            for (int c = 0; c < 6; ++c)
                counts[c] += pr * used[c];
            --used[end];
        }
        auto step = [&](int ni, int nj, int ns, int kind, double t, double e) {
            ++used[kind];
            walk(ni, nj, ns, lp + t + e);
            --used[kind];
        };
        if (i < n && j < m)
            step(i + 1, j + 1, 0, state == 0 ? 0 : 3, state == 0 ? p.m_mm : p.m_gm,
                 p.subs(x.code_at(i), y.code_at(j)));
        if (i < n && state != 2)
            step(i + 1, j, 1, state == 0 ? 1 : 2, state == 0 ? p.m_mg : p.m_gg, p.m_x_gap[x.code_at(i)]);
        if (j < m && state != 1)
            step(i, j + 1, 2, state == 0 ? 1 : 2, state == 0 ? p.m_mg : p.m_gg, p.m_y_gap[y.code_at(j)]);
    }
};

TEST(ProfileAlignDirect, TotalsAndCountsEqualEnumeration) {
    QuietCerr quiet;
    PairAlignParams in = sample_params();
    ProfileAlignDirect direct;
    const char* cases[][2] = {{"", ""}, {"0", ""}, {"", "12"}, {"01", "2"}, {"012", "10"}, {"0121", "2012"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c[0]) + "/" + c[1]);
        const SymbolSequence x = digits(c[0]), y = digits(c[1]);
        Brute b{in, x, y};
        b.walk(0, 0, 0, 0.0);
        PairAlignParams out(3);
        const float fwd = direct.direct_prof_align(x, y, in, out, false);
        EXPECT_NEAR(std::log(b.total), fwd, 2e-5 * (1 + std::fabs(fwd)));
        EXPECT_NEAR(fwd, direct.back_total(), 2e-5 * (1 + std::fabs(fwd)));
        const float got[6] = {out.m_mm, out.m_mg, out.m_gg, out.m_gm, out.m_mf, out.m_gf};
        for (int k = 0; k < 6; ++k)
            EXPECT_NEAR(b.counts[k] / b.total, std::exp(got[k]), 1e-4) << "count " << k;
    }
}

TEST(PairAlignParams, NormalizeByHand) {
    QuietCerr quiet;
    PairAlignParams p(2);
    p.m_mm = logf(3), p.m_mg = logf(2), p.m_mf = logf(1);
    p.m_gg = logf(1), p.m_gm = logf(2), p.m_gf = logf(1);
    p.m_x_gap = {logf(1), logf(2)}, p.m_y_gap = {logf(3), logf(2)};
    p.m_subs = {logf(2), logf(1), logf(3), logf(4)};
    p.normalize();
    // M-G halved for the two kinds, then the row over 3 + 1 + 1; each kind gets half of 1/5. Gaps
    // pooled: (1+3, 2+2) over 8; subs over 10, off-diagonal pair averaged.
    const float got[] = {p.m_mm,       p.m_mg,       p.m_mf,       p.m_gg,       p.m_gm,
                         p.m_x_gap[0], p.m_x_gap[1], p.m_y_gap[0], p.m_y_gap[1], p.m_subs[0],
                         p.m_subs[1],  p.m_subs[2],  p.m_subs[3]};
    const double want[] = {0.6, 0.1, 0.2, 0.25, 0.5, 0.5, 0.5, 0.5, 0.5, 0.2, 0.2, 0.2, 0.4};
    for (int k = 0; k < 13; ++k)
        EXPECT_NEAR(want[k], std::exp(got[k]), 1e-6) << k;
}

TEST(PairAlignParams, WriteReadRoundTrip) {
    QuietCerr quiet;
    const PairAlignParams p = sample_params();
    std::ostringstream subs, tran;
    p.write(subs, tran);
    EXPECT_EQ(0u, tran.str().find("M-M\t"));
    std::istringstream si(subs.str()), ti(tran.str());
    PairAlignParams q(3);
    q.read(si, ti);
    const float a[] = {p.m_mm, p.m_mg, p.m_gm, p.m_gg, p.m_mf, p.m_gf},
                b[] = {q.m_mm, q.m_mg, q.m_gm, q.m_gg, q.m_mf, q.m_gf};
    for (int k = 0; k < 6; ++k)
        EXPECT_FLOAT_EQ(a[k], b[k]);
    for (std::size_t k = 0; k < p.m_subs.size(); ++k)
        EXPECT_NEAR(p.m_subs[k], q.m_subs[k], 1e-6);
}

TEST(AlignParamsDeath, FormatFatals) {
    // Each row word of the pair table (6, "M-G" asked for as "a M-G") and of the profile table (3)
    // replaced in turn.
    const std::vector<std::string> pair_rows = {"M-M", "M-G", "G-M", "G-G", "M-F", "G-F"},
                                   prof_rows = {"M", "I", "D"};
    const std::string ok_subs = "0\t1\t0\t0\n1\t0\t1\t0\n2\t0\t0\t1\n";
    for (const auto* rows : {&pair_rows, &prof_rows}) {
        for (std::size_t bad = 0; bad < rows->size(); ++bad) {
            std::string tran;
            for (std::size_t k = 0; k < rows->size(); ++k)
                tran += (k == bad ? "XX" : (*rows)[k]) + (rows == &pair_rows ? "\t-1\n" : " 0 0 0\n");
            std::istringstream si(ok_subs), ti(tran);
            const std::string text =
                R"(ProfileAlign\([0-9]+\): Bad file format in tran table, should have )" +
                std::string(rows == &pair_rows && bad == 1 ? "a " : "") + (*rows)[bad] +
                " line and found XX instead";
            if (rows == &pair_rows)
                EXPECT_DEATH(PairAlignParams(3).read(si, ti), text);
            else
                EXPECT_DEATH(ProfAlignParams(3).read(si, ti), text);
        }
    }
    PairAlignParams p(3);
    std::istringstream si("0\t1\t0\t0\n2\t0\t1\t0\n"), ti("M-M 0\nM-G 0\nG-M 0\nG-G 0\nM-F 0\nG-F 0\n");
    EXPECT_DEATH(p.read(si, ti),
                 R"(ProfileAlign\([0-9]+\): Bad file format when reading char subs tab, 2 vs 1)");
}

TEST(ProfAlignParams, TypeTypeAndOneSequenceProfile) {
    QuietCerr quiet;
    SymbSubstMat mat(4);
    for (int i = 0; i < 16; ++i)
        mat.m_matrix.push_back(i % 5 == 0 ? 0.7f : 0.1f);
    ProfAlignParams p(4);
    p.init_tran_gap(mat, 0.1f, 0.3f);
    EXPECT_FLOAT_EQ(logf(0.8f), p.get_type_type_lp(ProfileHMM::Start, ProfileHMM::M));
    EXPECT_FLOAT_EQ(logf(0.6f), p.get_type_type_lp(ProfileHMM::I, ProfileHMM::Fin));
    EXPECT_FLOAT_EQ(logf(0.3f), p.get_type_type_lp(ProfileHMM::D, ProfileHMM::D));
    EXPECT_TRUE(std::isnan(p.get_type_type_lp(ProfileHMM::Fin, ProfileHMM::M)));
    EXPECT_TRUE(std::isnan(p.get_type_type_lp(ProfileHMM::M, ProfileHMM::Start)));
    EXPECT_TRUE(std::isnan(p.add_type_type_lp(ProfileHMM::M, ProfileHMM::Start, 0.0f)));

    const SymbolSequence seq = digits("0123");
    ProfileAlign pa(4, seq, p);
    // Finish edges of the last M and I take the complement of their other out-edge (to I: 0.1, 0.3).
    const ProfileHMM& h = pa.m_prof;
    for (int type : {ProfileHMM::M, ProfileHMM::I}) {
        float sum = 0.0f;
        for (const HMMAdjacency& a : h.m_adj[h.state_at(4, type)])
            sum += a.p;
        EXPECT_NEAR(1.0f, sum, 1e-6);
    }
    EXPECT_FLOAT_EQ(0.7f, h.m_states[h.state_at(3, ProfileHMM::M)].m_emit[2]);
    EXPECT_LT(pa.align(seq, true), 0.0f);
    EXPECT_EQ(kLogZero, pa.get_align_prob(3, 0, 2));
    EXPECT_NE(std::string::npos, quiet.text().find("called ProfileAlign::get_align_prob with 3 k 2 size 5"));
    EXPECT_LE(pa.get_align_prob(1, 1, 0), 0.0f);
}

} // namespace
