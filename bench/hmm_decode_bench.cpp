// Times the HMM decoders and one EM iteration on the casino (fair and loaded die) over a long run of
// sampled rolls, in CPU seconds; writes the rolls (digits 0-5) for the GHMM driver beside it.
//
//   hmm_decode_bench [symbols (10^6)] [rolls file] 2>/dev/null      (see bench/hmm_bench.sh)
#include "HMM.h"
#include "HMMDecode.h"
#include "HMMEMBase.h"
#include "SymbolSequence.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <random>
#include <string>

namespace {

double cpu() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

void casino(HMM& h) {
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

} // namespace

int main(int argc, char** argv) {
    const long n = argc > 1 ? std::atol(argv[1]) : 1000000L;
    std::mt19937 rng(20261123);
    auto uni = [&rng]() { return rng() / 4294967296.0; };
    SymbolSequence rolls;
    rolls.reserve(static_cast<std::size_t>(n));
    bool loaded = false;
    for (long i = 0; i < n; ++i) {
        const double u = uni();
        const int r = loaded ? (u < 0.5 ? 5 : static_cast<int>((u - 0.5) / 0.1)) : static_cast<int>(u * 6.0);
        rolls.push_back(static_cast<char>(r > 5 ? 5 : r));
        loaded = loaded ? uni() < 0.9 : uni() < 0.05;
    }
    if (argc > 2) {
        std::ofstream out(argv[2]);
        for (char c : rolls)
            out << static_cast<char>('0' + c);
        out << '\n';
    }

    HMM h(6);
    casino(h);
    double t = cpu();
    HMMPath path;
    float v = ViterbiDecode(h).decode(rolls, path);
    std::printf("vesk\tviterbi\t%ld\t%.4f\t%.6f\n", n, cpu() - t, v);
    t = cpu();
    float f = ForwardDecode(h).decode(rolls);
    std::printf("vesk\tforward\t%ld\t%.4f\t%.6f\n", n, cpu() - t, f);
    t = cpu();
    float b = BackwardDecode(h).decode(rolls);
    std::printf("vesk\tbackward\t%ld\t%.4f\t%.6f\n", n, cpu() - t, b);

    SymbolSequenceSet seqs;
    seqs.push_back(rolls);
    HMMEMBase em(h, 0.0f, false);
    em.resize_tabs();
    t = cpu();
    em.expectation(seqs);
    em.maximization();
    std::printf("vesk\tem_iteration\t%ld\t%.4f\t%.6f\n", n, cpu() - t, h.m_adj[1].front().p);
    return 0;
}
