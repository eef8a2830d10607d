// The incremental match rules shared by the dense and the letter branch.
#include "SeqIncrementMatch.h"

#include "error.h"

static constexpr char kSrc[] = "SeqIncrementMatch";

int LetterIncrBranch::bit(const seq_type& s, int p) {
    if (p < 0 || p >= static_cast<int>(s.size()))
        return 0;
    return letter_bit(s[static_cast<std::size_t>(p)]);
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
        m_matches.push_back(hit);
        it = B::at(*m_seq, p + 1);
    }
}

template <class B> bool SeqIncrMatchT<B>::incremental_push_back(DnaSeqDegChar c) {
    if (short_pattern())
        return match();
    const int last = m_pat->length() - 1;
    const unsigned to = static_cast<unsigned>(m_pat->m_to_range);
    drop_if([&](int& s) { return static_cast<unsigned>(s + last) >= to || !B::fits(*m_seq, s + last, c); });
    return !m_matches.empty();
}

template <class B> bool SeqIncrMatchT<B>::incremental_push_front(DnaSeqDegChar c) {
    if (short_pattern())
        return match();
    const int from = m_pat->m_from_range;
    drop_if([&](int& s) { return s-- <= from || !B::fits(*m_seq, s, c); });
    return !m_matches.empty();
}

template <class B> bool SeqIncrMatchT<B>::incremental_del_char(int pos, DnaSeqChar base) {
    if (short_pattern())
        return match();
    drop_if([&](int& s) { return B::has_base(*m_seq, s + pos, base.m_val); });
    return !m_matches.empty();
}

template <class B> bool SeqIncrMatchT<B>::change_to_range(int old_to, int new_to) {
    if (short_pattern())
        return match();
    if (static_cast<unsigned>(new_to) < static_cast<unsigned>(old_to)) {
        const int first_out = new_to - m_pat->length() + 1;
        drop_if([&](int& s) { return s >= first_out; });
    } else if (new_to != old_to) {
        scan(old_to, -1, B::check_decrease);
    }
    return !m_matches.empty();
}

template <class B> bool SeqIncrMatchT<B>::change_from_range(int old_from, int new_from) {
    if (short_pattern())
        return match();
    if (new_from > old_from) {
        drop_if([&](int& s) { return s < new_from; });
    } else if (new_from < old_from) {
        scan(new_from, old_from, false);
    }
    return !m_matches.empty();
}

template <class B> template <class Drop> void SeqIncrMatchT<B>::drop_if(Drop drop) {
    std::size_t keep = 0;
    for (std::size_t i = 0; i < m_matches.size(); ++i) {
        int s = B::pos(*m_seq, m_matches[i]);
        if (!drop(s))
            m_matches[keep++] = B::at(*m_seq, s);
    }
    m_matches.resize(keep);
}

template <class B> std::list<int> SeqIncrMatchT<B>::positions() const {
    std::list<int> out;
    for (const iter_type& it : m_matches)
        out.push_front(B::pos(*m_seq, it));
    return out;
}

template class SeqIncrMatchT<DenseIncrBranch>;
template class SeqIncrMatchT<LetterIncrBranch>;
