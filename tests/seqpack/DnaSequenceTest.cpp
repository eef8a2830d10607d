// DNA sequences: FASTA bodies in letters and words, the dense position iterator, plain matching.
#include "DnaSequence.h"

#include <gtest/gtest.h>

#include <sstream>

TEST(DnaSequenceTest, LetterBodyStopsAfterNextHeader) {
    std::istringstream in("ACgt\nNN\n\nTT\n>next\nGG");
    DnaSequence s;
    s.read_fasta(in);
    EXPECT_EQ(s, "ACgtNNTT"); // held as read, case kept
    EXPECT_EQ(in.get(), 'n'); // the '>' is consumed
    std::string rest;
    std::getline(in, rest);
    s.read_fasta(in);
    EXPECT_EQ(s, "GG"); // no final line end
}

TEST(DnaSequenceTest, DenseBodyPacksEightAWord) {
    std::istringstream in("ACGTNacg\ntYM\n>x\n");
    DnaDenseSequence d;
    d.read_fasta(in);
    EXPECT_EQ(d.get_length(), 11);
    ASSERT_EQ(d.m_words.size(), 2u);
    // A C G T N a c g: 1 4 2 8 0 14 11 13; t Y M then '0' padding: 7 0 12 0 ...
    EXPECT_EQ(d.m_words[0].m_word, 0xDBE08241u);
    EXPECT_EQ(d.m_words[1].m_word, 0x00000C07u);
    EXPECT_EQ(d.get_value(4), 0); // N matches every pattern position
    EXPECT_EQ(d.get_letter(8), 't');
    EXPECT_EQ(in.get(), 'x');

    std::vector<int> walked;
    for (DnaDenseSeqCharIter it = d.begin(); it < d.end(); ++it)
        walked.push_back(*it);
    EXPECT_EQ(walked, (std::vector<int>{1, 4, 2, 8, 0, 14, 11, 13, 7, 0, 12, 0, 0, 0, 0, 0}));
    EXPECT_TRUE(DnaDenseSeqCharIter(d.m_words.data(), 7) < DnaDenseSeqCharIter(d.m_words.data() + 1, 0));
    EXPECT_FALSE(DnaDenseSeqCharIter(d.m_words.data() + 1, 0) < DnaDenseSeqCharIter(d.m_words.data(), 7));
}

TEST(DnaSequenceTest, PatternMatchAndCount) {
    const std::string text = "GACG";
    EXPECT_TRUE(dnapat_match("AC", text.begin() + 1));
    EXPECT_TRUE(dnapat_match("*C*", text.begin() + 1));
    EXPECT_FALSE(dnapat_match("AG", text.begin() + 1));
    struct Case {
        const char* seq;
        const char* pat;
        int want;
    };
    // A match whose last letter falls on the text's last letter isn't counted.
    const Case cases[] = {
        {"GAC", "AC", 0},       {"GACG", "AC", 1},       {"ACACAC", "AC", 2}, {"ACACACA", "AC", 3},
        {"AAAAA", "A1A", 2},    {"AAAAA", "A2A", 1},     {"GATTACA", "T", 2}, {"GATTACA", "A", 2},
        {"GATTACAG", "A*A", 1}, {"ACGTACGTT", "C1T", 2}, {"", "A", 0},        {"A", "A", 0},
    };
    for (const Case& c : cases)
        EXPECT_EQ(count_dnapat_match(c.seq, c.pat), c.want) << c.seq << " " << c.pat;
}
