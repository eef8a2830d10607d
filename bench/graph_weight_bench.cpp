// Timed driver: condition-variable graph construction and weight tables (bins and reinit) on a
// synthetic 6,000 genes x 300 conditions table made here with a fixed seed. Prints wall times and
// the peak resident memory.
//
//   graph_weight_bench [genes] [conditions] [seed]
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
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <random>
#include <sstream>

namespace {

double seconds_since(std::chrono::steady_clock::time_point t0) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

long peak_rss_kb() {
    struct rusage ru;
    getrusage(RUSAGE_SELF, &ru);
    return ru.ru_maxrss;
}

// The components' progress lines go to the error stream; the driver times the work, not the
// terminal, so the stream is muted while a phase runs.
struct Mute {
    Mute() : old(std::cerr.rdbuf(sink.rdbuf())) {}
    ~Mute() { std::cerr.rdbuf(old); }
    std::ostringstream sink;
    std::streambuf* old;
};

} // namespace

int main(int argc, char** argv) {
    const int genes = argc > 1 ? std::atoi(argv[1]) : 6000;
    const int conds = argc > 2 ? std::atoi(argv[2]) : 300;
    const unsigned seed = argc > 3 ? static_cast<unsigned>(std::atoi(argv[3])) : 20240611u;

    // Three states: 0 down, 1 no change (the zero state), 2 up, as soft membership functions.
    sf_plinear<2> down, up;
    sf_plinear<3> flat;
    down.init({-2.0f, -0.5f}, {1.0f, 0.0f});
    flat.init({-1.0f, 0.0f, 1.0f}, {0.0f, 1.0f, 0.0f});
    up.init({0.5f, 2.0f}, {0.0f, 1.0f});
    ValSpaceProb vs(*new options, "", true);
    vs.init({&down, &flat, &up}, -4.0f, 1.0f, 4.0f, 0.01f, 0);

    options& opts = *new options;
    std::istringstream text(
        "[G]\nLogit = 0\nEdgePThresh = 0.2\nEdgeNonZeroP = 0.3\nAllowConditionOrientation = 1\n"
        "AllowVarOrientation = 1\nExpCardinality = 2\nVarCardinality = 2\n"
        "Factors = { f 1\n1.0\n}\nStateOfGroupPair = { i 12\n0 0 2\n0 1 0\n1 0 0\n1 1 2\n}\n"
        "BuildEdgesFromFile = 0\n"
        "[Bins]\nMaxGroupBins = 20\nMinGroupInterval = 2\n"
        "[W]\nBinningScope = Bins\nMinimumPU = 0.001\nLogit = 0\nLimitNegPosRatio = 1\n"
        "MinNegWeightRatio = 0.5\nUseSeriesFactor = 0\nUseExpWeight = 0\nMaxPatchPU = 0.9\n");
    opts.read(text, false);

    auto t0 = std::chrono::steady_clock::now();
    VarUniverse universe(&vs);
    StateDataSetReal data(universe);
    {
        Mute m;
        universe.init_idspace(genes);
        data.set_max_eid(conds, 0.0f);
    }
    // Standard normal noise with a shifted block: a tenth of the genes move together in a tenth of
    // the conditions, as a module would.
    std::mt19937 rng(seed);
    std::normal_distribution<float> noise(0.0f, 1.0f);
    for (int v = 0; v < genes; ++v)
        for (int e = 0; e < conds; ++e)
            data.m_data(v, e) = noise(rng) + (v < genes / 10 && e < conds / 10 ? 2.0f : 0.0f);
    const double t_data = seconds_since(t0);

    t0 = std::chrono::steady_clock::now();
    ExpVarGraphACO* graph;
    {
        Mute m;
        graph = new ExpVarGraphACO(universe, data, opts, "G", true);
    }
    const double t_graph = seconds_since(t0);

    ArrayVarEC* ec;
    {
        Mute m;
        ec = new ArrayVarEC(data);
    }
    t0 = std::chrono::steady_clock::now();
    WgtSchemeGroupIndeg* wgt;
    {
        Mute m;
        wgt = new WgtSchemeGroupIndeg(*graph, *ec, opts, "W", 0.3f, false);
    }
    const double t_bins = seconds_since(t0);

    const int reps = 5;
    t0 = std::chrono::steady_clock::now();
    for (int r = 0; r < reps; ++r)
        wgt->reinit(opts, "W", 0.3f + 0.05f * r);
    const double t_reinit = seconds_since(t0) / reps;

    // A checksum of the bits of every table entry, to compare builds and methods.
    std::uint64_t check = 1469598103934665603ull;
    auto mix = [&check](float x) {
        std::uint32_t b;
        std::memcpy(&b, &x, sizeof b);
        check = (check ^ b) * 1099511628211ull;
    };
    for (int e = 0; e < graph->m_edge_count; ++e) {
        mix(wgt->get_edge_weight(e));
        mix(wgt->get_edge_cnc(e));
    }
    for (float x : wgt->m_edge_exp_weight.m_vals)
        mix(x);
    for (float x : wgt->m_non_edge_exp_weight.m_vals)
        mix(x);

    std::cout << "table " << genes << " x " << conds << " seed " << seed << "\n"
              << "nodes " << graph->nodes_num() << " edges " << graph->edges_num() << " bins "
              << wgt->m_bins.m_bin_num << "\n"
              << "data      " << t_data << " s\n"
              << "graph     " << t_graph << " s\n"
              << "bins      " << t_bins << " s\n"
              << "reinit    " << t_reinit << " s (mean of " << reps << ")\n"
              << "table checksum " << std::hex << check << std::dec << "\n"
              << "peak RSS  " << peak_rss_kb() / 1024.0 << " MiB" << std::endl;
    return 0;
}
