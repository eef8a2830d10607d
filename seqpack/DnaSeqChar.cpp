// DNA characters: the two letter tables, eight-base words, the alphabet and the neighbour iterator.
#include "DnaSeqChar.h"

namespace {
// Value -> letter of DnaSeqDegChar: three-base sets by the lower-case letter of the base left out,
// gap-accepting sets by other lower-case letters.
const char kDegTable[33] = "0AGRCMStTWKcYga*-zxrvmsoukwdyhb#";
// Value -> letter of DnaDegChar8Mer: as above but 5 is 'L' and 12 is 'M'.
const char k8MerTable[17] = "0AGRCLStTWKcMga*";

struct ReverseTables {
    signed char deg[256];
    signed char mer[256];
    ReverseTables() {
        for (int i = 0; i < 256; ++i)
            deg[i] = mer[i] = 0;
        for (int v = 0; v < 32; ++v)
            deg[static_cast<unsigned char>(kDegTable[v])] = static_cast<signed char>(v);
        for (int v = 0; v < 16; ++v)
            mer[static_cast<unsigned char>(k8MerTable[v])] = static_cast<signed char>(v);
    }
};

const ReverseTables& reverse_tables() {
    static const ReverseTables t;
    return t;
}
} // namespace

DnaSeqChar DnaSeqChar::from_letter(char c) {
    switch (c) {
    case 'A':
        return DnaSeqChar(A);
    case 'C':
        return DnaSeqChar(C);
    case 'G':
        return DnaSeqChar(G);
    case 'T':
        return DnaSeqChar(T);
    default:
        return DnaSeqChar(0);
    }
}

char DnaSeqDegChar::get_char_encoding() const { return m_val > 31 ? 'E' : kDegTable[m_val]; }

void DnaSeqDegChar::set_char_encoding(char c) {
    m_val = static_cast<unsigned char>(reverse_tables().deg[static_cast<unsigned char>(c)]);
}

void DnaSeqDegChar::read(std::istream& in) {
    char c;
    if (in >> c)
        set_char_encoding(c);
}

int DnaSeqDegChar::degree() const { return DnaDegChar8Mer::ones[m_val & 15]; }

char DnaDegChar8Mer::encode_value(int v) { return v < 0 || v > 15 ? 'E' : k8MerTable[v]; }

int DnaDegChar8Mer::decode_letter(char c) { return reverse_tables().mer[static_cast<unsigned char>(c)]; }

char DnaDegChar8Mer::encode(int v) const { return encode_value(v); }

int DnaDegChar8Mer::decode(char c) const { return decode_letter(c); }

void DnaDegChar8Mer::read(const char* chars) {
    m_word = 0;
    for (int i = 0; i < 8; ++i)
        m_word |= word_type(decode_letter(chars[i])) << (4 * i);
}

void DnaDegChar8Mer::read(std::istream& in) {
    m_word = 0;
    char c;
    for (int i = 0; i < 8 && (in >> c); ++i)
        m_word |= word_type(decode_letter(c)) << (4 * i);
}

void DnaDegChar8Mer::write(std::ostream& out) const {
    for (int i = 0; i < 8; ++i)
        out << encode_value(get_nibble(i));
}

const unsigned char DnaDegChar8Mer::ones[256] = {
#define VESK_B2(n) n, n + 1, n + 1, n + 2
#define VESK_B4(n) VESK_B2(n), VESK_B2(n + 1), VESK_B2(n + 1), VESK_B2(n + 2)
#define VESK_B6(n) VESK_B4(n), VESK_B4(n + 1), VESK_B4(n + 1), VESK_B4(n + 2)
    VESK_B6(0), VESK_B6(1), VESK_B6(1), VESK_B6(2)
#undef VESK_B6
#undef VESK_B4
#undef VESK_B2
};

DnaSeqAlphabeth::DnaSeqAlphabeth() : std::vector<std::vector<DnaSeqDegChar>>(5) {
    static const int kByDegree[5][6] = {{0}, {1, 2, 4, 8}, {3, 5, 9, 6, 10, 12}, {7, 11, 13, 14}, {15}};
    static const int kCount[5] = {0, 4, 6, 4, 1};
    for (int d = 0; d < 5; ++d)
        for (int i = 0; i < kCount[d]; ++i)
            (*this)[d].push_back(DnaSeqDegChar(static_cast<unsigned char>(kByDegree[d][i])));
}

bool DnaDegCharIter::accepts(int m) const {
    const int diff = m ^ m_base;
    const bool one_bit = diff == 1 || diff == 2 || diff == 4 || diff == 8;
    return one_bit && (m & m_forbidden) == 0 && (m & m_required) == m_required;
}

void DnaDegCharIter::skip_rejected() {
    while (m_mask < 16 && !accepts(m_mask))
        ++m_mask;
}

void DnaDegCharIter::restart(DnaSeqDegChar base, DnaSeqDegChar forbidden, DnaSeqDegChar required) {
    m_base = base.m_val;
    m_forbidden = forbidden.m_val;
    m_required = required.m_val;
    m_mask = 1;
    skip_rejected();
}

void DnaDegCharIter::restart_null() {
    m_base = 0;
    m_mask = 1;
}

DnaDegCharIter& DnaDegCharIter::operator++() {
    if (m_mask < 16) {
        ++m_mask;
        skip_rejected();
    }
    return *this;
}
