// BicSet: tables written by dump_to_tables read back to the same biclusters and scores, id gaps,
// any line order, unreadable files, replace_bic, and the fatal of an unknown condition.
#include "BicSet.h"

#include "BicSynth.h"

#include <fstream>

namespace {

// Both orientations on both sides, so groups 0 and 1 exist for conditions and variables.
struct SetFix {
    SetFix() : s(12, 40, {0, 1, 2, 3}, {0, 1, 2, 3, 4, 5, 6, 7}, 3.0f, 5u, true) {}
    ExpVarBiclust bic(const std::vector<std::pair<int, int>>& exps,
                      const std::vector<std::pair<int, int>>& vars) {
        ExpVarBiclust b(*s.graph, *s.wgt);
        for (const auto& e : exps)
            b.add_exp_node(s.exp_node(e.first, e.second));
        for (const auto& v : vars)
            b.add_var_node(s.var_node(v.first, v.second));
        return b;
    }
    Synth s;
};

TEST(BicSet, WrittenTablesReadBackWithGapsAsEmptyActiveBiclusters) {
    SetFix f;
    const ExpVarBiclust b0 = f.bic({{0, 0}, {0, 1}, {0, 2}}, {{0, 0}, {0, 1}, {0, 2}, {0, 5}});
    const ExpVarBiclust b3 = f.bic({{1, 4}, {0, 7}}, {{1, 9}, {0, 12}, {1, 30}});
    std::ostringstream bick, bicd;
    b0.dump_to_tables(0, bick, bicd);
    b3.dump_to_tables(3, bick, bicd);
    TempDir dir;
    const std::string k = dir.write("out.bick", bick.str()), d = dir.write("out.bicd", bicd.str());
    BicSet set(*f.s.graph, *f.s.wgt);
    ASSERT_TRUE(set.read(k, d));
    ASSERT_EQ(set.size(), 4);
    for (const auto& [id, b] : {std::pair<int, const ExpVarBiclust&>{0, b0}, {3, b3}}) {
        EXPECT_TRUE(set.m_bics[id] == b) << id;
        EXPECT_NEAR(set.m_bics[id].m_score, b.m_score, 1e-4f * std::fabs(b.m_score) + 1e-5f);
        EXPECT_NEAR(set.m_scores[id], b.m_score, 1e-4f * std::fabs(b.m_score) + 1e-5f);
    }
    for (int gap : {1, 2}) {
        EXPECT_TRUE(set.m_active.get_ind(gap));
        EXPECT_EQ(set.m_bics[gap].m_exps.on_bits() + set.m_bics[gap].m_vars.on_bits(), 0);
        EXPECT_EQ(set.m_scores[gap], 0.0f);
    }
    EXPECT_EQ(set.m_patterns[3], "none");
    EXPECT_EQ(set.m_pat_from[3], -1);

    // Lines in reverse order, variables before conditions, trailing junk: the same biclusters.
    std::string rev;
    std::istringstream all(bicd.str());
    for (std::string line; std::getline(all, line);)
        rev = line + "   \n" + rev;
    std::istringstream k2(bick.str() + "junk 1\n7 2.5\n"), d2(rev + "x\n0 1 3 0 0.0\n");
    BicSet again(*f.s.graph, *f.s.wgt);
    again.read(k2, d2);
    ASSERT_EQ(again.size(), 4);
    EXPECT_TRUE(again.m_bics[3] == b3);
    EXPECT_TRUE(again.m_bics[0] == b0);
    EXPECT_NEAR(again.m_bics[3].m_score, b3.m_score, 1e-4f * std::fabs(b3.m_score) + 1e-5f);

    std::istringstream none_k(""), none_d("");
    BicSet empty(*f.s.graph, *f.s.wgt);
    empty.read(none_k, none_d);
    EXPECT_EQ(empty.size(), 0);
}

TEST(BicSet, UnopenableFilesAreReportedNotFatal) {
    SetFix f;
    TempDir dir;
    const std::string k = dir.write("a.bick", "0 1.0\n");
    BicSet set(*f.s.graph, *f.s.wgt);
    testing::internal::CaptureStderr();
    EXPECT_FALSE(set.read(dir.path() + "/none.bick", k));
    EXPECT_FALSE(set.read(k, dir.path() + "/none.bicd"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Cannot open bick file " + dir.path() +
                                                          "/none.bick\nCannot open bicd file " + dir.path() +
                                                          "/none.bicd\n");
}

TEST(BicSet, ReplaceGrowsTheSetAndKeepsTheOthers) {
    SetFix f;
    std::istringstream k("0 2.0\n1 3.0\n"), d("0 0 1 0 0\n0 1 1 0 0\n");
    BicSet set(*f.s.graph, *f.s.wgt);
    set.read(k, d);
    ds_bitvec vars(40);
    vars.set_ind(2);
    vars.set_ind(3);
    Quiet q;
    set.replace_bic(4, {0, 2}, {0, 1}, vars, 1, "ACGT", 5, 9);
    EXPECT_EQ(q.done(), "will replace 4\n");
    ASSERT_EQ(set.size(), 5);
    EXPECT_TRUE(set.m_bics[4] == f.bic({{0, 0}, {1, 2}}, {{1, 2}, {1, 3}}));
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(set.m_active.get_ind(i), i != 2 && i != 3) << i;
    EXPECT_EQ(set.m_patterns[4] + " " + std::to_string(set.m_pat_from[4]) + " " +
                  std::to_string(set.m_pat_to[4]),
              "ACGT 5 9");
    EXPECT_EQ(set.m_patterns[2], "none");
    EXPECT_TRUE(set.m_bics[0] == f.bic({{0, 1}}, {{0, 1}}));

    // Replacing in place resets the old members.
    Quiet q2;
    set.replace_bic(0, {3}, {0}, vars, 0, "none", -1, -1);
    EXPECT_TRUE(set.m_bics[0] == f.bic({{0, 3}}, {{0, 2}, {0, 3}}));
    EXPECT_EQ(set.size(), 5);
}

TEST(BicSetDeath, UnknownConditionNodeIsFatal) {
    SetFix f;
    BicSet set(*f.s.graph, *f.s.wgt);
    std::istringstream k("0 1.0\n"), d("0 0 7 5 0.0\n");
    EXPECT_DEATH(set.read(k, d), R"(BicSet\([0-9]+\): Cant match exp node 7 5)");
    std::istringstream k2("0 1.0\n"), d2("0 0 -1 0 0.0\n");
    EXPECT_DEATH(set.read(k2, d2), R"(BicSet\([0-9]+\): Cant match exp node -1 0)");
    // Ids that would size the set beyond memory, or overflow on `id + 1`, in either table.
    const struct {
        const char *bick, *bicm, *message;
    } cases[] = {
        {"0 1.0\n2147483647 2.0\n", "", "Bad bicluster id 2147483647 in bick row 2"},
        {"10000000 1.0\n", "", "Bad bicluster id 10000000 in bick row 1"},
        {"0 1.0\n", "0 none -1 -1\n2147483647 AC 1 2\n", "Bad bicluster id 2147483647 in bicm row 2"},
        {"0 1.0\n", "4194304 AC 1 2\n", "Bad bicluster id 4194304 in bicm row 1"},
    };
    for (const auto& c : cases) {
        std::istringstream kk(c.bick), dd(""), mm(c.bicm);
        EXPECT_DEATH((set.read(kk, dd), set.read_bicm(mm)), std::string(R"(BicSet\([0-9]+\): )") + c.message)
            << c.message;
    }
}

} // namespace
