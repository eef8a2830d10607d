// Promoter tables: a FASTA file with short and long records, an unknown name, a
// duplicate and no final line end, read into both forms; padding and pruning;
// the record shuffle.
#include "DnaSeqGenomePromoters.h"
#include "Random.h"
#include "TestSupport.h"
#include "VarUniverse.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace {
const char kFasta[] = ">g0 first record\nACGTAC\nGT\n" // 8 bases: left alone at length 8
                      ">g1\nACG\n"                     // short: padded
                      ">nosuch\nTTTTTTTTTTTT\n"        // unknown: dropped with its body
                      ">g2 desc\nAAAACCCCGGGGTTTTA\n"  // 17 bases: pruned
                      ">g1\nCCAAG";                    // duplicate of g1 without line end

// Genes 0-3 with short names g0..g3 (the map read by default) and aliases only
// through m_alias_to_id.
struct DnaSeqGenomePromotersTest : testing::Test {
    void SetUp() override {
        std::istringstream tab("0 G0 g0\n1 G1 g1\n2 G2 g2\n3 G3 g3\n");
        quiet([&] { u.read_short_tabs(tab); });
    }
    VarUniverse u;
    std::istringstream in{kFasta};
};

} // namespace

TEST_F(DnaSeqGenomePromotersTest, LetterTable) {
    DnaSeqGenomePromoters<DnaSequence> g;
    const std::string err = quiet([&] { g.read_fasta(8, u, in, false, false); });
    EXPECT_NE(err.find("unkown gene, the name is nosuch\n"), std::string::npos) << err;
    EXPECT_NE(err.find("unkown gene\n"), std::string::npos);
    EXPECT_NE(err.find("no promoter seq for 3 g3\n"), std::string::npos);
    EXPECT_EQ(err.find("no promoter seq for 2"), std::string::npos);
    EXPECT_EQ(g.get_zero_offset(), -8);
    ASSERT_EQ(g.id_space_size(), 4);
    EXPECT_EQ(g.get_promoter(0), "ACGTACGT");
    EXPECT_EQ(g.get_promoter(0).effective_length(), 8);
    EXPECT_EQ(g.get_promoter(1), std::string("\0\0\0CCAAG", 8)); // the later record, padded in front
    EXPECT_EQ(g.get_promoter(1).effective_length(), 5);
    EXPECT_EQ(g.get_promoter(1).get_gene_var_id(), 1);
    EXPECT_EQ(g.get_promoter(2), "GGGTTTTA"); // the last 8 of 17
    EXPECT_TRUE(g.get_promoter(3).is_empty());
    EXPECT_FALSE(g.get_promoter(2).is_empty());
}

TEST_F(DnaSeqGenomePromotersTest, DenseTableAndPostSlack) {
    DnaSeqGenomePromoters<DnaDenseSequence> g;
    quiet([&] { g.read_fasta(8, u, in, false, false); });
    const DnaSeqPromoter<DnaDenseSequence>& p0 = g.get_promoter(0);
    EXPECT_EQ(p0.m_length, 8);
    ASSERT_EQ(p0.m_words.size(), 1u);
    EXPECT_EQ(p0.m_words[0].m_word, 0x82418241u);
    // 5 bases padded to 8: three whole words of all ones in front, m_length 8,
    // one data word.
    const DnaSeqPromoter<DnaDenseSequence>& p1 = g.get_promoter(1);
    EXPECT_EQ(p1.m_length, 8);
    EXPECT_EQ(p1.effective_length(), 5);
    ASSERT_EQ(p1.m_words.size(), 4u);
    EXPECT_EQ(p1.m_words[0].m_word, 0xFFFFFFFFu);
    EXPECT_EQ(p1.m_words[2].m_word, 0xFFFFFFFFu);
    EXPECT_EQ(p1.m_words[3].m_word, 0x00021144u); // C C A A G
    // 17 bases in 3 words pruned to 8: the last 8 words go, so all three.
    const DnaSeqPromoter<DnaDenseSequence>& p2 = g.get_promoter(2);
    EXPECT_EQ(p2.m_length, 8);
    EXPECT_EQ(p2.effective_length(), 8);
    EXPECT_TRUE(p2.m_words.empty());
    EXPECT_TRUE(g.get_promoter(3).is_empty());

    std::istringstream in2(">g1\nACG\n");
    DnaSeqGenomePromoters<DnaSequence> post;
    post.read_fasta(5, u, in2, false, true);
    EXPECT_EQ(post.get_promoter(1), std::string("ACG\0\0", 5));
}

TEST_F(DnaSeqGenomePromotersTest, AliasMapAndShuffle) {
    u.m_alias_to_id["orf3"] = 3;
    std::istringstream orfs(">orf3\nAAAA\n>g0\nCCCC\n");
    DnaSeqGenomePromoters<DnaSequence> g;
    quiet([&] { g.read_fasta(4, u, orfs, true, false); });
    EXPECT_EQ(g.get_promoter(3), "AAAA");
    EXPECT_TRUE(g.get_promoter(0).is_empty()); // short names aren't looked at with use_orf2

    // Whole records move: each gene id stays with its sequence, and the table is
    // a permutation.
    DnaSeqGenomePromoters<DnaSequence> h;
    h.m_promoters.resize(50);
    for (int i = 0; i < 50; ++i) {
        h.m_promoters[i].assign(std::to_string(i));
        h.m_promoters[i].m_gene_var_id = i;
    }
    Random::reset(5);
    h.randomize();
    std::vector<int> seen(50, 0);
    int moved = 0;
    for (int i = 0; i < 50; ++i) {
        const int id = h.get_promoter(i).get_gene_var_id();
        EXPECT_EQ(h.get_promoter(i), std::to_string(id));
        ++seen[id];
        moved += id != i;
    }
    EXPECT_EQ(std::count(seen.begin(), seen.end(), 1), 50);
    EXPECT_GT(moved, 25);
}
