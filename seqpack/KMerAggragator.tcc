// Template bodies of the k-mer walks.
#ifndef VESK_SEQPACK_KMERAGGRAGATOR_TCC
#define VESK_SEQPACK_KMERAGGRAGATOR_TCC
#include "Random.h"
#include "VarUniverse.h"
#include "options.h"

#include <algorithm>
#include <iostream>

// The letter at a position, in either promoter form.
inline char kmer_letter(const DnaSequence& s, int pos) { return s[static_cast<std::size_t>(pos)]; }
inline char kmer_letter(const DnaDenseSequence& s, int pos) { return s.get_letter(pos); }

template <class S>
KMerWalk<S>::KMerWalk(const VarUniverse& univ, const DnaSeqGenomePromoters<S>& genome, const char* trace)
    : m_k(0), m_min_gap(0), m_max_gap(0), m_max_deg(0), m_universe(univ), m_genome(genome), m_cur_gene(-1),
      m_restrict(false), m_trace(trace), m_digit_pos(-1) {}

template <class S>
void KMerWalk<S>::setup(int k, int max_deg, int min_gap, int max_gap, const ds_bitvec& genes) {
    m_k = k;
    m_max_deg = max_deg;
    m_min_gap = min_gap;
    m_max_gap = max_gap;
    m_all_genes = genes;
}

template <class S> void KMerWalk<S>::build_kmers(const window_list& windows) {
    const int n = std::min(m_genome.id_space_size(), m_all_genes.size());
    for (int gene = 0; gene < n; ++gene) {
        if (gene % 20 == 0)
            std::cerr << m_trace << ", proc vid =" << gene << "\n";
        if (!m_all_genes.get_ind(gene))
            continue;
        const DnaSeqPromoter<S>& seq = m_genome.get_promoter(gene);
        if (seq.is_empty())
            continue;
        m_cur_gene = gene;
        for (const std::pair<int, int>& w : windows)
            walk_window(seq, w.first, w.second);
    }
    m_cur_gene = -1;
}

template <class S> void KMerWalk<S>::walk_window(const DnaSeqPromoter<S>& seq, int from, int to) {
    const int limit = seq.get_length() - m_k - m_max_gap;
    int last = limit;
    if (to == -1)
        from = 0;
    else
        last = std::min(to - m_k - m_max_gap, limit);
    for (int pos = std::max(from, 0); pos <= last; ++pos) {
        for (int g = m_min_gap; g <= m_max_gap; ++g) {
            if (g == 0) {
                m_scratch.assign(static_cast<std::size_t>(m_k), ' ');
                fill_pat(seq, pos, m_k, 0, 0);
                enter_site();
            } else {
                m_scratch.assign(static_cast<std::size_t>(m_k) + 1, ' ');
                for (int left = 2; left <= m_k - 3; ++left) {
                    fill_pat(seq, pos, left, m_k - left, g);
                    enter_site();
                }
            }
        }
    }
}

template <class S>
void KMerWalk<S>::fill_pat(const DnaSeqPromoter<S>& seq, int pos, int left, int right, int gap) {
    for (int i = 0; i < left; ++i)
        m_scratch[static_cast<std::size_t>(i)] = kmer_letter(seq, pos + i);
    m_digit_pos = gap == 0 ? -1 : left;
    if (gap == 0)
        return;
    m_scratch[static_cast<std::size_t>(left)] = static_cast<char>('0' + gap);
    for (int i = 0; i < right; ++i)
        m_scratch[static_cast<std::size_t>(left + 1 + i)] = kmer_letter(seq, pos + left + gap + i);
}

template <class S> void KMerWalk<S>::enter_site() {
    if (m_restrict && m_only.count(m_scratch) == 0)
        return;
    if (m_max_deg <= 0) {
        enter(m_scratch);
        return;
    }
    m_forms.clear();
    hash_iter(0, 0);
    std::sort(m_forms.begin(), m_forms.end());
    m_forms.erase(std::unique(m_forms.begin(), m_forms.end()), m_forms.end());
    for (const std::string& form : m_forms)
        enter(form);
}

// Keeps the letter at `pos` and goes on, then (below max_deg stars) puts '*' and goes on; each end of
// the recursion is one form. The scratch is restored on the way back.
template <class S> void KMerWalk<S>::hash_iter(std::size_t pos, int stars) {
    if (pos == m_scratch.size()) {
        m_forms.push_back(m_scratch);
        return;
    }
    hash_iter(pos + 1, stars);
    const char keep = m_scratch[pos];
    if (stars < m_max_deg && static_cast<int>(pos) != m_digit_pos) {
        m_scratch[pos] = '*';
        hash_iter(pos + 1, stars + 1);
        m_scratch[pos] = keep;
    }
}

template <class S>
KMerAggragator<S>::KMerAggragator(const VarUniverse& univ, const DnaSeqGenomePromoters<S>& genome)
    : KMerWalk<S>(univ, genome, "Aggrag") {}

template <class S>
KMerAggragator<S>::KMerAggragator(const VarUniverse& univ, const DnaSeqGenomePromoters<S>& genome,
                                  const char* trace)
    : KMerWalk<S>(univ, genome, trace) {}

template <class S>
void KMerAggragator<S>::reset_index(int k, int max_deg, int min_gap, int max_gap, const ds_bitvec& genes) {
    m_kmers.clear();
    this->setup(k, max_deg, min_gap, max_gap, genes);
    m_empty = ds_bitvec(this->m_universe.size());
    if (this->m_all_genes.size() != this->m_universe.size())
        this->m_all_genes.set_size(this->m_universe.size());
}

template <class S>
void KMerAggragator<S>::init(int k, int max_deg, int min_gap, int max_gap, const ds_bitvec& genes, int from,
                             int to) {
    reset_index(k, max_deg, min_gap, max_gap, genes);
    this->build_kmers(typename KMerWalk<S>::window_list(1, std::make_pair(from, to)));
}

template <class S> void KMerAggragator<S>::enter(const std::string& text) {
    typename kmer_map::iterator it = m_kmers.find(text);
    if (it == m_kmers.end())
        it = m_kmers.emplace(text, m_empty).first;
    it->second.set_ind(this->m_cur_gene);
}

template <class S> const ds_bitvec& KMerAggragator<S>::get_deg_pattern_sup_fp(const std::string& pat) {
    std::string norm(pat);
    int stars = 0;
    for (char& c : norm) {
        if (c != 'A' && c != 'C' && c != 'G' && c != 'T') {
            c = '*';
            ++stars;
        }
    }
    if (stars > this->m_max_deg)
        return this->m_all_genes;
    typename kmer_map::iterator it = m_kmers.find(norm);
    if (it == m_kmers.end())
        it = m_kmers.emplace(norm, m_empty).first;
    return it->second;
}

template <class S> const ds_bitvec& KMerAggragator<S>::get_pat_fp(const std::string& text) const {
    typename kmer_map::const_iterator it = m_kmers.find(text);
    return it == m_kmers.end() ? m_empty : it->second;
}

template <class S>
KMerCounter<S>::KMerCounter(const VarUniverse& univ, const DnaSeqGenomePromoters<S>& genome)
    : KMerWalk<S>(univ, genome, "Counter") {}

template <class S>
void KMerCounter<S>::reset_counts(int k, int max_deg, int min_gap, int max_gap, const ds_bitvec& genes) {
    m_counts.clear();
    this->setup(k, max_deg, min_gap, max_gap, genes);
}

template <class S>
void KMerCounter<S>::init(int k, int max_deg, int min_gap, int max_gap, const ds_bitvec& genes, int from,
                          int to) {
    reset_counts(k, max_deg, min_gap, max_gap, genes);
    this->build_kmers(typename KMerWalk<S>::window_list(1, std::make_pair(from, to)));
}

template <class S> void KMerCounter<S>::enter(const std::string& text) { ++m_counts[text]; }

template <class S> std::uint64_t KMerCounter<S>::get_count(const std::string& text) const {
    typename count_map::const_iterator it = m_counts.find(text);
    return it == m_counts.end() ? 0 : it->second;
}

template <class S>
KMerRelAggrag<S>::KMerRelAggrag(const VarUniverse& univ, const DnaSeqGenomePromoters<S>& genome, options& opt,
                                const std::string& scope)
    : KMerAggragator<S>(univ, genome, "Aggrag"), m_should_random(opt.get_int(scope, "ShouldRandom", false)),
      m_rand_amplitude(opt.get_int(scope, "RandAmplitude", false)) {}

template <class S>
void KMerRelAggrag<S>::init(int k, int max_deg, int min_gap, int max_gap, const ds_bitvec& genes,
                            const typename KMerWalk<S>::window_list& windows) {
    this->reset_index(k, max_deg, min_gap, max_gap, genes);
    typename KMerWalk<S>::window_list shifted(windows);
    if (m_should_random) {
        for (std::pair<int, int>& w : shifted) {
            const double u = Random::bits() / 4294967295.0;
            const int r = static_cast<int>(u * (2 * m_rand_amplitude + 1)) - m_rand_amplitude;
            std::cerr << "rand = " << r << "\n";
            w.first += r;
            if (w.second != -1)
                w.second += r;
        }
    }
    this->build_kmers(shifted);
}

template <class S>
KMerRelCounter<S>::KMerRelCounter(const VarUniverse& univ, const DnaSeqGenomePromoters<S>& genome)
    : KMerCounter<S>(univ, genome) {}

template <class S>
void KMerRelCounter<S>::init(int k, int max_deg, int min_gap, int max_gap, const ds_bitvec& genes,
                             const typename KMerWalk<S>::window_list& windows) {
    this->reset_counts(k, max_deg, min_gap, max_gap, genes);
    this->build_kmers(windows);
}

#endif
