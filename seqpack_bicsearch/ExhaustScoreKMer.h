// ExhaustScoreKMer: walks every k-mer of a sliding promoter window, for seeding a motif search.
#ifndef VESK_SEQPACK_BICSEARCH_EXHAUSTSCOREKMER_H
#define VESK_SEQPACK_BICSEARCH_EXHAUSTSCOREKMER_H

#include "ExpSeqDB.h"
#include "KMerAggragator.h"
#include "ds/BitVec.h"

#include <string>

class options;

// The window [start, start + RangeInterval] starts at MinPromoter and moves by Step while it ends no
// later than MaxPromoter; in each window the k-mers (K letters, gaps MinGapSize to MaxGapSize, no
// degenerate forms) of the genes are indexed, and the walk visits the index's entries in order.
//
// Keys in `scope`, all required: K, Step, RangeInterval, MaxPromoter, MinPromoter, MinGapSize,
// MaxGapSize (int).
class ExhaustScoreKMer {
public:
    ExhaustScoreKMer(ExpSeqDB& db, const ds_bitvec& genes, options& opts, const std::string& scope);

    // Back to the first entry of the first window, for `genes`.
    void restart(const ds_bitvec& genes);
    void restart() { restart(m_genes); }
    // The next entry, moving the window when one is exhausted; fatal past the last.
    ExhaustScoreKMer& operator++();
    bool is_valid() const { return m_valid; }

    const std::string& get_kmer() const { return m_iter->first; }
    const ds_bitvec& get_kmer_genes() const { return m_iter->second; }
    int get_from() const { return m_start; }
    int get_to() const { return m_start + m_range; }

    ExpSeqDB& m_db;
    ds_bitvec m_genes;
    int m_k;
    int m_step;
    int m_range;
    int m_max_promoter;
    int m_min_promoter;
    int m_min_gap;
    int m_max_gap;
    KMerAggragator<DnaSequence> m_kmers;
    KMerAggragator<DnaSequence>::kmer_map::const_iterator m_iter;
    int m_start;
    bool m_valid;

private:
    // Indexes the window at m_start and stands on its first entry; false when the window has none.
    bool build();
};

#endif
