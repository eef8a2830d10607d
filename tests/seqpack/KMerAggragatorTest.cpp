// K-mer walks against a brute-force scan: random promoters with padding, N, lower case and NUL, gaps,
// degenerate forms up to two stars, windows; the window-list variants; the pattern lookups of the index.
#include "KMerAggragator.h"
#include "KMerWorld.h"
#include "Random.h"
#include "options.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <sstream>

namespace {
struct Brute {
    std::map<std::string, std::uint64_t> counts;
    std::map<std::string, std::set<int>> holders;
};

// Every start of the window, every gap and split, every choice of up to max_deg star positions
// (never the gap digit); each distinct text of one start once.
void brute_scan(const KmerWorld& w, int k, int max_deg, int min_gap, int max_gap, int from, int to,
                Brute& out) {
    for (int gene = 0; gene < w.genome.id_space_size(); ++gene) {
        const DnaSeqPromoter<DnaSequence>& p = w.genome.get_promoter(gene);
        if (p.is_empty() || !w.genes.get_ind(gene))
            continue;
        const int len = p.get_length();
        int first = to == -1 ? 0 : std::max(from, 0);
        int last = to == -1 ? len - k - max_gap : std::min(to, len) - k - max_gap;
        for (int s = first; s <= last; ++s) {
            std::set<std::string> texts;
            for (int g = min_gap; g <= max_gap; ++g) {
                std::vector<std::pair<std::string, int>> bases; // text, digit position
                if (g == 0)
                    bases.emplace_back(p.substr(s, k), -1);
                for (int left = 2; g > 0 && left <= k - 3; ++left)
                    bases.emplace_back(p.substr(s, left) + char('0' + g) + p.substr(s + left + g, k - left),
                                       left);
                for (const auto& b : bases) {
                    const int n = static_cast<int>(b.first.size());
                    for (int mask = 0; mask < (1 << n); ++mask) {
                        if (__builtin_popcount(mask) > max_deg || (b.second >= 0 && (mask >> b.second & 1)))
                            continue;
                        std::string t = b.first;
                        for (int i = 0; i < n; ++i)
                            if (mask >> i & 1)
                                t[i] = '*';
                        texts.insert(t);
                    }
                }
            }
            for (const std::string& t : texts) {
                ++out.counts[t];
                out.holders[t].insert(gene);
            }
        }
    }
}

std::set<int> members(const ds_bitvec& v) {
    std::set<int> out;
    for (int i = 0; i < v.size(); ++i)
        if (v.get_ind(i))
            out.insert(i);
    return out;
}

template <class Index> void expect_same_index(const Index& agg, const Brute& b) {
    std::map<std::string, std::set<int>> got;
    for (auto it = agg.get_pat_begin(); it != agg.get_pat_end(); ++it)
        got[it->first] = members(it->second);
    EXPECT_EQ(got, b.holders);
}

template <class Counter> std::map<std::string, std::uint64_t> counts(const Counter& cnt) {
    return std::map<std::string, std::uint64_t>(cnt.get_begin(), cnt.get_end());
}
} // namespace

TEST(KMerAggragatorTest, IndexAndCountsMatchBruteForce) {
    const std::uint32_t seed = test_seed(4242);
    SCOPED_TRACE("seed " + std::to_string(seed));
    KmerWorld w(40, seed);
    struct Params {
        int k, max_deg, min_gap, max_gap, from, to;
    };
    const Params params[] = {
        {4, 0, 0, 0, 0, -1},  {3, 1, 0, 0, 5, 30}, {6, 2, 0, 2, 0, -1}, {6, 2, 1, 3, 3, 25},
        {5, 0, 1, 1, 0, 100}, {7, 1, 0, 4, 2, 38}, {4, 2, 2, 3, 0, -1}, {8, 2, 0, 0, 10, 25},
    };
    const std::string err = quiet([&] {
        for (const Params& q : params) {
            SCOPED_TRACE("k " + std::to_string(q.k) + " deg " + std::to_string(q.max_deg) + " gaps " +
                         std::to_string(q.min_gap) + "-" + std::to_string(q.max_gap) + " window " +
                         std::to_string(q.from) + "," + std::to_string(q.to));
            Brute b;
            brute_scan(w, q.k, q.max_deg, q.min_gap, q.max_gap, q.from, q.to, b);
            KMerAggragator<DnaSequence> agg(w.univ, w.genome);
            agg.init(q.k, q.max_deg, q.min_gap, q.max_gap, w.genes, q.from, q.to);
            expect_same_index(agg, b);
            KMerCounter<DnaSequence> cnt(w.univ, w.genome);
            cnt.init(q.k, q.max_deg, q.min_gap, q.max_gap, w.genes, q.from, q.to);
            EXPECT_EQ(counts(cnt), b.counts);
            // Below k = 5 there are no splits, so a walk of gaps only has no texts.
            EXPECT_EQ(b.counts.empty(), q.k < 5 && q.min_gap > 0);
        }
    });
    EXPECT_NE(err.find("Aggrag, proc vid =20\n"), std::string::npos);
    EXPECT_NE(err.find("Counter, proc vid =20\n"), std::string::npos);
}

TEST(KMerAggragatorTest, WindowListsAndRandomShift) {
    KmerWorld w(30, 99);
    const KMerWalk<DnaSequence>::window_list windows = {{0, 12}, {8, 30}, {25, 60}};
    Brute b;
    for (const auto& win : windows)
        brute_scan(w, 5, 1, 0, 1, win.first, win.second, b);
    KMerRelCounter<DnaSequence> rc(w.univ, w.genome);
    quiet([&] { rc.init(5, 1, 0, 1, w.genes, windows); });
    EXPECT_EQ(counts(rc), b.counts); // overlapping windows count twice

    options opt;
    std::istringstream cfg("[Rel]\nShouldRandom = 1\nRandAmplitude = 3\n");
    opt.read(cfg, false);
    KMerRelAggrag<DnaSequence> ra(w.univ, w.genome, opt, "Rel");
    Random::reset(31);
    const std::string err = quiet([&] { ra.init(5, 1, 0, 1, w.genes, windows); });
    // The same three draws, shifts int(u * 7) - 3 of both ends of each window.
    Random::reset(31);
    Brute shifted;
    std::ostringstream trace;
    for (const auto& win : windows) {
        const int r = static_cast<int>(Random::bits() / 4294967295.0 * 7) - 3;
        trace << "rand = " << r << "\n";
        EXPECT_LE(std::abs(r), 3);
        brute_scan(w, 5, 1, 0, 1, win.first + r, win.second + r, shifted);
    }
    EXPECT_NE(err.find(trace.str()), std::string::npos) << err.substr(0, 200);
    expect_same_index(ra, shifted);
}

TEST(KMerAggragatorTest, PatternLookups) {
    KmerWorld w(20, 7);
    KMerAggragator<DnaSequence> agg(w.univ, w.genome);
    quiet([&] { agg.init(4, 1, 0, 0, w.genes, 0, -1); });
    Brute b;
    brute_scan(w, 4, 1, 0, 0, 0, -1, b);
    // Letters other than A, C, G, T count as '*'; one is within the limit.
    const ds_bitvec& one = agg.get_deg_pattern_sup_fp("ACNT");
    EXPECT_EQ(members(one), b.holders["AC*T"]);
    // Two are beyond it: all genes taking part.
    EXPECT_EQ(agg.get_deg_pattern_sup_fp("AMNT"), w.genes);
    // An unknown text gets an empty entry on the first lookup.
    EXPECT_FALSE(agg.have_kmer("AAAAA"));
    EXPECT_EQ(agg.get_pat_fp("AAAAA").on_bits(), 0);
    EXPECT_FALSE(agg.have_kmer("AAAAA"));
    EXPECT_EQ(agg.get_deg_pattern_sup_fp("AAAAA").on_bits(), 0);
    EXPECT_TRUE(agg.have_kmer("AAAAA"));

    // A restriction keeps only the listed texts (with their degenerate forms).
    agg.set_restrict({"ACGT"});
    quiet([&] { agg.init(4, 1, 0, 0, w.genes, 0, -1); });
    for (auto it = agg.get_pat_begin(); it != agg.get_pat_end(); ++it) {
        int diff = 0;
        for (int i = 0; i < 4; ++i)
            diff += it->first[i] != "ACGT"[i];
        EXPECT_TRUE(diff == 0 || (diff == 1 && it->first.find('*') != std::string::npos)) << it->first;
    }
}

TEST(KMerAggragatorTest, DenseFormGivesTheSameIndex) {
    VarUniverse u;
    std::istringstream tab("0 G0 g0\n1 G1 g1\n");
    u.read_short_tabs(tab);
    // Both of length 20, so that no padding enters (NUL in letters, other values in words).
    const char fasta[] = ">g0\nACGTTGCAACGTAAGCTTAC\n>g1\nGGGACGTTTACCAGGTACCN\n";
    std::istringstream a(fasta), d(fasta);
    DnaSeqGenomePromoters<DnaSequence> letters;
    DnaSeqGenomePromoters<DnaDenseSequence> dense;
    ds_bitvec all(2);
    all.set(true);
    KMerCounter<DnaSequence> cl(u, letters);
    KMerCounter<DnaDenseSequence> cd(u, dense);
    quiet([&] {
        letters.read_fasta(20, u, a, false, false);
        dense.read_fasta(20, u, d, false, false);
        cl.init(5, 1, 0, 2, all, 0, -1);
        cd.init(5, 1, 0, 2, all, 0, -1);
    });
    // N reads back from a word as '0' (value 0): the only difference.
    std::map<std::string, std::uint64_t> ml_zero;
    for (const auto& e : counts(cl)) {
        std::string t = e.first;
        std::replace(t.begin(), t.end(), 'N', '0');
        ml_zero[t] += e.second;
    }
    EXPECT_EQ(ml_zero, counts(cd));
    EXPECT_EQ(cl.get_count("AC1TTG"), 1u);
    EXPECT_EQ(cl.get_count("AC2TGC"), 1u);
    EXPECT_EQ(cl.get_count("ACG1TG"), 0u); // k 5 has the split left = 2 only
}
