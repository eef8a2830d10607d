// ds_bitvec operations: counting, word-wise logic, shifted copies.
#include "ds/BitVec.h"

#include "error.h"

#include <iostream>

static constexpr char kSrc[] = "ds/BitVec";

namespace {

constexpr ds_bitvec::word_type low_bits(int r) {
    return r == 0 ? ~ds_bitvec::word_type(0) : ((ds_bitvec::word_type(1) << r) - 1);
}

inline int count_word(ds_bitvec::word_type w) {
    return ds_bitvec::ones[w & 0xff] + ds_bitvec::ones[(w >> 8) & 0xff] + ds_bitvec::ones[(w >> 16) & 0xff] +
           ds_bitvec::ones[w >> 24];
}

} // namespace

const ds_bitvec::word_type ds_bitvec::tail_mask[32] = {
    low_bits(0),  low_bits(1),  low_bits(2),  low_bits(3),  low_bits(4),  low_bits(5),  low_bits(6),
    low_bits(7),  low_bits(8),  low_bits(9),  low_bits(10), low_bits(11), low_bits(12), low_bits(13),
    low_bits(14), low_bits(15), low_bits(16), low_bits(17), low_bits(18), low_bits(19), low_bits(20),
    low_bits(21), low_bits(22), low_bits(23), low_bits(24), low_bits(25), low_bits(26), low_bits(27),
    low_bits(28), low_bits(29), low_bits(30), low_bits(31)};

#define VESK_B2(n) n, n + 1, n + 1, n + 2
#define VESK_B4(n) VESK_B2(n), VESK_B2(n + 1), VESK_B2(n + 1), VESK_B2(n + 2)
#define VESK_B6(n) VESK_B4(n), VESK_B4(n + 1), VESK_B4(n + 1), VESK_B4(n + 2)
const unsigned char ds_bitvec::ones[256] = {VESK_B6(0), VESK_B6(1), VESK_B6(1), VESK_B6(2)};
#undef VESK_B2
#undef VESK_B4
#undef VESK_B6

ds_bitvec::ds_bitvec(int size) : m_size(size), m_on_bits(0), m_words((size + 31) / 32, 0) {}

ds_bitvec::ds_bitvec(const ds_bitvec& src, int start, int size) : ds_bitvec(size) { restrict(src, start); }

ds_bitvec::ds_bitvec(int size, int start, const ds_bitvec& src) : ds_bitvec(size) { embed(start, src); }

bool ds_bitvec::get_ind(int i) const {
    if (i < 0 || i >= m_size)
        VESK_FATAL(kSrc, "Bit index " << i << " out of bounds [0.." << m_size << ")");
    return (m_words[i / 32] >> (i & 31)) & 1u;
}

void ds_bitvec::mask_tail() {
    if (!m_words.empty())
        m_words.back() &= tail_mask[m_size % 32];
}

void ds_bitvec::set_size(int n) {
    const int old = m_size;
    m_size = n;
    m_words.resize((n + 31) / 32, 0);
    if (n < old) {
        if (n != 0)
            mask_tail();
        m_on_bits = -1;
    }
}

ds_bitvec& ds_bitvec::set(bool val) {
    const word_type fill = val ? ~word_type(0) : 0;
    for (word_type& w : m_words)
        w = fill;
    if (val)
        mask_tail();
    m_on_bits = val ? m_size : 0;
    return *this;
}

int ds_bitvec::on_bits() const {
    if (m_on_bits < 0) {
        int n = 0;
        for (word_type w : m_words)
            n += count_word(w);
        m_on_bits = n;
    }
    return m_on_bits;
}

int ds_bitvec::on_bits_and(const ds_bitvec& other) const {
    int n = 0;
    const word_type* b = other.m_words.data();
    for (std::size_t i = 0; i < m_words.size(); ++i) {
        const word_type w = m_words[i] & b[i];
        if (w)
            n += count_word(w);
    }
    return n;
}

int ds_bitvec::on_bits_minus(const ds_bitvec& other) const {
    int n = 0;
    const word_type* b = other.m_words.data();
    for (std::size_t i = 0; i < m_words.size(); ++i) {
        const word_type a = m_words[i];
        if (!(a & ~b[i]))
            continue;
        // The top byte is masked with the complement of the other word's first byte: the
        // established counts of this routine depend on it.
        const word_type nb = ~b[i];
        n += ones[(a & nb) & 0xff] + ones[((a & nb) >> 8) & 0xff] + ones[((a & nb) >> 16) & 0xff] +
             ones[(a >> 24) & (nb & 0xff)];
    }
    return n;
}

int ds_bitvec::on_bits_and_pointers(const byte_list& list) const {
    int n = 0;
    for (const auto& p : list)
        n += ones[byte(p.first) & p.second];
    return n;
}

ds_bitvec& ds_bitvec::noteq() {
    for (word_type& w : m_words)
        w = ~w;
    mask_tail();
    if (m_on_bits >= 0)
        m_on_bits = m_size - m_on_bits;
    return *this;
}

#define VESK_BITVEC_BINOP(name, expr, masked)                                                                \
    ds_bitvec& ds_bitvec::name(const ds_bitvec& other) {                                                     \
        const word_type* b = other.m_words.data();                                                           \
        for (std::size_t i = 0; i < m_words.size(); ++i) {                                                   \
            const word_type x = m_words[i], y = b[i];                                                        \
            m_words[i] = (expr);                                                                             \
        }                                                                                                    \
        if (masked)                                                                                          \
            mask_tail();                                                                                     \
        m_on_bits = -1;                                                                                      \
        return *this;                                                                                        \
    }

VESK_BITVEC_BINOP(andeq, x& y, false)
VESK_BITVEC_BINOP(oreq, x | y, false)
VESK_BITVEC_BINOP(xoreq, x ^ y, false)
VESK_BITVEC_BINOP(minus, x & ~y, false)
VESK_BITVEC_BINOP(sub, ~x& y, false)
VESK_BITVEC_BINOP(nand, ~(x& y), true)
VESK_BITVEC_BINOP(nor, ~(x | y), true)
VESK_BITVEC_BINOP(nxor, ~(x ^ y), true)
VESK_BITVEC_BINOP(nminus, ~x | y, true)
VESK_BITVEC_BINOP(nsub, x | ~y, true)
#undef VESK_BITVEC_BINOP

ds_bitvec& ds_bitvec::copy(const ds_bitvec& other) {
    m_size = other.m_size;
    m_on_bits = other.m_on_bits;
    m_words = other.m_words;
    return *this;
}

ds_bitvec& ds_bitvec::ncopy(const ds_bitvec& other) {
    m_words.resize(other.m_words.size());
    for (std::size_t i = 0; i < m_words.size(); ++i)
        m_words[i] = ~other.m_words[i];
    // Masked with this vector's width before it takes the other's; the count is likewise
    // the old width minus the other's count.
    mask_tail();
    m_on_bits = other.m_on_bits >= 0 ? m_size - other.m_on_bits : -1;
    m_size = other.m_size;
    return *this;
}

ds_bitvec& ds_bitvec::restrict(const ds_bitvec& src, int offset) {
    const int n = static_cast<int>(m_words.size());
    const int first = offset / 32;
    const int s = offset % 32;
    if (s == 0) {
        for (int i = 0; i < n; ++i)
            m_words[i] = src.m_words[first + i];
    } else {
        const int src_n = static_cast<int>(src.m_words.size());
        for (int i = 0; i < n; ++i) {
            word_type w = src.m_words[first + i] >> s;
            if (first + i + 1 < src_n)
                w |= src.m_words[first + i + 1] << (32 - s);
            m_words[i] = w;
        }
    }
    mask_tail();
    m_on_bits = -1;
    return *this;
}

ds_bitvec& ds_bitvec::embed(int offset, const ds_bitvec& src) {
    for (word_type& w : m_words)
        w = 0;
    const int n = static_cast<int>(m_words.size());
    const int first = offset / 32;
    const int s = offset % 32;
    for (std::size_t i = 0; i < src.m_words.size(); ++i) {
        const int t = first + static_cast<int>(i);
        if (t < n)
            m_words[t] |= src.m_words[i] << s;
        if (s != 0 && t + 1 < n)
            m_words[t + 1] |= src.m_words[i] >> (32 - s);
    }
    mask_tail();
    // The count is the source's, even where bits were cut at the end.
    m_on_bits = src.m_on_bits;
    return *this;
}

bool ds_bitvec::operator<=(const ds_bitvec& other) const {
    for (std::size_t i = 0; i < m_words.size(); ++i)
        if (m_words[i] & ~other.m_words[i])
            return false;
    return true;
}

bool ds_bitvec::operator>=(const ds_bitvec& other) const {
    for (std::size_t i = 0; i < m_words.size(); ++i)
        if (~m_words[i] & other.m_words[i])
            return false;
    return true;
}

bool ds_bitvec::operator==(const ds_bitvec& other) const {
    for (std::size_t i = 0; i < m_words.size(); ++i)
        if (m_words[i] != other.m_words[i])
            return false;
    return true;
}

std::uint32_t ds_bitvec::hash() const {
    std::uint32_t h = 0;
    for (word_type w : m_words)
        h += w;
    return h;
}

bool ds_bitvec::verify() const {
    if (static_cast<int>(m_words.size()) != (m_size + 31) / 32) {
        std::cerr << "ds_bitvec: " << m_words.size() << " words for width " << m_size << std::endl;
        return false;
    }
    if (!m_words.empty() && (m_words.back() & ~tail_mask[m_size % 32])) {
        std::cerr << "ds_bitvec: bits set past width " << m_size << std::endl;
        return false;
    }
    if (m_on_bits >= 0) {
        int n = 0;
        for (word_type w : m_words)
            n += count_word(w);
        if (n != m_on_bits) {
            std::cerr << "ds_bitvec: cached count " << m_on_bits << " but " << n << " bits set" << std::endl;
            return false;
        }
    }
    return true;
}

std::ostream& operator<<(std::ostream& os, const ds_bitvec& v) {
    bool any = false;
    for (int w = 0; w < v.word_count(); ++w) {
        ds_bitvec::word_type x = v.word(w);
        while (x) {
            int b = __builtin_ctz(x);
            os << (w * 32 + b) << " ";
            x &= x - 1;
            any = true;
        }
    }
    if (!any)
        os << "empty ";
    return os;
}
