// The Viterbi, forward and backward decoders.
#include "HMMDecode.h"

#include "LogSpace.h"
#include "error.h"

#include <algorithm>
#include <iostream>
#include <iterator>

static constexpr char kSrc[] = "HMMDecode";

// Start value of the Viterbi table: above the log of zero, so that an unreached cell still ranks
// above a path through an impossible edge.
static constexpr float kViterbiInit = -4.2535293e37f;

void HMMDecodeBase::size_tab(const SymbolSequence& seq) {
    m_num_states = m_hmm.num_states();
    m_length = static_cast<int>(seq.size());
    const std::size_t n = static_cast<std::size_t>(m_length + 2) * m_num_states;
    // Cleared first, so that a growing table is not copied over.
    if (m_tab.size() != n) {
        m_tab.clear();
        m_tab.resize(n);
    }
}

void HMMDecodeBase::fill_row(int i, float fill) {
    float* row = row_ptr(i);
    std::fill(row, row + m_num_states, fill);
}

void HMMDecodeBase::flatten_edges(bool out) {
    const std::vector<std::list<HMMAdjacency>>& lists = out ? m_hmm.m_adj : m_hmm.m_back_adj;
    m_edges.clear();
    m_edge_off.assign(1, 0);
    m_emitting.clear();
    m_silent.clear();
    m_is_silent.assign(m_num_states, 0);
    for (int k = 0; k < m_num_states; ++k) {
        for (const HMMAdjacency& a : lists[k])
            m_edges.push_back(Edge{out ? a.to : a.from, a.log_p});
        m_edge_off.push_back(static_cast<int>(m_edges.size()));
        const HMMState& st = m_hmm.m_states[k];
        m_is_silent[k] = st.m_silent ? 1 : 0;
        if (k > 0 && st.m_active)
            (st.m_silent ? m_silent : m_emitting).push_back(k);
    }
}

int HMMDecodeBase::symbol_at(const SymbolSequence& seq, int i) const {
    const int x = seq.code_at(i);
    if (x >= m_hmm.m_alphabet_size)
        VESK_FATAL(kSrc, "Symbol " << x << " at position " << i << " outside the alphabet of size "
                                   << m_hmm.m_alphabet_size);
    return x;
}

int HMMDecodeBase::finish_state() const {
    if (m_hmm.m_finish_state < 0)
        VESK_FATAL(kSrc, "Decoding a model without a finish state");
    return m_hmm.m_finish_state;
}

void ViterbiDecode::size_tabs(const SymbolSequence& seq) {
    size_tab(seq);
    m_trace_width = m_num_states < 255 ? 1 : m_num_states < 65535 ? 2 : 4;
    const std::size_t bytes = m_tab.size() * static_cast<std::size_t>(m_trace_width);
    if (m_trace.size() != bytes) {
        m_trace.clear();
        m_trace.resize(bytes);
    }
    std::cerr << "reinit to length " << m_length << " states " << m_num_states << "\n";
}

void ViterbiDecode::reinit_tabs(const SymbolSequence& seq) {
    size_tabs(seq);
    std::fill(m_tab.begin(), m_tab.end(), kViterbiInit);
    std::fill(m_trace.begin(), m_trace.end(), 0);
}

// The best candidate over the edges of [e, end) from `from_row`, the first strictly greater one
// winning, and its source (-1 if none beats the log of zero).
inline float ViterbiDecode::best_in(const Edge* e, const Edge* end, const float* from_row, int& best_from) {
    float best = kLogZero;
    best_from = -1;
    for (; e != end; ++e) {
        const float v = from_row[e->other];
        const float cand = v + e->log_p;
        if (cand > 0.0f)
            VESK_FATAL(kSrc, "positive log prob " << cand << " v tab " << v << " adj " << e->log_p);
        if (cand > best) {
            best = cand;
            best_from = e->other;
        }
    }
    return best;
}

template <class T> void ViterbiDecode::fill_rows(const SymbolSequence& seq) {
    const int S = m_num_states;
    const int L = m_length;
    const std::vector<HMMState>& states = m_hmm.m_states;
    T* const trace_tab = reinterpret_cast<T*>(m_trace.data());
    // Each row is set to the start values just before it is computed; rows 0 and L + 1 are not.
    auto start_row = [&](int i) {
        fill_row(i, kViterbiInit);
        T* trace = trace_tab + static_cast<std::size_t>(i) * S;
        std::fill(trace, trace + S, T(0));
    };
    start_row(0);
    start_row(L + 1);
    cell(0, 0) = 0.0f;
    for (int i = 1; i <= L; ++i) {
        const int x = symbol_at(seq, i - 1);
        start_row(i);
        const float* prev = row_ptr(i - 1);
        float* row = row_ptr(i);
        T* trace = trace_tab + static_cast<std::size_t>(i) * S;
        int from;
        for (int k : m_emitting) {
            const float best = best_in(edges_begin(k), edges_end(k), prev, from);
            trace[k] = static_cast<T>(from + 1);
            row[k] = best + states[k].m_log_emit[x];
        }
        for (int k : m_silent) {
            const float best = best_in(edges_begin(k), edges_end(k), row, from);
            trace[k] = static_cast<T>(from + 1);
            row[k] = best;
        }
    }
}

float ViterbiDecode::decode(const SymbolSequence& seq, HMMPath& path) {
    size_tabs(seq);
    const int fin = finish_state();
    const int S = m_num_states;
    const int L = m_length;
    const std::vector<HMMState>& states = m_hmm.m_states;
    flatten_edges(false);
    if (m_trace_width == 1)
        fill_rows<std::uint8_t>(seq);
    else if (m_trace_width == 2)
        fill_rows<std::uint16_t>(seq);
    else
        fill_rows<std::uint32_t>(seq);

    float best = kLogZero;
    int state = -1;
    for (const HMMAdjacency& a : m_hmm.m_back_adj[fin]) {
        const float v = a.log_p + cell(L, a.from);
        if (v > best) {
            best = v;
            state = a.from;
        }
    }
    std::cerr << "best fin val = " << best << "\n";

    // The path is traced backwards and then appended to whatever `path` held already.
    m_back_path.clear();
    m_back_path.push_back(state);
    int row = L;
    // A path visits at most every state of every row once; more steps mean a loop of silent
    // pointers, which only a silent edge from a higher to a lower id can make.
    long steps = 0;
    const long max_steps = static_cast<long>(L + 1) * S;
    while (state != 0) {
        const int back = state < 0 ? state : get_traceback(row, state);
        if (back < 0)
            VESK_FATAL(kSrc, "Negative traceback " << back);
        if (++steps > max_steps)
            VESK_FATAL(kSrc, "Traceback does not reach the start state");
        m_back_path.push_back(back);
        if (!states[state].m_silent)
            --row;
        state = back;
    }
    path.insert(path.end(), m_back_path.rbegin(), m_back_path.rend());
    return best;
}

// Writes "i = <i>" and a line end at `out` and returns the end. `digits` holds i in decimal, most
// significant first, ending at `digits_end`; it is counted up by one after each row.
static char* write_row_trace(char* out, char* digits, char* digits_end) {
    *out++ = 'i';
    *out++ = ' ';
    *out++ = '=';
    *out++ = ' ';
    for (char* d = digits; d != digits_end; ++d)
        *out++ = *d;
    *out++ = '\n';
    return out;
}

// Counts a decimal number held as digits [begin, end) up by one; begin must have a free '0' slot
// in front of the leading digit.
static char* count_up(char* begin, char* end) {
    char* d = end;
    while (d != begin && *(d - 1) == '9')
        *--d = '0';
    if (d == begin) {
        *--begin = '1';
        return begin;
    }
    ++*(d - 1);
    return begin;
}

void ForwardDecode::reinit_tabs(const SymbolSequence& seq) {
    size_tab(seq);
    std::fill(m_tab.begin(), m_tab.end(), kLogZero);
}

float ForwardDecode::decode(const SymbolSequence& seq) {
    size_tab(seq);
    const int fin = finish_state();
    const int L = m_length;
    const std::vector<HMMState>& states = m_hmm.m_states;
    flatten_edges(false);
    bool fin_last_row_only = m_hmm.m_adj[static_cast<std::size_t>(fin)].empty();
    for (const Edge* e = edges_begin(fin); e != edges_end(fin); ++e)
        if (e->log_p > 0.0f)
            fin_last_row_only = false;
    m_silent_before_last.clear();
    for (int k : m_silent)
        if (k != fin || !fin_last_row_only)
            m_silent_before_last.push_back(k);
    fill_row(0, kLogZero);
    fill_row(L + 1, kLogZero);
    // The rows' trace is gathered here and written at the end in one go.
    m_trace_buf.resize(static_cast<std::size_t>(L) * 16);
    char* trace_out = &m_trace_buf[0];
    char number[16] = "00000000000001";
    char* const number_end = number + 14;
    char* number_begin = number_end - 1;
    cell(0, 0) = 0.0f;
    for (int i = 1; i <= L; ++i) {
        trace_out = write_row_trace(trace_out, number_begin, number_end);
        number_begin = count_up(number_begin, number_end);
        const int x = symbol_at(seq, i - 1);
        fill_row(i, kLogZero);
        const float* prev = row_ptr(i - 1);
        float* row = row_ptr(i);
        for (int k : m_emitting) {
            float acc = kLogZero;
            for (const Edge* e = edges_begin(k); e != edges_end(k); ++e) {
                if (e->log_p > 0.0f)
                    VESK_FATAL(kSrc, "Log prob > 0 at k = " << e->other << " to " << k);
                acc = log_sum(acc, prev[e->other] + e->log_p);
            }
            const float le = states[k].m_log_emit[x];
            if (le > 0.0f)
                VESK_FATAL(kSrc, "Log emission is > 0 at state " << k << " x_i " << x << " " << le);
            row[k] = acc + le;
        }
        for (int k : i < L ? m_silent_before_last : m_silent) {
            float acc = kLogZero;
            for (const Edge* e = edges_begin(k); e != edges_end(k); ++e) {
                if (e->log_p > 0.0f)
                    VESK_FATAL(kSrc, "Log prob > 0 at k = " << e->other << " to " << k);
                acc = log_sum(acc, row[e->other] + e->log_p);
            }
            row[k] = acc;
        }
    }
    std::cerr.write(m_trace_buf.data(), trace_out - m_trace_buf.data());
    std::cerr.flush();

    float total = kLogZero;
    for (const HMMAdjacency& a : m_hmm.m_back_adj[fin])
        total = log_sum(total, a.log_p + cell(L, a.from));
    return total;
}

void BackwardDecode::reinit_tabs(const SymbolSequence& seq) {
    size_tab(seq);
    std::fill(m_tab.begin(), m_tab.end(), kLogZero);
}

float BackwardDecode::decode(const SymbolSequence& seq) {
    size_tab(seq);
    const int fin = finish_state();
    const int S = m_num_states;
    const int L = m_length;
    const std::vector<HMMState>& states = m_hmm.m_states;
    flatten_edges(true);
    fill_row(L + 1, kLogZero);
    fill_row(L, kLogZero);
    cell(L + 1, fin) = 0.0f;
    cell(L, fin) = 0.0f;
    for (const HMMAdjacency& a : m_hmm.m_back_adj[fin])
        cell(L, a.from) = a.log_p;

    // The sum over the out-edges of k at row i, x being the symbol after position i.
    auto out_sum = [&](int i, int k, int x) {
        const float* row = &m_tab[static_cast<std::size_t>(i) * S];
        const float* next = row + S;
        float acc = kLogZero;
        for (const Edge* e = edges_begin(k); e != edges_end(k); ++e) {
            const int to = e->other;
            float term;
            if (m_is_silent[to]) {
                term = e->log_p + row[to];
            } else {
                term = e->log_p + next[to];
                // A sequence of length 0 has no symbol: the term is already below any real value.
                if (x >= 0)
                    term = term + states[to].m_log_emit[x];
            }
            acc = log_sum(acc, term);
        }
        return acc;
    };

    for (int i = L - 1; i >= 0; --i) {
        const int x = symbol_at(seq, i);
        fill_row(i, kLogZero);
        float* row = row_ptr(i);
        for (int k = S - 2; k >= 1; --k) {
            if (!states[k].m_active)
                continue;
            float sum = out_sum(i, k, x);
            if (sum > 0.001f)
                VESK_FATAL(kSrc, "Back Decode, Positive log prob! " << sum << " i " << i << " st " << k);
            if (sum > 0.0f)
                sum = 0.0f;
            row[k] = sum;
        }
    }
    return out_sum(0, 0, L > 0 ? symbol_at(seq, 0) : -1);
}
