// HMM: a discrete hidden Markov model with silent states, stored as edge lists in both directions.
#ifndef VESK_HMM_HMM_H
#define VESK_HMM_HMM_H

#include <list>
#include <ostream>
#include <queue>
#include <vector>

// One state. A fresh state has emission probabilities 0 and log emissions 1.0, a value no real
// logarithm can take: decoding a state whose emissions were never set stops in the forward decoder.
struct HMMState {
    HMMState(int alphabet_size, bool silent)
        : m_active(true), m_silent(silent), m_emit(alphabet_size, 0.0f), m_log_emit(alphabet_size, 1.0f) {}

    bool m_active;
    bool m_silent;
    std::vector<float> m_emit;
    std::vector<float> m_log_emit;
};

// One edge. Each edge is stored twice, in the source's out-list and in the target's in-list.
struct HMMAdjacency {
    HMMAdjacency(int from_, int to_, float p_);

    // Sets p and its logarithm (the log of zero for p = 0).
    void set_adj_prob(float p_);
    // Sets the logarithm and p as its exponential.
    void set_adj_log_prob(float log_p_);

    int from;
    int to;
    float p;
    float log_p;
};

// The states of a path, from the start state 0 onwards. A vector rather than a linked list: a path
// over a long sequence has a state per symbol, and a node per state would cost more than decoding.
typedef std::vector<int> HMMPath;

// State 0 is the start state (silent). The finish state, once added, is silent and is assumed to
// carry the highest id. The decoders need edges between silent states to run from lower to higher
// ids; nothing here checks that.
class HMM {
public:
    explicit HMM(int alphabet_size);
    virtual ~HMM() = default;

    // Back to the model with the start state only.
    void reset();
    // A new state: the smallest freed id if there is one (which keeps its earlier silent flag and
    // emissions), otherwise a new id at the end.
    int new_state(bool silent);
    void del_state(int k);
    // Appends the edge to both lists; an existing edge between the same states is not looked for.
    void add_transition(int from, int to, float p);
    void add_finish_state();
    void del_finish_state();
    // Reports states whose out-probabilities do not sum to 1 (within 0.001) on the error stream;
    // fatal when the two stored copies of an edge disagree. Returns true.
    bool verify() const;

    // Sets one emission probability of a state and its logarithm together.
    void set_state_emission(int state, int symbol, float p);

    virtual void print(std::ostream& out) const;

    int num_states() const { return static_cast<int>(m_states.size()); }

    int m_alphabet_size;
    std::vector<HMMState> m_states;
    int m_finish_state;
    std::vector<std::list<HMMAdjacency>> m_adj;
    std::vector<std::list<HMMAdjacency>> m_back_adj;
    // Freed ids, negated, so that the top of this max-heap is the smallest id.
    std::priority_queue<int> m_free_ids;
};

#endif
