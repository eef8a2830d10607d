// BicSet's motif table: written lines read back, fillers for missing ids, and the stop at a fifth
// column.
#include "BicSet.h"

#include "BicSynth.h"

namespace {

TEST(BicSetBicm, RoundTripAndStopAtAFifthColumn) {
    Synth s(6, 20, {0, 1}, {0, 1, 2}, 3.0f, 3u, false);
    BicSet set(*s.graph, *s.wgt);
    set.replace_bic(1, {0}, {0}, id_set({1}, 20), 0, "none", -1, -1);
    // Written as the example writes it: id, pattern, from, to.
    std::ostringstream out;
    out << 0 << "\tAC2Tz\t" << 10 << "\t" << 90 << "\n" << 3 << "\t#*GA\t" << -1 << "\t" << 40 << "\n";
    TempDir dir;
    const std::string path = dir.write("x.bicm", out.str());
    ASSERT_TRUE(set.read_bicm(path));
    ASSERT_EQ(set.m_patterns.size(), 4u);
    EXPECT_EQ(set.m_patterns, (std::vector<std::string>{"AC**Tz", "none", "none", "#*GA"}));
    EXPECT_EQ(set.m_pat_from, (std::vector<int>{10, -1, -1, -1}));
    EXPECT_EQ(set.m_pat_to, (std::vector<int>{90, -1, -1, 40}));

    // A fifth column is read as the next id and stops the table after the first line.
    std::istringstream five("0\tACGT\t1\t2\t0.5\n1\tGGGG\t3\t4\t0.25\n");
    set.read_bicm(five);
    EXPECT_EQ(set.m_patterns[0], "ACGT");
    EXPECT_EQ(set.m_patterns[1], "none");
    EXPECT_EQ(set.m_pat_to[1], -1);

    Quiet q;
    EXPECT_FALSE(set.read_bicm(dir.path() + "/missing.bicm"));
    EXPECT_NE(q.done().find("Cannot open bicm file "), std::string::npos);
}
} // namespace
