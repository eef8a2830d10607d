// ds_bitvec: a set of integer ids as 32-bit words with a cached on-bit count.
#ifndef VESK_STDALG_DS_BITVEC_H
#define VESK_STDALG_DS_BITVEC_H

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <utility>
#include <vector>

class ds_bitvec {
public:
    typedef std::uint32_t word_type;
    // (byte index, byte value) pairs naming the non-zero bytes of a sparse set.
    typedef std::vector<std::pair<int, unsigned char>> byte_list;

    explicit ds_bitvec(int size = 0);
    ds_bitvec(const ds_bitvec& src, int start, int size); // stretch of src from `start`
    ds_bitvec(int size, int start, const ds_bitvec& src); // src placed at `start`

    // Single-bit changes have no bounds test; a known count is kept right.
    void set_ind(int i) {
        word_type& w = m_words[i / 32];
        const word_type m = word_type(1) << (i & 31);
        if (m_on_bits >= 0 && !(w & m))
            ++m_on_bits;
        w |= m;
    }
    void clr_ind(int i) {
        word_type& w = m_words[i / 32];
        const word_type m = word_type(1) << (i & 31);
        if (m_on_bits >= 0 && (w & m))
            --m_on_bits;
        w &= ~m;
    }
    bool flip_ind(int i) {
        word_type& w = m_words[i / 32];
        const word_type m = word_type(1) << (i & 31);
        w ^= m;
        const bool now = (w & m) != 0;
        if (m_on_bits >= 0)
            m_on_bits += now ? 1 : -1;
        return now;
    }
    // The one bounds-tested access.
    bool get_ind(int i) const;

    int size() const { return m_size; }
    int word_count() const { return static_cast<int>(m_words.size()); }
    const word_type* words() const { return m_words.data(); }
    word_type word(int w) const { return m_words[w]; }
    // The byte at `b` in memory order (least significant byte of each word first).
    unsigned char byte(int b) const { return static_cast<unsigned char>(m_words[b / 4] >> (8 * (b % 4))); }
    // -1 while unknown.
    int cached_on_bits() const { return m_on_bits; }

    void set_size(int n);
    ds_bitvec& set(bool val);
    ds_bitvec& clear() { return set(false); }

    int on_bits() const;
    int on_bits_and(const ds_bitvec& other) const;
    int on_bits_minus(const ds_bitvec& other) const;
    int on_bits_and_pointers(const byte_list& list) const;

    ds_bitvec& noteq();
    ds_bitvec& andeq(const ds_bitvec& other);
    ds_bitvec& oreq(const ds_bitvec& other);
    ds_bitvec& xoreq(const ds_bitvec& other);
    ds_bitvec& minus(const ds_bitvec& other);
    ds_bitvec& sub(const ds_bitvec& other);
    ds_bitvec& nand(const ds_bitvec& other);
    ds_bitvec& nor(const ds_bitvec& other);
    ds_bitvec& nxor(const ds_bitvec& other);
    ds_bitvec& nminus(const ds_bitvec& other);
    ds_bitvec& nsub(const ds_bitvec& other);
    ds_bitvec& copy(const ds_bitvec& other);
    ds_bitvec& ncopy(const ds_bitvec& other);
    ds_bitvec& restrict(const ds_bitvec& src, int offset);
    ds_bitvec& embed(int offset, const ds_bitvec& src);

    bool operator<=(const ds_bitvec& other) const;
    bool operator>=(const ds_bitvec& other) const;
    bool operator==(const ds_bitvec& other) const;
    bool operator!=(const ds_bitvec& other) const { return !(*this == other); }

    std::uint32_t hash() const;

    static const word_type tail_mask[32];
    static const unsigned char ones[256];

    // Checks the tail-bit invariant and a known count; says why on the error stream.
    bool verify() const;

private:
    void mask_tail();

    int m_size;
    mutable int m_on_bits;
    std::vector<word_type> m_words;
};

std::ostream& operator<<(std::ostream& os, const ds_bitvec& v);

// Hash and equality functors so that bit vectors, and pointers to them, key hash containers by content.
struct ds_bitvec_hash {
    std::size_t operator()(const ds_bitvec& v) const { return v.hash(); }
    std::size_t operator()(const ds_bitvec* v) const { return v->hash(); }
};

struct ds_bitvec_ptr_equal {
    bool operator()(const ds_bitvec* a, const ds_bitvec* b) const { return *a == *b; }
};

#endif
