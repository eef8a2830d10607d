// ASAPCalc: condition scores of gene sets worked out by hand from the margins of AssessFixture.h,
// the bar, the cap, the scaling of large sets, focus, the tables from an assessment and from a file.
#include "ASAPCalc.h"
#include "AssessFixture.h"
#include "BicExpScoreAssess.h"
#include "Random.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

const float kMax = 3.4028235e+38f;

options& asap_options(int var_group, int max_vars, int cap, const std::string& scope = "A") {
    return bic_options("[" + scope + "]\nVarGroup = " + std::to_string(var_group) +
                       "\nAssessMaxVars = " + std::to_string(max_vars) +
                       "\nNodeMaxScore = " + std::to_string(cap) + "\nLogit = 0\n");
}

// The scored conditions as "condition/group" entries.
std::string conds_of(const ASAPCalc& a) {
    std::vector<int> conds, groups;
    a.get_conds(conds, groups);
    std::string out;
    for (size_t i = 0; i < conds.size(); ++i)
        out += (i ? " " : "") + std::to_string(conds[i]) + "/" + std::to_string(groups.at(i));
    return out;
}

std::vector<float> margins(const ASAPCalc& a) {
    std::vector<float> out;
    for (const BicChangeExpObs& o : a.m_obs)
        out.push_back(o.m_gain);
    return out;
}

} // namespace

// Genes 0 and 1 in group 1 (nodes 9, 10) give the margins: node 0 2.0, node 1 1.25, node 2 -1.0,
// node 3 2.25, node 4 -0.5.
TEST(ASAPCalc, ScoresByHandWithBarCapAndBestOrientation) {
    AssessHand h;
    ASAPCalc a(*h.g, *h.w, asap_options(0, 3, 2), "A", nullptr);
    a.add_gene(0, 1);
    a.add_gene(1, 1);
    EXPECT_EQ(a.m_count, 2);
    EXPECT_EQ(margins(a), (std::vector<float>{2.0f, 1.25f, -1.0f, 2.25f, -0.5f}));

    // Tables all 0: every margin above 0.001 scores (v - 0) / 0, capped at 2; c0's two equal
    // scores keep the first group.
    a.score(nullptr, 0);
    EXPECT_EQ(a.m_score, 4.0f);
    EXPECT_EQ(conds_of(a), "0/0 1/0");

    // Node 0: (2 - 0.5) / (2 - 0.5) = 1; node 3: (2.25 - 0.25) / (1 - 0.25) = 2.67, capped at 2;
    // node 1 sits exactly at the bar 1.25 = max2 + 0.001 and counts for nothing.
    const float bar = 1.25f - 0.001f;
    ASSERT_EQ(bar + 0.001f, 1.25f);
    std::istringstream tab("0 2 0.5 2 1\n3 2 0.25 1 0.5\n1 2 0 2 " + std::to_string(bar) + "\n");
    a.read_score_stat(tab);
    a.m_exp_max2(1, 2) = bar; // the exact float, whatever the text gave
    std::ostringstream out;
    a.score(&out, 0);
    EXPECT_EQ(a.m_score, 2.0f);
    EXPECT_EQ(a.m_max_node_score, 2.0f);
    EXPECT_EQ(out.str(), "0\t2\n");
    EXPECT_EQ(conds_of(a), "0/1");

    // Just under the bar c1 counts: 1.25 / 2.
    a.m_exp_max2(1, 2) = 1.2485f;
    std::ostringstream out2;
    a.score(&out2, 3);
    EXPECT_EQ(a.m_score, 2.625f);
    EXPECT_EQ(out2.str(), "0\t2\n1\t0.625\n");

    // Deleting goes through m_var_group (0): add gene 1 there, delete it, the margins come back.
    a.add_gene(1, -1);
    EXPECT_EQ(margins(a)[0], 3.5f); // + edge 0-6 (1.5)
    a.del_gene(1);
    EXPECT_EQ(margins(a), (std::vector<float>{2.0f, 1.25f, -1.0f, 2.25f, -0.5f}));
    EXPECT_EQ(a.m_count, 2);
    EXPECT_FALSE(a.m_set.get_ind(1)); // the bit of the deleted gene, though its group-1 node stays

    a.on_reset();
    EXPECT_EQ(a.m_count, 0);
    EXPECT_EQ(a.m_set.on_bits(), 0);
    EXPECT_EQ(margins(a), std::vector<float>(5, 0.0f));
    a.score(nullptr, 0);
    EXPECT_EQ(a.m_score, 0.0f);
}

// Group 0 nodes: genes 0-3 are nodes 5-8. Node 0's margins: {0,1,2} 2 + 1.5 - 0.25 = 3.25,
// {0,1,2,3} 3.0.
TEST(ASAPCalc, LastColumnAndScalingOfLargeSets) {
    AssessHand h;
    ds_bitvec focus = gene_set({0});
    ASAPCalc a(*h.g, *h.w, asap_options(0, 3, 5), "A", &focus);
    std::istringstream tab("0 2 0 3 1\n0 3 0.25 3.25 1\n");
    a.read_score_stat(tab);
    for (int g : {0, 1, 2})
        a.add_gene(g, -1);
    // m_count == AssessMaxVars: column 3, no scaling: (3.25 - 0.25) / 3.
    a.score(nullptr, 0);
    EXPECT_EQ(a.m_score, 1.0f);
    // One more: column 2 and the margin times 2 / 4: (1.5 - 0) / 3.
    a.add_gene(3, -1);
    a.score(nullptr, 0);
    EXPECT_EQ(a.m_score, 0.5f);
    // Only the focus node is observed and scored: node 1 (margin above 0 with all-0 cells) doesn't count.
    EXPECT_FALSE(a.m_obs[1].attached());
    EXPECT_EQ(conds_of(a), "0/0");
}

TEST(ASAPCalc, ScoreSetReplacesTheSet) {
    AssessHand h;
    ASAPCalc a(*h.g, *h.w, asap_options(1, 3, 2), "A", nullptr);
    a.add_gene(2, 0);
    // Empty set: 0 and no conditions.
    ds_bitvec none(5);
    EXPECT_EQ(a.score_set(none, nullptr, 0), 0.0f);
    EXPECT_EQ(conds_of(a), "");
    EXPECT_EQ(a.m_count, 0);

    // Genes 0, 1 in VarGroup 1, as in the first test; gene 3 has no node in group 1 and is passed over.
    const ds_bitvec set = gene_set({0, 1, 3});
    std::ostringstream out;
    EXPECT_EQ(a.score_set(set, &out, 0), 4.0f);
    EXPECT_EQ(out.str(), "0\t2\n1\t2\n");
    EXPECT_EQ(a.m_count, 2);
    EXPECT_TRUE(a.m_set == set);
    EXPECT_EQ(margins(a), (std::vector<float>{2.0f, 1.25f, -1.0f, 2.25f, -0.5f}));
}

TEST(ASAPCalc, TablesFromAnAssessmentAndItsFile) {
    AssessHand h;
    TempDir dir;
    const std::string stat = dir.path() + "/s.tab";
    Random::reset(9);
    std::unique_ptr<BicExpScoreAssess> as;
    {
        Quiet q;
        as.reset(new BicExpScoreAssess(
            *h.g, *h.w, gene_set({0, 1, 2, 3}),
            bic_options(assess_text("T", 8, 2, 4, "0 1", stat, dir.path() + "/g.tab")), "T"));
    }
    ASAPCalc a(*h.g, *h.w, asap_options(0, 4, 2), "A", nullptr);
    a.init_from_assess(*as);
    // The assessment's 3 x 5 tables, grown to a row per condition node.
    ASSERT_EQ(a.m_exp_avg.rows(), 5);
    ASSERT_EQ(a.m_exp_avg.cols(), 5);
    ASAPCalc b(*h.g, *h.w, asap_options(0, 4, 2), "A", nullptr);
    std::ifstream in(stat);
    b.read_score_stat(in);
    for (int r = 0; r < 5; ++r)
        for (int c = 0; c < 5; ++c) {
            const bool sampled = r < 3 && c >= 1 && c <= 3;
            const Matrix<float>* tabs[3][3] = {{&a.m_exp_avg, &b.m_exp_avg, &as->m_exp_avg},
                                               {&a.m_exp_max, &b.m_exp_max, &as->m_exp_max},
                                               {&a.m_exp_max2, &b.m_exp_max2, &as->m_exp_max2}};
            for (int t = 0; t < 3; ++t) {
                // Grown rows: average 0, maxima unscalable.
                const float want = r < 3 ? (*tabs[t][2])(r, c) : t ? kMax : 0.0f;
                EXPECT_EQ((*tabs[t][0])(r, c), want) << r << " " << c;
                // The file holds the sampled cells, printed with six digits (the unscalable mark
                // comes back as 3.40282e+38); the others stay 0.
                EXPECT_NEAR((*tabs[t][1])(r, c), sampled ? want : 0.0f,
                            1e-5 * std::fabs(sampled ? want : 0.0f) + 1e-5)
                    << r << " " << c;
            }
        }
    // Node 3 (c0, group 1) reads a grown row and never counts, however high its margin (2.25); node 0
    // (margin 2.0) reads the row of condition 0.
    a.add_gene(0, 1);
    a.add_gene(1, 1);
    a.score(nullptr, 0);
    const float avg = as->m_exp_avg(0, 2), mx = as->m_exp_max(0, 2), mx2 = as->m_exp_max2(0, 2);
    const float want = 2.0f > mx2 + 0.001f ? std::min(2.0f, (2.0f - avg) / (mx - avg)) : 0.0f;
    EXPECT_EQ(a.m_node_score[0], want);
    EXPECT_NE(a.m_node_group[0], 1);
}

TEST(ASAPCalcDeath, FatalPaths) {
    AssessHand h;
    for (const std::string key : {"VarGroup", "AssessMaxVars", "NodeMaxScore", "Logit"}) {
        options& o = bic_options(
            without_key("[D]\nVarGroup = 0\nAssessMaxVars = 3\nNodeMaxScore = 2\nLogit = 0\n", key));
        EXPECT_DEATH({ ASAPCalc a(*h.g, *h.w, o, "D", nullptr); },
                     "options\\([0-9]+\\): option does not exists: D::" + key);
    }
    ASAPCalc a(*h.g, *h.w, asap_options(0, 3, 2), "A", nullptr);
    a.add_gene(0, -1);
    EXPECT_DEATH(a.add_gene(0, 0),
                 R"(DynBiclust\([0-9]+\): Trying to multiply add the node 5 to the nbicluster)");
    EXPECT_DEATH(a.del_gene(1), R"(DynBiclust\([0-9]+\): Trying delete non existent node 6 from the bic)");
}
