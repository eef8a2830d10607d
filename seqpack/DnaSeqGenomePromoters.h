// Promoters: one FASTA record tied to a gene (DnaSeqPromoter<S>), and a genome's promoters in one table
// indexed by gene id, brought to a common length (DnaSeqGenomePromoters<S>), for S = DnaSequence or
// DnaDenseSequence.
#ifndef VESK_SEQPACK_DNASEQGENOMEPROMOTERS_H
#define VESK_SEQPACK_DNASEQGENOMEPROMOTERS_H

#include "DnaSequence.h"

#include <istream>
#include <vector>

class VarUniverse;

template <class S> class DnaSeqPromoter : public S {
public:
    DnaSeqPromoter()
        : m_gene_var_id(-1), m_from_pos(0), m_to_pos(0), m_is_empty(true), m_effective_length(0) {}

    // Reads one record: the name (looked up among the short names, or with `use_orf2` among the
    // aliases) and the body. False if the stream had nothing left; the object is then unchanged.
    bool read_fasta(VarUniverse& univ, std::istream& in, bool use_orf2);

    // Length adjustments to `n` bases; see the sources for the two forms' differences.
    void push_slack(int n);
    void push_post_slack(int n);
    void pre_prune(int n);

    int get_gene_var_id() const { return m_gene_var_id; }
    int get_from_pos() const { return m_from_pos; }
    int get_to_pos() const { return m_to_pos; }
    bool is_empty() const { return m_is_empty; }
    int effective_length() const { return m_effective_length; }

    int m_gene_var_id;
    int m_from_pos;
    int m_to_pos;
    bool m_is_empty;
    int m_effective_length;
};

// The length adjustments differ between the forms (DnaSeqGenomePromoters.cpp).
template <> void DnaSeqPromoter<DnaSequence>::push_slack(int n);
template <> void DnaSeqPromoter<DnaSequence>::push_post_slack(int n);
template <> void DnaSeqPromoter<DnaSequence>::pre_prune(int n);
template <> void DnaSeqPromoter<DnaDenseSequence>::push_slack(int n);
template <> void DnaSeqPromoter<DnaDenseSequence>::push_post_slack(int n);
template <> void DnaSeqPromoter<DnaDenseSequence>::pre_prune(int n);

template <class S> class DnaSeqGenomePromoters {
public:
    DnaSeqGenomePromoters() : m_zero_offset(0) {}

    // Reads a whole FASTA file into the entries of known genes; every promoter is brought to `length`
    // bases (padded at the front, or with `post_slack` at the end; a longer one loses its far end).
    void read_fasta(int length, VarUniverse& univ, std::istream& in, bool use_orf2, bool post_slack);
    // Fisher-Yates shuffle of whole records (gene ids travel with them) from the shared random source.
    void randomize();

    int get_zero_offset() const { return m_zero_offset; }
    const DnaSeqPromoter<S>& get_promoter(int id) const { return m_promoters[id]; }
    int id_space_size() const { return static_cast<int>(m_promoters.size()); }

    int m_zero_offset;
    std::vector<DnaSeqPromoter<S>> m_promoters;
};

#include "DnaSeqGenomePromoters.tcc"

#endif
