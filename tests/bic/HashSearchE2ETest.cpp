// The hash-seeded search end to end: a table with planted, overlapping biclusters, noise and
// missing values, searched with greedy growth; planted biclusters found again (recovery, by Jaccard
// index of cells).
#include "HashBiclust.h"

#include "BicSynth.h"
#include "Random.h"

#include <algorithm>
#include <set>

namespace {

// Cells as (gene, condition) pairs, orientation dropped.
std::set<std::pair<int, int>> cells_of(const Planting& p) {
    std::set<std::pair<int, int>> out;
    for (int g : p.genes)
        for (int c : p.conds)
            out.emplace(g, c);
    return out;
}
std::set<std::pair<int, int>> cells_of(const ExpVarBiclust& b) {
    std::set<std::pair<int, int>> out;
    for (ds_bitvec_iter v(b.m_vars); v; ++v)
        for (ds_bitvec_iter e(b.m_exps); e; ++e)
            out.emplace(b.m_graph.node_var(v), b.m_graph.node_exp(e));
    return out;
}
double jaccard(const std::set<std::pair<int, int>>& a, const std::set<std::pair<int, int>>& b) {
    size_t inter = 0;
    for (const auto& x : a)
        inter += b.count(x);
    const size_t uni = a.size() + b.size() - inter;
    return uni ? static_cast<double>(inter) / static_cast<double>(uni) : 0.0;
}
std::vector<int> range(int from, int to) {
    std::vector<int> r;
    for (int i = from; i < to; ++i)
        r.push_back(i);
    return r;
}

// 300 genes x 40 conditions of standard normal noise, 2% of cells missing; three modules: 30 x 8 up,
// 40 x 10 up overlapping the first in 10 genes and 3 conditions, 20 x 6 down.
const std::vector<Planting> kPlanted = {{range(0, 30), range(0, 8), 3.0f},
                                        {range(20, 60), range(5, 15), 3.0f},
                                        {range(100, 120), range(20, 26), -3.0f}};

options& e2e_options() {
    static options& o =
        bic_options("[Hash]\nMaxNeigSize = 14\nMinHashDegree = 3\nMaxHashDegree = 40\nMaxHashSize = 3\n"
                    "MinHashSize = 3\nMaxHashSizeMB = 20\nFocusallExp = 1\nFocusallVar = 1\n"
                    "DesiredIterNum = 2\nMaxGrowBics = 2\nMinVarSetSize = 4\nShouldGreedy = 1\n"
                    "NBestEach = 2\nLogit = 0\nActiveExpGroup = { i 2\n0 1\n}\n"
                    "ActiveVarGroup = { i 2\n0 1\n}\n" +
                    greedy_text("Greedy"));
    return o;
}

TEST(HashSearchE2E, PlantedBiclustersAreFound) {
    Synth p(40, 300, kPlanted, 31337, true, 0.8f, 0.02f);
    Random::reset(2024);
    Quiet q;
    BicGreedyOpt opt(*p.graph, *p.wgt, e2e_options(), "Greedy", true);
    HashBiclust h(*p.graph, *p.wgt, opt, e2e_options(), "Hash");
    h.reduce_bic_set(0.5f);
    q.done();
    ASSERT_FALSE(h.m_bics.empty());

    // Recovery: for each planted bicluster the best match among the found.
    double recovery = 0.0;
    for (const Planting& pl : kPlanted) {
        double best = 0.0;
        for (const ExpVarBiclust& b : h.m_bics)
            best = std::max(best, jaccard(cells_of(pl), cells_of(b)));
        EXPECT_GE(best, 0.6);
        recovery += best / static_cast<double>(kPlanted.size());
    }
    std::printf("[ hash search ] %zu biclusters, recovery %.3f\n", h.m_bics.size(), recovery);
    EXPECT_GE(recovery, 0.75);
}

} // namespace
