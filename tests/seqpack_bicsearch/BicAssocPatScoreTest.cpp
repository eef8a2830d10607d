// BicAssocPatScore against a from-scratch computation of each condition's best margin and the score,
// on random gene sets below, at and above AssessMaxVars and through random pattern edits; the n-best
// sum; the observer check.
#include "BicAssocPatScore.h"
#include "MotifWorld.h"
#include "NBestHeapSum.h"

namespace {
options& score_options() {
    static options& o = bic_options("[Score]\nNumOfScoreConds = 3\nVarGroup = 0\nAssessMaxVars = 8\n"
                                    "CacheCondScores = 1\nLogit = 0\n");
    return o;
}

// Random chance tables: thresholds around the margins seen, a positive range above the mean.
void fill_tables(BicAssocPatScore& sc, std::mt19937& rng) {
    std::uniform_real_distribution<float> u(0.0f, 1.0f);
    for (int c = 0; c < sc.m_avg.rows(); ++c)
        for (int n = 0; n < sc.m_avg.cols(); ++n) {
            sc.m_avg(c, n) = -u(rng);
            sc.m_max2(c, n) = sc.m_avg(c, n) + 1.0f + 2.0f * u(rng);
            sc.m_thresh(c, n) = 3.0f * u(rng) - 1.0f;
        }
}

// The score from scratch: each condition's best node margin in a bicluster of the genes' nodes.
float scratch_score(const MotifWorld& w, const BicAssocPatScore& sc, const ds_bitvec& genes,
                    std::vector<int>* conds = nullptr) {
    ExpVarBiclust b(*w.s.graph, *w.s.wgt);
    int count = 0;
    for (int g = 0; g < genes.size(); ++g)
        if (genes.get_ind(g) && w.s.var_node(0, g) >= 0) {
            b.add_var_node(w.s.var_node(0, g));
            ++count;
        }
    int n = count;
    float factor = 1.0f;
    if (n > 8) {
        n = 7;
        factor = 7.0f / static_cast<float>(count);
    }
    float total = 0.0f;
    for (int c = 0; c < MotifWorld::kConds; ++c) {
        float best = -3.4028235e+38f;
        for (int grp = 0; grp < w.s.graph->m_exp_group_nodes.rows(); ++grp)
            if (w.s.exp_node(grp, c) >= 0)
                best = std::max(best, b.get_exp_margin(w.s.exp_node(grp, c)));
        const float x = factor * best;
        if (sc.m_thresh(c, n) < x) {
            total += (x - sc.m_avg(c, n)) / (sc.m_max2(c, n) - sc.m_avg(c, n));
            if (conds)
                conds->push_back(c);
        }
    }
    return total;
}

TEST(BicAssocPatScore, ScoreSetEqualsScratchBelowAtAndAboveTheTables) {
    MotifWorld w;
    std::mt19937 rng(test_seed(31));
    BicAssocPatScore sc(*w.s.graph, *w.s.wgt, score_options(), "Score");
    ASSERT_EQ(sc.m_avg.cols(), 9);
    for (int size : {1, 3, 7, 8, 9, 20, 45}) {
        for (int rep = 0; rep < 5; ++rep) {
            fill_tables(sc, rng);
            ds_bitvec genes(MotifWorld::kGenes);
            while (genes.on_bits() < size)
                genes.set_ind(static_cast<int>(rng() % MotifWorld::kGenes));
            std::vector<int> want;
            const float expect = scratch_score(w, sc, genes, &want);
            const float got = sc.score_set(genes);
            EXPECT_NEAR(got, expect, 1e-4f * (1.0f + std::fabs(expect))) << "size " << size;
            EXPECT_EQ(sc.get_genes(), genes);
            std::vector<int> conds, nodes;
            sc.get_conds(conds, nodes);
            EXPECT_EQ(conds, want) << "size " << size;
            EXPECT_TRUE(sc.verify());
        }
    }
}

TEST(BicAssocPatScore, FollowsThePatternThroughEditsAndReverts) {
    MotifWorld w;
    std::mt19937 rng(test_seed(32));
    AssocPatternHashDense assoc(w.dense, w.index, w.all, 6);
    assoc.m_trace = false;
    Dna8MerPattern p;
    p.init_str("GAC");
    assoc.match(p);
    BicAssocPatScore sc(*w.s.graph, *w.s.wgt, assoc, score_options(), "Score");
    BicAssocPatScore fresh(*w.s.graph, *w.s.wgt, score_options(), "Score");
    fill_tables(sc, rng);
    fresh.m_avg = sc.m_avg;
    fresh.m_max2 = sc.m_max2;
    fresh.m_thresh = sc.m_thresh;
    assoc.remember();
    for (int step = 0; step < 300; ++step) {
        const int op = static_cast<int>(rng() % 8);
        if (op == 0 || assoc.get_pattern().length() > 9) {
            p.init_str(std::string(1, "ACGT"[rng() % 4]) + "AC");
            assoc.match(p);
            assoc.remember();
        } else if (op == 1)
            assoc.push_back(DnaSeqDegChar(static_cast<unsigned char>(1 + rng() % 15)));
        else if (op == 2)
            assoc.push_front(DnaSeqDegChar(static_cast<unsigned char>(1 + rng() % 15)));
        else if (op == 3)
            assoc.change_to_range(rng() % 2 ? -1 : 20 + static_cast<int>(rng() % 60));
        else if (op == 4)
            assoc.remember();
        else if (op == 5)
            assoc.revert();
        else
            assoc.change_char(static_cast<int>(rng() % assoc.get_pattern().length()),
                              DnaSeqDegChar(static_cast<unsigned char>(1 + rng() % 15)));
        SCOPED_TRACE("step " + std::to_string(step) + " " + assoc.get_pattern().get_str());
        ASSERT_EQ(sc.get_genes(), assoc.get_genes());
        ASSERT_TRUE(sc.verify());
        const float got = sc.score();
        ASSERT_NEAR(got, fresh.score_set(assoc.get_genes()), 1e-4f * (1.0f + std::fabs(got)));
        // The running sum of positive best margins.
        double pos = 0.0;
        for (int c = 0; c < MotifWorld::kConds; ++c)
            pos += std::max(0.0f, sc.get_obs(c).m_best_margin);
        ASSERT_NEAR(sc.m_sum, pos, 1e-3 * (1.0 + pos));
    }
}

TEST(BicAssocPatScore, NBestHeapSumAddsTheLargest) {
    NBestHeapSum h(3);
    for (const auto& kv :
         std::vector<std::pair<int, float>>{{0, 1.5f}, {4, -2.0f}, {2, 7.0f}, {1, 0.25f}, {3, 3.0f}})
        h.set_value(kv.first, kv.second);
    EXPECT_FLOAT_EQ(h.get_sum(), 11.5f); // 7 + 3 + 1.5
    h.set_value(2, -1.0f);
    EXPECT_FLOAT_EQ(h.get_sum(), 4.75f); // 3 + 1.5 + 0.25
    NBestHeapSum wide(10);
    wide.set_value(1, 2.0f);
    EXPECT_FLOAT_EQ(wide.get_sum(), 2.0f);
}

TEST(BicAssocPatScoreDeath, ObserverDriftIsFatal) {
    MotifWorld w;
    BicAssocPatScore sc(*w.s.graph, *w.s.wgt, score_options(), "Score");
    ds_bitvec genes(MotifWorld::kGenes);
    for (int g = 0; g < 6; ++g)
        genes.set_ind(g);
    sc.score_set(genes);
    sc.m_obs[2].m_best_margin += 50.0f;
    EXPECT_DEATH(
        sc.verify(),
        R"(BicAssocPatScore\([0-9]+\): BicAssocPatCondObs verify failed at cond 2: best [-0-9.e+]+ margin )");
}
} // namespace
