// DenseSeqIncrMatch and SeqIncrementMatch: the match starts of one pattern in one sequence, kept up to
// date through single changes of the pattern (the dense and the letter branch).
#ifndef VESK_SEQPACK_SEQINCREMENTMATCH_H
#define VESK_SEQPACK_SEQINCREMENTMATCH_H

#include "Dna8MerPattern.h"
#include "DnaSeqPattern.h"

#include <list>
#include <string>
#include <vector>

// The shared rules over a branch policy B (sequence, pattern, position iterator and the letter tests).
// The caller changes the pattern first and calls the matcher second; each call returns whether a
// match is left. A pattern of at most m_min_len positions falls back to a full match(), and match()
// keeps no positions for a pattern shorter than m_min_len.
//
// The rules are the incremental ones, not a fresh match: push_back tests only the new position (the
// A refused behind a dense pattern's end is not applied) and no end-of-sequence limit; push_front
// tests the pushed set even where the pattern itself took a full wildcard. A change of window scans
// from the old window edge.
template <class B> class SeqIncrMatchT {
public:
    typedef typename B::seq_type seq_type;
    typedef typename B::pat_type pat_type;
    typedef typename B::iter_type iter_type;

    SeqIncrMatchT(const seq_type& seq, const pat_type* pat)
        : m_seq(&seq), m_pat(pat), m_have_positions(false), m_min_len(4) {}

    bool match();
    // The state match() leaves where the pattern fits nowhere, for a caller that knows it does not.
    bool set_no_match() {
        m_matches.clear();
        m_have_positions = m_pat->length() >= m_min_len;
        return false;
    }
    bool incremental_push_back(DnaSeqDegChar c);
    bool incremental_push_back(DnaSeqChar c) { return incremental_push_back(DnaSeqDegChar(c.m_val)); }
    bool incremental_push_front(DnaSeqDegChar c);
    bool incremental_push_front(DnaSeqChar c) { return incremental_push_front(DnaSeqDegChar(c.m_val)); }
    bool incremental_del_char(int pos, DnaSeqChar base);
    bool incremental_pop_back() { return match(); }
    bool incremental_pop_front() { return match(); }
    bool change_to_range(int old_to, int new_to);
    bool change_from_range(int old_from, int new_from);

    // The starts as positions, newest first.
    std::list<int> positions() const;
    // Drops the starts for which `drop(position)` holds; a kept start may be moved through the
    // reference.
    template <class Drop> void drop_if(Drop drop);
    bool has_positions() const { return m_have_positions; }

    const seq_type* m_seq;
    const pat_type* m_pat;
    bool m_have_positions;
    std::vector<iter_type> m_matches; // newest at the back: a vector filters in one pass
    int m_min_len;

private:
    bool short_pattern() const { return m_pat->length() <= m_min_len; }
    // Adds the fresh starts from `from` on, below `stop` (-1: no stop), newest first.
    void scan(int from, int stop, bool check_decrease);
};

// Dense branch: positions are (word, nibble); a set is tested by shifting it to the nibble.
struct DenseIncrBranch {
    typedef DnaDenseSequence seq_type;
    typedef Dna8MerPattern pat_type;
    typedef DnaDenseSeqCharIter iter_type;
    static const bool check_decrease = true;

    static int pos(const seq_type& s, iter_type it) {
        return static_cast<int>(it.m_word - s.m_words.data()) * 8 + it.m_nibble;
    }
    static iter_type at(const seq_type& s, int p) { return iter_type(s.m_words.data() + p / 8, p % 8); }
    static int size(const seq_type& s) { return s.m_length; }
    static iter_type end(const seq_type& s) { return s.end(); }
    static iter_type match_from(const pat_type& p, const seq_type& s, iter_type it) {
        return p.match_from(s, it);
    }
    static bool whole_match(const pat_type& p, const seq_type& s) { return p.match(s); }
    // Common bit of the set, shifted to the position's nibble, and the sequence word.
    static bool fits(const seq_type& s, int p, DnaSeqDegChar c) {
        if (p < 0 || static_cast<std::size_t>(p / 8) >= s.m_words.size())
            return false;
        return ((DnaDegChar8Mer::word_type(c.m_val) << (4 * (p % 8))) & s.m_words[p / 8].m_word) != 0;
    }
    static bool has_base(const seq_type& s, int p, int base) {
        if (p < 0 || static_cast<std::size_t>(p / 8) >= s.m_words.size())
            return false;
        return (s.m_words[p / 8].get_nibble(p % 8) & base) != 0;
    }
};

// Letter branch: '-' against the gap bit, A C G T against theirs, other letters never fit.
struct LetterIncrBranch {
    typedef std::string seq_type;
    typedef DnaSeqPattern pat_type;
    typedef std::string::const_iterator iter_type;
    static const bool check_decrease = false;

    static int pos(const seq_type& s, iter_type it) { return static_cast<int>(it - s.begin()); }
    static iter_type at(const seq_type& s, int p) { return s.begin() + p; }
    static int size(const seq_type& s) { return static_cast<int>(s.size()); }
    static iter_type end(const seq_type& s) { return s.end(); }
    static iter_type match_from(const pat_type& p, const seq_type& s, iter_type it) {
        return p.match_from(s, it);
    }
    static bool whole_match(const pat_type& p, const seq_type& s) { return p.match(s); }
    static int bit(const seq_type& s, int p);
    static bool fits(const seq_type& s, int p, DnaSeqDegChar c) { return (bit(s, p) & c.m_val) != 0; }
    static bool has_base(const seq_type& s, int p, int base) { return (bit(s, p) & base) != 0; }
};

class DenseSeqIncrMatch : public SeqIncrMatchT<DenseIncrBranch> {
public:
    DenseSeqIncrMatch(const DnaDenseSequence& seq, const Dna8MerPattern* pat) : SeqIncrMatchT(seq, pat) {}
};

class SeqIncrementMatch : public SeqIncrMatchT<LetterIncrBranch> {
public:
    SeqIncrementMatch(const std::string& seq, const DnaSeqPattern* pat) : SeqIncrMatchT(seq, pat) {}
};

extern template class SeqIncrMatchT<DenseIncrBranch>;
extern template class SeqIncrMatchT<LetterIncrBranch>;

#endif
