// The ranked property observer on a hand ranking: bins with ties and a first-bin minimum, values out
// of the ranking, thresholds and derivatives against scipy, the countdowns, and its fatal.
#include "PBicChangeObs.h"
#include "PDynBiclust.h"
#include "PropFixture.h"

#include <cmath>

namespace {

constexpr float kOut = 3.4028235e+38f;
// Ranked order: 1, 2 (0.1), 10 (0.2), 3, 4, 5 (0.3), 0, 9, 6, 7, 11; variable 8 out.
const std::vector<float> kValues = {0.5f, 0.1f, 0.1f, 0.3f, 0.3f, 0.3f, 0.9f, 2.0f, kOut, 0.7f, 0.2f, 5.0f};

RankedObsParams params(int bins, int first_min, int min_genes, float min_log_pv, float thresh_f,
                       float deriv_f) {
    RankedObsParams p;
    p.m_bins = bins;
    p.m_first_bin_min_size = first_min;
    p.m_min_num_genes = min_genes;
    p.m_min_log_pv = min_log_pv;
    p.m_thresh_update_factor = thresh_f;
    p.m_deriv_update_factor = deriv_f;
    return p;
}

// One ranked property (node 0) over twelve variables (nodes 1-12, ids 0-11), no edges.
struct RankedWorld {
    explicit RankedWorld(const RankedObsParams& p)
        : r(1, 1, 12, 0.0, 1), bic(*r.g, *r.wgt, nullptr, nullptr) {
        bic.set_ranked_layer(0, true);
        obs.attach(bic, heap, 0, 2 * r.wgt->get_var_nodes_bins().m_bin_num, kValues, p, table);
        heap.reset(-1);
        bic.reset();
    }
    void add(int var) { bic.add_var_node(r.g->m_var_group_nodes(0, var)); }
    RandomPropGraph r;
    PDynBiclust bic;
    BicHeap heap;
    BinomFuncTable table{64, 64};
    PBicChangeRankedObs obs;
};

} // namespace

TEST(PBicChangeRankedObs, BinsKeepTiesTogether) {
    RankedWorld w(params(4, 0, 2, 1.0f, 0.0f, 0.0f));
    struct Case {
        int first_min;
        std::vector<int> var_bin, sizes;
    };
    // By hand: 11 ranked values in 4 bins take 2, 3 (+1 tie), 2, 3; a first bin of at least 3 takes
    // 0.1, 0.1, 0.2; a minimum past the total takes everything.
    const Case cases[] = {
        {0, {2, 0, 0, 1, 1, 1, 3, 3, -1, 2, 1, 3}, {2, 4, 2, 3}},
        {3, {2, 0, 0, 1, 1, 1, 3, 3, -1, 2, 0, 3}, {3, 3, 2, 3}},
        {12, {0, 0, 0, 0, 0, 0, 0, 0, -1, 0, 0, 0}, {11, 0, 0, 0}},
    };
    for (const Case& c : cases) {
        w.obs.m_params.m_first_bin_min_size = c.first_min;
        w.obs.init_bins(kValues);
        EXPECT_EQ(w.obs.m_var_bin, c.var_bin) << c.first_min;
        EXPECT_EQ(w.obs.m_bin_size, c.sizes) << c.first_min;
    }
}

TEST(PBicChangeRankedObs, ThresholdsAndDerivativesAgainstScipy) {
    RankedWorld w(params(4, 3, 2, 1.0f, 0.0f, 0.0f));
    // data/bic/ranked_obs_model.py: after each add, thresh bin, all, in, gain, score_in, score_out.
    struct Step {
        int var, bin, all, in;
        double gain, score_in, score_out;
    };
    const Step steps[] = {
        {3, -100, 0, 0, 0.0, 0.0, 0.0}, // one gene: under MinNumOfGenes
        {4, 1, 6, 2, 0.4816045409242169, 0.9162907318741551, -0.5877866649021191},
        {5, 1, 6, 3, 1.397895272798372, 1.0986122886681091, -0.9808292530117275},
        {1, 1, 6, 4, 2.496507561466481, 1.3862943611198912, -1.3217558399823197},
        {8, 1, 6, 4, 1.1747517214841614, 1.0704414117014132, -0.7621400520468979}, // out of the ranking
        {0, 2, 8, 5, 0.4170660197866436, 0.5389965007326878, -0.5596157879354218},
        {10, 1, 6, 5, 1.1747517214841623, 1.321755839982318, -0.7576857016975174},
        {2, 1, 6, 6, 2.4965075614664802, 1.321755839982318, -0.7576857016975174}, // all == in: kept
    };
    const int prop_heap = 2 * w.r.wgt->get_var_nodes_bins().m_bin_num;
    for (const Step& s : steps) {
        const std::vector<int> before = w.obs.m_bin_in;
        w.add(s.var);
        SCOPED_TRACE(s.var);
        EXPECT_EQ(w.obs.m_thresh_bin, static_cast<float>(s.bin));
        EXPECT_EQ(w.obs.m_thresh_all, s.all);
        EXPECT_EQ(w.obs.m_thresh_in, s.in);
        EXPECT_NEAR(w.obs.m_gain, s.gain, 1e-5);
        EXPECT_NEAR(w.obs.m_score_in, s.score_in, 1e-5);
        EXPECT_NEAR(w.obs.m_score_out, s.score_out, 1e-5);
        // The property is outside: its add key is the negated gain.
        EXPECT_NEAR(w.heap.value(prop_heap, 0), -s.gain, 1e-5);
        if (s.var == 8) {
            EXPECT_EQ(w.obs.m_bin_in, before);
        }
    }
    // Inside, the key is the gain itself (DelPropFactor 1).
    w.bic.add_prop_node(0);
    EXPECT_NEAR(w.heap.value(prop_heap, 0), steps[7].gain, 1e-5);
}

TEST(PBicChangeRankedObs, CountdownsAndSmallBiclusters) {
    // MinNumOfGenes 2, ThreshUpdateFactor 1, ScoreDerivUpdateFactor 0.5. By hand, per size n after
    // the add: n 1 lowers both countdowns to -1; n 2 searches (countdowns 2 and 1); n 3 steps by a
    // derivative (1, 0); n 4 renews the derivatives (0, 2); n 5 searches (5, trunc(2.5) = 2); n 6
    // steps (4, 1). Two searches, three renewals.
    RankedWorld w(params(4, 3, 2, 1.0f, 1.0f, 0.5f));
    const int vars[] = {3, 4, 5, 1, 0, 10};
    const int thresh_cd[] = {-1, 2, 1, 0, 5, 4}, deriv_cd[] = {-1, 1, 0, 2, 2, 1};
    float gain2 = 0.0f, in2 = 0.0f;
    for (int i = 0; i < 6; ++i) {
        w.add(vars[i]);
        EXPECT_EQ(w.obs.m_thresh_countdown, thresh_cd[i]) << i;
        EXPECT_EQ(w.obs.m_deriv_countdown, deriv_cd[i]) << i;
        if (i == 1) {
            gain2 = w.obs.m_gain;
            in2 = w.obs.m_score_in;
        }
        if (i == 2) { // variable 5 is within the threshold (bin 1): the gain moves by score_in
            EXPECT_FLOAT_EQ(w.obs.m_gain, gain2 + in2);
        }
    }
    EXPECT_EQ(w.obs.m_thresh_updates, 2);
    EXPECT_EQ(w.obs.m_deriv_updates, 3);

    // Under MinNumOfGenes: no threshold and no gain, however significant the genes.
    RankedWorld small(params(4, 3, 5, 1.0f, 0.0f, 0.0f));
    for (int v : {1, 2, 10, 3})
        small.add(v);
    EXPECT_EQ(small.obs.m_thresh_bin, -100.0f);
    EXPECT_EQ(small.obs.m_gain, 0.0f);
    EXPECT_EQ(small.obs.m_bin_in, (std::vector<int>{3, 1, 0, 0}));
}

TEST(PBicChangeRankedObsDeath, ThreshInAboveThreshAll) {
    // A threshold left standing (no search under 100 genes) that counts more genes inside than it
    // holds: the bins' counts are off, which is fatal.
    RankedWorld w(params(4, 3, 100, 1.0f, 0.0f, 0.0f));
    w.obs.m_thresh_bin = 0.0f;
    w.obs.m_thresh_all = 1;
    EXPECT_DEATH(
        {
            w.add(1);
            w.add(2);
        },
        R"(PBicChangeObs\([0-9]+\): Ranked obs thresh in 2 above thresh all 1)");
}
