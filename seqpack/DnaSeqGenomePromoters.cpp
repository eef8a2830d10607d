// Length adjustment of the two promoter forms, and the two instantiations of the promoter table.
#include "DnaSeqGenomePromoters.h"

#include <algorithm>

// Letters: padding is NUL characters, so that no pattern and no PSSM site matches it; the promoter
// stays right-aligned on the gene start when padded at the front.
template <> void DnaSeqPromoter<DnaSequence>::push_slack(int n) {
    m_effective_length = get_length();
    if (n > get_length())
        insert(begin(), static_cast<std::size_t>(n - get_length()), '\0');
}

template <> void DnaSeqPromoter<DnaSequence>::push_post_slack(int n) {
    m_effective_length = get_length();
    if (n > get_length())
        append(static_cast<std::size_t>(n - get_length()), '\0');
}

template <> void DnaSeqPromoter<DnaSequence>::pre_prune(int n) {
    m_effective_length = n;
    if (get_length() > n)
        erase(0, static_cast<std::size_t>(get_length() - n));
}

// Dense words: padding inserts n - length whole words of all ones (each word standing for eight
// positions while the count is of bases), so the vector comes out longer than m_length says and
// m_length stays the authority on where a scan ends. Pruning erases the last n words.
template <> void DnaSeqPromoter<DnaDenseSequence>::push_slack(int n) {
    m_effective_length = m_length;
    if (n > m_length) {
        m_words.insert(m_words.begin(), static_cast<std::size_t>(n - m_length), DnaDegChar8Mer(0xFFFFFFFFu));
        m_length = n;
    }
}

template <> void DnaSeqPromoter<DnaDenseSequence>::push_post_slack(int n) {
    m_effective_length = m_length;
    if (n > m_length) {
        m_words.insert(m_words.end(), static_cast<std::size_t>(n - m_length), DnaDegChar8Mer(0xFFFFFFFFu));
        m_length = n;
    }
}

template <> void DnaSeqPromoter<DnaDenseSequence>::pre_prune(int n) {
    m_effective_length = n;
    if (n < m_length) {
        const std::size_t drop = std::min(static_cast<std::size_t>(n), m_words.size());
        m_words.erase(m_words.end() - static_cast<std::ptrdiff_t>(drop), m_words.end());
        m_length = n;
    }
}

template class DnaSeqPromoter<DnaSequence>;
template class DnaSeqPromoter<DnaDenseSequence>;
template class DnaSeqGenomePromoters<DnaSequence>;
template class DnaSeqGenomePromoters<DnaDenseSequence>;
