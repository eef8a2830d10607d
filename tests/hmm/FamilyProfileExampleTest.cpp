// Runs examples/family_profile on its bundled data. The pair outputs are compared with
// tests/hmm/family_ref.py (double precision, data/hmm/family_*_expected*); the profile outputs are
// checked for consistency: the two synthetic families land in two classes and each aligned row is its
// sequence with gaps, rows of one class of one width.
#include "HMMTestUtil.h"
#include "SymbolSequence.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

std::vector<std::vector<std::string>> tsv(const std::string& text) {
    std::vector<std::vector<std::string>> rows;
    std::istringstream in(text);
    std::string line, cell;
    while (std::getline(in, line)) {
        std::istringstream ls(line);
        rows.emplace_back();
        while (std::getline(ls, cell, '\t'))
            rows.back().push_back(cell);
    }
    return rows;
}

TEST(FamilyProfileExample, BundledRun) {
    TempDir dir;
    const std::string src = source_dir() + "/data/examples/", out = dir.path() + "/";
    std::string opt = read_file(src + "family.opt");
    opt = opt.substr(0, opt.find("[Tables]")) + "[Tables]\nFasta = " + src +
          "family_seqs.fa\nPairs = " + src + "family_pairs.fa\nPairSubs = " + src +
          "family_pair_subs.tab\nPairTran = " + src + "family_pair_tran.tab\n";
    for (const char* k : {"OutClasses", "OutAlign", "OutModel", "OutTransitions", "OutEmissions", "OutPairs",
                          "OutPairSubs", "OutPairTran"})
        opt += std::string(k) + " = " + out + k + "\n";
    const std::string cmd =
        std::string(FAMILY_PROFILE_BIN) + " " + dir.write("run.opt", opt) + " 2> /dev/null";
    ASSERT_EQ(0, std::system(cmd.c_str()));

    expect_same_words(read_file(source_dir() + "/data/hmm/family_pairs_expected.tsv"),
                      read_file(out + "OutPairs"), 2e-5);
    expect_same_words(read_file(source_dir() + "/data/hmm/family_pair_tran_expected.tab"),
                      read_file(out + "OutPairTran"), 2e-5);

    std::ifstream fa(src + "family_seqs.fa");
    ProteinSequenceSet seqs;
    {
        QuietCerr quiet;
        seqs.read_fasta_file(fa);
    }
    const auto classes = tsv(read_file(out + "OutClasses")), align = tsv(read_file(out + "OutAlign"));
    ASSERT_EQ(17u, classes.size());
    ASSERT_EQ(17u, align.size());
    EXPECT_EQ((std::vector<std::string>{"name", "class", "viterbi"}), classes[0]);
    EXPECT_EQ((std::vector<std::string>{"name", "row"}), align[0]);
    for (int i = 0; i < 16; ++i) {
        SCOPED_TRACE(i);
        const auto& c = classes[i + 1];
        EXPECT_EQ(c[0].substr(0, 4), seqs.m_names[i].substr(0, 4));
        EXPECT_EQ(c[1], classes[i < 8 ? 1 : 9][1]);
        EXPECT_NE(c[1], classes[i < 8 ? 9 : 1][1]);
        EXPECT_LT(std::stod(c[2]), 0.0);
        std::string letters, row = align[i + 1][1];
        for (char x : seqs[i])
            letters.push_back(ProteinSequence::decode_aa(x));
        row.erase(std::remove(row.begin(), row.end(), '-'), row.end());
        EXPECT_EQ(letters, row);
        EXPECT_EQ(align[i + 1][1].size(), align[i < 8 ? 1 : 9][1].size());
    }
}

} // namespace
