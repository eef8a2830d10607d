// DynProgAlign (tie rules and truncation by hand, scores against Biopython on real globins when
// fetched), SymbSubstMat reading, star alignment merging and its fatal texts.
#include "SeqAlign.h"
#include "HMMTestUtil.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace {

SymbSubstMat filled(int n, float diag, float off) {
    SymbSubstMat m(n);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j)
            m.m_matrix.push_back(i == j ? diag : off);
    return m;
}

std::string pairs(const SeqAlignment& al) {
    std::ostringstream o;
    for (const auto& p : al)
        o << p.first << ":" << p.second << " ";
    return o.str();
}

TEST(DynProgAlign, HandCases) {
    struct Case {
        float diag, off;
        int gap;
        const char *x, *y;
        int score;
        const char* al;
    };
    const Case cases[] = {
        // Identical sequences with a positive diagonal stay on it.
        {5, -4, -2, "0120", "0120", 20, "0:0 1:1 2:2 3:3 "},
        // Left and up tie at -2 (match -10): up is taken in the cell, left then in row 0.
        {-10, -10, -1, "0", "1", -2, "-1:0 0:-1 "},
        // Match equal to both gaps: the diagonal wins.
        {-2, -2, -1, "0", "0", -2, "0:0 "},
        // Entries are truncated toward zero: 2.9 counts 2, -2.9 counts -2.
        {2.9f, -2.9f, -5, "01", "00", 0, "0:0 1:1 "},
        // One insertion in y: the best costs one gap.
        {3, -3, -1, "02", "012", 5, "0:0 -1:1 1:2 "},
        // Empty x: all of y from the left.
        {1, 0, -2, "", "12", -4, "-1:0 -1:1 "},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.x) + " vs " + c.y);
        const SymbSubstMat m = filled(3, c.diag, c.off);
        DynProgAlign dp(m, c.gap);
        SeqAlignment al;
        EXPECT_EQ(c.score, dp.align(digits(c.x), digits(c.y), al));
        EXPECT_EQ(c.al, pairs(al));
    }
}

TEST(SymbSubstMat, ReadChecksRowSums) {
    SymbSubstMat m(2);
    {
        QuietCerr quiet;
        std::istringstream ok("0.25 0.75\n0.5 0.5\n"), empty("");
        m.read(ok);
        EXPECT_EQ((std::vector<float>{0.25f, 0.75f, 0.5f, 0.5f}), m.m_matrix);
        m.read(empty);
        EXPECT_TRUE(m.m_matrix.empty());
    }
    std::istringstream bad("0.5 0.5\n0.5 0.4\n");
    EXPECT_DEATH(m.read(bad), R"(SeqAlign\([0-9]+\): bad sum 0.9 at symb 1)");
}

TEST(SeqMultiAlign, StarInsertsCentreGapColumns) {
    const SymbSubstMat m = filled(4, 5, -5);
    SymbolSequenceSet seqs;
    for (const char* s : {"012", "02", "0312"})
        seqs.push_back(digits(s));
    StarMultiAlign star(m, -3);
    SeqMultiAlign msa;
    star.align(seqs, 0, msa);
    ASSERT_EQ(3, msa.num_rows());
    // Centre 0-12; row 1 lacks the 1; row 2 adds a 3 in a new column.
    const char* want[] = {"0-12", "0--2", "0312"};
    for (int r = 0; r < 3; ++r)
        EXPECT_EQ(want[r], msa_row(msa, seqs, r));
    SeqAlignment wrong;
    wrong.emplace_back(1, 0);
    EXPECT_DEATH(msa.add_by_pair(3, wrong), R"(SeqAlign\([0-9]+\): Focus slot val should match but 0 != 1)");
}

// All pairs of the fetched globins against the scores Biopython's PairwiseAligner gave (global,
// linear gap -4, integer BLOSUM62), written by bench/hmm_fetch_profiles.sh.
TEST(DynProgAlign, BiopythonScoresOnGlobins) {
    const std::string dir = source_dir() + "/bench/data/scratch/hmm/";
    std::ifstream want(dir + "globins45_pair_scores.txt");
    ProteinSequenceSet seqs;
    if (!want || !read_scratch("globins45.fa", seqs))
        GTEST_SKIP() << "run bench/hmm_fetch_profiles.sh first";
    QuietCerr quiet;
    options opts;
    std::ifstream mat(source_dir() + "/data/hmm/blosum62_codes.opt");
    opts.read(mat, false);
    const SymbSubstMat m(opts, "Subst");
    DynProgAlign dp(m, -4);
    SeqAlignment al;
    int i, j, score, n = 0;
    while (want >> i >> j >> score) {
        ASSERT_EQ(score, dp.align(seqs[i], seqs[j], al)) << i << " " << j;
        ++n;
    }
    EXPECT_EQ(990, n);
}

} // namespace
