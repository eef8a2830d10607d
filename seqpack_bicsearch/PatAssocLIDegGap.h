// PatternModification<P>, one recorded move of a pattern search, and PatAssocLIDegGap<P>, the
// iterator that walks the neighbours of a pattern as incremental changes of an AssocPatternBase.
#ifndef VESK_SEQPACK_BICSEARCH_PATASSOCLIDEGGAP_H
#define VESK_SEQPACK_BICSEARCH_PATASSOCLIDEGGAP_H

#include "AssocPatternBase.h"
#include "DnaSeqChar.h"

// Types: 0 none, 1 a position changed, 2 a character added before the pattern after m_gap
// wildcards, 3 the same behind it, 4 a new window.
template <class P> class PatternModification {
public:
    PatternModification() : m_type(0), m_pos(0), m_gap(0), m_from(0), m_to(-1) {}

    void init_char(int pos, DnaSeqDegChar c) {
        m_type = 1;
        m_pos = pos;
        m_new_char = c;
    }
    void init_gap_front(int gap, DnaSeqDegChar c) {
        m_type = 2;
        m_gap = gap;
        m_gap_char = c;
    }
    void init_gap_back(int gap, DnaSeqDegChar c) {
        m_type = 3;
        m_gap = gap;
        m_gap_char = c;
    }
    void init_range(int from, int to) {
        m_type = 4;
        m_from = from;
        m_to = to;
    }
    bool is_init() const { return m_type != 0; }
    int get_type() const { return m_type; }
    int get_pos() const { return m_pos; }
    DnaSeqDegChar get_new_char() const { return m_new_char; }

    void apply(AssocPatternBase<P>& assoc) const;
    // The same, and for the gap moves a 0 pushed on both masks for every character pushed, so that
    // the masks stay as long as the pattern.
    void apply_mask(AssocPatternBase<P>& assoc, P& avoid, P& force) const;

    int m_type;
    int m_pos;
    DnaSeqDegChar m_new_char;
    int m_gap;
    DnaSeqDegChar m_gap_char;
    int m_from;
    int m_to;
};

// Modes: 0 each position changed by one base (within the avoid and force masks), 1 a character
// added in front after 0 .. m_max_gap - 1 wildcards, 2 the same behind, 3 the window's start moved
// up by m_range_step, 4 the window's end moved down from m_max_range. Each neighbour is left in the
// pattern object for the caller to score; a change of mode or position goes back through revert, so
// that the pattern is the focus again when the walk ends.
//
// Characters are read back through the pattern's get_deg_char: for Dna8MerPattern that is
// ~nibble & 31, with bit 4 set, which no one-step neighbour of DnaDegCharIter can equal: the dense
// walk offers only an A at either end after each gap and the window moves.
template <class P> class PatAssocLIDegGap {
public:
    PatAssocLIDegGap(int max_gap, int range_step, int max_range);

    // The masks read in mode 0 (patterns as long as the focus); without them no base is barred.
    void set_masks(const P* avoid, const P* force) {
        m_avoid = avoid;
        m_force = force;
    }
    void restart(AssocPatternBase<P>& assoc);
    PatAssocLIDegGap& operator++();
    bool is_valid() const { return m_is_valid; }
    void get_cur_modification(PatternModification<P>& mod) const;
    int get_mode() const { return m_mode; }

    P m_focus;
    const P* m_avoid;
    const P* m_force;
    AssocPatternBase<P>* m_assoc;
    DnaDegCharIter m_char_iter;
    int m_mode;
    int m_pos;
    int m_len;
    int m_gap;
    int m_max_gap;
    int m_cur_from;
    int m_cur_to;
    bool m_range_iter_flag;
    int m_range_step;
    int m_max_range;
    bool m_is_valid;

private:
    DnaSeqDegChar mask_char(const P* mask, int pos) const;
    // Mode 0 from position m_pos on: the first position with a neighbour character, else mode 1.
    void seek_char();
    void start_front();
    void push_gap_front();
    void start_back();
    void push_gap_back();
    void start_ranges();
    void start_from();
    void start_to();
};

#include "PatAssocLIDegGap.tcc"

#endif
