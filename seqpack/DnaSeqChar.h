// DNA characters: one-hot bases, degenerate characters and their two letter tables, eight-base words,
// the alphabet by degree and the iterator over one-step neighbours of a degenerate character.
#ifndef VESK_SEQPACK_DNASEQCHAR_H
#define VESK_SEQPACK_DNASEQCHAR_H

#include <cstdint>
#include <istream>
#include <ostream>
#include <vector>

// One base as a one-hot bit: A 1, G 2, C 4, T 8 (G before C).
class DnaSeqChar {
public:
    enum { A = 1, G = 2, C = 4, T = 8 };
    explicit DnaSeqChar(unsigned char v = 0) : m_val(v) {}
    // The base of an upper-case letter A, C, G or T; 0 for any other letter.
    static DnaSeqChar from_letter(char c);

    bool operator==(const DnaSeqChar& o) const { return m_val == o.m_val; }
    bool operator!=(const DnaSeqChar& o) const { return m_val != o.m_val; }

    unsigned char m_val;
};

// A set of accepted bases (bits 0-3) and whether a gap is accepted too (bit 4).
class DnaSeqDegChar {
public:
    explicit DnaSeqDegChar(unsigned char v = 0) : m_val(v) {}

    // Letter of the value in the system's own table; 'E' above 31.
    char get_char_encoding() const;
    // Value of a letter; letters outside the table (N among them) give 0, which accepts nothing.
    void set_char_encoding(char c);
    // One letter of the table; a failed stream leaves the value.
    void read(std::istream& in);
    void write(std::ostream& out) const { out << get_char_encoding(); }

    // Number of bases accepted (0 to 4).
    int degree() const;

    bool operator==(const DnaSeqDegChar& o) const { return m_val == o.m_val; }
    bool operator!=(const DnaSeqDegChar& o) const { return m_val != o.m_val; }

    unsigned char m_val;
};

// Eight four-bit fields in one word, position 0 in the lowest nibble. Its letter table differs from
// DnaSeqDegChar's at 5 ('L'), 12 ('M') and so reads 'Y' as 0.
class DnaDegChar8Mer {
public:
    typedef std::uint32_t word_type;
    explicit DnaDegChar8Mer(word_type w = 0) : m_word(w) {}

    // Letter of a four-bit value; 'E' above 15.
    char encode(int v) const;
    // Value of a letter; 0 for a letter outside the table.
    int decode(char c) const;
    static char encode_value(int v);
    static int decode_letter(char c);

    // Packs eight letters, the first into the low nibble.
    void read(const char* chars);
    // The same from a stream (white space skipped); stops early at a failed stream.
    void read(std::istream& in);
    // The eight nibbles from the low nibble up, as letters.
    void write(std::ostream& out) const;

    int get_nibble(int i) const { return static_cast<int>((m_word >> (4 * i)) & 15u); }
    void set_nibble(int i, int v) {
        m_word = (m_word & ~(word_type(15) << (4 * i))) | (word_type(v & 15) << (4 * i));
    }

    bool operator==(const DnaDegChar8Mer& o) const { return m_word == o.m_word; }
    bool operator!=(const DnaDegChar8Mer& o) const { return m_word != o.m_word; }

    // Number of set bits of each byte value.
    static const unsigned char ones[256];

    word_type m_word;
};

// The degenerate characters by the number of bases they accept: entry d holds those of degree d.
class DnaSeqAlphabeth : public std::vector<std::vector<DnaSeqDegChar>> {
public:
    DnaSeqAlphabeth();
};

// Walks the characters (masks 1 to 15) that differ from a base set in exactly one bit, avoid the
// forbidden bits and hold the required ones: a search adds or removes one base at a position.
class DnaDegCharIter {
public:
    DnaDegCharIter() : m_base(0), m_forbidden(0), m_required(0), m_mask(16) {}

    void restart(DnaSeqDegChar base, DnaSeqDegChar forbidden, DnaSeqDegChar required);
    // Base 0, mask 1, the sets kept; mask 1 is delivered without a test.
    void restart_null();
    DnaDegCharIter& operator++();

    bool is_valid() const { return m_mask < 16; }
    DnaSeqDegChar operator*() const { return DnaSeqDegChar(static_cast<unsigned char>(m_mask)); }

private:
    bool accepts(int m) const;
    void skip_rejected();

    int m_base;
    int m_forbidden;
    int m_required;
    int m_mask;
};

#endif
