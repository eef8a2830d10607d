// DNA characters: both letter tables, eight-base words, the alphabet and the
// neighbour iterator.
#include "DnaSeqChar.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

TEST(DnaSeqCharTest, DegenerateTableBothWays) {
    // Value order of the system's own table: lower-case three-base sets by the
    // base they leave out, the gap-accepting half with other lower-case letters.
    const std::string table = "0AGRCMStTWKcYga*-zxrvmsoukwdyhb#";
    for (int v = 0; v < 32; ++v) {
        DnaSeqDegChar c(static_cast<unsigned char>(v));
        EXPECT_EQ(c.get_char_encoding(), table[v]) << v;
        DnaSeqDegChar back;
        back.set_char_encoding(table[v]);
        EXPECT_EQ(back.m_val, v) << table[v];
    }
    EXPECT_EQ(DnaSeqDegChar(32).get_char_encoding(), 'E');
    EXPECT_EQ(DnaSeqDegChar(200).get_char_encoding(), 'E');
    for (char unknown : std::string("NnXL?E")) {
        DnaSeqDegChar c(9);
        c.set_char_encoding(unknown);
        EXPECT_EQ(c.m_val, 0) << unknown;
    }
    std::istringstream in(" t M");
    DnaSeqDegChar c;
    c.read(in);
    EXPECT_EQ(c.m_val, 7); // A G C
    c.read(in);
    EXPECT_EQ(c.m_val, 5); // A C
    std::ostringstream out;
    c.write(out);
    EXPECT_EQ(out.str(), "M");
    EXPECT_EQ(DnaSeqDegChar(13).degree(), 3);
}

TEST(DnaSeqCharTest, EightMerTableDiffersAtLMY) {
    const std::string table = "0AGRCLStTWKcMga*";
    DnaDegChar8Mer w;
    for (int v = 0; v < 16; ++v) {
        EXPECT_EQ(w.encode(v), table[v]);
        EXPECT_EQ(w.decode(table[v]), v);
    }
    EXPECT_EQ(w.encode(16), 'E');
    EXPECT_EQ(w.decode('Y'), 0);
    EXPECT_EQ(w.decode('N'), 0);
    // M is A C (5) as a degenerate character but C T (12) in a word.
    DnaSeqDegChar m;
    m.set_char_encoding('M');
    EXPECT_EQ(m.m_val, 5);
    EXPECT_EQ(w.decode('M'), 12);

    w.read("ACGTN*aM");
    // nibbles low to high: 1 4 2 8 0 15 14 12
    EXPECT_EQ(w.m_word, 0xCEF08241u);
    std::ostringstream os;
    w.write(os);
    EXPECT_EQ(os.str(), "ACGT0*aM");
    std::istringstream in("GG\nGG");
    w.read(in); // stops early at the failed stream
    EXPECT_EQ(w.m_word, 0x2222u);
    for (int b = 0; b < 256; ++b)
        EXPECT_EQ(DnaDegChar8Mer::ones[b], __builtin_popcount(b)) << b;
}

TEST(DnaSeqCharTest, AlphabetByDegree) {
    DnaSeqAlphabeth alpha;
    const std::vector<std::vector<int>> want = {
        {}, {1, 2, 4, 8}, {3, 5, 9, 6, 10, 12}, {7, 11, 13, 14}, {15}};
    ASSERT_EQ(alpha.size(), 5u);
    for (int d = 0; d < 5; ++d) {
        ASSERT_EQ(alpha[d].size(), want[d].size());
        for (std::size_t i = 0; i < want[d].size(); ++i) {
            EXPECT_EQ(alpha[d][i].m_val, want[d][i]);
            EXPECT_EQ(alpha[d][i].degree(), d);
        }
    }
}

TEST(DnaSeqCharTest, NeighbourIterator) {
    struct Case {
        int base, forbidden, required;
        std::vector<int> want;
    };
    // Masks one bit away from the base, none of the forbidden bits, all of the
    // required ones.
    const Case cases[] = {
        {0, 0, 0, {1, 2, 4, 8}},     {5, 0, 0, {1, 4, 7, 13}}, {5, 2, 0, {1, 4, 13}}, {5, 0, 4, {4, 7, 13}},
        {15, 0, 0, {7, 11, 13, 14}}, {15, 1, 8, {14}},         {3, 12, 3, {}},
    };
    for (const Case& c : cases) {
        DnaDegCharIter it;
        it.restart(DnaSeqDegChar(c.base), DnaSeqDegChar(c.forbidden), DnaSeqDegChar(c.required));
        std::vector<int> got;
        for (; it.is_valid(); ++it)
            got.push_back((*it).m_val);
        EXPECT_EQ(got, c.want) << "base " << c.base;
    }
    // restart_null: base 0 and mask 1, delivered even against the kept sets.
    DnaDegCharIter it;
    it.restart(DnaSeqDegChar(3), DnaSeqDegChar(1), DnaSeqDegChar(0));
    it.restart_null();
    ASSERT_TRUE(it.is_valid());
    EXPECT_EQ((*it).m_val, 1);
    ++it;
    std::vector<int> got;
    for (; it.is_valid(); ++it)
        got.push_back((*it).m_val);
    EXPECT_EQ(got, (std::vector<int>{2, 4, 8}));
}
