// Relation graphs and their weights, property biclusters under random moves against brute force,
// and the bicluster tables written and read back, also on a graph with a layer added.
#include "PropFixture.h"
#include "PropVarBiclust.h"
#include "ds/BitVecIter.h"

#include <cmath>
#include <random>
#include <sstream>

TEST(BinRelGraphLayers, ReadWeightsAndRandomize) {
    // Hubs 0 and 1 with leaves 2-4 and 5-7, and the hub-hub relation; repeats and a self relation drop.
    std::istringstream key("0 ppi\n1 reg\n"),
        rels("0 0 1\n1 1 0\n0 0 2\n0 0 3\n1 0 4\n0 1 5\n0 1 6\n0 1 7\n0 3 3\n0 2 0\n");
    BinRelGraphLayers br;
    br.read_tables(key, rels, 8);
    EXPECT_EQ(br.m_layer_names, (std::vector<std::string>{"ppi", "reg"}));
    EXPECT_EQ(br.edges_num(), 7);
    EXPECT_EQ(br.m_edge_layer[br.get_relation(4, 0)], 1);
    BinRelWgtSchemeDegree w(br);
    // E = 7, hubs of degree 4: ln(14 / 16) < 0 floors to 0; a leaf relation ln(14 / 4).
    EXPECT_FLOAT_EQ(w.get_edge_weight(br.get_relation(0, 1)), 0.0f);
    EXPECT_NEAR(w.get_edge_weight(br.get_relation(2, 0)), std::log(3.5), 1e-6);

    std::vector<int> deg(8);
    for (int v = 0; v < 8; ++v)
        deg[v] = br.node_edges_num(v);
    br.randomize(50);
    for (int v = 0; v < 8; ++v) {
        EXPECT_EQ(br.node_edges_num(v), deg[v]) << v;
        EXPECT_EQ(br.get_edge(v, v), -1);
        for (int u = v + 1; u < 8; ++u)
            EXPECT_FALSE(br.get_edge(u, v) != -1 && br.get_edge(v, u) != -1);
    }
}

namespace {

// The bicluster's score and relation score recomputed pair by pair.
void brute(const RandomPropGraph& r, const BinRelGraphLayers& br, const BinRelWgtSchemeBase& bw,
           const ds_bitvec& props, const ds_bitvec& vars, double& score, double& br_score) {
    score = br_score = 0.0;
    for (ds_bitvec_iter p(props); p; ++p)
        for (ds_bitvec_iter v(vars); v; ++v) {
            const int e = r.g->get_edge(p, v);
            score += e != -1 ? r.wgt->get_edge_weight(e)
                             : r.wgt->get_non_edge_prop_weight(p, r.wgt->get_var_node_bin(v));
        }
    for (ds_bitvec_iter a(vars); a; ++a)
        for (ds_bitvec_iter b(vars); b; ++b) {
            const int e = br.get_edge(r.g->node_var(a), r.g->node_var(b));
            if (e != -1)
                br_score += bw.get_edge_weight(e);
        }
}

} // namespace

TEST(PropVarBiclust, RandomMovesAgainstBruteForce) {
    const std::uint32_t seed = test_seed();
    SCOPED_TRACE(seed);
    RandomPropGraph r(5, 2, 20, 0.3, seed);
    BinRelGraphLayers br;
    std::istringstream key("0 x\n"), rels;
    std::string rtext;
    std::mt19937 rng(seed + 1);
    for (int i = 0; i < 40; ++i)
        rtext += "0 " + std::to_string(rng() % 20) + " " + std::to_string(rng() % 20) + "\n";
    rels.str(rtext);
    br.read_tables(key, rels, 20);
    BinRelWgtSchemeDegree bw(br);

    PropVarBiclust plain(*r.g, *r.wgt, nullptr, nullptr);
    PropVarBiclust b(*r.g, *r.wgt, &br, &bw);
    const int P = r.g->m_max_prop_node, N = r.g->m_node_count;
    for (int step = 0; step < 600; ++step) {
        const int node = rng() % N;
        const bool prop = node < P;
        const bool in = prop ? b.m_exps.get_ind(node) : b.m_vars.get_ind(node);
        for (PropVarBiclust* x : {&plain, &b}) {
            if (prop)
                in ? x->del_prop_node(node) : x->add_prop_node(node);
            else
                in ? x->del_var_node(node) : x->add_var_node(node);
        }
        double score, brs;
        brute(r, br, bw, b.m_exps, b.m_vars, score, brs);
        ASSERT_NEAR(b.m_score, score, 1e-3 * (1 + std::fabs(score))) << step;
        ASSERT_NEAR(b.m_br_score, brs, 1e-3 * (1 + brs)) << step;
        ASSERT_EQ(plain.m_br_score, 0.0f);
        if (step % 50 == 0)
            for (ds_bitvec_iter v(b.m_vars); v; ++v) {
                // A variable's margin is what the bicluster loses without it.
                ds_bitvec less = b.m_vars;
                less.clr_ind(v);
                double s2, br2;
                brute(r, br, bw, b.m_exps, less, s2, br2);
                EXPECT_NEAR(b.get_var_margin(v), (score + brs) - (s2 + br2), 1e-3 * (1 + std::fabs(score)));
            }
    }
}

TEST(PBicSet, TablesReadBackAlsoWithALayerAdded) {
    PropWorld w;
    auto g2 = w.build({w.aco.get(), w.annot.get()});
    auto g3 = w.build({w.aco.get(), w.annot.get(), w.pssm.get()});
    Quiet q;
    ArrayVarEC ec(w.data);
    PropWgtSchemeGroupIndeg s2(*g2, ec, prop_options(), "Wgt", true);
    PropWgtSchemeGroupIndeg s3(*g3, ec, prop_options(), "Wgt", true);
    PropVarBiclust b(*g2, s2, nullptr, nullptr);
    b.add_prop_node(0); // condition 0, group 0
    b.add_prop_node(5); // class 1, group 2
    b.add_var_node(6);
    b.add_var_node(8);
    b.m_ranked_score = 2.5f;
    std::ostringstream bick, bicd, star;
    b.dump_to_tables(3, *g2, bick, bicd, &star);
    EXPECT_EQ(star.str(), "3\t*\t0\t2.5\n");
    // Properties first by node (their number and group), then variables.
    const std::string d = bicd.str();
    EXPECT_EQ(d.find("3\t0\t0\t0\t"), 0u);
    EXPECT_NE(d.find("\n3\t0\t1\t2\t"), std::string::npos);
    EXPECT_NE(d.find("\n3\t1\t2\t0\t"), std::string::npos);
    for (PropVarGraphLayers* g : {g2.get(), g3.get()}) {
        PBicSet set(*g, g == g2.get() ? static_cast<PropWgtSchemeBase&>(s2) : s3);
        std::istringstream k(bick.str()), dd(bicd.str());
        set.read(k, dd);
        ASSERT_EQ(set.size(), 4);
        EXPECT_EQ(set.m_bics[0].m_vars.on_bits(), 0);
        EXPECT_FLOAT_EQ(set.m_scores[3], b.m_score);
        const PropVarBiclust& r = set.m_bics[3];
        // The same members by (group, property) and (group, variable).
        EXPECT_EQ(r.m_exps.on_bits(), 2);
        EXPECT_TRUE(r.m_exps.get_ind(g->m_prop_group_nodes(0, 0)));
        EXPECT_TRUE(r.m_exps.get_ind(g->m_prop_group_nodes(2, 1)));
        EXPECT_TRUE(r.m_vars.get_ind(g->m_var_group_nodes(0, 0)));
        EXPECT_TRUE(r.m_vars.get_ind(g->m_var_group_nodes(0, 2)));
        EXPECT_EQ(r.m_vars.on_bits(), 2);
        EXPECT_TRUE(r.verify());
    }
    PBicSet set(*g3, s3);
    EXPECT_EQ(set.add_bic(), 0);
    EXPECT_EQ(set.add_bic(), 1);
    EXPECT_TRUE(set.m_active.get_ind(1));
}

TEST(BinRelGlobNodeCost, AgainstScipyHypergeom) {
    // Variable 0 relates to 1-6; the bicluster holds 1-8, so 5 of its relations are inside.
    RandomPropGraph r(1, 1, 40, 0.0, 1);
    BinRelGraphLayers br;
    std::istringstream key("0 x\n"), rels("0 0 1\n0 0 2\n0 0 3\n0 0 4\n0 0 5\n0 0 6\n");
    br.read_tables(key, rels, 40);
    BinRelWgtSchemeDegree bw(br);
    PropVarBiclust b(*r.g, *r.wgt, &br, &bw);
    for (int v = 1; v <= 8; ++v)
        b.add_var_node(r.g->m_var_group_nodes(0, v));
    options& o = bic_options("[Cost]\nMinBrDeg = 2\nHGCacheTableM = 100\n");
    Quiet q;
    BinRelGlobNodeCost cost(b, o, "Cost");
    const int node = r.g->m_var_group_nodes(0, 0);
    // data/bic/prop_node_cost.py (scipy's hypergeom.logpmf).
    EXPECT_NEAR(cost.get_node_cost(node, 5, false), 2.657380801920504, 1e-3);
    EXPECT_NEAR(cost.get_node_cost(node, 5, true), 2.018796997441309, 1e-3);
    EXPECT_NEAR(cost.get_node_cost(node, 2, false), 0.3669572739657334, 1e-3);
    EXPECT_EQ(cost.get_node_cost(node, 1, false), 0.0f); // below MinBrDeg
}
