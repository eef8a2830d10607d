// Pair-HMM and profile alignment: their parameter sets with file formats, the direct three-state pair
// HMM (forward, backward and expected counts) and the profile built from one sequence.
#ifndef VESK_HMM_PROFILEALIGN_H
#define VESK_HMM_PROFILEALIGN_H

#include "HMMDecode.h"
#include "ProfileHMM.h"
#include "SeqAlign.h"
#include "SymbolSequence.h"

#include <istream>
#include <ostream>
#include <vector>

// Log parameters of the three-state pair HMM (M matches, G a gap in either sequence, F the end).
class PairAlignParams {
public:
    // All values the log of zero.
    explicit PairAlignParams(int num_symbols);
    void clear();

    // Turns raw expected counts into probabilities (the two gap kinds share m_mg; x and y are taken
    // as exchangeable, so the gap vectors are pooled and m_subs made symmetric).
    void normalize();
    void print(std::ostream& os) const;
    // The substitution table as probabilities, the transition table as the stored logs.
    void write(std::ostream& subs, std::ostream& tran) const;
    // Reads both tables back; every format fault is fatal.
    void read(std::istream& subs, std::istream& tran);

    float subs(int x, int y) const { return m_subs[static_cast<std::size_t>(x) * m_num_symbols + y]; }
    float& subs(int x, int y) { return m_subs[static_cast<std::size_t>(x) * m_num_symbols + y]; }

    float m_mm;
    float m_mg;
    float m_gg;
    float m_gm;
    float m_mf;
    float m_gf;
    int m_num_symbols;
    std::vector<float> m_x_gap;
    std::vector<float> m_y_gap;
    std::vector<float> m_subs;
};

// Log parameters of a profile built from one sequence: nine type-to-type transitions (M, I, D to
// M, I, D), the insert background and the match rows of m_subs (row = the profile's symbol).
class ProfAlignParams {
public:
    // Transitions the log of zero, a uniform background, m_subs the log of zero.
    explicit ProfAlignParams(int num_symbols);

    // One of the nine, Start counted as M for the source and Fin as M for the target; NaN for any
    // other pair.
    float get_type_type_lp(int from, int to) const;
    // Log-adds `value` to one of the nine; returns the new value (NaN for an invalid pair).
    float add_type_type_lp(int from, int to, float value);
    // Transitions from a gap-open delta and a gap-extend epsilon; m_subs the logs of `mat`.
    void init_tran_gap(const SymbSubstMat& mat, float delta, float epsilon);
    void normalize();
    void print(std::ostream& os) const;
    void write(std::ostream& subs, std::ostream& tran) const;
    void read(std::istream& subs, std::istream& tran);

    float subs(int x, int y) const { return m_subs[static_cast<std::size_t>(x) * m_num_symbols + y]; }

    float m_tran[3][3];
    int m_num_symbols;
    std::vector<float> m_bg;
    std::vector<float> m_subs;

private:
    // Row index (M 0, I 1, D 2) of a type as a source or a target; -1 when not allowed.
    static int src_row(int type);
    static int dst_row(int type);
};

// The pair HMM evaluated directly on the (|x|+1) by (|y|+1) grid. A path starts in M at (0,0) without
// emitting, opens a gap by M-G and extends it by G-G (no direct step between the two gap kinds) and
// ends by M-F or G-F from (|x|,|y|).
class ProfileAlignDirect {
public:
    // Forward and backward over x and y under `in`; unless `no_update`, adds the expected transition
    // and emission counts (logs) into `out`, unnormalised. Returns the forward total.
    float direct_prof_align(const SymbolSequence& x, const SymbolSequence& y, PairAlignParams& in,
                            PairAlignParams& out, bool no_update);
    // The backward total of the last call.
    float back_total() const { return m_back_total; }

    // Forward (f*) and backward (b*) tables of the three states, row i of x, column j of y.
    std::vector<float> m_fm, m_fx, m_fy, m_bm, m_bx, m_by;
    int m_w = 0;
    float m_back_total = 0.0f;
};

// A profile HMM with one match column per symbol of a sequence, decoded by the general decoders.
class ProfileAlign {
public:
    ProfileAlign(int alphabet, const SymbolSequence& seq, ProfAlignParams& params);

    // Forward (kept as m_full_p) and backward of `seq`; with `update`, the expected counts.
    float align(const SymbolSequence& seq, bool update);
    // Adds the expected type-level transition counts and emission counts of the last align.
    void update_gap_subs_params(const SymbolSequence& seq);
    // The log posterior of the match of profile position pos_x at pos_y and of pos_x+k at pos_y+k.
    float get_align_prob(int pos_x, int pos_y, int k) const;
    float get_forward(int i, int k) const { return m_forward.get_cell(i, k); }
    float get_backward(int i, int k) const { return m_backward.get_cell(i, k); }
    // Prints the Viterbi alignment of `seq` on the profile as two tab-separated rows ('-' for gaps),
    // blanking the aligned pairs outside the stretch of `len` pairs from (start_x, start_y).
    void max_like_align(const SymbolSequence& seq, int start_x, int start_y, int len);

    SymbolSequence m_seq;
    ProfileHMM m_prof;
    ForwardDecode m_forward;
    BackwardDecode m_backward;
    ViterbiDecode m_viterbi;
    ProfAlignParams& m_params;
    // Expected counts as logs, all starting at the log of zero: the nine transitions, the insert
    // emissions by symbol in m_bg, the match emissions by (profile symbol, sequence symbol) in m_subs.
    ProfAlignParams m_counts;
    float m_full_p;
};

#endif
