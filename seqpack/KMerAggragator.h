// K-mer walks over a genome's promoters: the index from each k-mer (gapped and degenerate forms
// included) to the genes holding it (KMerAggragator), occurrence counts (KMerCounter), and their
// variants over a list of windows (KMerRelAggrag, KMerRelCounter).
//
// A k-mer text is its k letters; a gapped one is the left letters, the digit '0' + gap and the right
// letters, whose first letter lies at start + left + gap. Splits run over left = 2 .. k - 3, so k
// below 5 has no gapped forms. The starts of a window run from `from` to the last start inclusive:
// to - k - max_gap, clamped to length - k - max_gap (with `to` -1 the whole promoter, `from` 0).
// With max_deg above 0 every form with up to max_deg letters replaced by '*' (the gap digit is never
// replaced) is entered as well. A start enters each distinct text once: a text reached twice by the
// degenerate recursion (the unstarred form, or a '*' already in the sequence) is counted once.
//
// Window lists (the Rel classes) are (from, to) pairs in the same coordinates. KMerRelAggrag reads
// ShouldRandom and RandAmplitude A from its scope: with ShouldRandom nonzero, each init draws one
// uniform u per window and shifts both ends of that window by int(u * (2A + 1)) - A.
#ifndef VESK_SEQPACK_KMERAGGRAGATOR_H
#define VESK_SEQPACK_KMERAGGRAGATOR_H

#include "DnaSeqGenomePromoters.h"
#include "ds/BitVec.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

class VarUniverse;
class options;

// The walk shared by all four classes; `enter` receives each distinct text of a start.
template <class S> class KMerWalk {
public:
    typedef std::vector<std::pair<int, int>> window_list;

    KMerWalk(const VarUniverse& univ, const DnaSeqGenomePromoters<S>& genome, const char* trace);
    virtual ~KMerWalk() = default;

    const VarUniverse& get_univ() const { return m_universe; }
    const DnaSeqGenomePromoters<S>& get_genome() const { return m_genome; }
    // The genes taking part in the walk.
    const ds_bitvec& get_genes() const { return m_all_genes; }
    // Only listed texts are entered while a restriction is set.
    void set_restrict(const std::set<std::string>& only) {
        m_restrict = true;
        m_only = only;
    }
    void clear_restrict() {
        m_restrict = false;
        m_only.clear();
    }

    int m_k;
    int m_min_gap;
    int m_max_gap;
    int m_max_deg;

protected:
    // Stores the parameters and the genes taking part.
    void setup(int k, int max_deg, int min_gap, int max_gap, const ds_bitvec& genes);
    // Walks every gene taking part over the windows.
    void build_kmers(const window_list& windows);
    virtual void enter(const std::string& text) = 0;

    const VarUniverse& m_universe;
    const DnaSeqGenomePromoters<S>& m_genome;
    std::string m_scratch;
    ds_bitvec m_all_genes;
    int m_cur_gene;
    bool m_restrict;
    std::set<std::string> m_only;

private:
    void walk_window(const DnaSeqPromoter<S>& seq, int from, int to);
    void fill_pat(const DnaSeqPromoter<S>& seq, int pos, int left, int right, int gap);
    void enter_site();
    void hash_iter(std::size_t pos, int stars);

    const char* m_trace;
    int m_digit_pos; // the gap digit of the scratch text, -1 without gap
    std::vector<std::string> m_forms;
};

template <class S> class KMerAggragator : public KMerWalk<S> {
public:
    typedef std::map<std::string, ds_bitvec> kmer_map;

    KMerAggragator(const VarUniverse& univ, const DnaSeqGenomePromoters<S>& genome);

    // Empties the index and builds it for the genes over starts from..to (see above).
    void init(int k, int max_deg, int min_gap, int max_gap, const ds_bitvec& genes, int from, int to);

    // Genes that can hold a pattern: letters other than A, C, G, T count as '*'; with more of them
    // than max_deg all genes taking part, otherwise the entry of the normalised text (created empty).
    const ds_bitvec& get_deg_pattern_sup_fp(const std::string& pat);
    // Genes of an exact entry; the empty set if there is none.
    const ds_bitvec& get_pat_fp(const std::string& text) const;
    bool have_kmer(const std::string& text) const { return m_kmers.count(text) != 0; }
    typename kmer_map::const_iterator get_pat_begin() const { return m_kmers.begin(); }
    typename kmer_map::const_iterator get_pat_end() const { return m_kmers.end(); }

protected:
    KMerAggragator(const VarUniverse& univ, const DnaSeqGenomePromoters<S>& genome, const char* trace);
    void reset_index(int k, int max_deg, int min_gap, int max_gap, const ds_bitvec& genes);
    void enter(const std::string& text) override;

    ds_bitvec m_empty;
    kmer_map m_kmers;
};

template <class S> class KMerCounter : public KMerWalk<S> {
public:
    typedef std::map<std::string, std::uint64_t> count_map;

    KMerCounter(const VarUniverse& univ, const DnaSeqGenomePromoters<S>& genome);

    // Empties the counts and counts every start of the genes over from..to.
    void init(int k, int max_deg, int min_gap, int max_gap, const ds_bitvec& genes, int from, int to);

    std::uint64_t get_count(const std::string& text) const;
    typename count_map::const_iterator get_begin() const { return m_counts.begin(); }
    typename count_map::const_iterator get_end() const { return m_counts.end(); }

protected:
    void reset_counts(int k, int max_deg, int min_gap, int max_gap, const ds_bitvec& genes);
    void enter(const std::string& text) override;

    count_map m_counts;
};

template <class S> class KMerRelAggrag : public KMerAggragator<S> {
public:
    KMerRelAggrag(const VarUniverse& univ, const DnaSeqGenomePromoters<S>& genome, options& opt,
                  const std::string& scope);

    void init(int k, int max_deg, int min_gap, int max_gap, const ds_bitvec& genes,
              const typename KMerWalk<S>::window_list& windows);

    int m_should_random;
    int m_rand_amplitude;
};

template <class S> class KMerRelCounter : public KMerCounter<S> {
public:
    KMerRelCounter(const VarUniverse& univ, const DnaSeqGenomePromoters<S>& genome);

    void init(int k, int max_deg, int min_gap, int max_gap, const ds_bitvec& genes,
              const typename KMerWalk<S>::window_list& windows);
};

#include "KMerAggragator.tcc"

#endif
