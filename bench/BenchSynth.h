// Shared set-up of the timed drivers: the three-state value space, the option text of the graph, bins,
// weights and greedy growth, the synthetic noise table, the graph and weights built on it, and the
// muting and timing helpers.
#ifndef VESK_BENCH_BENCHSYNTH_H
#define VESK_BENCH_BENCHSYNTH_H

#include "ArrayVarEC.h"
#include "ExpVarGraphACO.h"
#include "StateDataSetReal.h"
#include "ValSpaceProb.h"
#include "VarUniverse.h"
#include "WgtSchemeGroupIndeg.h"
#include "options.h"
#include "plinear.h"

#include <sys/resource.h>

#include <chrono>
#include <iostream>
#include <random>
#include <sstream>
#include <string>

namespace bench {

inline double seconds_since(std::chrono::steady_clock::time_point t0) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

inline long peak_rss_kb() {
    struct rusage ru;
    getrusage(RUSAGE_SELF, &ru);
    return ru.ru_maxrss;
}

// The components' progress lines go to the error stream; the drivers time the work, not the
// terminal, so the stream is muted (kept aside in `sink`) while a phase runs.
struct Mute {
    Mute() : old(std::cerr.rdbuf(sink.rdbuf())) {}
    ~Mute() { std::cerr.rdbuf(old); }
    std::ostringstream sink;
    std::streambuf* old;
};

// Three states: 0 down, 1 no change (the zero state), 2 up, as soft membership functions.
struct SynthValSpace {
    SynthValSpace() : vs(*new options, "", true) {
        down.init({-2.0f, -0.5f}, {1.0f, 0.0f});
        flat.init({-1.0f, 0.0f, 1.0f}, {0.0f, 1.0f, 0.0f});
        up.init({0.5f, 2.0f}, {0.0f, 1.0f});
        vs.init({&down, &flat, &up}, -4.0f, 1.0f, 4.0f, 0.01f, 0);
    }

    sf_plinear<2> down, up;
    sf_plinear<3> flat;
    ValSpaceProb vs;
};

// The graph (scope G), its bins (Bins) and the weights (W).
inline const char* graph_weight_options() {
    return "[G]\nLogit = 0\nEdgePThresh = 0.2\nEdgeNonZeroP = 0.3\nAllowConditionOrientation = 1\n"
           "AllowVarOrientation = 1\nExpCardinality = 2\nVarCardinality = 2\n"
           "Factors = { f 1\n1.0\n}\nStateOfGroupPair = { i 12\n0 0 2\n0 1 0\n1 0 0\n1 1 2\n}\n"
           "BuildEdgesFromFile = 0\n"
           "[Bins]\nMaxGroupBins = 20\nMinGroupInterval = 2\n"
           "[W]\nBinningScope = Bins\nMinimumPU = 0.001\nLogit = 0\nLimitNegPosRatio = 1\n"
           "MinNegWeightRatio = 0.5\nUseSeriesFactor = 0\nUseExpWeight = 0\nMaxPatchPU = 0.9\n";
}

// The same with another edge threshold of the graph (EdgePThresh, written as given).
inline std::string graph_weight_options(const std::string& edge_p_thresh) {
    std::string text = graph_weight_options();
    const std::string from = "EdgePThresh = 0.2\n";
    text.replace(text.find(from), from.size(), "EdgePThresh = " + edge_p_thresh + "\n");
    return text;
}

// The greedy growth (scope Greedy).
inline const char* greedy_options() {
    return "[Greedy]\nCanDelInitExp = 1\nCanAddExp = 1\nCanDelExp = 1\nCanDelInitVar = 1\nLogit = 0\n"
           "AddExpCostFactor = 1\nDelExpCostFactor = 1\n";
}

inline options& read_options(const std::string& text) {
    options& opts = *new options;
    std::istringstream in(text);
    opts.read(in, false);
    return opts;
}

// Standard normal noise from `seed`, variable by variable; with `tenth_block`, a tenth of the genes
// move together (shifted by 2) in a tenth of the conditions, as a module would.
inline void fill_noise(StateDataSetReal& data, int genes, int conds, unsigned seed, bool tenth_block) {
    std::mt19937 rng(seed);
    std::normal_distribution<float> noise(0.0f, 1.0f);
    for (int v = 0; v < genes; ++v)
        for (int e = 0; e < conds; ++e) {
            if (tenth_block)
                data.m_data(v, e) = noise(rng) + (v < genes / 10 && e < conds / 10 ? 2.0f : 0.0f);
            else
                data.m_data(v, e) = noise(rng);
        }
}

struct SynthGraph {
    ExpVarGraphACO* graph;
    ArrayVarEC* ec;
    WgtSchemeGroupIndeg* wgt;
};

// Sizes the table to genes x conds, fills it with fill(), and builds the graph (G), the classes and
// the weights (W, attached), all with the progress lines muted.
template <class Fill>
SynthGraph build_synth(VarUniverse& universe, StateDataSetReal& data, options& opts, int genes, int conds,
                       Fill fill) {
    Mute m;
    universe.init_idspace(genes);
    data.set_max_eid(conds, 0.0f);
    fill();
    SynthGraph s;
    s.graph = new ExpVarGraphACO(universe, data, opts, "G", true);
    s.ec = new ArrayVarEC(data);
    s.wgt = new WgtSchemeGroupIndeg(*s.graph, *s.ec, opts, "W", 0.3f, true);
    return s;
}

} // namespace bench

#endif
