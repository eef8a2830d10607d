// The EM refiner: one round against a hard-assignment M step counted by hand, a round without gain
// giving back the previous PSSM bit for bit, and the window search with its stop below 0.
#include "BicMotifEM.h"
#include "SeedWorld.h"

#include <cmath>

namespace {

const std::vector<float> kPrior = {0.1f, 0.2f, 0.3f, 0.4f};

int base_of(char c) { return static_cast<int>(std::string("ACGT").find(c)); }

// Forward and reverse sums of a site, column by column in the scan's order.
float fwd_sum(const DnaPSSM& p, const std::string& seq, int s) {
    float sum = 0.0f;
    for (int i = 0; i < p.width(); ++i)
        sum += p.m_profile[i].m_log[base_of(seq[s + i])];
    return sum;
}
float rev_sum(const DnaPSSM& p, const std::string& seq, int s) {
    float sum = 0.0f;
    for (int i = 0; i < p.width(); ++i)
        sum += p.m_profile[p.width() - 1 - i].m_log[3 - base_of(seq[s + i])];
    return sum;
}

// Probabilities of the prior plus one count of each letter of `word`, normalised.
DnaPSSM seed_pssm(const std::string& word) {
    DnaPSSM p;
    p.resize(static_cast<int>(word.size()));
    for (size_t c = 0; c < word.size(); ++c) {
        float n[4];
        for (int b = 0; b < 4; ++b)
            n[b] = kPrior[b] + (base_of(word[c]) == b ? 1.0f : 0.0f);
        const float sum = n[0] + n[1] + n[2] + n[3];
        for (int b = 0; b < 4; ++b) {
            p.m_profile[c].m_prob[b] = n[b] / sum;
            p.m_profile[c].m_log[b] = logf(n[b] / sum);
        }
    }
    return p;
}

void expect_same_pssm(const DnaPSSM& a, const DnaPSSM& b) {
    ASSERT_EQ(a.width(), b.width());
    for (int c = 0; c < a.width(); ++c)
        for (int k = 0; k < 4; ++k) {
            EXPECT_EQ(a.m_profile[c].m_prob[k], b.m_profile[c].m_prob[k]) << c << " " << k;
            EXPECT_EQ(a.m_profile[c].m_log[k], b.m_profile[c].m_log[k]) << c << " " << k;
        }
}

struct EMRun {
    EMRun(SeedWorld& w, float max_entropy, int step, int max_range)
        : calc(w), score(calc.asap, w.genome, w.all, bic_options(pssm_score_text(2, 40)), "S"),
          em(score, w.genome, bic_options(em_text(max_entropy, step, max_range)), "EM") {}
    FlatAsap calc;
    BicPssmScore score;
    BicMotifEM em;
};

} // namespace

TEST(BicMotifEM, OneRoundIsTheHardAssignmentStepCountedByHand) {
    struct Case {
        int dir;
        float max_entropy;
    };
    for (const Case c : {Case{0, 10.0f}, Case{1, 10.0f}, Case{0, 0.7f}, Case{1, 0.0f}}) {
        SCOPED_TRACE(c.dir * 100 + c.max_entropy);
        SeedWorld w;
        Quiet q;
        EMRun run(w, c.max_entropy, 10, 0);
        run.em.init(SeedWorld::kPlanted, 3, 70, c.dir);
        run.score.score(run.em.m_pssm);
        const DnaPSSM before = run.em.m_pssm;
        const std::vector<int> genes = run.score.m_best_genes;
        ASSERT_FALSE(genes.empty());
        run.em.assess_pssm();

        // Each best gene's best site over starts 3 .. min(70, length - width) - 1, the earlier start
        // and the forward strand winning ties, counted on top of the prior.
        const int width = 7;
        std::vector<std::vector<float>> n(width, kPrior);
        for (int g : genes) {
            const std::string& seq = w.genome.get_promoter(g);
            float best = -3.4028235e+36f;
            int at = 0, dir = 1;
            for (int s = 3; s < std::min(70, static_cast<int>(seq.size()) - width); ++s) {
                if (fwd_sum(before, seq, s) > best) {
                    best = fwd_sum(before, seq, s);
                    at = s;
                    dir = 1;
                }
                if (c.dir && rev_sum(before, seq, s) > best) {
                    best = rev_sum(before, seq, s);
                    at = s;
                    dir = -1;
                }
            }
            // A reverse site adds the complement of each letter to the column of its position.
            for (int i = 0; i < width; ++i)
                n[i][dir == 1 ? base_of(seq[at + i]) : 3 - base_of(seq[at + i])] += 1.0f;
        }
        int uniform = 0;
        for (int i = 0; i < width; ++i) {
            const double sum = n[i][0] + n[i][1] + n[i][2] + n[i][3];
            double h = 0;
            for (int b = 0; b < 4; ++b)
                h -= n[i][b] / sum * std::log(n[i][b] / sum);
            const bool flat = h > c.max_entropy;
            uniform += flat;
            for (int b = 0; b < 4; ++b)
                EXPECT_NEAR(run.em.m_pssm.m_profile[i].m_prob[b], flat ? 0.25 : n[i][b] / sum, 1e-6) << i;
        }
        if (c.max_entropy == 0.0f) {
            EXPECT_EQ(uniform, width);
        }
        EXPECT_EQ(run.em.m_pssm.m_min_range, 3);
        EXPECT_EQ(run.em.m_pssm.m_max_range, 70);
        EXPECT_EQ(run.em.m_pssm.m_bidirect, c.dir == 1);
    }
}

TEST(BicMotifEM, RoundWithoutGainGivesBackThePreviousPssmExactly) {
    SeedWorld w;
    Quiet q;
    // Every column of the next round is flattened: all promoters tie, the score drops to 0 and the
    // seed's PSSM must come back; the window can't move (MaxRange 0, start 0).
    EMRun run(w, 0.0f, 10, 0);
    const float got = run.em.optimize(SeedWorld::kPlanted, 0, 70, 0);
    const DnaPSSM want = seed_pssm(SeedWorld::kPlanted);
    expect_same_pssm(run.em.m_pssm, want);
    EMRun fresh(w, 0.0f, 10, 0);
    DnaPSSM scored = want;
    scored.m_max_range = 70;
    const float want_score = fresh.score.score(scored);
    EXPECT_GT(want_score, 0.0f);
    EXPECT_EQ(got, want_score);
    EXPECT_EQ(run.em.m_cur_score, want_score);
    EXPECT_EQ(run.em.m_cur_thresh, fresh.score.m_best_thresh);
    EXPECT_EQ(run.em.m_pssm.m_min_range, 0);
    EXPECT_EQ(run.em.m_pssm.m_max_range, 70);
}

TEST(BicMotifEM, WindowSearchMovesWhileItGainsAndStopsBelowZero) {
    struct Case {
        int lo, hi;   // planted site starts
        int from, to; // the seed's window
        int want_from;
        int min_to; // the end reached at least
    };
    const Case cases[] = {
        {0, 3, 10, 70, 0, 70},  // the start steps down to 0, where the sites are
        {0, 3, 5, 70, 5, 70},   // 5 - 10 is below 0: no step is tried
        {32, 35, 0, 30, 0, 40}, // the end steps up to take the sites in
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.from * 1000 + c.to);
        SeedWorld w(9, 80, c.lo, c.hi);
        Quiet q;
        EMRun run(w, 0.0f, 10, 70);
        run.em.optimize(SeedWorld::kPlanted, c.from, c.to, 0);
        EXPECT_EQ(run.em.m_pssm.m_min_range, c.want_from);
        EXPECT_GE(run.em.m_pssm.m_max_range, c.min_to);
        EXPECT_LE(run.em.m_pssm.m_max_range, 70);
        // The final score is the score of the final window.
        EMRun fresh(w, 0.0f, 10, 70);
        EXPECT_EQ(run.em.m_cur_score, fresh.score.score(run.em.m_pssm));
    }
}
