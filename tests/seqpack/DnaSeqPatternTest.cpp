// Degenerate patterns by hand: the text notation, the phase versions after each edit, the refused A,
// the window, mismatches counted in bits, the template iterator and the pattern distances.
#include "DnaSeqPattern.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>

namespace {
DnaDenseSequence dense(const std::string& s) {
    std::istringstream in(s + "\n");
    DnaDenseSequence d;
    d.read_fasta(in);
    return d;
}

// Every version must hold position i's complement in nibble (i + p) % 8 and nothing else outside
// bits that a refused A may hold.
void expect_versions(const Dna8MerPattern& p, const std::vector<int>& comp) {
    const int L = static_cast<int>(comp.size());
    for (int ph = 0; ph < 8; ++ph) {
        ASSERT_EQ(static_cast<int>(p.m_phase[ph].size()), (L + ph + 7) / 8) << "phase " << ph;
        for (int i = 0; i < L; ++i)
            EXPECT_EQ(p.get_nibble(ph, i), comp[i]) << "phase " << ph << " pos " << i;
    }
}

TEST(Dna8MerPatternTest, NotationAndVersions) {
    Dna8MerPattern p;
    p.init_str("AC3T");
    EXPECT_EQ(p.length(), 6);
    EXPECT_EQ(p.get_str(), "AC***T");
    expect_versions(p, {14, 11, 0, 0, 0, 7});
    // 'M' is C or T in this table, A or C in the letter pattern's.
    Dna8MerPattern m;
    m.init_str("M");
    DnaSeqPattern lm;
    lm.init_str("M");
    EXPECT_EQ(~m.get_nibble(0, 0) & 15, 12);
    EXPECT_EQ(lm.m_chars[0].m_val, 5);
    lm.init_str("A2-");
    EXPECT_EQ(lm.get_str(), "A**-");
    EXPECT_EQ(lm.m_chars[3].m_val, 16);

    // Edits keep all versions in step: push at both ends, pops, over word boundaries.
    Dna8MerPattern q;
    q.init_str("ACGTACGTA");
    q.push_front(DnaSeqDegChar(2));
    EXPECT_EQ(q.get_str(), "#ACGTACGTA");
    expect_versions(q, {0, 14, 11, 13, 7, 14, 11, 13, 7, 14});
    EXPECT_EQ(q.pop_front().m_val, 31);
    EXPECT_EQ(q.pop_front().m_val, 17);
    EXPECT_EQ(q.pop_back().m_val, 17);
    expect_versions(q, {11, 13, 7, 14, 11, 13, 7});
    EXPECT_EQ(q.get_str(), "CGTACGT");
}

TEST(Dna8MerPatternTest, ChangedPositionsReadTheGapColumn) {
    Dna8MerPattern p;
    p.init_str("AGR");
    p.add_char(0, DnaSeqChar(1));
    p.del_char(1, DnaSeqChar(4));
    p.add_deg_char(2, DnaSeqDegChar(0));
    EXPECT_EQ(p.get_str(), "zxr");
    p.del_deg_char(2, DnaSeqDegChar(2));
    EXPECT_EQ(p.get_str(), "zxz");
    p.set_deg_char(1, DnaSeqDegChar(12));
    EXPECT_EQ(p.get_str(), "zYz");
    EXPECT_EQ(p.get_deg_char(1).m_val, 12 | 16);
}

TEST(Dna8MerPatternTest, MatchWindowRefusedAAndMismatches) {
    // Starts run below length - L - 1: here 20 - 3 - 1 = 16, so the ACG at 16 is out.
    const DnaDenseSequence s = dense("CCCCCACGCCCCCCCCACGT");
    Dna8MerPattern p;
    p.init_str("ACG");
    EXPECT_EQ(p.match_from(s, s.begin()), DnaDenseSeqCharIter(s.m_words.data(), 5));
    EXPECT_EQ(p.match_from(s, DnaDenseSeqCharIter(s.m_words.data(), 6)), s.end());
    // push_back of the same letters spills a refused A behind the G (start 4: nibble 7 of the first
    // word), and a later push clears it.
    Dna8MerPattern b;
    for (char c : std::string("ACG"))
        b.push_back(c);
    EXPECT_TRUE(b.match(dense("CCCCACGTCCCCCCCCCCCCC")));
    EXPECT_FALSE(b.match(dense("CCCCACGACCCCCCCCCCCCC")));
    // ... except when the G is the top nibble of its word: start 13, G at 15.
    EXPECT_TRUE(b.match(dense("CCCCCCCCCCCCCACGACCCC")));
    b.push_back('A');
    EXPECT_TRUE(b.match(dense("CCCCACGACCCCCCCCCCCCC")));

    // The window: to_range 9 keeps starts up to 9 - 3.
    p.m_to_range = 9;
    EXPECT_TRUE(p.match(s));
    p.m_to_range = 7;
    EXPECT_FALSE(p.match(s));
    p.m_to_range = -1;
    p.m_from_range = 6;
    EXPECT_FALSE(p.match(s));
    // One mismatch: TCG fits ACG once a base differs; a position forbidding three bases costs one
    // bit for a one-hot base.
    p.m_from_range = 0;
    p.init_str("TCG");
    EXPECT_FALSE(p.match(s));
    p.m_mismatches = 1;
    EXPECT_TRUE(p.match(s));
    // A pattern longer than the sequence matches nowhere.
    p.init_str("ACGTACGTACGTACGTACGTACGT");
    EXPECT_FALSE(p.match(s));
    int pos = 0;
    Dna8MerPattern best;
    best.init_str("ACGTC");
    EXPECT_EQ(best.best_match(s, &pos), 4);
    EXPECT_EQ(pos, 5);
}

TEST(Dna8MerPatternTest, LookupTexts) {
    Dna8MerPattern p;
    p.init_str("ACGTTGCA");
    std::string pre, suf, ker;
    p.get_prefix(pre, 3);
    p.get_suffix(suf, 3);
    EXPECT_EQ(pre, "ACG");
    EXPECT_EQ(suf, pre);
    p.get_kernel_substr(4, DnaSeqDegChar(1), ker, 4);
    EXPECT_EQ(ker, "GTAG"); // start 2
    p.get_kernel_substr(7, DnaSeqDegChar(1), ker, 4);
    EXPECT_EQ(ker, "TTGC"); // start 8 - 4 - 1 = 3: the window misses the position
}

TEST(DnaSeqPatternTest, LetterMatchWindowsAndCounts) {
    DnaSeqPattern p;
    p.init_str("AY");
    const std::string text = "CACATAC-ATG";
    EXPECT_EQ(p.match_count(text), 4); // AC at 1, AT at 3, AC at 5, AT at 8
    p.init_str("A-");
    EXPECT_FALSE(p.match(text));
    p.init_str("Cz");
    EXPECT_EQ(p.match_count(text), 3); // CA at 0 and 2, C- at 6
    // A NUL never fits; a match may end on the last letter.
    p.init_str("TG");
    EXPECT_TRUE(p.match(text));
    p.init_str("A*G");
    EXPECT_FALSE(p.match(std::string("CA\0G", 4)));
    EXPECT_TRUE(p.match(std::string("CATG", 4)));
    int miss = -1;
    p.init_str("ACG");
    EXPECT_FALSE(p.match_prefix(text.begin(), &miss));
    EXPECT_EQ(miss, 1);
    p.m_mismatches = 1;
    EXPECT_TRUE(p.match_prefix(text.begin() + 8, &miss)); // ATG
    EXPECT_EQ(miss, 1);
}

TEST(DnaSeqPatternTest, TemplateWalksThePatternsHoldingAKmer) {
    std::istringstream in("\n1*2;");
    DnaSeqTemplatePattern t;
    t.read(in);
    std::ostringstream out;
    t.write(out);
    EXPECT_EQ(out.str(), "1*2;");
    DnaSeqAlphabeth alpha;
    DnaSeqTemplatePatternIter it(alpha);
    it.restart("AGC", t);
    std::vector<std::string> seen;
    for (; it.is_valid(); ++it)
        seen.push_back(it.get_str());
    // Degree-2 sets holding C, in alphabet order: M (A C), S (G C), Y (C T).
    EXPECT_EQ(seen, (std::vector<std::string>{"A*M", "A*S", "A*Y"}));
    std::istringstream bad("12x;");
    EXPECT_DEATH(t.read(bad), R"(DnaSeqPattern\([0-9]+\): Bad pattern template char = x)");
}

TEST(DnaSeqPatternTest, Distances) {
    // a, b, a's window, b's window, sub-pattern, distance (worked by hand).
    struct Case {
        const char *a, *b;
        int af, at, bf, bt;
        bool sub;
        float dist;
    } cases[] = {{"AM", "TACG", 0, 10, 0, 10, true, 1.0f},  // C within A-or-C; one letter differs
                 {"AC", "TAGG", 0, 10, 0, 10, false, 1.0f}, // best overlap one letter
                 {"AC", "TACG", 0, 20, 0, 10, false, 0.0f}, // b's window inside a's: nothing added
                 {"AC", "TACG", 5, 20, 0, 10, false, 1.0f}, // overlapping windows
                 {"AC", "TACG", 15, 20, 0, 10, false, 10.0f}};
    for (const Case& c : cases) {
        EXPECT_EQ(is_subpat(c.a, c.af, c.at, c.b, c.bf, c.bt), c.sub) << c.a << " " << c.b;
        EXPECT_FLOAT_EQ(calc_dist(c.a, c.af, c.at, c.b, c.bf, c.bt), c.dist) << c.a << " " << c.b;
    }
    EXPECT_EQ(no_gap_dist("AC2T", "CGGT"), 3); // offset 1: two stars against G, A hangs over
}
} // namespace
