// DnaSeqPattern: a degenerate pattern over letter sequences; DnaSeqTemplatePattern and its iterator
// over the degenerate patterns of a template that hold a k-mer; pattern comparisons.
#ifndef VESK_SEQPACK_DNASEQPATTERN_H
#define VESK_SEQPACK_DNASEQPATTERN_H

#include "Dna8MerPattern.h"
#include "DnaSeqChar.h"

#include <istream>
#include <ostream>
#include <string>
#include <vector>

// Accepted-set bit of a text letter: A 1, G 2, C 4, T 8, the gap 16, 0 for letters that never fit.
int letter_bit(char c);

// One DnaSeqDegChar a position. A text letter fits a position if it is A, C, G or T and the position
// holds that base, or if it is '-' and the position accepts the gap (bit 4); any other letter (the
// NUL padding among them) never fits. The window: starts from m_from_range up to m_to_range - length
// inclusive, or text length - length when the text is shorter than m_to_range (-1 means none).
class DnaSeqPattern {
public:
    typedef std::string::const_iterator iterator;

    DnaSeqPattern() : m_to_range(-1), m_from_range(0), m_mismatches(0) {}

    // Digits '0'..'@' stand for (code - 48) wildcards; other letters through DnaSeqDegChar's table
    // ('-' is the gap, 'M' is A or C here).
    void init_str(const std::string& s);

    bool match(const std::string& text) const;
    int match_count(const std::string& text) const;
    // The first fitting start at or after `pos` inside the window, or text.end().
    iterator match_from(const std::string& text, iterator pos) const;
    bool match_prefix(iterator it) const;
    // With a count of misfits: 0 on a clean fit, 1 at the first misfit when none are allowed.
    bool match_prefix(iterator it, int* mismatches) const;

    void add_deg_char(int pos, DnaSeqDegChar c);
    void del_deg_char(int pos, DnaSeqDegChar c);
    void set_deg_char(int pos, DnaSeqDegChar c);
    void push_back(DnaSeqDegChar c);
    void push_back(char c);
    void push_front(DnaSeqDegChar c);
    void push_front(char c);
    DnaSeqDegChar pop_back();
    DnaSeqDegChar pop_front();

    void get_prefix(std::string& out, int k) const;
    void get_prefix(DnaSeqPattern& out, int k) const;
    void get_suffix(std::string& out, int k) const;
    void get_suffix(DnaSeqPattern& out, int k) const;
    void get_kernel_substr(int pos, DnaSeqDegChar c, std::string& out, int k) const;

    int length() const { return static_cast<int>(m_chars.size()); }
    const std::string& get_str() const { return m_str; }
    DnaSeqDegChar get_deg_char(int pos) const { return m_chars[pos]; }

    std::vector<DnaSeqDegChar> m_chars;
    std::string m_str;
    int m_to_range;
    int m_from_range;
    int m_mismatches;

private:
    // One past the last start of the window for a text of `n` letters (may be <= first).
    int start_end(int n) const;
};

std::ostream& operator<<(std::ostream& out, const DnaSeqPattern& pat);

// The degree (1 to 3, 4 for a full wildcard) of each position. Text form: '1', '2', '3' or '*' a
// position, ended by ';'.
class DnaSeqTemplatePattern : public std::vector<unsigned char> {
public:
    void read(std::istream& in);
    void write(std::ostream& out) const;
};

// The characters of one degree that accept a given base.
class DnaSeqAlphabethIter {
public:
    explicit DnaSeqAlphabethIter(const DnaSeqAlphabeth& alpha)
        : m_alpha(&alpha), m_index(0), m_len(0), m_degree(0), m_base(0), m_cur(0), m_valid(false) {}

    void restart(int degree, int base);
    DnaSeqAlphabethIter& operator++();
    bool is_valid() const { return m_valid; }
    DnaSeqDegChar operator*() const { return m_cur; }

private:
    void settle();

    const DnaSeqAlphabeth* m_alpha;
    int m_index;
    int m_len;
    int m_degree;
    int m_base;
    DnaSeqDegChar m_cur;
    bool m_valid;
};

// Walks, like an odometer with the last position fastest, every degenerate pattern of a template
// that holds a k-mer (bases A 1, C 4, G 2, T 8).
class DnaSeqTemplatePatternIter {
public:
    explicit DnaSeqTemplatePatternIter(const DnaSeqAlphabeth& alpha) : m_alpha(alpha), m_valid(false) {}

    void restart(const char* kmer, const DnaSeqTemplatePattern& templ);
    void first();
    DnaSeqTemplatePatternIter& operator++();
    bool is_valid() const { return m_valid; }
    // The current pattern, one letter a position.
    std::string get_str() const;

private:
    const DnaSeqAlphabeth& m_alpha;
    std::vector<DnaSeqAlphabethIter> m_iters;
    std::vector<int> m_degrees;
    std::vector<int> m_bases;
    bool m_valid;
};

// Whether `a` fits at some offset of `b` (equal letters, or b's set within a's) with a's window
// inside b's.
bool is_subpat(const std::string& a, int af, int at, const std::string& b, int bf, int bt);
bool is_subpat(Dna8MerPattern& a, Dna8MerPattern& b);
// min(lengths) minus the best count of equal letters over the offsets of `a` in `b` padded by four
// '*' each side; plus 1 for overlapping and 10 for disjoint windows when neither holds the other.
float calc_dist(const std::string& a, int af, int at, const std::string& b, int bf, int bt);
float calc_dist(Dna8MerPattern& a, Dna8MerPattern& b);
// Smallest distance over relative offsets of the digit-expanded texts: differing letters in the
// overlap plus the overhang on both sides.
int no_gap_dist(const std::string& a, const std::string& b);

#endif
