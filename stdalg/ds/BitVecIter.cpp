// ds_bitvec_iter stepping by word scans.
#include "ds/BitVecIter.h"

#include "error.h"

static constexpr char kSrc[] = "ds/BitVecIter";

ds_bitvec_iter::ds_bitvec_iter(const ds_bitvec& v) : m_vec(&v), m_valid(false), m_word(0), m_bit(0) {
    first(0);
}

ds_bitvec_iter::ds_bitvec_iter(const ds_bitvec& v, int start)
    : m_vec(&v), m_valid(false), m_word(0), m_bit(0) {
    first(start);
}

int ds_bitvec_iter::first(int start) {
    if (start >= m_vec->size() || m_vec->word_count() == 0) {
        m_valid = false;
        return -1;
    }
    if (start == 0) {
        m_valid = true;
        m_word = 0;
        m_bit = 0;
        if (!(m_vec->word(0) & 1u))
            return ++*this;
        return 0;
    }
    seek(start);
    if (!m_vec->get_ind(start))
        return ++*this;
    return start;
}

void ds_bitvec_iter::seek(int i) {
    if (i == -1) {
        m_valid = false;
        return;
    }
    m_valid = true;
    m_word = i / 32;
    m_bit = i % 32;
}

int ds_bitvec_iter::last() {
    const int count = m_vec->word_count();
    const int r = m_vec->size() % 32;
    m_valid = true;
    if (r == 0) {
        m_word = count;
        m_bit = 0;
    } else {
        m_word = count - 1;
        m_bit = r;
    }
    return --*this;
}

int ds_bitvec_iter::operator++() {
    if (!m_valid)
        VESK_FATAL(kSrc, "Invalid iterator value at ++ operator");
    ++m_bit;
    if (m_bit < 32) {
        const ds_bitvec::word_type rest = m_vec->word(m_word) >> m_bit;
        if (rest) {
            m_bit += __builtin_ctz(rest);
            return m_word * 32 + m_bit;
        }
    }
    const int count = m_vec->word_count();
    for (int w = m_word + 1; w < count; ++w) {
        const ds_bitvec::word_type x = m_vec->word(w);
        if (x) {
            m_word = w;
            m_bit = __builtin_ctz(x);
            return m_word * 32 + m_bit;
        }
    }
    m_valid = false;
    return -1;
}

int ds_bitvec_iter::operator--() {
    if (!m_valid)
        VESK_FATAL(kSrc, "Invalid iterator value at -- operator");
    if (m_bit != 0) {
        const ds_bitvec::word_type rest = m_vec->word(m_word) << (32 - m_bit);
        if (rest) {
            // Highest set bit below m_bit.
            m_bit = m_bit - 1 - __builtin_clz(rest);
            return m_word * 32 + m_bit;
        }
    }
    for (int w = m_word - 1; w >= 0; --w) {
        const ds_bitvec::word_type x = m_vec->word(w);
        if (x) {
            m_word = w;
            m_bit = 31 - __builtin_clz(x);
            return m_word * 32 + m_bit;
        }
    }
    m_valid = false;
    return -1;
}
