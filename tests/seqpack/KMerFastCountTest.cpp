// KMerFastCount: the array path gives the same texts, counts and gene counts, in the same order, as the
// map walks of KMerCounter and KMerAggragator.
#include "KMerFastCount.h"
#include "KMerAggragator.h"
#include "KMerWorld.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <tuple>

TEST(KMerFastCountTest, SameAsMapWalk) {
    const std::uint32_t seed = test_seed(777);
    SCOPED_TRACE("seed " + std::to_string(seed));
    KmerWorld w(60, seed);
    const std::tuple<int, int, int> params[] = {{1, 0, -1},   {2, 5, 40},  {5, 0, -1}, {8, 0, -1},
                                                {8, 10, 200}, {3, 30, 20}, {6, -4, 33}};
    for (const auto& q : params) {
        const int k = std::get<0>(q), from = std::get<1>(q), to = std::get<2>(q);
        SCOPED_TRACE("k " + std::to_string(k) + " window " + std::to_string(from) + "," + std::to_string(to));
        KMerCounter<DnaSequence> cnt(w.univ, w.genome);
        KMerAggragator<DnaSequence> agg(w.univ, w.genome);
        quiet([&] {
            cnt.init(k, 0, 0, 0, w.genes, from, to);
            agg.init(k, 0, 0, 0, w.genes, from, to);
        });
        std::vector<std::tuple<std::string, std::uint64_t, int>> walk, fast;
        for (auto it = cnt.get_begin(); it != cnt.get_end(); ++it)
            walk.emplace_back(it->first, it->second, agg.get_pat_fp(it->first).on_bits());
        ASSERT_TRUE(KMerFastCount::can_count(k, 0, 0, 0));
        KMerFastCount fc;
        fc.count(w.genome, w.genes, k, from, to);
        fc.for_each([&](const std::string& t, std::uint64_t c, int g) { fast.emplace_back(t, c, g); });
        EXPECT_EQ(fast, walk);
        if (!walk.empty()) {
            EXPECT_EQ(fc.get_count(std::get<0>(walk[0])), std::get<1>(walk[0]));
            EXPECT_EQ(fc.get_genes(std::get<0>(walk.back())), std::get<2>(walk.back()));
        }
    }
    EXPECT_FALSE(KMerFastCount::can_count(8, 1, 0, 0));
    EXPECT_FALSE(KMerFastCount::can_count(8, 0, 0, 1));
}

// Real data (bench/data/fetch_seqpack.sh): Debian's fly 2-kb promoters, upper-cased; Jellyfish's
// 8-mer counts of the same file (count without -C, dump -c). Skips when the files are absent.
TEST(KMerFastCountRealTest, FlyEightMersEqualJellyfish) {
    const std::string dir = source_dir() + "/bench/data/out/seqpack/";
    std::ifstream genes(dir + "fly_genes.tab"), fasta(dir + "fly_promoters.fa"), jf(dir + "jf8.tsv");
    if (!genes || !fasta || !jf)
        GTEST_SKIP() << "no fly promoters or Jellyfish counts: run bench/data/fetch_seqpack.sh";
    VarUniverse univ;
    DnaSeqGenomePromoters<DnaSequence> genome;
    quiet([&] {
        univ.read_short_tabs(genes);
        genome.read_fasta(2000, univ, fasta, false, false);
    });
    ASSERT_EQ(genome.id_space_size(), 26454);
    ds_bitvec all(univ.size());
    all.set(true);
    KMerFastCount fc;
    fc.count(genome, all, 8, 0, -1);
    std::string kmer;
    std::uint64_t count;
    int lines = 0, pure = 0, wrong = 0;
    while (jf >> kmer >> count) {
        ++lines;
        if (fc.get_count(kmer) != count && ++wrong < 5)
            ADD_FAILURE() << kmer << ": " << fc.get_count(kmer) << " vs Jellyfish " << count;
    }
    fc.for_each([&](const std::string& t, std::uint64_t, int) {
        pure += t.find_first_not_of("ACGT") == std::string::npos;
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(pure, lines); // no 8-mer of A, C, G, T that Jellyfish doesn't have
    EXPECT_EQ(lines, 65536);
}
