// DNA sequences in two forms: letters as read (DnaSequence) and eight bases a word (DnaDenseSequence),
// the position iterator of the dense form, and the plain pattern matchers on letter text.
#ifndef VESK_SEQPACK_DNASEQUENCE_H
#define VESK_SEQPACK_DNASEQUENCE_H

#include "DnaSeqChar.h"

#include <istream>
#include <string>
#include <vector>

// A string of base letters, held exactly as read (no check, no case folding).
class DnaSequence : public std::string {
public:
    // Reads the body of one FASTA record, up to and including the next '>' or the end of the stream.
    void read_fasta(std::istream& in);
    int get_length() const { return static_cast<int>(size()); }
};

class DnaDenseSequence;

// A position in a dense sequence: a word and a nibble (0 to 7) in it. The end of a sequence is the
// word pointer past the vector with nibble 0.
class DnaDenseSeqCharIter {
public:
    DnaDenseSeqCharIter() : m_word(nullptr), m_nibble(0) {}
    DnaDenseSeqCharIter(const DnaDegChar8Mer* word, int nibble) : m_word(word), m_nibble(nibble) {}

    int operator*() const { return m_word->get_nibble(m_nibble); }
    DnaDenseSeqCharIter& operator++() {
        if (++m_nibble == 8) {
            m_nibble = 0;
            ++m_word;
        }
        return *this;
    }
    bool operator<(const DnaDenseSeqCharIter& o) const {
        return m_word < o.m_word || (m_word == o.m_word && m_nibble < o.m_nibble);
    }
    bool operator==(const DnaDenseSeqCharIter& o) const {
        return m_word == o.m_word && m_nibble == o.m_nibble;
    }
    bool operator!=(const DnaDenseSeqCharIter& o) const { return !(*this == o); }

    const DnaDegChar8Mer* m_word;
    int m_nibble;
};

// Eight bases a word, packed with DnaDegChar8Mer's table; m_length counts bases.
class DnaDenseSequence {
public:
    DnaDenseSequence() : m_length(0) {}

    // Reads the body of one FASTA record; a partial last word is filled with value 0.
    void read_fasta(std::istream& in);
    int get_length() const { return m_length; }
    // The nibble value at base position `pos`.
    int get_value(int pos) const { return m_words[pos / 8].get_nibble(pos % 8); }
    // The letter of that value.
    char get_letter(int pos) const { return DnaDegChar8Mer::encode_value(get_value(pos)); }

    DnaDenseSeqCharIter begin() const { return DnaDenseSeqCharIter(m_words.data(), 0); }
    DnaDenseSeqCharIter end() const { return DnaDenseSeqCharIter(m_words.data() + m_words.size(), 0); }

    std::vector<DnaDegChar8Mer> m_words;
    int m_length;
};

// Whether `pat` matches the text at `pos`, '*' matching anything. The end of the text isn't tested.
bool dnapat_match(const std::string& pat, std::string::const_iterator pos);
// Number of starts at which `pat` matches, digits n standing for n '*'. A comparison stops when the
// text's next position is its end, so a match ending on the text's last letter isn't counted.
int count_dnapat_match(std::string::const_iterator first, std::string::const_iterator last,
                       const std::string& pat);
int count_dnapat_match(const std::string& seq, const std::string& pat);

#endif
