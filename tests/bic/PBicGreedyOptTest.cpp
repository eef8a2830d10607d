// PBicGreedyOpt: random graphs grown with verification to local optima checked by brute force, the
// step interface against grow, blocking, complete_props, a planted property bicluster with a ranked
// PSSM layer, and the fatal paths.
#include "PBicGreedyOpt.h"
#include "PropFixture.h"
#include "ds/BitVecIter.h"

#include <cmath>
#include <map>
#include <random>
#include <set>
#include <sstream>

namespace {

const char kGreedy[] = "[Greedy]\nCanDelInitProp = 1\nCanAddProp = 1\nCanDelProp = 1\nCanDelInitVar = 1\n"
                       "Logit = 1\nAddPropCostFactor = 1\nDelPropCostFactor = 1\nBinRelGlobCostScope = Cost\n"
                       "[Cost]\nMinBrDeg = 1\nHGCacheTableM = 100\n";

options& greedy_options(const std::string& extra = "") {
    static std::map<std::string, options*> made;
    options*& o = made[extra];
    if (!o)
        o = &bic_options(kGreedy + extra);
    return *o;
}

// A seed of `props` random property nodes and `vars` random variable nodes.
PropVarBiclust random_seed(const RandomPropGraph& r, int props, int vars, std::mt19937& rng) {
    PropVarBiclust b(*r.g, *r.wgt, nullptr, nullptr);
    const int P = r.g->m_max_prop_node, V = r.g->m_node_count - P;
    while (b.m_exps.on_bits() < props) {
        const int p = static_cast<int>(rng() % P);
        if (!b.m_exps.get_ind(p))
            b.add_prop_node(p);
    }
    while (b.m_vars.on_bits() < vars) {
        const int v = P + static_cast<int>(rng() % V);
        if (!b.m_vars.get_ind(v))
            b.add_var_node(v);
    }
    return b;
}

// The moves a grow makes, through the step interface.
std::vector<std::pair<int, bool>> walk_steps(PBicGreedyOpt& opt) {
    std::vector<std::pair<int, bool>> moves;
    int node;
    bool is_del;
    float gain;
    while (opt.get_next_opti_cand(node, is_del, gain)) {
        EXPECT_GT(gain, 0.00001f);
        opt.apply_oper(node, is_del);
        moves.emplace_back(node, is_del);
    }
    return moves;
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
        PBicGreedyOpt opt(*r.g, *r.wgt, greedy_options(), "Greedy");
        for (int g = 0; g < 4; ++g) {
            PropVarBiclust bic = random_seed(r, 1 + g % 2, 3, rng);
            const float before = bic.m_score;
            opt.grow(bic); // Logit: the bicluster is verified at every step
            ASSERT_EQ(opt.m_drops, 0);
            ASSERT_TRUE(bic.verify());
            ASSERT_GE(bic.m_score, before);
            // No single move gains: every margin outside is at most 0, inside at least 0 (within
            // float error), recomputed from the graph.
            for (int p = 0; p < r.g->m_max_prop_node; ++p) {
                const float m = bic.get_prop_margin(p);
                ASSERT_TRUE(bic.m_exps.get_ind(p) ? m >= -1e-3f : m <= 1e-3f)
                    << round << " prop " << p << " " << m;
            }
            for (int v = r.g->m_max_prop_node; v < r.g->m_node_count; ++v) {
                const float m = bic.get_var_margin(v);
                ASSERT_TRUE(bic.m_vars.get_ind(v) ? m >= -1e-3f : m <= 1e-3f)
                    << round << " var " << v << " " << m;
                // The optimiser's view of a variable move: bin part plus own part.
                ASSERT_NEAR(opt.get_var_node_score(v), m, 1e-3f * (1 + std::fabs(m)));
            }
        }
    }
}

TEST(PBicGreedyOpt, RelationsFiltersAndOrientations) {
    const std::uint32_t seed = test_seed();
    SCOPED_TRACE(seed);
    std::mt19937 rng(seed);
    // Two orientations of each property; relations among the variables; half the variables admitted.
    RandomPropGraph r(6, 2, 30, 0.35, seed);
    std::string text;
    for (int i = 0; i < 60; ++i)
        text += "0 " + std::to_string(rng() % 30) + " " + std::to_string(rng() % 30) + "\n";
    std::istringstream key("0 x\n"), rels(text);
    BinRelGraphLayers br;
    br.read_tables(key, rels, 30);
    BinRelWgtSchemeDegree bw(br);
    ds_bitvec admitted(30);
    for (int v = 0; v < 30; v += 2)
        admitted.set_ind(v);
    Quiet q;
    PBicGreedyOpt opt(*r.g, *r.wgt, &admitted, greedy_options(), "Greedy", &br, &bw);
    ASSERT_TRUE(opt.m_br_cost != nullptr);
    for (int g = 0; g < 6; ++g) {
        PropVarBiclust bic(*r.g, *r.wgt, nullptr, nullptr);
        const int id = static_cast<int>(rng() % 5);
        bic.add_prop_node(r.g->m_prop_group_nodes(0, id));
        bic.add_prop_node(r.g->m_prop_group_nodes(1, id + 1));
        for (int v = 0; v < 6; v += 2)
            bic.add_var_node(r.g->m_var_group_nodes(0, v));
        opt.grow(bic);
        ASSERT_TRUE(opt.m_bic.verify());
        // The relation score of the result, summed pair by pair.
        double brs = 0.0;
        std::set<int> ids;
        for (ds_bitvec_iter v(opt.m_bic.m_vars); v; ++v) {
            ASSERT_TRUE(admitted.get_ind(r.g->node_var(v))) << v;
            ids.insert(r.g->node_var(v));
        }
        for (int a : ids)
            for (int b : ids)
                if (a < b && br.get_relation(a, b) != -1)
                    brs += bw.get_edge_weight(br.get_relation(a, b));
        ASSERT_NEAR(opt.m_bic.m_br_score, brs, 1e-3 * (1 + brs));
        ASSERT_FLOAT_EQ(bic.m_br_score, opt.m_bic.m_br_score);
        // A property id stands in one orientation only.
        std::set<int> props;
        for (ds_bitvec_iter p(opt.m_bic.m_exps); p; ++p)
            ASSERT_TRUE(props.insert(r.g->node_prop(p)).second) << p;
    }
}

TEST(PBicGreedyOpt, StepsEqualGrowAndBlocking) {
    const std::uint32_t seed = test_seed();
    SCOPED_TRACE(seed);
    std::mt19937 rng(seed);
    RandomPropGraph r(8, 2, 30, 0.35, seed);
    Quiet q;
    PBicGreedyOpt a(*r.g, *r.wgt, greedy_options(), "Greedy");
    PBicGreedyOpt b(*r.g, *r.wgt, greedy_options(), "Greedy");
    const int prop_heap = 2 * r.wgt->get_var_nodes_bins().m_bin_num;
    for (int g = 0; g < 5; ++g) {
        PropVarBiclust seed_bic = random_seed(r, 1, 4, rng);
        PropVarBiclust grown(seed_bic), stepped(seed_bic);
        a.grow(grown);
        b.init_grow(stepped);
        walk_steps(b);
        EXPECT_TRUE(b.m_bic == grown);
        EXPECT_FLOAT_EQ(b.m_bic.m_score, grown.m_score);
    }

    // Blocking twice shifts the property sub-heap's weight once; allowing undoes it.
    const float w0 = b.m_heap.get_subheap_wgt(prop_heap);
    for (int i = 0; i < 2; ++i)
        b.block_prop_modif();
    EXPECT_EQ(b.m_heap.get_subheap_wgt(prop_heap), w0 + 100000.0f);
    for (int i = 0; i < 2; ++i)
        b.allow_prop_modif();
    EXPECT_EQ(b.m_heap.get_subheap_wgt(prop_heap), w0);
    for (int i = 0; i < 2; ++i)
        b.block_gene_modif();
    EXPECT_EQ(b.m_heap.get_subheap_wgt(prop_heap), w0 - 100000.0f);
    EXPECT_EQ(b.m_gene_modif_on, 0);

    // Genes blocked: a grown bicluster without its properties takes them back first, and only them;
    // allowed again, the walk goes on from there.
    PropVarBiclust bic(*r.g, *r.wgt, nullptr, nullptr);
    do {
        bic = random_seed(r, 1, 4, rng);
        a.grow(bic);
    } while (bic.m_exps.on_bits() == 0);
    const ds_bitvec grown_props(bic.m_exps);
    for (ds_bitvec_iter p(grown_props); p; ++p)
        bic.del_prop_node(p);
    b.init_grow(bic);
    const auto props_only = walk_steps(b);
    ASSERT_FALSE(props_only.empty());
    for (const auto& m : props_only)
        EXPECT_TRUE(r.g->is_prop_node(m.first)) << m.first;
    b.allow_gene_modif();
    b.allow_gene_modif();
    EXPECT_EQ(b.m_heap.get_subheap_wgt(prop_heap), w0);
    b.grow(bic, false);
    EXPECT_TRUE(b.m_bic.verify());
    EXPECT_TRUE(bic == b.m_bic);
    // Properties blocked: only gene moves.
    b.block_prop_modif();
    PropVarBiclust bic2 = random_seed(r, 2, 2, rng);
    b.init_grow(bic2);
    for (const auto& m : walk_steps(b))
        EXPECT_FALSE(r.g->is_prop_node(m.first)) << m.first;
    b.allow_prop_modif();
}

TEST(PBicGreedyOpt, CompletePropsTakesEachPropertyInItsBestOrientation) {
    const std::uint32_t seed = test_seed();
    SCOPED_TRACE(seed);
    std::mt19937 rng(seed);
    RandomPropGraph r(10, 2, 30, 0.4, seed);
    Quiet q;
    // Properties can't be added by the walk, so complete_props has work to do.
    PBicGreedyOpt opt(*r.g, *r.wgt,
                      greedy_options("[NoAdd]\nCanDelInitProp = 1\nCanAddProp = 0\nCanDelProp = 1\n"
                                     "CanDelInitVar = 1\nLogit = 0\nAddPropCostFactor = 1\n"
                                     "DelPropCostFactor = 1\n"),
                      "NoAdd");
    for (int g = 0; g < 4; ++g) {
        PropVarBiclust bic = random_seed(r, 1, 6, rng);
        opt.grow(bic);
        // By brute force: for each property id not inside, the orientation of the larger margin, if
        // that margin is positive.
        const int P = r.g->m_max_prop_node;
        std::set<int> in_ids, expect;
        for (ds_bitvec_iter p(opt.m_bic.m_exps); p; ++p)
            in_ids.insert(r.g->node_prop(p));
        for (int id = 0; id < 10; ++id) {
            if (in_ids.count(id))
                continue;
            const int n0 = r.g->m_prop_group_nodes(0, id), n1 = r.g->m_prop_group_nodes(1, id);
            const float m0 = opt.m_bic.get_prop_margin(n0), m1 = opt.m_bic.get_prop_margin(n1);
            if (std::max(m0, m1) > 0.0f)
                expect.insert(m1 > m0 ? n1 : n0);
        }
        for (ds_bitvec_iter p(opt.m_bic.m_exps); p; ++p)
            expect.insert(p);
        opt.complete_props();
        std::set<int> got;
        for (int p = 0; p < P; ++p)
            if (opt.m_bic.m_exps.get_ind(p))
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
// site of PSSM 0 in their promoters, and class 0 (with genes 40 and 41). Genes 50-59 have no promoter.
// Other promoters are drawn from A, C and G, so that neither PSSM finds its exact site (on either
// strand) by chance.
struct Planted {
    Planted() : universe(&vs), data(universe) {
        Quiet q;
        std::mt19937 rng(7);
        std::uniform_real_distribution<float> u(-1.0f, 1.0f);
        universe.init_idspace(60);
        data.m_E = 12;
        data.m_data.resize(60, 12, 0.0f);
        for (int v = 0; v < 60; ++v)
            for (int e = 0; e < 12; ++e)
                data.m_data(v, e) = v < 15 && e < 4 ? 1.0f : u(rng);
        classes.m_class_bits.assign(5, ds_bitvec(60));
        for (int v = 0; v < 15; ++v)
            classes.m_class_bits[0].set_ind(v);
        classes.m_class_bits[0].set_ind(40);
        classes.m_class_bits[0].set_ind(41);
        for (int c = 1; c < 5; ++c)
            for (int i = 0; i < 10; ++i)
                classes.m_class_bits[c].set_ind(rng() % 60);
        const char* motifs[2] = {"TGACGT", "CCCAAA"};
        pssms.m_pssms.resize(2);
        for (int m = 0; m < 2; ++m) {
            pssms.m_pssms[m].resize(6);
            for (int i = 0; i < 6; ++i) {
                std::vector<float> col(4, 0.05f);
                col[std::string("ACGT").find(motifs[m][i])] = 0.85f;
                pssms.m_pssms[m].m_profile[i].reset(col);
            }
        }
        proms.m_promoters.resize(60);
        for (int v = 0; v < 60; ++v) {
            std::string s;
            for (int i = 0; i < 150 && v < 50; ++i)
                s += "ACG"[rng() % 3];
            if (v < 15)
                s.replace(50, 6, motifs[0]);
            proms.m_promoters[v].assign(s);
            proms.m_promoters[v].m_gene_var_id = v;
            proms.m_promoters[v].m_is_empty = s.empty();
        }
        opts = &bic_options(kPlanted);
        aco.reset(new PropVarLayerACO(data, *opts, "Aco"));
        pssm.reset(new PropVarLayerPSSM(pssms, proms, *opts, "PssmL"));
        annot.reset(new PropVarLayerAnnot(classes, *opts, "Annot"));
        graph.reset(new PropVarGraphLayers(universe, *opts, "Layers"));
        graph->m_layers = {aco.get(), pssm.get(), annot.get()};
        graph->build_layers();
        ec.reset(new ArrayVarEC(data));
        wgt.reset(new PropWgtSchemeGroupIndeg(*graph, *ec, *opts, "Wgt", true));
    }
    SignValSpace vs;
    VarUniverse universe;
    StateDataSetReal data;
    VarClasses classes;
    PssmSet pssms;
    DnaSeqGenomePromoters<DnaSequence> proms;
    options* opts;
    std::unique_ptr<PropVarLayerACO> aco;
    std::unique_ptr<PropVarLayerPSSM> pssm;
    std::unique_ptr<PropVarLayerAnnot> annot;
    std::unique_ptr<PropVarGraphLayers> graph;
    std::unique_ptr<ArrayVarEC> ec;
    std::unique_ptr<PropWgtSchemeGroupIndeg> wgt;
};

} // namespace

TEST(PBicGreedyOpt, PlantedPropertyBiclusterGrowsBack) {
    Planted w;
    const PropVarGraphLayers& g = *w.graph;
    Quiet q;
    PBicGreedyOpt opt(g, *w.wgt, *w.opts, "Greedy");
    // The PSSM ranking: planted genes first (a perfect site: 0), no promoter out of it.
    std::vector<float> values;
    const int pssm0 = g.m_prop_group_nodes(2, 0);
    opt.generate_pssm_affins(pssm0, values);
    ASSERT_EQ(values.size(), 60u);
    for (int v = 0; v < 15; ++v)
        EXPECT_NEAR(values[v], 0.0f, 1e-4) << v;
    for (int v = 15; v < 50; ++v)
        EXPECT_GT(values[v], 1e-3f) << v;
    for (int v = 50; v < 60; ++v)
        EXPECT_EQ(values[v], 3.4028235e+38f) << v;
    ASSERT_EQ(opt.m_ranked_obs.size(), 2u);

    // Seed: conditions 0 and 1 up, genes 0-7.
    PropVarBiclust bic(g, *w.wgt, nullptr, nullptr);
    bic.add_prop_node(g.m_prop_group_nodes(0, 0));
    bic.add_prop_node(g.m_prop_group_nodes(0, 1));
    for (int v = 0; v < 8; ++v)
        bic.add_var_node(g.m_var_group_nodes(0, v));
    opt.grow(bic);
    const std::string log = q.done();
    EXPECT_NE(log.find("done greedy weight = "), std::string::npos);
    EXPECT_NE(log.find("gen pssm affins for "), std::string::npos);
    for (int e = 0; e < 4; ++e)
        EXPECT_TRUE(bic.m_exps.get_ind(g.m_prop_group_nodes(0, e))) << e;
    for (int e = 4; e < 12; ++e)
        EXPECT_FALSE(bic.m_exps.get_ind(g.m_prop_group_nodes(0, e)) ||
                     bic.m_exps.get_ind(g.m_prop_group_nodes(1, e)));
    EXPECT_TRUE(bic.m_exps.get_ind(pssm0));
    EXPECT_FALSE(bic.m_exps.get_ind(g.m_prop_group_nodes(2, 1)));
    EXPECT_TRUE(bic.m_exps.get_ind(g.m_prop_group_nodes(3, 0)));
    int planted = 0;
    for (ds_bitvec_iter v(bic.m_vars); v; ++v)
        planted += g.node_var(v) < 15;
    EXPECT_EQ(planted, 15);
    EXPECT_LE(bic.m_vars.on_bits(), 17);
    // The ranked score is the gain of the ranked properties of layer 1 inside: PSSM 0.
    const PBicChangeRankedObs* r0 =
        opt.m_ranked_obs[0]->m_node == pssm0 ? opt.m_ranked_obs[0] : opt.m_ranked_obs[1];
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
