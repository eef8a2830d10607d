// BicExpScoreAssess: typical groups, contributions and scaling by hand, the two tables against a from-scratch
// replay of the same draws, the written files, the edge cases of the sampler and the required keys.
#include "BicExpScoreAssess.h"
#include "AssessFixture.h"
#include "Random.h"
#include "UniformUrn.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace {

const float kMax = 3.4028235e+38f;

// The node standing for each gene (the first listed group: margins 1.5 against 1.25 for gene 0, equal
// for gene 1), and the nodes of each condition.
const std::vector<int> kTypical = {9, 6, 7, 8, -1};
const std::vector<std::vector<int>> kCondNodes = {{0, 3}, {1, 4}, {2}};

// The largest and second largest of a list, the second -3.4028235e+38 for a single value.
void top_two(std::vector<double> vals, double& max1, double& max2) {
    std::sort(vals.begin(), vals.end(), std::greater<double>());
    max1 = vals[0];
    max2 = vals.size() > 1 ? vals[1] : -kMax;
}

// The assessment recomputed from pair weights: the same urn and the same draws, sums in double.
struct Replay {
    // One sample from a fresh draw order of `urn`: per count of variables drawn, the best margin of
    // the condition's nodes.
    static std::vector<double> sample(const AssessHand& h, UniformUrn& urn, const std::vector<int>& typical,
                                      const std::vector<int>& nodes, int max_vars) {
        urn.reset();
        std::vector<int> drawn;
        std::vector<double> best(max_vars, -1e300);
        for (int count = 1; count < max_vars; ++count) {
            drawn.push_back(typical[urn.draw()]);
            for (int n : nodes)
                best[count] = std::max(best[count], h.pairs->exp_margin(drawn, n));
        }
        return best;
    }
    // `typical`: the node standing for each gene; `cond_nodes`: the nodes of each condition.
    Replay(const AssessHand& h, const std::vector<int>& vars, const std::vector<int>& typical,
           const std::vector<std::vector<int>>& cond_nodes, int max_vars, int samp, int glob, int seed) {
        Random::reset(seed);
        const int conds = static_cast<int>(cond_nodes.size());
        avg.assign(conds, std::vector<double>(max_vars, 0.0));
        max1 = max2 = avg;
        for (int e = 0; e < conds; ++e) {
            std::vector<std::vector<double>> vals(max_vars);
            UniformUrn urn(vars);
            for (int s = 0; s < samp; ++s) {
                const std::vector<double> best = sample(h, urn, typical, cond_nodes[e], max_vars);
                for (int count = 1; count < max_vars; ++count)
                    vals[count].push_back(best[count]);
            }
            for (int count = 1; count < max_vars; ++count) {
                double sum = 0;
                for (double x : vals[count])
                    sum += x;
                avg[e][count] = sum / samp;
                top_two(vals[count], max1[e][count], max2[e][count]);
                if (!(std::fabs(max1[e][count] - avg[e][count]) > 1e-4 * std::fabs(avg[e][count])))
                    max1[e][count] = max2[e][count] = kMax;
            }
        }
        std::vector<std::vector<double>> vals(max_vars);
        UniformUrn urn(vars);
        for (int s = 0; s < glob; ++s) {
            urn.reset();
            std::vector<int> drawn;
            for (int count = 1; count < max_vars; ++count) {
                drawn.push_back(typical[urn.draw()]);
                double sum = 0;
                for (int e = 0; e < conds; ++e) {
                    double e_wgt = -1e300;
                    for (int n : cond_nodes[e]) {
                        // The whole edge weight on top of the non-edge weight of the pair.
                        double t = 0;
                        for (int v : drawn) {
                            t += h.w->get_non_edge_exp_weight(n, h.w->get_var_node_bin(v));
                            if (h.pairs->edge(n, v) != -1)
                                t += h.w->get_edge_weight(h.pairs->edge(n, v));
                        }
                        e_wgt = std::max(e_wgt, t);
                    }
                    if (e_wgt > max2[e][count])
                        sum += (e_wgt - avg[e][count]) / (max1[e][count] - avg[e][count]);
                }
                vals[count].push_back(sum);
            }
        }
        glob_max.assign(max_vars, 0.0);
        glob_max2 = glob_max;
        for (int count = 1; count < max_vars; ++count)
            top_two(vals[count], glob_max[count], glob_max2[count]);
    }
    std::vector<std::vector<double>> avg, max1, max2; // by condition, count
    std::vector<double> glob_max, glob_max2;
};

// Relative closeness that also holds for the 3.4028235e+38 marks as printed.
void expect_close(double got, double want, const std::string& what) {
    EXPECT_NEAR(got, want, 1e-5 * std::max(1.0, std::fabs(want))) << what;
}

} // namespace

TEST(BicExpScoreAssess, TypicalGroupsContributionsAndScalingByHand) {
    AssessHand h;
    // Margins in the bicluster of nodes 0-2: gene 0: node 5 1.25, node 9 1.5; gene 1: nodes 6 and 10
    // both 0.75 (the first listed group wins); genes 2, 3 have only group 0; gene 4 no node.
    Quiet q;
    for (const char* groups : {"1 0", "0 1"}) {
        BicExpScoreAssess a(*h.g, *h.w, gene_set({0, 1, 2, 3}),
                            bic_options(assess_text("T", 0, 0, 3, groups)), "T");
        EXPECT_EQ(a.m_typical_group, (std::vector<int>{1, groups[0] == '1', 0, 0, -1})) << groups;
        if (groups[0] == '1') {
            // With no list no variable has a typical group.
            a.m_gene_groups.clear();
            a.calc_typical_groups();
            EXPECT_EQ(a.m_typical_group, (std::vector<int>(5, -1)));
            continue;
        }
        // Contributions follow the typical nodes.
        std::vector<std::vector<float>> contrib;
        a.calc_contribs(0, contrib);
        // c0: node 0 (group 0) and node 3 (group 1) against typical nodes 9, 6, 7, 8; gene 4 has none.
        EXPECT_EQ(contrib[0], (std::vector<float>{2.5f, 1.5f, -0.25f, -0.25f, -kMax}));
        EXPECT_EQ(contrib[1], (std::vector<float>{2.5f, -0.25f, -0.5f, -0.5f, -kMax}));
        a.calc_contribs(2, contrib); // c2 has no node in group 1
        EXPECT_EQ(contrib[0], (std::vector<float>{-0.5f, -0.5f, -0.5f, -0.5f, -kMax}));
        EXPECT_TRUE(contrib[1].empty());
        // score_exp: 0 up to the second maximum, then (v - 0.5) / 2; condition 0 was never sampled.
        a.m_exp_avg(1, 2) = 0.5f;
        a.m_exp_max(1, 2) = 2.5f;
        a.m_exp_max2(1, 2) = 1.5f;
        EXPECT_EQ(
            (std::vector<float>{a.score_exp(1, 1.0f, 2), a.score_exp(1, 1.5f, 2), a.score_exp(1, 1.75f, 2),
                                a.score_exp(1, 4.5f, 2), a.score_exp(0, 4.5f, 2)}),
            (std::vector<float>{0.0f, 0.0f, 0.625f, 2.0f, 0.0f}));
    }
}

TEST(BicExpScoreAssess, TablesMatchReplayOfTheSameDraws) {
    AssessHand h;
    TempDir dir;
    const std::string stat = dir.path() + "/stat.tab", glob = dir.path() + "/glob.tab";
    for (int seed : {3, 77, 1234}) {
        SCOPED_TRACE(seed);
        const int samp = 8, nglob = 4;
        // AssessMaxVars 10 is cut to the four variables: counts 1 to 3.
        Random::reset(seed);
        std::unique_ptr<BicExpScoreAssess> a;
        {
            Quiet q;
            a.reset(new BicExpScoreAssess(*h.g, *h.w, gene_set({0, 1, 2, 3}),
                                          bic_options(assess_text("T", samp, nglob, 10, "0 1", stat, glob)),
                                          "T"));
            const std::string err = q.done();
            EXPECT_NE(err.find("vars to samp 4"), std::string::npos);
        }
        ASSERT_EQ(a->m_max_vars, 4);
        const Replay r(h, {0, 1, 2, 3}, kTypical, kCondNodes, 4, samp, nglob, seed);

        ASSERT_EQ(a->m_exp_avg.rows(), 3);
        ASSERT_EQ(a->m_exp_avg.cols(), 5);
        for (int e = 0; e < 3; ++e)
            for (int c = 1; c < 4; ++c) {
                const std::string at = "e " + std::to_string(e) + " count " + std::to_string(c);
                expect_close(a->m_exp_avg(e, c), r.avg[e][c], at);
                expect_close(a->m_exp_max(e, c), r.max1[e][c], at);
                expect_close(a->m_exp_max2(e, c), r.max2[e][c], at);
            }
        for (int c = 1; c < 4; ++c) {
            expect_close(a->m_glob_max[c], r.glob_max[c], "glob " + std::to_string(c));
            expect_close(a->m_glob_max2[c], r.glob_max2[c], "glob2 " + std::to_string(c));
        }
        // c2 sums the same in every sample: the distribution can't be scaled (the replay has it too).
        EXPECT_EQ(a->m_exp_max(2, 2), kMax);
        // Count 0 and the column past the sampled counts are never filled.
        for (int e = 0; e < 3; ++e)
            for (int c : {0, 4}) {
                EXPECT_EQ(a->m_exp_avg(e, c), 0.0f);
                EXPECT_EQ(a->m_exp_max2(e, c), kMax);
                EXPECT_EQ(a->score_exp(e, 100.0f, c), 0.0f);
            }

        // The global file has counts 1 to 3 only (the other is read back in the ASAPCalc tests).
        const std::string glob_text = read_file(glob);
        EXPECT_EQ(std::count(glob_text.begin(), glob_text.end(), '\n'), 3);
        EXPECT_EQ(glob_text.substr(0, 2), "1\t");
    }
}

TEST(BicExpScoreAssess, SmallVariableSetsAndSamplerCheck) {
    AssessHand h;
    TempDir dir;
    const std::string stat = dir.path() + "/s.tab", glob = dir.path() + "/g.tab";
    {
        // One variable: m_max_vars 1, nothing sampled, both files empty, no draw taken.
        Random::reset(5);
        const std::uint32_t first = Random::bits();
        Random::reset(5);
        Quiet q;
        BicExpScoreAssess a(*h.g, *h.w, gene_set({2}),
                            bic_options(assess_text("T", 4, 4, 6, "0 1", stat, glob)), "T");
        EXPECT_EQ(a.m_max_vars, 1);
        EXPECT_EQ(read_file(stat), "");
        EXPECT_EQ(read_file(glob), "");
        EXPECT_EQ(Random::bits(), first);
    }
    {
        // Gene 4 has no typical node: drawn, it sinks every group's sum to the lowest float. Two
        // samples of one variable, with a seed under which c0 draws each gene once.
        const int samp = 2;
        int seed = 0;
        for (int s = 1; s < 100 && !seed; ++s) {
            Random::reset(s);
            UniformUrn urn(std::vector<int>{0, 4});
            int good = 0;
            for (int k = 0; k < samp; ++k) {
                urn.reset();
                good += urn.draw() == 0;
            }
            if (good == 1)
                seed = s;
        }
        ASSERT_NE(seed, 0);
        Random::reset(seed);
        Quiet q;
        BicExpScoreAssess a(*h.g, *h.w, gene_set({0, 4}), bic_options(assess_text("T", samp, 0, 2, "0 1")),
                            "T");
        // c0 with gene 0 alone: node 0 and node 3 both give 2.5; the other sample is the lowest float.
        EXPECT_EQ(a.m_exp_max(0, 1), 2.5f);
        EXPECT_EQ(a.m_exp_max2(0, 1), -kMax);
        EXPECT_EQ(a.m_exp_avg(0, 1), (2.5f - kMax) / 2.0f);
    }
    {
        // test(): one sample of three counts; its best equals the best prefix sum of the replayed draws.
        Quiet q;
        BicExpScoreAssess a(*h.g, *h.w, gene_set({0, 1, 2, 3}), bic_options(assess_text("T", 0, 0, 4, "0 1")),
                            "T");
        for (int e = 0; e < 3; ++e) {
            Random::reset(40 + e);
            const float got = a.test(e);
            Random::reset(40 + e);
            UniformUrn urn(std::vector<int>{0, 1, 2, 3});
            const std::vector<double> best = Replay::sample(h, urn, kTypical, kCondNodes[e], 4);
            EXPECT_EQ(got, static_cast<float>(*std::max_element(best.begin(), best.end()))) << e;
        }
        EXPECT_NE(q.done().find("TEST samp max "), std::string::npos);
    }
}

TEST(BicExpScoreAssess, UnopenableTablesAreSkipped) {
    AssessHand h;
    TempDir dir;
    const std::string stat = dir.path() + "/no/such/dir/s.tab";
    Quiet q;
    BicExpScoreAssess a(*h.g, *h.w, gene_set({0, 1, 2}),
                        bic_options(assess_text("T", 2, 2, 3, "0 1", stat, dir.path() + "/no/g.tab")), "T");
    EXPECT_FALSE(std::ifstream(stat).good());
    EXPECT_EQ(a.m_max_vars, 3);
}

TEST(BicExpScoreAssessDeath, RequiredKeys) {
    AssessHand h;
    const std::vector<std::string> keys = {"NumAssessSamp", "NumGlobAssessSamp", "AssessMaxVars",
                                           "ExpGroupForTypic"};
    for (const std::string& key : keys) {
        options& o = bic_options(without_key(assess_text("D", 1, 1, 2, "0 1"), key));
        EXPECT_DEATH(BicExpScoreAssess(*h.g, *h.w, gene_set({0, 1}), o, "D"),
                     "options\\([0-9]+\\): option does not exists: D::" + key);
    }
}
