// Dna8MerPattern: a degenerate pattern stored eight times, once per nibble phase, as complements of the
// accepted sets, so that eight positions of a dense sequence are tested with one AND.
#ifndef VESK_SEQPACK_DNA8MERPATTERN_H
#define VESK_SEQPACK_DNA8MERPATTERN_H

#include "DnaSequence.h"

#include <ostream>
#include <string>
#include <vector>

// Version p holds pattern position i in nibble (i + p) % 8 of word (i + p) / 8; a nibble holds the
// complement of the accepted bases, so 0 accepts everything and nibbles outside the pattern accept
// anything. A sequence word fits a pattern word when their AND is 0.
//
// Two properties of the encoding are kept on purpose: push_back and set_deg_char store a five-bit
// complement after clearing only four bits, so until the next position is pushed an A right behind
// the last position is refused (unless the last position is the top nibble of its word); and the text
// of a changed position is read back as ~nibble & 31, the gap-accepting half of the letter table
// (z, x, r, ..., #). push_front leaves the new position accepting every base (text '#').
class Dna8MerPattern {
public:
    Dna8MerPattern();

    // Clears text and versions; digits '0'..'@' stand for (code - 48) wildcards, other letters are
    // decoded with DnaDegChar8Mer's table (so 'M' is C or T here).
    void init_str(const std::string& s);

    // Widen (add) or narrow (del) the accepted set of a position by the bases of a set (four bits);
    // the text of the position is then re-read from its nibble.
    void add_deg_char(int pos, DnaSeqDegChar c);
    void add_char(int pos, DnaSeqChar c) { add_deg_char(pos, DnaSeqDegChar(c.m_val)); }
    void del_deg_char(int pos, DnaSeqDegChar c);
    void del_char(int pos, DnaSeqChar c) { del_deg_char(pos, DnaSeqDegChar(c.m_val)); }
    // Writes the letter of `c` into the text and ~c & 31 into the nibble, clearing only four bits.
    void set_deg_char(int pos, DnaSeqDegChar c);

    void push_back(char c);
    void push_back(DnaSeqDegChar c);
    void push_front(char c);
    void push_front(DnaSeqDegChar c);
    DnaSeqDegChar pop_back();
    DnaSeqDegChar pop_front();

    bool match(const DnaDenseSequence& seq) const;
    // The first start at or after `pos` inside the window, or seq.end().
    DnaDenseSeqCharIter match_from(const DnaDenseSequence& seq, DnaDenseSeqCharIter pos) const;
    // The first version in [from_phase, to_phase) that fits the words from `word`, or -1.
    int match_prefix(const DnaDegChar8Mer* word, int from_phase, int to_phase) const;
    // Highest count of fitting bits over the window, first in scan order; its start in `pos`.
    int best_match(const DnaDenseSequence& seq, int* pos) const;
    // Fitting bits of the versions [from, to) at `word`; the best in `best` (with its version).
    void best_match_prefix(const DnaDegChar8Mer* word, int from_phase, int to_phase, int& best,
                           int& best_phase) const;

    void get_prefix(std::string& out, int k) const;
    // The first k characters as well (a lookup at the back tests the front: a valid necessary test).
    void get_suffix(std::string& out, int k) const;
    void get_kernel_substr(int pos, DnaSeqDegChar c, std::string& out, int k) const;

    int length() const { return static_cast<int>(m_str.size()); }
    const std::string& get_str() const { return m_str; }
    // The accepted set of a position read back as ~nibble & 31 (bit 4 always set).
    DnaSeqDegChar get_deg_char(int pos) const;
    int get_nibble(int phase, int pos) const;

    void dbg_print(std::ostream& out) const;

    std::vector<DnaDegChar8Mer> m_phase[8];
    std::string m_str;
    int m_to_range;
    int m_from_range;
    int m_mismatches;

private:
    // Appends a position holding complement `comp` (five bits for push_back, four for init_str).
    void append_pos(char text, unsigned comp);
    void set_text_from_nibble(int pos);
    // Fitting check of one version at a sequence word.
    bool fits(int phase, const DnaDegChar8Mer* word) const;
    int bad_bits(int phase, const DnaDegChar8Mer* word, int cut) const;
};

std::ostream& operator<<(std::ostream& out, const Dna8MerPattern& pat);

#endif
