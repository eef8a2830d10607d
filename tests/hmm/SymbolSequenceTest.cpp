// Tests of the symbol sequences: DNA and protein codes, FASTA reading and writing, a real FASTA file.
#include "SymbolSequence.h"
#include "HMMTestUtil.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace {

std::string codes(const std::string& s) {
    std::string out;
    for (char c : s)
        out += std::to_string(static_cast<int>(c)) + " ";
    return out;
}

TEST(SymbolSequence, DnaCodesAndLines) {
    QuietCerr quiet;
    const DnaCodeSequence s("TCGAN");
    EXPECT_EQ("0 1 2 3 4 ", codes(s));
    EXPECT_EQ("init dna code string with 5 chars\nUnkown nuc code N\n", quiet.text());
    std::ostringstream out;
    s.write_fasta(out);
    EXPECT_EQ("TCGAX\n", out.str());
    // A line is kept up to its first T.
    std::istringstream in("ACGTAC\n  GGA\nCCTTT\n>next\nAA\n");
    DnaCodeSequence t;
    t.read_fasta(in);
    EXPECT_EQ("3 1 2 2 2 3 1 1 ", codes(t)); // ACG, GGA, CC
    std::string rest;
    std::getline(in, rest);
    EXPECT_EQ("next", rest); // the '>' is eaten
}

TEST(SymbolSequence, ProteinCodesAndPrinting) {
    QuietCerr quiet;
    std::istringstream in("ABCDEFGHIKLMNPQRSTVWYZ\nJOU\n");
    ProteinSequence s;
    s.read_fasta(in);
    ASSERT_EQ(25u, s.size());
    for (int i = 0; i < 22; ++i)
        EXPECT_EQ(i + 1, s.code_at(i));
    EXPECT_EQ(23, s.code_at(22));
    EXPECT_EQ(23, s.code_at(24));
    EXPECT_NE(std::string::npos, quiet.text().find("Unkown AA code J\nUnkown AA code O\nUnkown AA code U\n"));
    std::ostringstream out;
    s.write_fasta(out);
    // E (code 5) prints as G; unknown letters as X.
    EXPECT_EQ("ABCDGFGHIKLMNPQRSTVWYZXXX\n", out.str());
    EXPECT_EQ('X', ProteinSequence::decode_aa(0));
}

TEST(SymbolSequence, FastaLinesOfSixtyAndLongLines) {
    SymbolSequence s(std::string(121, 'a'));
    std::ostringstream out;
    s.write_fasta(out);
    EXPECT_EQ(std::string(60, 'a') + "\n" + std::string(60, 'a') + "\na\n", out.str());
    std::ostringstream empty;
    SymbolSequence().write_fasta(empty);
    EXPECT_EQ("\n", empty.str());
    // A line longer than any buffer is read whole.
    QuietCerr quiet;
    std::istringstream in(std::string(3000, 'A') + "\nC\n");
    ProteinSequence p;
    p.read_fasta(in);
    EXPECT_EQ(3001u, p.size());
    EXPECT_EQ(3, p.code_at(3000));
}

TEST(SymbolSequence, ProteinSetKeepsNamesAndSequences) {
    QuietCerr quiet;
    std::istringstream in("junk line\n>p1 first one\nACD\nEF\n>p2\n\n>p3 last\nW");
    ProteinSequenceSet set;
    set.read_fasta_file(in);
    ASSERT_EQ(3u, set.size());
    EXPECT_EQ("p1 first one", set.get_sequence_name(0));
    EXPECT_EQ("p3 last", set.get_sequence_name(2));
    EXPECT_EQ("1 3 4 5 6 ", codes(set[0]));
    EXPECT_TRUE(set[1].empty());
    EXPECT_EQ("20 ", codes(set[2]));
    EXPECT_NE(std::string::npos, quiet.text().find("read prot 1 descriptor p2\n"));
}

// globins45.fa of Debian's hmmer-examples, fetched by bench/hmm_fetch_globins.sh (not committed).
TEST(SymbolSequence, Globins45RealFasta) {
    const std::string path = source_dir() + "/bench/data/scratch/hmm/globins45.fa";
    std::ifstream in(path);
    if (!in)
        GTEST_SKIP() << path << " absent: run bench/hmm_fetch_globins.sh";
    QuietCerr quiet;
    ProteinSequenceSet set;
    set.read_fasta_file(in);
    ASSERT_EQ(45u, set.size());
    ASSERT_EQ(45u, set.m_names.size());
    // First entry as the file shows it; the residue total counted with grep/wc.
    EXPECT_EQ(0u, set.m_names[0].find("MYG_ESCGI"));
    EXPECT_EQ(19, set[0].code_at(0)); // V
    EXPECT_EQ(11, set[0].code_at(1)); // L
    EXPECT_EQ(17, set[0].code_at(2)); // S
    std::size_t total = 0;
    for (std::size_t i = 0; i < set.size(); ++i) {
        EXPECT_FALSE(set.m_names[i].empty());
        EXPECT_GT(set[i].size(), 100u) << set.m_names[i];
        total += set[i].size();
        for (char c : set[i])
            EXPECT_TRUE(c >= 1 && c <= 23);
    }
    EXPECT_EQ(6519u, total);
}

} // namespace
