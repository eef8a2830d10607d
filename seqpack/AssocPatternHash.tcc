// Template bodies of AssocPatternHash<M, P, S>.
#ifndef VESK_SEQPACK_ASSOCPATTERNHASH_TCC
#define VESK_SEQPACK_ASSOCPATTERNHASH_TCC
#include "error.h"

#include <algorithm>
#include <iostream>

// Whether every base of a promoter is one of A, C, G, T: a dense word of such bases has one bit in
// each nibble (all nibbles non-zero, and no borrow crosses a nibble when each loses one).
inline bool promoter_is_acgt(const DnaDenseSequence& s) {
    typedef DnaDegChar8Mer::word_type word_t;
    const word_t ones = static_cast<word_t>(0x1111111111111111ULL);
    const int full = s.get_length() / 8;
    for (int w = 0; w < full; ++w) {
        const word_t x = s.m_words[static_cast<std::size_t>(w)].m_word;
        if (((x | x >> 1 | x >> 2 | x >> 3) & ones) != ones || (x & (x - ones)) != 0)
            return false;
    }
    for (int i = full * 8; i < s.get_length(); ++i) {
        const int v = s.get_value(i);
        if (v != DnaSeqChar::A && v != DnaSeqChar::C && v != DnaSeqChar::G && v != DnaSeqChar::T)
            return false;
    }
    return true;
}
inline bool promoter_is_acgt(const DnaSequence& s) {
    return s.find_first_not_of("ACGT") == std::string::npos;
}

// The bases a pattern position accepts: for the dense pattern the union over its eight versions.
inline int accepted_bases(const Dna8MerPattern& p, int pos) {
    int acc = 0;
    for (int phase = 0; phase < 8; ++phase)
        acc |= ~p.get_nibble(phase, pos) & 15;
    return acc;
}
inline int accepted_bases(const DnaSeqPattern& p, int pos) { return p.get_deg_char(pos).m_val & 15; }

template <class M, class P, class S>
AssocPatternHash<M, P, S>::AssocPatternHash(const DnaSeqGenomePromoters<S>& genome,
                                            KMerAggragator<DnaSequence>& kmers, const ds_bitvec& allowed,
                                            int k)
    : m_genome(genome), m_kmers(kmers), m_kmer_len(k), m_allowed(allowed), m_trace(true), m_fast(true),
      m_full_matches(0), m_have_filter(false) {
    const int n = genome.id_space_size();
    this->m_genes.set_size(n);
    this->m_genes.clear();
    this->m_remembered_genes = this->m_genes;
    m_allowed.set_size(n);
    m_matchers.reserve(static_cast<std::size_t>(n));
    for (int g = 0; g < n; ++g)
        m_matchers.push_back(M(genome.get_promoter(g), &this->m_pattern));
    // A revert before any remember returns to this empty state.
    m_saved_matchers = m_matchers;
    m_acgt.assign(static_cast<std::size_t>(n), 0);
}

template <class M, class P, class S> void AssocPatternHash<M, P, S>::build_filter() {
    m_have_filter = false;
    const int len = this->m_pattern.length();
    const int k = m_kmers.m_k;
    if (!m_fast || this->m_pattern.m_mismatches != 0 || m_kmers.m_min_gap != 0 || m_kmers.m_max_gap != 0 ||
        k <= 0 || len < k)
        return;
    // Each position as the index writes it: its base where it accepts exactly one, '*' otherwise.
    m_letters.assign(static_cast<std::size_t>(len), '*');
    for (int i = 0; i < len; ++i) {
        switch (accepted_bases(this->m_pattern, i)) {
        case DnaSeqChar::A:
            m_letters[static_cast<std::size_t>(i)] = 'A';
            break;
        case DnaSeqChar::C:
            m_letters[static_cast<std::size_t>(i)] = 'C';
            break;
        case DnaSeqChar::G:
            m_letters[static_cast<std::size_t>(i)] = 'G';
            break;
        case DnaSeqChar::T:
            m_letters[static_cast<std::size_t>(i)] = 'T';
            break;
        default:
            break;
        }
    }
    for (int i = 0; i + k <= len; ++i) {
        m_window.assign(m_letters, static_cast<std::size_t>(i), static_cast<std::size_t>(k));
        if (static_cast<int>(std::count(m_window.begin(), m_window.end(), '*')) > m_kmers.m_max_deg)
            continue;
        m_hold = m_kmers.get_pat_fp(m_window);
        m_hold.set_size(this->m_genes.size());
        if (m_have_filter)
            m_can_hold.andeq(m_hold);
        else
            m_can_hold = m_hold;
        m_have_filter = true;
    }
}

template <class M, class P, class S> bool AssocPatternHash<M, P, S>::is_plain(int g) {
    if (!has(m_kmers.get_genes(), g))
        return false;
    signed char& acgt = m_acgt[static_cast<std::size_t>(g)];
    if (acgt == 0)
        acgt = promoter_is_acgt(m_genome.get_promoter(g)) ? 1 : -1;
    return acgt > 0;
}

template <class M, class P, class S> bool AssocPatternHash<M, P, S>::match_gene(int g) {
    M& m = m_matchers[static_cast<std::size_t>(g)];
    if (m_have_filter && !m_can_hold.get_ind(g) && is_plain(g))
        return m.set_no_match();
    ++m_full_matches;
    return m.match();
}

template <class M, class P, class S>
const ds_bitvec& AssocPatternHash<M, P, S>::candidates(const std::string& text) {
    if (static_cast<int>(text.size()) < m_kmer_len)
        return m_allowed;
    return m_kmers.get_deg_pattern_sup_fp(text);
}

template <class M, class P, class S> void AssocPatternHash<M, P, S>::gene_joins(int g) {
    this->m_genes.set_ind(g);
    this->m_cur_oper_gene = g;
    this->m_dispatch.invoke(0);
}

template <class M, class P, class S> void AssocPatternHash<M, P, S>::gene_leaves(int g) {
    this->m_genes.clr_ind(g);
    this->m_cur_oper_gene = g;
    this->m_dispatch.invoke(1);
}

template <class M, class P, class S> void AssocPatternHash<M, P, S>::add_candidates(const ds_bitvec& cand) {
    const int n = this->m_genes.size();
    for (int g = 0; g < n; ++g)
        if (has(cand, g) && m_allowed.get_ind(g) && !this->m_genes.get_ind(g) && match_gene(g))
            gene_joins(g);
}

template <class M, class P, class S> bool AssocPatternHash<M, P, S>::match(const P& pat) {
    this->m_dispatch.invoke(5);
    this->m_pattern = pat;
    this->m_genes.clear();
    const ds_bitvec* cand = &m_allowed;
    if (this->m_pattern.length() >= m_kmer_len) {
        this->m_pattern.get_suffix(m_scratch, m_kmer_len);
        if (m_trace)
            std::cerr << "APH suffix is " << m_scratch << std::endl;
        cand = &m_kmers.get_deg_pattern_sup_fp(m_scratch);
        if (m_trace)
            std::cerr << "APH genes size " << cand->on_bits() << std::endl;
    }
    build_filter();
    const int n = this->m_genes.size();
    for (int g = 0; g < n; ++g)
        if (m_allowed.get_ind(g) && has(*cand, g) && match_gene(g))
            gene_joins(g);
    if (m_trace)
        std::cerr << "APH Final on bits " << this->m_genes.on_bits() << std::endl;
    return this->m_genes.on_bits() > 0;
}

template <class M, class P, class S> void AssocPatternHash<M, P, S>::push_back(DnaSeqDegChar c) {
    this->m_pattern.push_back(c);
    if (c.m_val == 15)
        return;
    this->m_pattern.get_suffix(m_scratch, m_kmer_len);
    const ds_bitvec& cand = candidates(m_scratch);
    const int n = this->m_genes.size();
    for (int g = 0; g < n; ++g)
        if (this->m_genes.get_ind(g) &&
            (!has(cand, g) || !m_matchers[static_cast<std::size_t>(g)].incremental_push_back(c)))
            gene_leaves(g);
}

template <class M, class P, class S> void AssocPatternHash<M, P, S>::push_front(DnaSeqDegChar c) {
    this->m_pattern.push_front(c);
    if (c.m_val == 15)
        return;
    this->m_pattern.get_suffix(m_scratch, m_kmer_len);
    const ds_bitvec& cand = candidates(m_scratch);
    const int n = this->m_genes.size();
    for (int g = 0; g < n; ++g)
        if (this->m_genes.get_ind(g) &&
            (!has(cand, g) || !m_matchers[static_cast<std::size_t>(g)].incremental_push_front(c)))
            gene_leaves(g);
}

template <class M, class P, class S> void AssocPatternHash<M, P, S>::reduce_char(int pos, DnaSeqDegChar c) {
    this->m_pattern.get_kernel_substr(pos, c, m_scratch, m_kmer_len);
    const ds_bitvec& cand = candidates(m_scratch);
    this->m_pattern.del_deg_char(pos, c);
    static const int kBases[4] = {DnaSeqChar::A, DnaSeqChar::G, DnaSeqChar::C, DnaSeqChar::T};
    const int n = this->m_genes.size();
    for (int g = 0; g < n; ++g) {
        if (!has(cand, g) || !this->m_genes.get_ind(g))
            continue;
        for (int base : kBases) {
            if ((c.m_val & base) && !m_matchers[static_cast<std::size_t>(g)].incremental_del_char(
                                        pos, DnaSeqChar(static_cast<unsigned char>(base)))) {
                gene_leaves(g);
                break;
            }
        }
    }
}

template <class M, class P, class S> void AssocPatternHash<M, P, S>::extend_char(int pos, DnaSeqDegChar c) {
    this->m_pattern.get_kernel_substr(pos, c, m_scratch, m_kmer_len);
    const ds_bitvec& cand = candidates(m_scratch);
    this->m_pattern.add_deg_char(pos, c);
    build_filter();
    const int n = this->m_genes.size();
    for (int g = 0; g < n; ++g)
        if (has(cand, g) && m_allowed.get_ind(g) && match_gene(g) && !this->m_genes.get_ind(g))
            gene_joins(g);
}

template <class M, class P, class S> void AssocPatternHash<M, P, S>::change_char(int pos, DnaSeqDegChar c) {
    int cur = this->m_pattern.get_deg_char(pos).m_val;
    const int add = c.m_val & ~cur & 15;
    if (add) {
        extend_char(pos, DnaSeqDegChar(static_cast<unsigned char>(add)));
        if (m_trace)
            std::cerr << "0 char " << this->m_pattern.get_str() << std::endl;
    }
    cur = this->m_pattern.get_deg_char(pos).m_val;
    const int del = cur & ~c.m_val & 15;
    if (c.m_val != cur && del) {
        reduce_char(pos, DnaSeqDegChar(static_cast<unsigned char>(del)));
        if (m_trace)
            std::cerr << "0 char " << this->m_pattern.get_str() << std::endl;
    }
}

template <class M, class P, class S> void AssocPatternHash<M, P, S>::del_back() {
    const DnaSeqDegChar removed = this->m_pattern.pop_back();
    if ((removed.m_val & 15) == 15)
        return;
    // The matchers' incremental_pop_back is a full match.
    build_filter();
    const int n = this->m_genes.size();
    for (int g = 0; g < n; ++g)
        if (this->m_genes.get_ind(g) && !match_gene(g))
            gene_leaves(g);
    this->m_pattern.get_suffix(m_scratch, m_kmer_len);
    add_candidates(candidates(m_scratch));
}

template <class M, class P, class S> void AssocPatternHash<M, P, S>::del_front() {
    const DnaSeqDegChar removed = this->m_pattern.pop_front();
    if ((removed.m_val & 15) == 15)
        return;
    // The matchers' incremental_pop_front is a full match.
    build_filter();
    const int n = this->m_genes.size();
    for (int g = 0; g < n; ++g)
        if (this->m_genes.get_ind(g) && !match_gene(g))
            gene_leaves(g);
    this->m_pattern.get_prefix(m_scratch, m_kmer_len);
    if (!m_scratch.empty())
        m_scratch[0] = DnaSeqDegChar(static_cast<unsigned char>(removed.m_val & 15)).get_char_encoding();
    add_candidates(candidates(m_scratch));
}

template <class M, class P, class S> void AssocPatternHash<M, P, S>::change_to_range(int to) {
    const int old = this->m_pattern.m_to_range;
    this->m_pattern.m_to_range = to;
    const int n = this->m_genes.size();
    for (int g = 0; g < n; ++g)
        if (this->m_genes.get_ind(g) && !m_matchers[static_cast<std::size_t>(g)].change_to_range(old, to))
            gene_leaves(g);
    if (static_cast<unsigned>(to) > static_cast<unsigned>(old)) {
        this->m_pattern.get_prefix(m_scratch, m_kmer_len);
        build_filter();
        add_candidates(candidates(m_scratch));
    }
}

template <class M, class P, class S> void AssocPatternHash<M, P, S>::change_from_range(int from) {
    const int old = this->m_pattern.m_from_range;
    this->m_pattern.m_from_range = from;
    const int n = this->m_genes.size();
    for (int g = 0; g < n; ++g)
        if (this->m_genes.get_ind(g) && !m_matchers[static_cast<std::size_t>(g)].change_from_range(old, from))
            gene_leaves(g);
    if (from < old) {
        this->m_pattern.get_prefix(m_scratch, m_kmer_len);
        build_filter();
        add_candidates(candidates(m_scratch));
    }
}

template <class M, class P, class S> void AssocPatternHash<M, P, S>::remember() {
    this->m_remembered_pattern = this->m_pattern;
    this->m_remembered_genes = this->m_genes;
    m_saved_matchers = m_matchers;
    this->m_dispatch.invoke(4);
}

template <class M, class P, class S> void AssocPatternHash<M, P, S>::revert() {
    this->m_pattern = this->m_remembered_pattern;
    this->m_genes = this->m_remembered_genes;
    m_matchers = m_saved_matchers;
    this->m_dispatch.invoke(3);
}

template <class M, class P, class S> bool AssocPatternHash<M, P, S>::verify() const {
    static constexpr char kSrc[] = "AssocPatternHash";
    const int n = this->m_genes.size();
    for (int g = 0; g < n; ++g) {
        if (!m_allowed.get_ind(g))
            continue;
        M fresh(m_genome.get_promoter(g), &this->m_pattern);
        const bool now = fresh.match();
        if (now != this->m_genes.get_ind(g))
            VESK_FATAL(kSrc,
                       "Incomaptible matching at gene " << g << " increm was " << this->m_genes.get_ind(g));
    }
    return true;
}

#endif
