// Timed driver: the hash-seeded search with greedy growth on a synthetic 6,000 genes x 300 conditions
// table (standard normal noise, four planted modules, two of them overlapping, one down-regulated;
// both orientations on both sides). Prints the setup and search times, the table passes, the grows,
// the number of biclusters, the best Jaccard match of each planted module, and the peak resident
// memory.
//
//   hash_search_bench [genes] [conditions] [seed] [MaxHashSizeMB] [MaxNeigSize] [MaxGrowBics]
//
// Option choices. The edge threshold is 0.8 (an edge needs a value above about 1.7 standard
// deviations): at 0.2 a noise gene has edges to a fifth of all condition nodes (about 130 at 300
// conditions), a planted gene's module edges are a minority of its neighbourhood, and as the
// weights favour conditions of low in-degree the module edges are the lighter ones, the first to go
// when a neighbourhood is thinned. At 0.8 a noise gene keeps about 28 edges and a planted gene about
// 47, so MaxNeigSize 48 keeps whole neighbourhoods. Keys are condition pairs (MinHashSize =
// MaxHashSize = 2): with a whole neighbourhood every gene of a module reaches every pair of its
// module, while triples of 48 conditions (17,296 a gene) would overflow any table of reasonable
// size and the first full table would drop the size to pairs anyway. The pair table (at most
// 179,700 keys) never fills, so one pass sees every gene. MinVarSetSize 60 asks a seed to be shared
// by 1 % of the genes: noise pairs gather about 26 genes, planted pairs well over 100, so the
// optimiser is run on seeds, not on noise.
#include "BenchSynth.h"
#include "BicGreedyOpt.h"
#include "HashBiclust.h"
#include "Random.h"
#include "ds/BitVecIter.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <set>
#include <sstream>

using bench::Mute;
using bench::seconds_since;

namespace {

size_t count_of(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t p = text.find(what); p != std::string::npos; p = text.find(what, p + 1))
        ++n;
    return n;
}

struct Module {
    int gene0, genes, cond0, conds;
    float shift;
};

} // namespace

int main(int argc, char** argv) {
    const int genes = argc > 1 ? std::atoi(argv[1]) : 6000;
    const int conds = argc > 2 ? std::atoi(argv[2]) : 300;
    const unsigned seed = argc > 3 ? static_cast<unsigned>(std::atoi(argv[3])) : 20240611u;
    const int mb = argc > 4 ? std::atoi(argv[4]) : 200;
    const int neig = argc > 5 ? std::atoi(argv[5]) : 48;
    const int grow = argc > 6 ? std::atoi(argv[6]) : 2;

    bench::SynthValSpace states;

    std::ostringstream t;
    t << bench::graph_weight_options("0.8") << bench::greedy_options() << "[Hash]\nMaxNeigSize = " << neig
      << "\nMinHashDegree = 3\nMaxHashDegree = " << conds
      << "\nMaxHashSize = 2\nMinHashSize = 2\nMaxHashSizeMB = " << mb
      << "\nFocusallExp = 1\nFocusallVar = 0\nDesiredIterNum = 4\nMaxGrowBics = " << grow
      << "\nMinVarSetSize = 60\nShouldGreedy = 1\nNBestEach = " << grow
      << "\nLogit = 0\nActiveExpGroup = { i 2\n0 1\n}\nActiveVarGroup = { i 2\n0 1\n}\n";
    options& opts = bench::read_options(t.str());

    const std::vector<Module> modules = {{0, genes / 30, 0, conds / 15, 2.5f},
                                         {genes / 60, genes / 40, conds / 30, conds / 20, 2.5f},
                                         {genes / 2, genes / 60, conds / 2, conds / 25, -2.5f},
                                         {genes / 3, genes / 20, conds / 4, conds / 30, 2.5f}};

    auto t0 = std::chrono::steady_clock::now();
    VarUniverse universe(&states.vs);
    StateDataSetReal data(universe);
    const bench::SynthGraph synth = bench::build_synth(universe, data, opts, genes, conds, [&] {
        bench::fill_noise(data, genes, conds, seed, false);
        for (const Module& md : modules)
            for (int v = md.gene0; v < md.gene0 + md.genes; ++v)
                for (int e = md.cond0; e < md.cond0 + md.conds; ++e)
                    data.m_data(v, e) += md.shift;
    });
    ExpVarGraphACO* const graph = synth.graph;
    WgtSchemeGroupIndeg* const wgt = synth.wgt;
    const double t_setup = seconds_since(t0);
    std::cout << "table " << genes << " x " << conds << " seed " << seed << " MaxHashSizeMB " << mb
              << " MaxNeigSize " << neig << " MaxGrowBics " << grow << "\n"
              << "nodes " << graph->nodes_num() << " (" << graph->m_max_exp_node << " conditions) edges "
              << graph->edges_num() << "\nsetup  " << t_setup << " s" << std::endl;

    Random::reset(static_cast<int>(seed));
    t0 = std::chrono::steady_clock::now();
    BicGreedyOpt* opt;
    HashBiclust* hash;
    std::string log;
    {
        Mute m;
        opt = new BicGreedyOpt(*graph, *wgt, opts, "Greedy", true);
        hash = new HashBiclust(*graph, *wgt, *opt, opts, "Hash");
        hash->reduce_bic_set(0.5f);
        log = m.sink.str();
    }
    const double t_search = seconds_since(t0);

    std::cout << "search " << t_search << " s: " << count_of(log, "finish hashing iter at ")
              << " table passes, " << hash->m_cand_count << " candidates, " << count_of(log, "finish growing")
              << " grows, " << hash->m_bics.size() << " biclusters after reduction\n";
    for (size_t k = 0; k < modules.size(); ++k) {
        const Module& md = modules[k];
        double best = 0.0;
        for (const ExpVarBiclust& b : hash->m_bics) {
            long inter_g = 0, inter_c = 0, ng = b.m_vars.on_bits(), nc = b.m_exps.on_bits();
            for (ds_bitvec_iter v(b.m_vars); v; ++v)
                inter_g += graph->node_var(v) >= md.gene0 && graph->node_var(v) < md.gene0 + md.genes;
            for (ds_bitvec_iter e(b.m_exps); e; ++e)
                inter_c += graph->node_exp(e) >= md.cond0 && graph->node_exp(e) < md.cond0 + md.conds;
            const double inter = static_cast<double>(inter_g) * inter_c;
            const double uni =
                static_cast<double>(ng) * nc + static_cast<double>(md.genes) * md.conds - inter;
            best = std::max(best, uni > 0 ? inter / uni : 0.0);
        }
        std::cout << "module " << k << " (" << md.genes << " x " << md.conds << "): best Jaccard " << best
                  << "\n";
    }
    std::cout << "peak resident memory " << bench::peak_rss_kb() / 1024.0 << " MB" << std::endl;
    return 0;
}
