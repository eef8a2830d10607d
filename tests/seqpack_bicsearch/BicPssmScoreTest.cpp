// The PSSM scorer: its curve on random rankings with ties against prefix sets scored from scratch,
// MinVars beyond the genes, the moving average against plain window means, and a negative variance.
#include "BicPssmScore.h"
#include "SeedWorld.h"

#include <algorithm>
#include <cmath>

namespace {

// A PSSM of `width` columns with random probabilities; every second column uniform, so that many
// promoters tie on their best site.
DnaPSSM random_pssm(std::mt19937& rng, int width) {
    DnaPSSM p;
    p.resize(width);
    std::uniform_real_distribution<float> u(0.05f, 1.0f);
    for (int c = 0; c < width; ++c)
        for (int b = 0; b < 4; ++b)
            p.m_profile[c].m_prob[b] = c % 2 ? 1.0f : u(rng);
    p.normalize();
    return p;
}

// A PSSM with random probabilities in every column.
DnaPSSM full_random_pssm(std::mt19937& rng, int width) {
    DnaPSSM p;
    p.resize(width);
    std::uniform_real_distribution<float> u(0.05f, 1.0f);
    for (DnaProbVec& col : p.m_profile)
        for (float& x : col.m_prob)
            x = u(rng);
    p.normalize();
    return p;
}

struct Ranked {
    int gene;
    float ml;
};

// Best site of every gene by the scan of the PSSM class, in descending order, genes in id order
// among ties.
std::vector<Ranked> ranking(const SeedWorld& w, const DnaPSSM& p) {
    std::vector<Ranked> r;
    for (int g = 0; g < SeedWorld::kGenes; ++g) {
        float best = 0.0f;
        int dir = 0;
        p.max_like_match(w.genome.get_promoter(g), best, dir);
        r.push_back({g, best});
    }
    std::stable_sort(r.begin(), r.end(), [](const Ranked& a, const Ranked& b) { return a.ml > b.ml; });
    return r;
}

ds_bitvec top(const std::vector<Ranked>& r, int n) {
    ds_bitvec set(SeedWorld::kGenes);
    for (int i = 0; i < n; ++i)
        set.set_ind(r[i].gene);
    return set;
}

} // namespace

TEST(BicPssmScore, CurveOnRankingsWithTiesMatchesPrefixSetsScoredAfresh) {
    struct Case {
        unsigned seed;
        int min_vars, max_vars, use_max;
    };
    const Case cases[] = {{3, 0, 60, 0}, {4, 5, 20, 0}, {5, 2, 40, 1}, {6, 100, 200, 0}};
    int ties = 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.seed);
        SeedWorld w(c.seed, 9, 0, 2);
        Quiet q;
        FlatAsap calc(w), fresh(w);
        BicPssmScore score(calc.asap, w.genome, w.all,
                           bic_options(pssm_score_text(c.min_vars, c.max_vars, c.use_max)), "S");
        std::mt19937 rng(c.seed);
        const DnaPSSM p = random_pssm(rng, 3);
        const float got = score.score(p);

        // The rule: a set ends at rank r (r genes above) where the likelihood drops, for
        // MinVars < r <= MaxVars; the best set is the last of the highest scores.
        const std::vector<Ranked> r = ranking(w, p);
        std::vector<float> want_scores, want_ml;
        float best = -3.4028235e+38f;
        int best_r = 0;
        for (int k = 1; k < static_cast<int>(r.size()) && k <= c.max_vars; ++k) {
            ties += r[k].ml == r[k - 1].ml;
            if (k <= c.min_vars || !(r[k].ml < r[k - 1].ml))
                continue;
            fresh.asap.score_set(top(r, k), nullptr, -1);
            const float s = c.use_max ? fresh.asap.m_max_node_score : fresh.asap.m_score;
            want_scores.push_back(s);
            want_ml.push_back(r[k - 1].ml);
            if (s >= best) {
                best = s;
                best_r = k;
            }
        }
        ASSERT_EQ(score.m_scores.size(), want_scores.size());
        for (size_t i = 0; i < want_scores.size(); ++i)
            EXPECT_NEAR(score.m_scores[i], want_scores[i], 1e-4f * (1.0f + std::fabs(want_scores[i]))) << i;
        EXPECT_EQ(score.m_ml_vals, want_ml);
        EXPECT_NEAR(got, want_scores.empty() ? 0.0f : best, 1e-4f * (1.0f + std::fabs(best)));
        ASSERT_EQ(static_cast<int>(score.m_best_genes.size()), best_r);
        std::vector<int> want_genes;
        for (int i = 0; i < best_r; ++i)
            want_genes.push_back(r[i].gene);
        EXPECT_EQ(score.m_best_genes, want_genes);
        // The calculator ends on the best set.
        EXPECT_EQ(calc.asap.m_set, top(r, best_r));
        EXPECT_EQ(calc.asap.m_count, best_r);
        if (best_r > 0) {
            EXPECT_EQ(score.m_best_thresh, r[best_r - 1].ml);
        }
    }
    EXPECT_GT(ties, 20) << "the rankings were meant to hold ties";
}

TEST(BicPssmScore, MovingAverageIsTheMeanOfTheLastGenesAboveEachBoundary) {
    SeedWorld w(11, 40, 5, 30);
    Quiet q;
    FlatAsap calc(w);
    const int min_vars = 6;
    BicPssmScore score(calc.asap, w.genome, w.all, bic_options(pssm_score_text(min_vars, 50)), "S");
    std::mt19937 rng(11);
    const DnaPSSM p = full_random_pssm(rng, 8);
    std::vector<std::vector<float>> avg, sd;
    std::ostringstream plot;
    score.score_moving_avg(p, w.s.data, avg, sd, &plot);

    const std::vector<Ranked> r = ranking(w, p);
    for (size_t k = 1; k < r.size(); ++k)
        ASSERT_NE(r[k].ml, r[k - 1].ml) << "this case wants every likelihood distinct";
    // With bins of one gene the window at rank k holds the last min(k, MinVars + 1) genes, and a
    // point is made once it holds more than MinVars / 2.
    size_t point = 0;
    for (int k = 1; k < static_cast<int>(r.size()) && k <= 50; ++k) {
        const int n = std::min(k, min_vars + 1);
        if (!(n > min_vars * 0.5))
            continue;
        ASSERT_LT(point, avg.size());
        for (int e = 0; e < SeedWorld::kConds; ++e) {
            double s = 0, sq = 0;
            for (int i = k - n; i < k; ++i) {
                const double v = w.s.data.m_data(r[i].gene, e);
                s += v;
                sq += v * v;
            }
            const double mean = s / n, dev = std::sqrt(std::max(0.0, sq / n - mean * mean));
            EXPECT_NEAR(avg[point][e], mean, 1e-4) << k << " " << e;
            EXPECT_NEAR(sd[point][e], dev, 1e-3) << k << " " << e;
        }
        EXPECT_EQ(score.m_ml_vals[point], r[k - 1].ml);
        ++point;
    }
    EXPECT_EQ(point, avg.size());
    const std::string text = plot.str();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), static_cast<long>(avg.size()));
    EXPECT_EQ(text.compare(0, 5, "PLOT\t"), 0);
}

TEST(BicPssmScoreDeathTest, NegativeVarianceOfTheWindowIsFatal) {
    // Every gene holds 1234.567 in condition 0: in single precision the three-gene window's
    // sum of squares over 3, minus the squared mean, comes out at -0.125.
    SeedWorld w(11, 40, 5, 30);
    for (int g = 0; g < SeedWorld::kGenes; ++g)
        w.s.data.m_data(g, 0) = 1234.567f;
    FlatAsap calc(w);
    BicPssmScore score(calc.asap, w.genome, w.all, bic_options(pssm_score_text(4, 50)), "S");
    std::mt19937 rng(11);
    const DnaPSSM p = full_random_pssm(rng, 4);
    std::vector<std::vector<float>> avg, sd;
    EXPECT_DEATH(score.score_moving_avg(p, w.s.data, avg, sd, nullptr),
                 R"(BicPssmScore\([0-9]+\): Negative variance!)");
}
