// Helpers of the hmm tests: the casino model, a quiet error stream, digit sequences.
#ifndef VESK_TESTS_HMM_HMMTESTUTIL_H
#define VESK_TESTS_HMM_HMMTESTUTIL_H

#include "HMM.h"
#include "SymbolSequence.h"

#include <iostream>
#include <sstream>
#include <string>

// Sends std::cerr to a buffer for the lifetime of the object (the decoders trace every row).
class QuietCerr {
public:
    QuietCerr() : m_old(std::cerr.rdbuf(m_buf.rdbuf())) {}
    ~QuietCerr() { std::cerr.rdbuf(m_old); }
    QuietCerr(const QuietCerr&) = delete;
    QuietCerr& operator=(const QuietCerr&) = delete;
    std::string text() const { return m_buf.str(); }

private:
    std::ostringstream m_buf;
    std::streambuf* m_old;
};

// Digits '0'..'9' as codes 0..9.
inline SymbolSequence digits(const std::string& s) {
    SymbolSequence seq;
    for (char c : s)
        seq.push_back(static_cast<char>(c - '0'));
    return seq;
}

// The occasionally dishonest casino: state 1 the fair die, state 2 the loaded one (a six, code 5,
// with 1/2), a start edge of 1/2 to each, finish edges of probability 1.
inline void build_casino(HMM& h) {
    const int fair = h.new_state(false);
    const int loaded = h.new_state(false);
    h.add_finish_state();
    h.add_transition(0, fair, 0.5f);
    h.add_transition(0, loaded, 0.5f);
    h.add_transition(fair, fair, 0.95f);
    h.add_transition(fair, loaded, 0.05f);
    h.add_transition(fair, h.m_finish_state, 1.0f);
    h.add_transition(loaded, fair, 0.1f);
    h.add_transition(loaded, loaded, 0.9f);
    h.add_transition(loaded, h.m_finish_state, 1.0f);
    for (int b = 0; b < 6; ++b) {
        h.set_state_emission(fair, b, 1.0f / 6.0f);
        h.set_state_emission(loaded, b, b == 5 ? 0.5f : 0.1f);
    }
}

// The classic 18 rolls in codes (a six is code 5).
inline const char* casino_rolls() { return "055545523405555012"; }

#endif
