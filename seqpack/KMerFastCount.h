// KMerFastCount: occurrence and gene counts of ungapped, non-degenerate k-mers of letter promoters in
// arrays of 4^k entries, the same numbers as KMerCounter and KMerAggragator with max_deg 0 and no gap
// give, at a fraction of the time and memory (a bit set per 12-mer over a fly genome would need tens
// of gigabytes).
#ifndef VESK_SEQPACK_KMERFASTCOUNT_H
#define VESK_SEQPACK_KMERFASTCOUNT_H

#include "DnaSeqGenomePromoters.h"
#include "ds/BitVec.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

class KMerFastCount {
public:
    // Largest k held in arrays.
    static const int kMaxK = 13;

    KMerFastCount() : m_k(0) {}

    // Whether the walk with these parameters is one this class computes.
    static bool can_count(int k, int max_deg, int min_gap, int max_gap) {
        return k >= 1 && k <= kMaxK && max_deg <= 0 && min_gap == 0 && max_gap == 0;
    }
    // Counts every start from..to (the walk's window rule) of the genes taking part. Texts of A, C, G
    // and T only go to the arrays (a last-gene stamp per entry counts genes); any other text to a map.
    void count(const DnaSeqGenomePromoters<DnaSequence>& genome, const ds_bitvec& genes, int k, int from,
               int to);

    // Calls f(text, count, genes) for every text seen, in the order of the texts (the order of a map).
    template <class F> void for_each(F f) const;

    std::uint64_t get_count(const std::string& text) const;
    int get_genes(const std::string& text) const;

private:
    struct Other {
        std::uint64_t count = 0;
        int genes = 0;
        int stamp = -1;
    };
    void decode(std::uint32_t code, std::string& text) const;
    bool encode(const std::string& text, std::uint32_t& code) const;

    int m_k;
    std::vector<std::uint64_t> m_count;
    std::vector<std::uint32_t> m_genes;
    std::vector<std::int32_t> m_stamp;
    std::map<std::string, Other> m_other;
};

template <class F> void KMerFastCount::for_each(F f) const {
    // A < C < G < T both as letters and as two-bit codes, so code order is text order among pure
    // texts; the other texts are merged in by comparison.
    std::map<std::string, Other>::const_iterator other = m_other.begin();
    std::string text;
    const std::uint32_t n = static_cast<std::uint32_t>(m_count.size());
    for (std::uint32_t code = 0; code < n; ++code) {
        if (m_count[code] == 0)
            continue;
        decode(code, text);
        for (; other != m_other.end() && other->first < text; ++other)
            f(other->first, other->second.count, other->second.genes);
        f(text, m_count[code], static_cast<int>(m_genes[code]));
    }
    for (; other != m_other.end(); ++other)
        f(other->first, other->second.count, other->second.genes);
}

#endif
