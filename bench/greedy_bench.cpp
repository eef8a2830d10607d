// Timed driver: greedy growth of biclusters on a synthetic 6,000 genes x 300 conditions table (noise
// with a shifted module of a tenth of the genes in a tenth of the conditions, both orientations on
// both sides), each from a random seed: even growths draw the seed's condition and variable nodes
// inside the module (positive orientation), odd growths anywhere in the graph. Prints, per growth,
// the moves made and refused, the wall time and the moves per second, and the final score and sizes.
//
//   greedy_bench [genes] [conditions] [seed] [growths] [seed conditions] [seed variables]
#include "BenchSynth.h"
#include "BicGreedyOpt.h"
#include "ds/BitVecIter.h"

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <random>

using bench::Mute;
using bench::seconds_since;

int main(int argc, char** argv) {
    const int genes = argc > 1 ? std::atoi(argv[1]) : 6000;
    const int conds = argc > 2 ? std::atoi(argv[2]) : 300;
    const unsigned seed = argc > 3 ? static_cast<unsigned>(std::atoi(argv[3])) : 20240611u;
    const int growths = argc > 4 ? std::atoi(argv[4]) : 2;
    const int seed_conds = argc > 5 ? std::atoi(argv[5]) : 3;
    const int seed_vars = argc > 6 ? std::atoi(argv[6]) : 10;

    bench::SynthValSpace states;
    options& opts = bench::read_options(std::string(bench::graph_weight_options()) + bench::greedy_options());

    auto t0 = std::chrono::steady_clock::now();
    VarUniverse universe(&states.vs);
    StateDataSetReal data(universe);
    const bench::SynthGraph synth = bench::build_synth(
        universe, data, opts, genes, conds, [&] { bench::fill_noise(data, genes, conds, seed, true); });
    ExpVarGraphACO* const graph = synth.graph;
    WgtSchemeGroupIndeg* const wgt = synth.wgt;
    const double t_setup = seconds_since(t0);

    t0 = std::chrono::steady_clock::now();
    BicGreedyOpt* opt;
    {
        Mute m;
        opt = new BicGreedyOpt(*graph, *wgt, opts, "Greedy", true);
    }
    const double t_attach = seconds_since(t0);

    std::cout << "table " << genes << " x " << conds << " seed " << seed << "\n"
              << "nodes " << graph->nodes_num() << " (" << graph->m_max_exp_node << " conditions) edges "
              << graph->edges_num() << " bins " << wgt->m_bins.m_bin_num << "\n"
              << "setup     " << t_setup << " s\n"
              << "observers " << t_attach << " s\n";

    std::mt19937 pick(seed + 1);
    long total_moves = 0;
    double total_time = 0.0;
    for (int r = 0; r < growths; ++r) {
        ExpVarBiclust bic(*graph, *wgt);
        const bool in_module = r % 2 == 0;
        std::uniform_int_distribution<int> any_exp(0, graph->m_max_exp_node - 1);
        std::uniform_int_distribution<int> any_var(graph->m_max_exp_node, graph->m_node_count - 1);
        std::uniform_int_distribution<int> module_exp(0, conds / 10 - 1), module_var(0, genes / 10 - 1);
        while (bic.m_exps.on_bits() < seed_conds)
            bic.m_exps.set_ind(in_module ? graph->m_exp_group_nodes(0, module_exp(pick)) : any_exp(pick));
        while (bic.m_vars.on_bits() < seed_vars)
            bic.m_vars.set_ind(in_module ? graph->m_var_group_nodes(0, module_var(pick)) : any_var(pick));
        ExpVarBiclust start(*graph, *wgt);
        for (ds_bitvec_iter e(bic.m_exps); e; ++e)
            start.add_exp_node(e);
        for (ds_bitvec_iter v(bic.m_vars); v; ++v)
            start.add_var_node(v);
        const float before = start.m_score;
        t0 = std::chrono::steady_clock::now();
        {
            Mute m;
            opt->grow(start);
        }
        const double t = seconds_since(t0);
        total_moves += opt->m_moves;
        total_time += t;
        std::cout << "growth " << r << (in_module ? " (seed in the module)" : " (seed anywhere)")
                  << ": score " << before << " -> " << start.m_score << ", " << start.m_exps.on_bits()
                  << " conditions x " << start.m_vars.on_bits() << " variables; " << opt->m_moves
                  << " moves, " << opt->m_drops << " refused, " << t << " s, " << opt->m_moves / t
                  << " moves/s\n";
    }
    std::cout << "total " << total_moves << " moves in " << total_time << " s: " << total_moves / total_time
              << " moves/s" << std::endl;
    return 0;
}
