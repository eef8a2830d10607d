// The ISA refinement on a planted module: convergence to it from a partial seed with stray genes,
// the pass count of a stable property set, and the stop under MinNumProps.
#include "ISASeedOpti.h"

#include "PropFixture.h"
#include "ds/BitVecIter.h"

#include <random>

namespace {

// 30 properties, 100 genes; properties 0-4 reach genes 0-19 (the module), every other pair is an
// edge with probability 0.05. An edge weighs 2, a non-edge -0.2, whatever the bin.
struct ModuleWorld {
    static constexpr int kProps = 30, kGenes = 100, kModProps = 5, kModGenes = 20;
    ModuleWorld() : universe(nullptr) {
        Quiet q;
        universe.init_idspace(kGenes);
        g.reset(new PropVarGraphLayers(universe, bic_options(""), "Default"));
        g->allocate_max_prop_group(1, kProps);
        for (int p = 0; p < kProps; ++p)
            g->add_prop_node_to_group(0, p);
        g->update_max_vid();
        for (int v = 0; v < kGenes; ++v)
            g->add_var_node_to_group(0, v);
        std::mt19937 rng(2024);
        std::uniform_real_distribution<float> u(0.0f, 1.0f);
        for (int p = 0; p < kProps; ++p)
            for (int v = 0; v < kGenes; ++v)
                if ((p < kModProps && v < kModGenes) || u(rng) < 0.05f)
                    g->add_edge(p, gene(v), 1.0f, 1.0f);
        wgt.reset(new TableWgt(*g));
        for (int p = 0; p < kProps; ++p)
            for (int b = 0; b < kGenes; ++b) {
                wgt->m_edge(p, b) = 2.0f;
                wgt->m_non(p, b) = -0.2f;
            }
    }
    int gene(int v) const { return kProps + v; }
    VarUniverse universe;
    std::unique_ptr<PropVarGraphLayers> g;
    std::unique_ptr<TableWgt> wgt;
};

std::string isa_scope(const std::string& name, int min_props) {
    return "[" + name +
           "]\nTG = 2.0\nPropSetInterToConverg = 0.0\nInitTCFactor = 0.8\nMinTC = 1.0\nInitTGFactor = 0.5\n"
           "MinTG = 1.5\nStableIterToStop = 2\nMaxIters = 30\nMinNumProps = " +
           std::to_string(min_props) + "\nLogit = 0\n";
}

int count_of(const std::string& text, const std::string& word) {
    int n = 0;
    for (size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1))
        ++n;
    return n;
}

} // namespace

TEST(ISASeedOpti, ConvergesOnPlantedModuleAndStopsUnderMinNumProps) {
    ModuleWorld w;
    options& opts = bic_options(isa_scope("Isa", 2) + isa_scope("Isa6", 6));
    // Seed: two module properties, five module genes and two stray genes.
    PropVarBiclust seed(*w.g, *w.wgt, nullptr, nullptr);
    seed.add_prop_node(0);
    seed.add_prop_node(3);
    for (int v : {2, 5, 7, 11, 13, 50, 77})
        seed.add_var_node(w.gene(v));
    const PropVarBiclust start = seed;

    ISASeedOpti isa(*w.g, *w.wgt, opts, "Isa");
    Quiet q;
    isa.grow(seed);
    const std::string log = q.done();
    ASSERT_EQ(seed.m_exps.on_bits(), ModuleWorld::kModProps);
    for (int p = 0; p < ModuleWorld::kModProps; ++p)
        EXPECT_TRUE(seed.m_exps.get_ind(p)) << p;
    ASSERT_EQ(seed.m_vars.on_bits(), ModuleWorld::kModGenes);
    for (int v = 0; v < ModuleWorld::kModGenes; ++v)
        EXPECT_TRUE(seed.m_vars.get_ind(w.gene(v))) << v;
    EXPECT_TRUE(seed.verify());
    // The property set changes in pass 0 only; two stable passes (1 and 2) end it.
    EXPECT_EQ(count_of(log, "ISA iter "), 3) << log;
    EXPECT_EQ(count_of(log, "diff after init genes 0.6\n"), 1) << log;

    // Five properties pass the threshold, fewer than six: the first pass stops and the seed is empty.
    PropVarBiclust again = start;
    ISASeedOpti strict(*w.g, *w.wgt, opts, "Isa6");
    Quiet q2;
    strict.grow(again);
    const std::string log2 = q2.done();
    EXPECT_EQ(again.m_exps.on_bits() + again.m_vars.on_bits(), 0);
    EXPECT_EQ(count_of(log2, "ISA iter "), 1) << log2;
    EXPECT_EQ(strict.m_props.on_bits(), ModuleWorld::kModProps);
}

TEST(ISASeedOpti, ScoresAreMarginsAgainstTheWeightedSets) {
    // One pass by hand on the module world: with genes 0-19 inside, a property's score is its margin
    // against them; with properties 0-4 inside, a gene's is its margin against those.
    ModuleWorld w;
    ISASeedOpti isa(*w.g, *w.wgt, bic_options(isa_scope("Isa", 2)), "Isa");
    isa.size_vectors();
    PropVarBiclust b(*w.g, *w.wgt, nullptr, nullptr);
    for (int v = 0; v < ModuleWorld::kModGenes; ++v) {
        isa.add_gene_node(w.gene(v), 1.0f);
        b.add_var_node(w.gene(v));
    }
    isa.restimate_prop_stats();
    for (int p = 0; p < ModuleWorld::kProps; ++p) {
        int edges = 0;
        for (int v = 0; v < ModuleWorld::kModGenes; ++v)
            edges += w.g->get_edge(p, w.gene(v)) != -1;
        EXPECT_NEAR(isa.m_prop_score[p], -0.2 * 20 + 2.2 * edges, 1e-4) << p;
        EXPECT_NEAR(isa.m_prop_score[p], b.get_prop_margin(p), 1e-4) << p;
    }
    for (int p = 0; p < ModuleWorld::kModProps; ++p) {
        isa.m_props.set_ind(p);
        b.add_prop_node(p);
    }
    isa.restimate_gene_stats();
    for (int v = 0; v < ModuleWorld::kGenes; ++v) {
        int edges = 0;
        for (int p = 0; p < ModuleWorld::kModProps; ++p)
            edges += w.g->get_edge(p, w.gene(v)) != -1;
        EXPECT_NEAR(isa.m_gene_score[w.gene(v)], -0.2 * 5 + 2.2 * edges, 1e-4) << v;
    }
}
