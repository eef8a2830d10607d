// Tests of the Viterbi, forward and backward decoders: published casino figures, random models
// against the float32 model of tests/hmm/hmm_ref.py, brute-force path enumeration, edge cases and
// fatal texts.
#include "HMMDecode.h"
#include "HMMTestUtil.h"
#include "LogSpace.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <functional>
#include <random>
#include <vector>

namespace {

void expect_rel(double expected, double actual, double tol, const std::string& what) {
    if (!std::isfinite(expected)) {
        EXPECT_EQ(expected, actual) << what;
        return;
    }
    EXPECT_NEAR(expected, actual, tol * std::max(1.0, std::fabs(expected))) << what;
}

// The published figures, and table cells by hand.
TEST(HMMDecode, CasinoPublishedFigures) {
    QuietCerr quiet;
    HMM h(6);
    build_casino(h);
    ViterbiDecode vit(h);
    ForwardDecode fwd(h);
    BackwardDecode bwd(h);
    const SymbolSequence rolls = digits(casino_rolls());
    HMMPath path;
    const float v = vit.decode(rolls, path);
    const float f = fwd.decode(rolls);
    const float b = bwd.decode(rolls);
    EXPECT_NEAR(-29.4458664, v, 29.4458664e-5);
    EXPECT_NEAR(-27.9527780, f, 27.9527780e-5);
    EXPECT_NEAR(f, b, 27.9527780e-5);
    // Every roll is best explained by the loaded die.
    HMMPath expected(19, 2);
    expected.front() = 0;
    EXPECT_EQ(expected, path);
    ASSERT_EQ(20u * 4u, fwd.m_tab.size());
    // Row 1 of forward: start edge plus first emission; row L of backward: the finish edges.
    EXPECT_FLOAT_EQ(logf(0.5f) + logf(1.0f / 6.0f), fwd.get_cell(1, 1));
    EXPECT_FLOAT_EQ(logf(0.5f) + logf(0.1f), fwd.get_cell(1, 2));
    EXPECT_EQ(0.0f, bwd.get_cell(18, 1));
    EXPECT_EQ(kLogZero, fwd.get_cell(0, 1));
}

// Floats go through strtof, which also reads "-inf".
float read_float(std::istream& in) {
    std::string w;
    in >> w;
    return std::strtof(w.c_str(), nullptr);
}

// Each case of data/hmm/random_decode.txt: the model, the sequence, then the float32 model's
// Viterbi score and path, forward and backward.
TEST(HMMDecode, RandomModelsMatchFloat32Model) {
    std::ifstream in(source_dir() + "/data/hmm/random_decode.txt");
    ASSERT_TRUE(in) << "data/hmm/random_decode.txt missing";
    QuietCerr quiet;
    std::string w;
    std::getline(in, w); // the comment line
    int cases = 0, id, A, S, n, x;
    while (in >> w >> id >> w >> A >> w >> S >> w) {
        SCOPED_TRACE("case " + std::to_string(id));
        HMM h(A);
        // The decoders are made before the states exist: each decode re-reads the state count.
        ViterbiDecode vit(h);
        ForwardDecode fwd(h);
        BackwardDecode bwd(h);
        std::vector<int> silent(S);
        for (int& k : silent)
            in >> k;
        for (int k = 1; k < S - 1; ++k)
            h.new_state(silent[k] != 0);
        h.add_finish_state();
        for (in >> w >> n; n > 0; --n) {
            int from, to;
            in >> from >> to;
            h.add_transition(from, to, read_float(in));
        }
        for (in >> w >> n; n > 0; --n)
            for (int b = (in >> x, 0); b < A; ++b)
                h.set_state_emission(x, b, read_float(in));
        SymbolSequence seq;
        for (in >> w >> n; n > 0 && in >> x; --n)
            seq.push_back(static_cast<char>(x));
        in >> w;
        const float viterbi = read_float(in);
        in >> w >> n;
        HMMPath want(n), path;
        for (int& k : want)
            in >> k;
        in >> w;
        const float forward = read_float(in);
        in >> w;
        const float backward = read_float(in);
        ASSERT_TRUE(static_cast<bool>(in));
        EXPECT_EQ(viterbi, vit.decode(seq, path));
        EXPECT_EQ(want, path);
        expect_rel(forward, fwd.decode(seq), 1e-5, "forward");
        expect_rel(backward, bwd.decode(seq), 1e-5, "backward");
        ++cases;
    }
    EXPECT_EQ(300, cases);
}

// A random model of n states after the start (silent ones never first), the finish last. Out-edges
// sum to 1, some of probability 0 with `zeros`; a silent state is entered from lower ids only, and
// from the start only with `silent_from_start`. Paths exist through the edges above 0: from the start
// to each emitting state and to the finish, emitting self-loops, and every state to the finish.
void random_model(HMM& h, std::mt19937& rng, int n, int silent_one_in, bool zeros, bool silent_from_start) {
    auto uni = [&rng]() { return static_cast<float>(rng() / 4294967296.0); };
    for (int k = 0; k < n; ++k)
        h.new_state(k > 0 && rng() % silent_one_in == 0);
    h.add_finish_state();
    const int S = h.num_states(), fin = h.m_finish_state, A = h.m_alphabet_size;
    for (int k = 0; k < fin; ++k) {
        std::vector<int> to;
        std::vector<float> w;
        float sum = 0.0f;
        for (int t = 1; t < S; ++t) {
            const bool silent = h.m_states[t].m_silent;
            const bool needed = t == fin || (!silent && (k == 0 || t == k));
            if (needed || ((!silent || (t > k && (k > 0 || silent_from_start))) && rng() % 3 == 0)) {
                to.push_back(t);
                w.push_back(zeros && !needed && rng() % 4 == 0 ? 0.0f : 0.05f + uni());
                sum += w.back();
            }
        }
        for (std::size_t j = 0; j < to.size(); ++j)
            h.add_transition(k, to[j], w[j] / sum);
        for (int b = 0; b < A && k > 0; ++b)
            h.set_state_emission(k, b, 0.05f + uni() / static_cast<float>(A));
    }
}

SymbolSequence random_symbols(std::mt19937& rng, int A, int max_len) {
    SymbolSequence x;
    for (int i = static_cast<int>(rng() % (max_len + 1)); i > 0; --i)
        x.push_back(static_cast<char>(rng() % A));
    return x;
}

// Tiny random models without silent states entered from the start: there the Viterbi score is the
// best of all enumerated paths and forward their log-sum.
TEST(HMMDecode, TinyModelsEqualPathEnumeration) {
    const std::uint32_t seed = test_seed(777);
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 rng(seed);
    QuietCerr quiet;
    for (int rep = 0; rep < 600; ++rep) {
        SCOPED_TRACE("rep " + std::to_string(rep));
        HMM h(2 + static_cast<int>(rng() % 2));
        random_model(h, rng, 1 + static_cast<int>(rng() % 3), 3, false, false);
        const SymbolSequence x = random_symbols(rng, h.m_alphabet_size, 4);
        const int L = static_cast<int>(x.size()), fin = h.m_finish_state;
        // Every path from the start to the finish that emits exactly x.
        float best = kLogZero;
        double total = 0;
        std::function<void(int, int, float, double)> walk = [&](int s, int pos, float score, double prob) {
            for (const HMMAdjacency& a : h.m_adj[s]) {
                const HMMState& to = h.m_states[a.to];
                if (a.to == fin) {
                    if (pos == L) {
                        best = std::max(best, a.log_p + score);
                        total += prob * a.p;
                    }
                } else if (to.m_silent) {
                    walk(a.to, pos, score + a.log_p, prob * a.p);
                } else if (pos < L) {
                    const int sym = x.code_at(pos);
                    walk(a.to, pos + 1, score + a.log_p + to.m_log_emit[sym], prob * a.p * to.m_emit[sym]);
                }
            }
        };
        walk(0, 0, 0.0f, 1.0);
        HMMPath path;
        EXPECT_EQ(best, ViterbiDecode(h).decode(x, path));
        expect_rel(std::log(total), ForwardDecode(h).decode(x), 1e-5, "forward");
    }
}

// The recursions written plainly: whole tables filled first, edges walked in the model's lists, the
// log-sum by its formula alone. Returns V, its traceback, F and B as flat tables.
struct PlainTabs {
    std::vector<float> v, f, b;
    std::vector<int> trace;
};
PlainTabs plain_tabs(const HMM& h, const SymbolSequence& x) {
    auto lsum = [](float a, float c) {
        const float hi = std::max(a, c), lo = std::min(a, c);
        return std::isinf(lo) ? hi : hi + logf(1.0f + expf(lo - hi));
    };
    const int S = h.num_states(), L = static_cast<int>(x.size()), fin = h.m_finish_state;
    const std::size_t n = static_cast<std::size_t>(L + 2) * S;
    PlainTabs t{std::vector<float>(n, -4.2535293e37f), std::vector<float>(n, kLogZero),
                std::vector<float>(n, kLogZero), std::vector<int>(n, -1)};
    auto at = [S](int i, int k) { return static_cast<std::size_t>(i) * S + k; };
    t.v[0] = 0.0f;
    t.f[0] = 0.0f;
    for (int i = 1; i <= L; ++i)
        for (int pass = 0; pass < 2; ++pass) // emitting states, then silent ones
            for (int k = 1; k < S; ++k) {
                const HMMState& st = h.m_states[k];
                if (!st.m_active || st.m_silent != (pass == 1))
                    continue;
                const int r = pass == 0 ? i - 1 : i;
                float best = kLogZero, acc = kLogZero;
                for (const HMMAdjacency& a : h.m_back_adj[k]) {
                    if (t.v[at(r, a.from)] + a.log_p > best) {
                        best = t.v[at(r, a.from)] + a.log_p;
                        t.trace[at(i, k)] = a.from;
                    }
                    acc = lsum(acc, t.f[at(r, a.from)] + a.log_p);
                }
                const float e = pass == 0 ? st.m_log_emit[x.code_at(i - 1)] : 0.0f;
                t.v[at(i, k)] = pass == 0 ? best + e : best;
                t.f[at(i, k)] = pass == 0 ? acc + e : acc;
            }
    t.b[at(L + 1, fin)] = 0.0f;
    t.b[at(L, fin)] = 0.0f;
    for (const HMMAdjacency& a : h.m_back_adj[fin])
        t.b[at(L, a.from)] = a.log_p;
    for (int i = L - 1; i >= 0; --i)
        for (int k = S - 2; k >= 1; --k) {
            if (!h.m_states[k].m_active)
                continue;
            float acc = kLogZero;
            for (const HMMAdjacency& a : h.m_adj[k]) {
                const HMMState& to = h.m_states[a.to];
                acc = lsum(acc, to.m_silent ? a.log_p + t.b[at(i, a.to)]
                                            : a.log_p + t.b[at(i + 1, a.to)] + to.m_log_emit[x.code_at(i)]);
            }
            t.b[at(i, k)] = acc > 0.0f ? 0.0f : acc;
        }
    return t;
}

// Every cell of the three tables equals the plain recursions, for fresh decoders and for decoders
// whose tables held a longer or a shorter sequence before; the one difference is forward's finish
// cell, which a finish state without out-edges gets in row L only.
TEST(HMMDecode, TablesEqualPlainRecursionsCellByCell) {
    const std::uint32_t seed = test_seed(4242);
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 rng(seed);
    QuietCerr quiet;
    for (int rep = 0; rep < 200; ++rep) {
        SCOPED_TRACE("rep " + std::to_string(rep));
        HMM h(2 + static_cast<int>(rng() % 3));
        const int n = 1 + static_cast<int>(rng() % 8);
        random_model(h, rng, n, 4, true, true);
        if (n > 2 && rng() % 4 == 0)
            h.del_state(1 + static_cast<int>(rng() % (n - 1)));
        const int S = h.num_states(), fin = h.m_finish_state;
        ViterbiDecode vit(h);
        ForwardDecode fwd(h);
        BackwardDecode bwd(h);
        for (int call = 0; call < 3; ++call) {
            const SymbolSequence x = random_symbols(rng, h.m_alphabet_size, 29);
            const int L = static_cast<int>(x.size());
            const PlainTabs want = plain_tabs(h, x);
            HMMPath path;
            vit.decode(x, path);
            fwd.decode(x);
            bwd.decode(x);
            ASSERT_EQ(want.v.size(), vit.m_tab.size());
            ASSERT_EQ(want.f.size(), fwd.m_tab.size());
            ASSERT_EQ(want.b.size(), bwd.m_tab.size());
            for (int i = 0; i < L + 2; ++i)
                for (int k = 0; k < S; ++k) {
                    const std::size_t c = static_cast<std::size_t>(i) * S + k;
                    const float f = k == fin && i < L ? kLogZero : want.f[c];
                    ASSERT_EQ(want.v[c], vit.get_cell(i, k)) << "V " << i << " " << k;
                    ASSERT_EQ(want.trace[c], vit.get_traceback(i, k)) << "trace " << i << " " << k;
                    ASSERT_EQ(f, fwd.get_cell(i, k)) << "F " << i << " " << k;
                    ASSERT_EQ(want.b[c], bwd.get_cell(i, k)) << "B " << i << " " << k;
                }
        }
    }
}

// The traceback table narrows with the state count: a path through the highest emitting id and a
// silent state just below the finish, on models of 200, 300 and 70,000 states.
TEST(HMMDecode, TracebackHoldsHighStateIds) {
    QuietCerr quiet;
    for (int n : {200, 300, 70000}) {
        SCOPED_TRACE(n);
        HMM h(2);
        for (int k = 1; k < n - 1; ++k)
            h.new_state(false);
        const int e = h.new_state(false), s = h.new_state(true);
        h.add_finish_state();
        h.add_transition(0, 1, 0.5f);
        h.add_transition(0, e, 0.5f);
        h.add_transition(e, e, 0.5f);
        h.add_transition(e, s, 0.5f);
        h.add_transition(s, h.m_finish_state, 1.0f);
        h.set_state_emission(e, 0, 1.0f);
        h.set_state_emission(1, 0, 0.5f);
        HMMPath path;
        const float half = logf(0.5f);
        EXPECT_EQ(half + half + half, ViterbiDecode(h).decode(digits("00"), path));
        EXPECT_EQ((HMMPath{0, e, e, s}), path);
    }
}

TEST(HMMDecode, EmptySequenceEndsFromTheStartOnly) {
    QuietCerr quiet;
    HMM h(2);
    const int s = h.new_state(false);
    h.add_finish_state();
    h.add_transition(0, s, 0.7f);
    h.add_transition(0, h.m_finish_state, 0.3f);
    h.add_transition(s, h.m_finish_state, 1.0f);
    h.set_state_emission(s, 0, 0.5f);
    h.set_state_emission(s, 1, 0.5f);
    const SymbolSequence empty;
    HMMPath path{9};
    EXPECT_FLOAT_EQ(std::log(0.3f), ViterbiDecode(h).decode(empty, path));
    EXPECT_EQ((HMMPath{9, 0}), path); // appended after what the path held
    EXPECT_FLOAT_EQ(std::log(0.3f), ForwardDecode(h).decode(empty));
    EXPECT_FLOAT_EQ(std::log(0.3f), BackwardDecode(h).decode(empty));
}

TEST(HMMDecode, SilentEdgeFromHigherToLowerIdIsIgnored) {
    // 0 -> 1 (emits) -> 3 (silent) -> 2 (silent) -> finish, beside 1 -> finish: only the direct end
    // counts, in all three decoders.
    QuietCerr quiet;
    HMM h(1);
    const int e = h.new_state(false);
    const int low = h.new_state(true);
    const int high = h.new_state(true);
    h.add_finish_state();
    const int fin = h.m_finish_state;
    h.add_transition(0, e, 1.0f);
    h.add_transition(e, high, 0.5f);
    h.add_transition(e, fin, 0.5f);
    h.add_transition(high, low, 1.0f);
    h.add_transition(low, fin, 1.0f);
    h.set_state_emission(e, 0, 0.25f);
    const SymbolSequence one = digits("0");
    const float expected = logf(0.5f) + logf(0.25f);
    HMMPath path;
    EXPECT_EQ(expected, ViterbiDecode(h).decode(one, path));
    EXPECT_EQ((HMMPath{0, e}), path);
    EXPECT_FLOAT_EQ(expected, ForwardDecode(h).decode(one));
    EXPECT_FLOAT_EQ(expected, BackwardDecode(h).decode(one));
}

// Counts the writes that reach a stream buffer.
class CountingBuf : public std::streambuf {
public:
    int m_writes = 0;
    std::string m_text;

protected:
    std::streamsize xsputn(const char* s, std::streamsize n) override {
        ++m_writes;
        m_text.append(s, static_cast<std::size_t>(n));
        return n;
    }
    int_type overflow(int_type c) override {
        ++m_writes;
        if (c != traits_type::eof())
            m_text.push_back(static_cast<char>(c));
        return traits_type::not_eof(c);
    }
};

TEST(HMMDecode, RowTraceIsOneWritePerDecode) {
    HMM h(6);
    build_casino(h);
    std::string rolls(5000, '\0');
    for (std::size_t i = 0; i < rolls.size(); ++i)
        rolls[i] = static_cast<char>(i * 7 % 6);
    CountingBuf buf;
    std::streambuf* old = std::cerr.rdbuf(&buf);
    ForwardDecode(h).decode(SymbolSequence(rolls));
    std::cerr.rdbuf(old);
    EXPECT_NE(std::string::npos, buf.m_text.find("i = 1\ni = 2\n"));
    EXPECT_NE(std::string::npos, buf.m_text.find("i = 5000\n"));
    EXPECT_LT(buf.m_writes, 10);
}

TEST(HMMDecodeDeathTest, FatalTexts) {
    // Each case builds a one-state model, lets `spoil` break it and runs one decoder.
    struct Case {
        const char* what;
        std::function<void(HMM&)> spoil;
        std::string seq;
        int decoder; // 0 Viterbi, 1 forward, 2 backward
        const char* regex;
    };
    const std::vector<Case> cases = {
        {"unset emission", [](HMM& h) { h.m_states[1].m_log_emit[1] = 1.0f; }, "1", 1,
         R"(HMMDecode\([0-9]+\): Log emission is > 0 at state 1 x_i 1 1)"},
        {"forward edge above 1", [](HMM& h) { h.add_transition(0, 1, 2.0f); }, "0", 1,
         R"(HMMDecode\([0-9]+\): Log prob > 0 at k = 0 to 1)"},
        {"finish edge above 1, met in row 1 before an unset emission in row 2",
         [](HMM& h) {
             h.add_transition(1, 2, 2.0f);
             h.m_states[1].m_log_emit[1] = 1.0f;
         },
         "01", 1, R"(HMMDecode\([0-9]+\): Log prob > 0 at k = 1 to 2)"},
        {"viterbi edge above 1", [](HMM& h) { h.add_transition(0, 1, 2.0f); }, "0", 0,
         R"(HMMDecode\([0-9]+\): positive log prob 0\.693147 v tab 0 adj 0\.693147)"},
        {"no path for the empty sequence", [](HMM&) {}, "", 0,
         R"(HMMDecode\([0-9]+\): Negative traceback -1)"},
        {"backward above 0.001",
         [](HMM& h) {
             h.add_transition(1, 1, 1.0f);
             h.set_state_emission(1, 0, 2.0f);
         },
         "00", 2, R"(HMMDecode\([0-9]+\): Back Decode, Positive log prob! 0\.693147 i 1 st 1)"},
        {"no finish state", [](HMM& h) { h.del_finish_state(); }, "0", 1,
         R"(HMMDecode\([0-9]+\): Decoding a model without a finish state)"},
        {"loop of silent pointers",
         [](HMM& h) {
             // The emitting state loses its way to the finish; silent 2 and 3 point at each other.
             h.del_finish_state();
             const int a = h.new_state(true), b = h.new_state(true);
             h.add_finish_state();
             h.add_transition(b, a, 1.0f);
             h.add_transition(a, b, 1.0f);
             h.add_transition(a, h.m_finish_state, 1.0f);
         },
         "0", 0, R"(HMMDecode\([0-9]+\): Traceback does not reach the start state)"},
        {"symbol outside the alphabet", [](HMM&) {}, "2", 0,
         R"(HMMDecode\([0-9]+\): Symbol 2 at position 0 outside the alphabet of size 2)"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        auto run = [&c]() {
            HMM h(2);
            const int s = h.new_state(false);
            h.add_finish_state();
            h.add_transition(0, s, 1.0f);
            h.add_transition(s, h.m_finish_state, 1.0f);
            h.set_state_emission(s, 0, 0.5f);
            h.set_state_emission(s, 1, 0.5f);
            c.spoil(h);
            const SymbolSequence x = digits(c.seq);
            HMMPath path;
            if (c.decoder == 0)
                ViterbiDecode(h).decode(x, path);
            else if (c.decoder == 1)
                ForwardDecode(h).decode(x);
            else
                BackwardDecode(h).decode(x);
        };
        EXPECT_DEATH(run(), c.regex);
    }
}

} // namespace
