// Timed driver: condition-variable graph construction and weight tables (bins and reinit) on a
// synthetic 6,000 genes x 300 conditions table made here with a fixed seed. Prints wall times and
// the peak resident memory.
//
//   graph_weight_bench [genes] [conditions] [seed]
#include "BenchSynth.h"

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>

using bench::Mute;
using bench::peak_rss_kb;
using bench::seconds_since;

int main(int argc, char** argv) {
    const int genes = argc > 1 ? std::atoi(argv[1]) : 6000;
    const int conds = argc > 2 ? std::atoi(argv[2]) : 300;
    const unsigned seed = argc > 3 ? static_cast<unsigned>(std::atoi(argv[3])) : 20240611u;

    bench::SynthValSpace states;
    options& opts = bench::read_options(bench::graph_weight_options());

    auto t0 = std::chrono::steady_clock::now();
    VarUniverse universe(&states.vs);
    StateDataSetReal data(universe);
    {
        Mute m;
        universe.init_idspace(genes);
        data.set_max_eid(conds, 0.0f);
    }
    bench::fill_noise(data, genes, conds, seed, true);
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
