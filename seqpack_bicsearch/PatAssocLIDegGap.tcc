// Template bodies of PatternModification<P> and PatAssocLIDegGap<P>.
#ifndef VESK_SEQPACK_BICSEARCH_PATASSOCLIDEGGAP_TCC
#define VESK_SEQPACK_BICSEARCH_PATASSOCLIDEGGAP_TCC
#include <iostream>

template <class P> void PatternModification<P>::apply(AssocPatternBase<P>& assoc) const {
    switch (m_type) {
    case 1:
        assoc.change_char(m_pos, m_new_char);
        break;
    case 2:
        for (int i = 0; i < m_gap; ++i)
            assoc.push_front(DnaSeqDegChar(15));
        assoc.push_front(m_gap_char);
        break;
    case 3:
        for (int i = 0; i < m_gap; ++i)
            assoc.push_back(DnaSeqDegChar(15));
        assoc.push_back(m_gap_char);
        break;
    case 4:
        assoc.change_from_range(m_from);
        assoc.change_to_range(m_to);
        break;
    default:
        break;
    }
}

template <class P>
void PatternModification<P>::apply_mask(AssocPatternBase<P>& assoc, P& avoid, P& force) const {
    apply(assoc);
    if (m_type != 2 && m_type != 3)
        return;
    for (int i = 0; i <= m_gap; ++i) {
        if (m_type == 2) {
            avoid.push_front(DnaSeqDegChar(0));
            force.push_front(DnaSeqDegChar(0));
        } else {
            avoid.push_back(DnaSeqDegChar(0));
            force.push_back(DnaSeqDegChar(0));
        }
    }
}

template <class P>
PatAssocLIDegGap<P>::PatAssocLIDegGap(int max_gap, int range_step, int max_range)
    : m_avoid(nullptr), m_force(nullptr), m_assoc(nullptr), m_mode(0), m_pos(0), m_len(0), m_gap(0),
      m_max_gap(max_gap), m_cur_from(0), m_cur_to(0), m_range_iter_flag(true), m_range_step(range_step),
      m_max_range(max_range), m_is_valid(false) {}

template <class P> DnaSeqDegChar PatAssocLIDegGap<P>::mask_char(const P* mask, int pos) const {
    if (!mask || pos >= mask->length())
        return DnaSeqDegChar(0);
    return mask->get_deg_char(pos);
}

template <class P> void PatAssocLIDegGap<P>::restart(AssocPatternBase<P>& assoc) {
    m_assoc = &assoc;
    m_focus = assoc.get_pattern();
    m_is_valid = true;
    assoc.remember();
    m_mode = 0;
    m_pos = 0;
    m_len = m_focus.length();
    seek_char();
}

template <class P> void PatAssocLIDegGap<P>::seek_char() {
    for (; m_pos < m_len; ++m_pos) {
        m_char_iter.restart(m_focus.get_deg_char(m_pos), mask_char(m_avoid, m_pos),
                            mask_char(m_force, m_pos));
        if (m_char_iter.is_valid()) {
            m_assoc->change_char(m_pos, *m_char_iter);
            return;
        }
    }
    start_front();
}

template <class P> void PatAssocLIDegGap<P>::start_front() {
    m_mode = 1;
    m_gap = 0;
    m_pos = 0;
    push_gap_front();
}

template <class P> void PatAssocLIDegGap<P>::push_gap_front() {
    for (int i = 0; i < m_gap; ++i)
        m_assoc->push_front(DnaSeqDegChar(15));
    m_char_iter.restart_null();
    m_assoc->push_front(*m_char_iter);
}

template <class P> void PatAssocLIDegGap<P>::start_back() {
    m_mode = 2;
    m_gap = 0;
    m_pos = m_len;
    push_gap_back();
}

template <class P> void PatAssocLIDegGap<P>::push_gap_back() {
    for (int i = 0; i < m_gap; ++i)
        m_assoc->push_back(DnaSeqDegChar(15));
    m_pos = m_len + m_gap;
    m_char_iter.restart_null();
    m_assoc->push_back(*m_char_iter);
}

template <class P> void PatAssocLIDegGap<P>::start_ranges() {
    if (m_range_iter_flag)
        start_from();
    else
        m_is_valid = false;
}

template <class P> void PatAssocLIDegGap<P>::start_from() {
    m_mode = 3;
    m_cur_from = 0;
    if (m_focus.m_to_range < 1) {
        start_to();
        return;
    }
    m_assoc->change_from_range(0);
}

template <class P> void PatAssocLIDegGap<P>::start_to() {
    m_mode = 4;
    m_cur_to = m_max_range;
    if (m_focus.m_from_range < m_cur_to) {
        std::cerr << "PAIter change to r " << m_cur_to << std::endl;
        m_assoc->change_to_range(m_cur_to);
    } else {
        m_is_valid = false;
    }
}

template <class P> PatAssocLIDegGap<P>& PatAssocLIDegGap<P>::operator++() {
    if (!m_is_valid)
        return *this;
    // A step of 0 would never leave the range modes.
    const int step = m_range_step > 0 ? m_range_step : 1;
    switch (m_mode) {
    case 0:
        ++m_char_iter;
        if (m_char_iter.is_valid()) {
            m_assoc->change_char(m_pos, *m_char_iter);
        } else {
            m_assoc->revert();
            ++m_pos;
            seek_char();
        }
        break;
    case 1:
        ++m_char_iter;
        if (m_char_iter.is_valid()) {
            m_assoc->change_char(m_pos, *m_char_iter);
        } else {
            ++m_gap;
            m_assoc->revert();
            if (m_gap < m_max_gap) {
                push_gap_front();
            } else {
                std::cerr << "to back iter, max_gap is " << m_max_gap << std::endl;
                start_back();
            }
        }
        break;
    case 2:
        ++m_char_iter;
        if (m_char_iter.is_valid()) {
            m_assoc->change_char(m_pos, *m_char_iter);
        } else {
            ++m_gap;
            m_assoc->revert();
            if (m_gap < m_max_gap)
                push_gap_back();
            else
                start_ranges();
        }
        break;
    case 3:
        m_cur_from += step;
        if (m_cur_from < m_focus.m_to_range) {
            m_assoc->change_from_range(m_cur_from);
        } else {
            m_assoc->revert();
            start_to();
        }
        break;
    case 4:
        m_cur_to -= step;
        if (m_focus.m_from_range < m_cur_to) {
            m_assoc->change_to_range(m_cur_to);
        } else {
            m_assoc->revert();
            m_is_valid = false;
        }
        break;
    default:
        m_is_valid = false;
    }
    return *this;
}

template <class P> void PatAssocLIDegGap<P>::get_cur_modification(PatternModification<P>& mod) const {
    switch (m_mode) {
    case 0:
        mod.init_char(m_pos, *m_char_iter);
        break;
    case 1:
        mod.init_gap_front(m_gap, *m_char_iter);
        break;
    case 2:
        mod.init_gap_back(m_gap, *m_char_iter);
        break;
    case 3:
        mod.init_range(m_cur_from, m_focus.m_to_range);
        break;
    default:
        mod.init_range(m_focus.m_from_range, m_cur_to);
        break;
    }
}

#endif
