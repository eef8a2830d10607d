// AssocPatternHash<M, P, S>: one incremental matcher per gene over a promoter table, the set of
// matching genes, and a k-mer index that restricts every widening step to candidate genes.
#ifndef VESK_SEQPACK_ASSOCPATTERNHASH_H
#define VESK_SEQPACK_ASSOCPATTERNHASH_H

#include "AssocPatternBase.h"
#include "DnaSeqGenomePromoters.h"
#include "KMerAggragator.h"
#include "SeqIncrementMatch.h"

#include <string>
#include <vector>

// The index must cover the whole promoters of the allowed genes, without gaps, with k = `k`: its
// entries are then necessary conditions for a match (a gene holding the pattern holds each of its
// k-letter windows, letters other than A, C, G, T read as '*'). A lookup text shorter than k (a
// pattern shorter than k) stands for all allowed genes.
//
// Every change of the pattern goes through this class, which changes the pattern first and then the
// matchers, so that each matcher's list is valid for the pattern after each call. The incremental
// rules are those of the matchers (SeqIncrementMatch.h): after a pushed wildcard (no matcher is
// called) or a push_front on the dense pattern (the pattern takes a full wildcard, the matchers test
// the pushed base), the set can differ from a fresh match; verify() detects that.
//
// Where the rules match a gene in full (match, extend_char, del_back, del_front and the genes a
// widened window adds), the gene first meets a necessary condition drawn from the index: write each
// pattern position as its base where it accepts exactly one base and as '*' otherwise; every
// k-position window with at most the index's degeneracy limit of '*' must have the gene in its entry.
// A gene that fails cannot hold the pattern, and its matcher gets the empty state a full match would
// leave, without the scan. The rules' own lookups read one window, and none once it holds too many
// wildcards; this reads all of them. The condition is sound only for genes in the index whose
// promoter holds A, C, G and T alone (others are always matched in full) and without mismatches (it
// is off then). With m_fast false every such gene is matched in full: the same genes, events and
// matchers, more work.
template <class M, class P, class S> class AssocPatternHash : public AssocPatternBase<P> {
public:
    AssocPatternHash(const DnaSeqGenomePromoters<S>& genome, KMerAggragator<DnaSequence>& kmers,
                     const ds_bitvec& allowed, int k);
    AssocPatternHash(const AssocPatternHash&) = delete;
    AssocPatternHash& operator=(const AssocPatternHash&) = delete;

    bool match(const P& pat) override;
    void change_char(int pos, DnaSeqDegChar c) override;
    void push_back(DnaSeqDegChar c) override;
    void push_front(DnaSeqDegChar c) override;
    void reduce_char(int pos, DnaSeqDegChar c) override;
    void extend_char(int pos, DnaSeqDegChar c) override;
    void del_back() override;
    void del_front() override;
    void change_to_range(int to) override;
    void change_from_range(int from) override;
    void revert() override;
    void remember() override;

    // Every allowed gene matched afresh against the set: a difference is fatal.
    bool verify() const;
    const M& get_matcher(int gene) const { return m_matchers[static_cast<std::size_t>(gene)]; }
    const ds_bitvec& get_allowed() const { return m_allowed; }

    const DnaSeqGenomePromoters<S>& m_genome;
    KMerAggragator<DnaSequence>& m_kmers;
    int m_kmer_len;
    std::vector<M> m_matchers;
    std::vector<M> m_saved_matchers;
    std::string m_scratch;
    ds_bitvec m_allowed;
    bool m_trace;        // the quoted traces on std::cerr
    bool m_fast;         // the index condition before a full match (see above)
    long m_full_matches; // genes the full-match steps above have scanned, for measurement

private:
    // Per gene 1 when its promoter holds A, C, G, T only, -1 when not, 0 until first asked.
    std::vector<signed char> m_acgt;
    // Genes whose entries hold every window of the current pattern, valid while m_have_filter holds.
    ds_bitvec m_can_hold;
    ds_bitvec m_hold;
    bool m_have_filter;
    std::string m_letters;
    std::string m_window;
    // Sets m_can_hold for the current pattern (m_have_filter false where no window gives a condition).
    void build_filter();
    // The matcher's match(), or its empty state for a gene that cannot hold the pattern.
    bool match_gene(int g);
    // Whether the index condition holds for a gene: indexed, and a promoter of A, C, G, T only.
    bool is_plain(int g);
    const ds_bitvec& candidates(const std::string& text);
    void gene_joins(int g);
    void gene_leaves(int g);
    // Allowed candidates outside the set are matched afresh and join if they match.
    void add_candidates(const ds_bitvec& cand);
    static bool has(const ds_bitvec& v, int g) { return g < v.size() && v.get_ind(g); }
};

typedef AssocPatternHash<DenseSeqIncrMatch, Dna8MerPattern, DnaDenseSequence> AssocPatternHashDense;
typedef AssocPatternHash<SeqIncrementMatch, DnaSeqPattern, DnaSequence> AssocPatternHashLetter;

#include "AssocPatternHash.tcc"

extern template class AssocPatternHash<DenseSeqIncrMatch, Dna8MerPattern, DnaDenseSequence>;
extern template class AssocPatternHash<SeqIncrementMatch, DnaSeqPattern, DnaSequence>;

#endif
