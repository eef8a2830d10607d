// PBicGreedyOpt: random grows verified at every step and checked for local optima by brute force, the
// step interface against grow with relations, blocking, complete_props, a planted property bicluster
// with a ranked PSSM layer, and the fatal paths.
#include "PBicGreedyOpt.h"
#include "PropFixture.h"
#include "ds/BitVecIter.h"

#include <cmath>
#include <map>
#include <random>
#include <set>
#include <sstream>

namespace {

// Scope "Greedy" with the given Logit and CanAddProp, other moves allowed; the relation cost in "Cost".
options& greedy_options(int logit, int can_add) {
    static std::map<int, options*> made;
    options*& o = made[2 * logit + can_add];
    if (!o)
        o = &bic_options("[Greedy]\nCanDelInitProp = 1\nCanAddProp = " + std::to_string(can_add) +
                         "\nCanDelProp = 1\nCanDelInitVar = 1\nLogit = " + std::to_string(logit) +
                         "\nAddPropCostFactor = 1\nDelPropCostFactor = 1\nBinRelGlobCostScope = Cost\n"
                         "[Cost]\nMinBrDeg = 1\nHGCacheTableM = 100\n");
    return *o;
}

// A seed of `props` random property nodes and `vars` random variable nodes.
PropVarBiclust random_seed(const RandomPropGraph& r, int props, int vars, std::mt19937& rng) {
    PropVarBiclust b(*r.g, *r.wgt, nullptr, nullptr);
    const int P = r.g->m_max_prop_node, V = r.g->m_node_count - P;
    while (b.m_exps.on_bits() < props || b.m_vars.on_bits() < vars) {
        const bool prop = b.m_exps.on_bits() < props;
        const int n = prop ? static_cast<int>(rng() % P) : P + static_cast<int>(rng() % V);
        if (!(prop ? b.m_exps : b.m_vars).get_ind(n))
            prop ? b.add_prop_node(n) : b.add_var_node(n);
    }
    return b;
}

// The moves of a walk through the step interface; every one must gain.
std::vector<int> walk_steps(PBicGreedyOpt& opt) {
    std::vector<int> moved;
    int node;
    bool is_del;
    float gain;
    while (opt.get_next_opti_cand(node, is_del, gain)) {
        EXPECT_GT(gain, 0.00001f);
        opt.apply_oper(node, is_del);
        moved.push_back(node);
    }
    return moved;
}

} // namespace

TEST(PBicGreedyOpt, RandomGrowsEndInLocalOptima) {
    const std::uint32_t seed = test_seed();
    SCOPED_TRACE(seed);
    std::mt19937 rng(seed);
    for (int round = 0; round < 12; ++round) {
        // One group: no property stands in two orientations, so no move is ever refused.
        RandomPropGraph r(8, 1, 30, 0.35, seed + round);
        Quiet q;
        PBicGreedyOpt opt(*r.g, *r.wgt, greedy_options(1, 1), "Greedy");
        for (int g = 0; g < 4; ++g) {
            PropVarBiclust bic = random_seed(r, 1 + g % 2, 3, rng);
            const float before = bic.m_score;
            opt.grow(bic); // Logit: the bicluster is verified at every step
            ASSERT_EQ(opt.m_drops, 0);
            ASSERT_GE(bic.m_score, before);
            // No move gains: margins recomputed from the graph are at most 0 outside, at least 0 inside.
            for (int n = 0; n < r.g->m_node_count; ++n) {
                const bool prop = n < r.g->m_max_prop_node;
                const float m = prop ? bic.get_prop_margin(n) : bic.get_var_margin(n);
                const bool in = (prop ? bic.m_exps : bic.m_vars).get_ind(n);
                ASSERT_TRUE(in ? m >= -1e-3f : m <= 1e-3f) << round << " node " << n << " " << m;
                // The optimiser's view of a variable move: bin part plus own part.
                ASSERT_TRUE(prop || std::fabs(opt.get_var_node_score(n) - m) < 1e-3f * (1 + std::fabs(m)));
            }
        }
    }
}

TEST(PBicGreedyOpt, StepsEqualGrowWithRelationsAndBlocking) {
    const std::uint32_t seed = test_seed();
    SCOPED_TRACE(seed);
    std::mt19937 rng(seed);
    RandomPropGraph r(8, 2, 30, 0.35, seed);
    std::string text;
    for (int i = 0; i < 60; ++i)
        text += "0 " + std::to_string(rng() % 30) + " " + std::to_string(rng() % 30) + "\n";
    std::istringstream key("0 x\n"), rels(text);
    BinRelGraphLayers br;
    br.read_tables(key, rels, 30);
    BinRelWgtSchemeDegree bw(br);
    Quiet q;
    PBicGreedyOpt a(*r.g, *r.wgt, greedy_options(0, 1), "Greedy", &br, &bw);
    PBicGreedyOpt b(*r.g, *r.wgt, greedy_options(0, 1), "Greedy", &br, &bw);
    for (int g = 0; g < 5; ++g) {
        PropVarBiclust grown = random_seed(r, 1, 4, rng), stepped(grown);
        a.grow(grown);
        b.init_grow(stepped);
        walk_steps(b);
        EXPECT_TRUE(b.m_bic == grown);
        // The relation score pair by pair; a property id in one orientation only.
        std::vector<int> ids;
        double brs = 0.0;
        for (ds_bitvec_iter v(grown.m_vars); v; ++v)
            ids.push_back(r.g->node_var(v));
        for (int x : ids)
            for (int y : ids)
                if (x < y && br.get_relation(x, y) != -1)
                    brs += bw.get_edge_weight(br.get_relation(x, y));
        EXPECT_NEAR(grown.m_br_score, brs, 1e-3 * (1 + brs));
        std::set<int> props;
        for (ds_bitvec_iter p(grown.m_exps); p; ++p)
            EXPECT_TRUE(props.insert(r.g->node_prop(p)).second) << p;
    }

    // Blocking twice shifts the property sub-heap's weight once; allowing takes the shift back.
    const int heap = 2 * r.wgt->get_var_nodes_bins().m_bin_num;
    const float w0 = b.m_heap.get_subheap_wgt(heap);
    const struct {
        void (PBicGreedyOpt::*call)();
        float shift;
    } calls[] = {{&PBicGreedyOpt::block_prop_modif, 1e5f},  {&PBicGreedyOpt::block_prop_modif, 1e5f},
                 {&PBicGreedyOpt::allow_prop_modif, 0.0f},  {&PBicGreedyOpt::allow_prop_modif, 0.0f},
                 {&PBicGreedyOpt::block_gene_modif, -1e5f}, {&PBicGreedyOpt::block_gene_modif, -1e5f}};
    for (const auto& c : calls) {
        (b.*c.call)();
        EXPECT_EQ(b.m_heap.get_subheap_wgt(heap), w0 + c.shift);
    }
    // Genes blocked: a grown bicluster stripped of its properties takes back only properties; with
    // genes allowed again, the walk goes on from there to what grow gives.
    PropVarBiclust bic(*r.g, *r.wgt, nullptr, nullptr);
    do {
        bic = random_seed(r, 1, 4, rng);
        a.grow(bic);
    } while (bic.m_exps.on_bits() == 0);
    const ds_bitvec grown_props(bic.m_exps);
    for (ds_bitvec_iter p(grown_props); p; ++p)
        bic.del_prop_node(p);
    b.init_grow(bic);
    const std::vector<int> moved = walk_steps(b);
    ASSERT_FALSE(moved.empty());
    for (int n : moved)
        EXPECT_TRUE(r.g->is_prop_node(n)) << n;
    b.allow_gene_modif();
    b.allow_gene_modif();
    EXPECT_EQ(b.m_heap.get_subheap_wgt(heap), w0);
    b.grow(bic, false);
    EXPECT_TRUE(bic == b.m_bic && b.m_bic.verify());
    // Properties blocked: only gene moves.
    b.block_prop_modif();
    PropVarBiclust bic2 = random_seed(r, 2, 2, rng);
    b.init_grow(bic2);
    for (int n : walk_steps(b))
        EXPECT_FALSE(r.g->is_prop_node(n)) << n;
}

TEST(PBicGreedyOpt, CompletePropsTakesEachPropertyInItsBestOrientation) {
    const std::uint32_t seed = test_seed();
    SCOPED_TRACE(seed);
    std::mt19937 rng(seed);
    RandomPropGraph r(10, 2, 30, 0.4, seed);
    Quiet q;
    // Properties can't be added by the walk, so complete_props has work to do.
    PBicGreedyOpt opt(*r.g, *r.wgt, greedy_options(0, 0), "Greedy");
    for (int g = 0; g < 4; ++g) {
        PropVarBiclust bic = random_seed(r, 1, 6, rng);
        opt.grow(bic);
        // By brute force: each property id not inside joins in the orientation of the larger margin,
        // if that margin is positive.
        std::set<int> in_ids, expect, got;
        for (ds_bitvec_iter p(bic.m_exps); p; ++p) {
            in_ids.insert(r.g->node_prop(p));
            expect.insert(p);
        }
        for (int id = 0; id < 10; ++id) {
            const int n0 = r.g->m_prop_group_nodes(0, id), n1 = r.g->m_prop_group_nodes(1, id);
            const float m0 = bic.get_prop_margin(n0), m1 = bic.get_prop_margin(n1);
            if (!in_ids.count(id) && std::max(m0, m1) > 0.0f)
                expect.insert(m1 > m0 ? n1 : n0);
        }
        opt.complete_props();
        for (ds_bitvec_iter p(opt.m_bic.m_exps); p; ++p)
            got.insert(p);
        EXPECT_EQ(got, expect) << g;
    }
}

namespace {

const char kPlanted[] =
    "[Aco]\nEdgePThresh = 0.5\nEdgeNonZeroP = 0.5\nAllowCondOrientation = 1\nPropCardinality = 2\n"
    "Logit = 0\nStateOfGroupPair = { i 6\n0 0 1\n1 0 2\n}\nVarMaxGroupId = 1\n"
    "[PssmL]\nEdgePThresh = -1\n"
    "[Layers]\nLogit = 0\nVarCardinality = 2\nVarOrientation = 0\n"
    "[Bins]\nMaxGroupBins = 1\nMinGroupInterval = 100\n"
    "[Wgt]\nBinningScope = Bins\nMinimumPU = 0.01\nLogit = 0\nModelP = { f 3\n0.6 0.01 0.8\n}\n"
    "MaxPU = { f 3\n0.5 0.5 0.5\n}\nLimitNegPosRatio = 0\nMinNegWeightRatio = 0.9\nUseExpWeight = 0\n"
    "[Greedy]\nCanDelInitProp = 1\nCanAddProp = 1\nCanDelProp = 1\nCanDelInitVar = 1\nLogit = 0\n"
    "AddPropCostFactor = 1\nDelPropCostFactor = 1\nIsPropRankedLayer = { i 3\n0 1 0\n}\nPSSMPruneFactor = 0\n"
    "[RankedObs]\nAddPropFactor = 1\nDelPropFactor = 1\nNumOfAffinBins = 10\nThreshUpdateFactor = 0.2\n"
    "ScoreDerivUpdateFactor = 0.1\nLogit = 0\nMinNumOfGenes = 5\nMinLogPV = 5\nFirstBinMinSize = 3\n";

// 60 genes, 12 conditions, two PSSMs and five classes. Planted: genes 0-14 up in conditions 0-3, the
// site of PSSM 0 in their promoters, and class 0 (with genes 40 and 41). Genes 50-59 have no promoter;
// the others are drawn from A, C and G, where neither PSSM finds its exact site on either strand.
struct Planted {
    Planted() : universe(&vs), data(universe), opts(bic_options(kPlanted)) {
        Quiet q;
        std::mt19937 rng(7);
        std::uniform_real_distribution<float> u(-1.0f, 1.0f);
        universe.init_idspace(60);
        data.m_E = 12;
        data.m_data.resize(60, 12, 0.0f);
        classes.m_class_bits.assign(5, ds_bitvec(60));
        proms.m_promoters.resize(60);
        const char* motifs[2] = {"TGACGT", "CCCAAA"};
        for (int v = 0; v < 60; ++v) {
            for (int e = 0; e < 12; ++e)
                data.m_data(v, e) = v < 15 && e < 4 ? 1.0f : u(rng);
            classes.m_class_bits[v < 15 || v == 40 || v == 41 ? 0 : 1 + rng() % 8 % 4].set_ind(v);
            std::string s;
            for (int i = 0; i < 150 && v < 50; ++i)
                s += "ACG"[rng() % 3];
            if (v < 15)
                s.replace(50, 6, motifs[0]);
            proms.m_promoters[v].assign(s);
            proms.m_promoters[v].m_gene_var_id = v;
            proms.m_promoters[v].m_is_empty = s.empty();
        }
        pssms.m_pssms.resize(2);
        for (int m = 0; m < 2; ++m) {
            pssms.m_pssms[m].resize(6);
            for (int i = 0; i < 6; ++i) {
                std::vector<float> col(4, 0.05f);
                col[std::string("ACGT").find(motifs[m][i])] = 0.85f;
                pssms.m_pssms[m].m_profile[i].reset(col);
            }
        }
        aco.reset(new PropVarLayerACO(data, opts, "Aco"));
        pssm.reset(new PropVarLayerPSSM(pssms, proms, opts, "PssmL"));
        annot.reset(new PropVarLayerAnnot(classes, opts, "Annot"));
        graph.reset(new PropVarGraphLayers(universe, opts, "Layers"));
        graph->m_layers = {aco.get(), pssm.get(), annot.get()};
        graph->build_layers();
        ec.reset(new ArrayVarEC(data));
        wgt.reset(new PropWgtSchemeGroupIndeg(*graph, *ec, opts, "Wgt", true));
    }
    SignValSpace vs;
    VarUniverse universe;
    StateDataSetReal data;
    options& opts;
    VarClasses classes;
    PssmSet pssms;
    DnaSeqGenomePromoters<DnaSequence> proms;
    std::unique_ptr<PropVarLayerBase> aco, pssm, annot;
    std::unique_ptr<PropVarGraphLayers> graph;
    std::unique_ptr<ArrayVarEC> ec;
    std::unique_ptr<PropWgtSchemeGroupIndeg> wgt;
};

} // namespace

TEST(PBicGreedyOpt, PlantedPropertyBiclusterGrowsBack) {
    Planted w;
    const PropVarGraphLayers& g = *w.graph;
    Quiet q;
    PBicGreedyOpt opt(g, *w.wgt, w.opts, "Greedy");
    // The PSSM ranking: planted genes first (a perfect site: 0), then the rest; no promoter: out.
    std::vector<float> values;
    const int pssm0 = g.m_prop_group_nodes(2, 0);
    opt.generate_pssm_affins(pssm0, values);
    ASSERT_EQ(values.size(), 60u);
    for (int v = 0; v < 60; ++v)
        EXPECT_TRUE(v < 15   ? std::fabs(values[v]) < 1e-4f
                    : v < 50 ? values[v] > 1e-3f
                             : values[v] == 3.4028235e+38f)
            << v << " " << values[v];
    ASSERT_EQ(opt.m_ranked_obs.size(), 2u);

    // Seed: conditions 0 and 1 up, genes 0-7. Back come conditions 0-3 up, the 15 genes (at most two
    // more), class 0 and PSSM 0 through its ranking, not PSSM 1.
    PropVarBiclust bic(g, *w.wgt, nullptr, nullptr);
    bic.add_prop_node(g.m_prop_group_nodes(0, 0));
    bic.add_prop_node(g.m_prop_group_nodes(0, 1));
    for (int v = 0; v < 8; ++v)
        bic.add_var_node(g.m_var_group_nodes(0, v));
    opt.grow(bic);
    const std::string log = q.done();
    EXPECT_NE(log.find("gen pssm affins for "), std::string::npos);
    EXPECT_NE(log.find("done greedy weight = "), std::string::npos);
    for (int e = 0; e < 12; ++e) {
        EXPECT_EQ(bic.m_exps.get_ind(g.m_prop_group_nodes(0, e)), e < 4) << e;
        EXPECT_FALSE(bic.m_exps.get_ind(g.m_prop_group_nodes(1, e))) << e;
    }
    EXPECT_TRUE(bic.m_exps.get_ind(pssm0) && bic.m_exps.get_ind(g.m_prop_group_nodes(3, 0)));
    EXPECT_FALSE(bic.m_exps.get_ind(g.m_prop_group_nodes(2, 1)));
    int planted = 0;
    for (ds_bitvec_iter v(bic.m_vars); v; ++v)
        planted += g.node_var(v) < 15;
    EXPECT_EQ(planted, 15);
    EXPECT_LE(bic.m_vars.on_bits(), 17);
    // The ranked score is the gain of the ranked properties of layer 1 inside: PSSM 0's.
    const PBicChangeRankedObs* r0 = opt.m_ranked_obs[opt.m_ranked_obs[0]->m_node == pssm0 ? 0 : 1];
    EXPECT_GT(r0->m_gain, 10.0f);
    EXPECT_FLOAT_EQ(bic.m_ranked_score, r0->m_gain);
    EXPECT_EQ(r0->m_thresh_bin, 0.0f);
}

TEST(PBicGreedyOptDeath, FrozenSeedNodes) {
    // One property (node 0), variables 1 and 2 in bins of their own, no edges: non-edges weigh -5
    // and -1, so the seed {0, 1, 2} loses most by keeping the property (6), then variable 1 (5).
    RandomPropGraph r(1, 1, 2, 0.0, 1);
    r.wgt->m_non(0, 0) = -5.0f;
    r.wgt->m_non(0, 1) = -1.0f;
    const std::string base = "[F]\nCanAddProp = 1\nLogit = 0\nAddPropCostFactor = 1\nDelPropCostFactor = 1\n";
    struct Case {
        const char* keys;
        const char* regex;
    };
    // The property may not go (CanDelInitProp 0): fatal. With deleting properties refused
    // (CanDelProp 0), the variable's delete comes next and is fatal under CanDelInitVar 0.
    const Case cases[] = {
        {"CanDelInitProp = 0\nCanDelProp = 1\nCanDelInitVar = 1\n",
         R"(PBicGreedyOpt\([0-9]+\): Trying to delete freezed init prop node 0)"},
        {"CanDelInitProp = 1\nCanDelProp = 0\nCanDelInitVar = 0\n",
         R"(PBicGreedyOpt\([0-9]+\): Trying to delete freezed init var node 1)"},
    };
    for (const Case& c : cases) {
        options& o = bic_options(base + c.keys);
        PropVarBiclust bic(*r.g, *r.wgt, nullptr, nullptr);
        bic.add_prop_node(0);
        bic.add_var_node(1);
        bic.add_var_node(2);
        EXPECT_DEATH(
            {
                PBicGreedyOpt opt(*r.g, *r.wgt, o, "F");
                opt.grow(bic);
            },
            c.regex);
    }
}
