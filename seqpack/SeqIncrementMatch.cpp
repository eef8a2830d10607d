// The incremental match rules shared by the dense and the letter branch.
#include "SeqIncrementMatch.h"

#include "error.h"

static constexpr char kSrc[] = "SeqIncrementMatch";

int LetterIncrBranch::bit(const seq_type& s, int p) {
    if (p < 0 || p >= static_cast<int>(s.size()))
        return 0;
    switch (s[static_cast<std::size_t>(p)]) {
    case 'A':
        return 1;
    case 'G':
        return 2;
    case 'C':
        return 4;
    case 'T':
        return 8;
    case '-':
        return 16;
    default:
        return 0;
    }
}

template <class B> bool SeqIncrMatchT<B>::match() {
    m_matches.clear();
    if (m_pat->length() < m_min_len) {
        m_have_positions = false;
        return B::whole_match(*m_pat, *m_seq);
    }
    m_have_positions = true;
    scan(0, -1, false);
    return !m_matches.empty();
}

template <class B> void SeqIncrMatchT<B>::scan(int from, int stop, bool check_decrease) {
    const int n = B::size(*m_seq);
    if (from > n)
        from = n;
    if (from < 0)
        from = 0;
    const iter_type end = B::end(*m_seq);
    iter_type it = B::at(*m_seq, from);
    while (true) {
        const iter_type hit = B::match_from(*m_pat, *m_seq, it);
        if (hit == end)
            return;
        const int p = B::pos(*m_seq, hit);
        if (check_decrease && hit < it)
            VESK_FATAL(kSrc, "Decreased match !, from " << B::pos(*m_seq, it) << " to " << p << " pattern "
                                                        << m_pat->get_str());
        if (stop >= 0 && p >= stop)
            return;
        m_matches.push_front(hit);
        it = B::at(*m_seq, p + 1);
    }
}

template <class B> bool SeqIncrMatchT<B>::incremental_push_back(DnaSeqDegChar c) {
    if (short_pattern())
        return match();
    const int last = m_pat->length() - 1;
    const unsigned to = static_cast<unsigned>(m_pat->m_to_range);
    for (typename std::list<iter_type>::iterator it = m_matches.begin(); it != m_matches.end();) {
        const int p = B::pos(*m_seq, *it) + last;
        if (static_cast<unsigned>(p) >= to || !B::fits(*m_seq, p, c))
            it = m_matches.erase(it);
        else
            ++it;
    }
    return !m_matches.empty();
}

template <class B> bool SeqIncrMatchT<B>::incremental_push_front(DnaSeqDegChar c) {
    if (short_pattern())
        return match();
    for (typename std::list<iter_type>::iterator it = m_matches.begin(); it != m_matches.end();) {
        const int s = B::pos(*m_seq, *it);
        if (s <= m_pat->m_from_range || !B::fits(*m_seq, s - 1, c)) {
            it = m_matches.erase(it);
        } else {
            *it = B::at(*m_seq, s - 1);
            ++it;
        }
    }
    return !m_matches.empty();
}

template <class B> bool SeqIncrMatchT<B>::incremental_del_char(int pos, DnaSeqChar base) {
    if (short_pattern())
        return match();
    for (typename std::list<iter_type>::iterator it = m_matches.begin(); it != m_matches.end();) {
        if (B::has_base(*m_seq, B::pos(*m_seq, *it) + pos, base.m_val))
            it = m_matches.erase(it);
        else
            ++it;
    }
    return !m_matches.empty();
}

template <class B> bool SeqIncrMatchT<B>::change_to_range(int old_to, int new_to) {
    if (short_pattern())
        return match();
    if (static_cast<unsigned>(new_to) < static_cast<unsigned>(old_to)) {
        const int first_out = new_to - m_pat->length() + 1;
        for (typename std::list<iter_type>::iterator it = m_matches.begin(); it != m_matches.end();) {
            if (B::pos(*m_seq, *it) >= first_out)
                it = m_matches.erase(it);
            else
                ++it;
        }
    } else if (new_to != old_to) {
        scan(old_to, -1, B::check_decrease);
    }
    return !m_matches.empty();
}

template <class B> bool SeqIncrMatchT<B>::change_from_range(int old_from, int new_from) {
    if (short_pattern())
        return match();
    if (new_from > old_from) {
        for (typename std::list<iter_type>::iterator it = m_matches.begin(); it != m_matches.end();) {
            if (B::pos(*m_seq, *it) < new_from)
                it = m_matches.erase(it);
            else
                ++it;
        }
    } else if (new_from < old_from) {
        scan(new_from, old_from, false);
    }
    return !m_matches.empty();
}

template <class B> std::list<int> SeqIncrMatchT<B>::positions() const {
    std::list<int> out;
    for (const iter_type& it : m_matches)
        out.push_back(B::pos(*m_seq, it));
    return out;
}

template class SeqIncrMatchT<DenseIncrBranch>;
template class SeqIncrMatchT<LetterIncrBranch>;
