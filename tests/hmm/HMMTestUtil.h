// Helpers of the hmm tests: the casino model, a quiet error stream, digit sequences, edge lookup,
// comparison of program output.
#ifndef VESK_TESTS_HMM_HMMTESTUTIL_H
#define VESK_TESTS_HMM_HMMTESTUTIL_H

#include "HMM.h"
#include "SeqAlign.h"
#include "SymbolSequence.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
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

// What verify() writes to std::cerr, with "false" appended when it fails: empty for a clean model.
inline std::string verify_report(const HMM& h) {
    QuietCerr quiet;
    const bool ok = h.verify();
    return quiet.text() + (ok ? "" : "false");
}

// Digits '0'..'9' as codes 0..9.
inline SymbolSequence digits(const std::string& s) {
    SymbolSequence seq;
    for (char c : s)
        seq.push_back(static_cast<char>(c - '0'));
    return seq;
}

// The occasionally dishonest casino: state 1 the fair die, state 2 the loaded one (a six, code 5,
// with 1/2), a start edge of 1/2 to each, finish edges of probability 1. Other values give a start
// away from it.
struct Casino {
    float ff = 0.95f, fl = 0.05f, ffin = 1.0f, lf = 0.1f, ll = 0.9f, lfin = 1.0f;
    float fair_six = 1.0f / 6.0f, fair_other = 1.0f / 6.0f, loaded_six = 0.5f, loaded_other = 0.1f;
};
inline void build_casino(HMM& h, const Casino& c = Casino()) {
    const int fair = h.new_state(false);
    const int loaded = h.new_state(false);
    h.add_finish_state();
    h.add_transition(0, fair, 0.5f);
    h.add_transition(0, loaded, 0.5f);
    h.add_transition(fair, fair, c.ff);
    h.add_transition(fair, loaded, c.fl);
    h.add_transition(fair, h.m_finish_state, c.ffin);
    h.add_transition(loaded, fair, c.lf);
    h.add_transition(loaded, loaded, c.ll);
    h.add_transition(loaded, h.m_finish_state, c.lfin);
    for (int b = 0; b < 6; ++b) {
        h.set_state_emission(fair, b, b == 5 ? c.fair_six : c.fair_other);
        h.set_state_emission(loaded, b, b == 5 ? c.loaded_six : c.loaded_other);
    }
}

// Probability of the edge from -> to, -1 when there is none.
inline float edge_p(const HMM& h, int from, int to) {
    for (const HMMAdjacency& a : h.m_adj[from])
        if (a.to == to)
            return a.p;
    return -1.0f;
}

// A program's output word by word against the expected text: numbers within `tol` relative, other
// words equal, neither text longer.
inline void expect_same_words(const std::string& want_text, const std::string& got_text, double tol) {
    std::istringstream want(want_text), got(got_text);
    std::string w, g;
    for (int n = 0; want >> w; ++n) {
        ASSERT_TRUE(static_cast<bool>(got >> g)) << "output ends before " << w;
        char* end = nullptr;
        const double wv = std::strtod(w.c_str(), &end);
        if (*end == '\0')
            EXPECT_NEAR(wv, std::stod(g), tol * std::max(1.0, std::fabs(wv))) << "word " << n;
        else
            EXPECT_EQ(w, g) << "word " << n;
    }
    EXPECT_FALSE(static_cast<bool>(got >> g)) << "extra output " << g;
}

// The first n entries of a FASTA file fetched into bench/data/scratch/hmm/ (by
// bench/hmm_fetch_profiles.sh); false when it is absent.
inline bool read_scratch(const std::string& file, ProteinSequenceSet& out, std::size_t n = 1000) {
    std::ifstream in(source_dir() + "/bench/data/scratch/hmm/" + file);
    if (!in)
        return false;
    QuietCerr quiet;
    ProteinSequenceSet all;
    all.read_fasta_file(in);
    for (std::size_t i = 0; i < n && i < all.size(); ++i) {
        out.push_back(all[i]);
        out.m_names.push_back(all.m_names[i]);
    }
    return true;
}

// Row r of an alignment of digit sequences: the digits, '-' for a gap.
inline std::string msa_row(const SeqMultiAlign& msa, const SymbolSequenceSet& seqs, int r) {
    std::string row;
    for (int c = 0; c < msa.num_cols(); ++c)
        row.push_back(msa.slot(r, c) < 0 ? '-'
                                         : static_cast<char>('0' + seqs[msa.seq_id(r)][msa.slot(r, c)]));
    return row;
}

// The classic 18 rolls in codes (a six is code 5).
inline const char* casino_rolls() { return "055545523405555012"; }

#endif
