// The Viterbi, forward and backward decoders of an HMM, with tables kept between calls.
//
// The recursions are kept exactly as stated, and they are not mirror images of one another:
//  - Forward and Viterbi never pass through a silent state before the first emission (row 0 holds
//    the start state only); backward does, through its row 0 over the start state's out-edges.
//  - Backward gives row L only to the finish state's direct predecessors: a path that reaches the
//    finish state through further silent states after the last emission counts in forward and
//    Viterbi but not in backward.
//  - Backward visits all states of a row in falling id order, so it ignores an edge into a silent
//    state of lower id, from any state; forward takes such an edge when it comes from an emitting
//    state (emitting states are done first in each row). Models built here give silent states edges
//    from lower ids only.
// So forward and backward totals agree only on models that have none of these paths. Neither side
// is corrected to match the other.
#ifndef VESK_HMM_HMMDECODE_H
#define VESK_HMM_HMMDECODE_H

#include "HMM.h"
#include "SymbolSequence.h"

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

// An allocator whose value-less construct leaves a number uninitialised: a table that is about to be
// written row by row is not first filled with zeros.
template <class T> struct HMMTabAllocator : std::allocator<T> {
    template <class U> struct rebind { typedef HMMTabAllocator<U> other; };
    HMMTabAllocator() = default;
    template <class U> HMMTabAllocator(const HMMTabAllocator<U>&) {}
    template <class U> void construct(U* p) { ::new (static_cast<void*>(p)) U; }
    template <class U, class... Args> void construct(U* p, Args&&... args) {
        ::new (static_cast<void*>(p)) U(std::forward<Args>(args)...);
    }
};

// Common part: the model, the state count of the last decode and the table of (L + 2) rows of one
// cell per state, the cell of row i and state k at i * S + k.
//
// decode() fills each row with the start value just before computing it, rather than the whole table
// first: the same table, with one pass over memory instead of two.
class HMMDecodeBase {
public:
    explicit HMMDecodeBase(const HMM& hmm) : m_hmm(hmm), m_num_states(0), m_length(0) {}

    float get_cell(int i, int k) const { return m_tab[static_cast<std::size_t>(i) * m_num_states + k]; }
    int num_states() const { return m_num_states; }
    int length() const { return m_length; }

    const HMM& m_hmm;
    int m_num_states;
    int m_length;
    std::vector<float, HMMTabAllocator<float>> m_tab;

protected:
    // One edge as the recursions walk it: the other end and the log probability.
    struct Edge {
        int other;
        float log_p;
    };
    // The edges of the model copied into flat arrays, state by state in list order: in-edges
    // (`other` the source) or out-edges (`other` the target); and the active emitting and silent
    // states in rising id. Walking arrays instead of lists gives the same sums, faster.
    void flatten_edges(bool out);
    const Edge* edges_begin(int k) const { return m_edges.data() + m_edge_off[k]; }
    const Edge* edges_end(int k) const { return m_edges.data() + m_edge_off[k + 1]; }

    std::vector<Edge> m_edges;
    std::vector<int> m_edge_off;
    std::vector<int> m_emitting;
    std::vector<int> m_silent;
    std::vector<char> m_is_silent;

    float& cell(int i, int k) { return m_tab[static_cast<std::size_t>(i) * m_num_states + k]; }
    float* row_ptr(int i) { return m_tab.data() + static_cast<std::size_t>(i) * m_num_states; }
    // Re-reads the state count and sizes the table for `seq`, its cells left as they are.
    void size_tab(const SymbolSequence& seq);
    // Sets every cell of row i to `fill`.
    void fill_row(int i, float fill);
    // The code at position i (0-based); fatal when it is outside the model's alphabet.
    int symbol_at(const SymbolSequence& seq, int i) const;
    // The finish state; fatal when the model has none.
    int finish_state() const;
};

class ViterbiDecode : public HMMDecodeBase {
public:
    explicit ViterbiDecode(const HMM& hmm) : HMMDecodeBase(hmm) {}

    // Fills the score table with -4.2535293e37 and the traceback table with -1.
    void reinit_tabs(const SymbolSequence& seq);
    // The log probability of the best path; appends the path (from state 0 up to the last state
    // before the finish state) to `path`.
    float decode(const SymbolSequence& seq, HMMPath& path);

    // The traceback at row i and state k: the state the best path came from, -1 for none.
    int get_traceback(int i, int k) const {
        const std::size_t c = static_cast<std::size_t>(i) * m_num_states + k;
        switch (m_trace_width) {
        case 1:
            return static_cast<int>(m_trace[c]) - 1;
        case 2:
            return static_cast<int>(reinterpret_cast<const std::uint16_t*>(m_trace.data())[c]) - 1;
        default:
            return static_cast<int>(reinterpret_cast<const std::uint32_t*>(m_trace.data())[c]) - 1;
        }
    }

private:
    // The traceback table holds state + 1 (0 for none) in the narrowest of 1, 2 or 4 bytes that
    // holds the state count: on a small model it costs a quarter of the memory of ints, and at a
    // million rows memory is most of the cost of a decode.
    std::vector<unsigned char, HMMTabAllocator<unsigned char>> m_trace;
    int m_trace_width = 4;
    std::vector<int> m_back_path;
    // Sizes both tables and prints the reinit line.
    void size_tabs(const SymbolSequence& seq);
    // Rows 0 to L + 1 of both tables, the traceback stored as T.
    template <class T> void fill_rows(const SymbolSequence& seq);
    // The best candidate over the edges [e, end) from the cells of `from_row`, the first strictly
    // greater one winning, and its source in `best_from` (-1 if none beats the log of zero).
    static float best_in(const Edge* e, const Edge* end, const float* from_row, int& best_from);
};

class ForwardDecode : public HMMDecodeBase {
public:
    explicit ForwardDecode(const HMM& hmm) : HMMDecodeBase(hmm) {}

    void reinit_tabs(const SymbolSequence& seq);
    // The total log likelihood of `seq`. The per-row trace goes to the error stream in one write.
    //
    // The total reads the finish state's predecessors only. When the finish state has no out-edge
    // (and no in-edge above probability 1, which is fatal in row 1), no cell reads its cell either,
    // so it is computed in row L alone: in rows 0 to L - 1 it keeps the log of zero. That spares a
    // log-sum per row and in-edge, most of the work on a small model.
    float decode(const SymbolSequence& seq);

private:
    std::string m_trace_buf;
    std::vector<int> m_silent_before_last; // m_silent less a finish state computed in row L only
};

class BackwardDecode : public HMMDecodeBase {
public:
    explicit BackwardDecode(const HMM& hmm) : HMMDecodeBase(hmm) {}

    void reinit_tabs(const SymbolSequence& seq);
    // The total log likelihood of `seq`; the finish state must have the highest id.
    float decode(const SymbolSequence& seq);
};

#endif
