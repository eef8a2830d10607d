// PDynBiclust: the order of its events, and long random move sequences with a relation graph and a
// ranked layer, every observer's heap entry checked against margins recomputed from the graph.
#include "PDynBiclust.h"
#include "PBicChangeObs.h"
#include "PropFixture.h"
#include "ds/BitVecIter.h"

#include <cmath>
#include <random>
#include <set>
#include <sstream>

namespace {

// Records the codes it is subscribed to, in the order raised.
struct Recorder {
    void on(int code) { codes.push_back(code); }
    void listen(const PDynBiclust& b, int code) {
        b.m_dispatch.subscribe(code, makeFunctor((CBFunctor1<int>*)0, *this, &Recorder::on));
    }
    std::vector<int> codes;
};

options& cost_options() {
    return bic_options("[Cost]\nMinBrDeg = 1\nHGCacheTableM = 200\n"
                       "[RankedObs]\nAddPropFactor = 1\nDelPropFactor = 1\nNumOfAffinBins = 4\n"
                       "ThreshUpdateFactor = 0\nScoreDerivUpdateFactor = 0\nLogit = 0\nMinNumOfGenes = 2\n"
                       "MinLogPV = 0.5\nFirstBinMinSize = 2\n");
}

} // namespace

TEST(PDynBiclust, EventOrderAndCodes) {
    // Properties 0, 1 (group 0) and 2, 3 (group 1, a ranked layer); variables 4-7 (ids 0-3).
    RandomPropGraph r(2, 2, 4, 0.0, 1);
    PropVarGraphLayers& g = *r.g;
    g.add_edge(0, 4, 1.0f, 1.0f);
    g.add_edge(1, 4, 1.0f, 1.0f);
    g.add_edge(2, 5, 1.0f, 1.0f);
    g.m_group_layer[1] = 1;
    BinRelGraphLayers br;
    std::istringstream key("0 x\n"), rels("0 0 1\n0 2 0\n");
    br.read_tables(key, rels, 4);
    BinRelWgtSchemeDegree bw(br);
    PDynBiclust b(g, *r.wgt, &br, &bw);
    b.set_ranked_layer(1, true);
    // Node codes as DynBiclust's shifted by one, relation codes after them: 8 + 4N codes in all.
    const int N = g.m_node_count;
    EXPECT_EQ(b.m_change_me[4], 8 + 3 * 4);
    Recorder rec;
    for (int code = 0; code < 8 + 4 * N; ++code)
        rec.listen(b, code);
    b.add_var_node(4); // variable 0: own code first, then 1, its two property neighbours, relations 1, 2
    EXPECT_EQ(rec.codes, (std::vector<int>{b.m_change_me[4], 1, b.m_exp_add_adj[0], b.m_exp_add_adj[1],
                                           b.m_br_adj[5], b.m_br_adj[6]}));
    rec.codes.clear();
    b.add_prop_node(2); // ranked: 2, own code, its neighbour, then 7
    EXPECT_EQ(rec.codes, (std::vector<int>{2, b.m_change_me[2], b.m_var_add_adj[5], 7}));
    rec.codes.clear();
    b.add_prop_node(0); // not ranked: no 7
    b.del_prop_node(0);
    EXPECT_EQ(rec.codes, (std::vector<int>{2, b.m_change_me[0], b.m_var_add_adj[4], 4, b.m_change_me[0],
                                           b.m_var_del_adj[4]}));
    rec.codes.clear();
    b.del_var_node(4);
    EXPECT_EQ(rec.codes, (std::vector<int>{b.m_change_me[4], 3, b.m_exp_del_adj[0], b.m_exp_del_adj[1],
                                           b.m_br_adj[5], b.m_br_adj[6]}));
    rec.codes.clear();
    b.reset();
    EXPECT_EQ(rec.codes, std::vector<int>{0});
    EXPECT_EQ(b.m_br_score, 0.0f);
}

TEST(PDynBiclust, RandomMovesKeepScoresAndHeapEntries) {
    const std::uint32_t seed = test_seed();
    SCOPED_TRACE(seed);
    std::mt19937 rng(seed);
    // Group 1 is a ranked layer.
    RandomPropGraph r(4, 3, 24, 0.3, seed);
    PropVarGraphLayers& g = *r.g;
    g.m_group_layer[1] = 1;
    std::string text;
    for (int i = 0; i < 50; ++i)
        text += "0 " + std::to_string(rng() % 24) + " " + std::to_string(rng() % 24) + "\n";
    std::istringstream key("0 x\n"), rels(text);
    BinRelGraphLayers br;
    br.read_tables(key, rels, 24);
    BinRelWgtSchemeDegree bw(br);
    PDynBiclust b(g, *r.wgt, &br, &bw);
    b.set_ranked_layer(1, true);
    Quiet q;
    BinRelGlobNodeCost cost(b, cost_options(), "Cost");
    q.done();
    const RankedObsParams params(cost_options(), "RankedObs");
    BinomFuncTable table(64, 64);

    const int P = g.m_max_prop_node, N = g.m_node_count, B = r.wgt->get_var_nodes_bins().m_bin_num;
    BicHeap heap;
    std::vector<PBicChangePropObs> props(N);
    std::vector<std::unique_ptr<PBicChangeRankedObs>> ranked_own(N);
    std::vector<PBicChangeRankedObs*> ranked, inside;
    std::vector<PBicChangeVarObs> vars(N);
    std::vector<PBicChangeVarBinObs> bins(B);
    std::uniform_real_distribution<float> u(0.0f, 1.0f);
    for (int p = 0; p < P; ++p) {
        if (g.node_layer(p) == 1) {
            std::vector<float> values(24);
            for (float& v : values)
                v = u(rng) < 0.2f ? 3.4e+38f : std::floor(u(rng) * 8.0f); // ties and values out
            ranked_own[p].reset(new PBicChangeRankedObs);
            ranked_own[p]->attach(b, heap, p, 2 * B, values, params, table, &inside);
            ranked.push_back(ranked_own[p].get());
        } else {
            props[p].attach(b, heap, p, 2 * B, 1.5f, 0.5f);
        }
    }
    for (int v = P; v < N; ++v)
        vars[v].attach(b, heap, v, 2 * r.wgt->get_var_node_bin(v), 2 * r.wgt->get_var_node_bin(v) + 1, 0.0f,
                       &cost, &inside);
    for (int bin = 0; bin < B; ++bin)
        bins[bin].attach(b, heap, bin, 2 * bin, 2 * bin + 1);
    Recorder sevens;
    sevens.listen(b, 7);
    heap.reset(-1);
    b.reset();

    for (int step = 0; step < 1500; ++step) {
        const int node = rng() % N;
        const bool prop = node < P;
        const bool in = prop ? b.m_exps.get_ind(node) : b.m_vars.get_ind(node);
        // One node per variable id inside, as the optimiser keeps it.
        if (!prop && !in) {
            bool taken = false;
            for (ds_bitvec_iter v(b.m_vars); v; ++v)
                taken = taken || g.node_var(v) == g.node_var(node);
            if (taken)
                continue;
        }
        sevens.codes.clear();
        if (prop)
            in ? b.del_prop_node(node) : b.add_prop_node(node);
        else
            in ? b.del_var_node(node) : b.add_var_node(node);
        const int n = b.m_vars.on_bits();
        // Event 7 once a move: every ranked observer renews its derivatives from two genes on.
        const size_t expect7 = prop ? (g.node_layer(node) == 1 ? 1 : 0) : (n >= 2 ? 1 : 0);
        ASSERT_EQ(sevens.codes.size(), expect7) << step;

        // Score and relation score from scratch.
        double score = 0.0, br_score = 0.0;
        for (ds_bitvec_iter p(b.m_exps); p; ++p)
            for (ds_bitvec_iter v(b.m_vars); v; ++v) {
                const int e = g.get_edge(p, v);
                score += e != -1 ? r.wgt->get_edge_weight(e)
                                 : r.wgt->get_non_edge_prop_weight(p, r.wgt->get_var_node_bin(v));
            }
        std::vector<int> rel_in(24, 0);
        for (ds_bitvec_iter a(b.m_vars); a; ++a)
            for (ds_bitvec_iter c(b.m_vars); c; ++c) {
                const int e = br.get_edge(g.node_var(a), g.node_var(c));
                if (e != -1)
                    br_score += bw.get_edge_weight(e);
            }
        for (int x = 0; x < 24; ++x)
            for (int y = 0; y < 24; ++y)
                if (br.get_relation(x, y) != -1 && x != y && b.m_var_ids.get_ind(y))
                    ++rel_in[x];
        ASSERT_NEAR(b.m_score, score, 1e-3 * (1 + std::fabs(score))) << step;
        ASSERT_NEAR(b.m_br_score, br_score, 1e-3 * (1 + br_score)) << step;

        // Property entries: the margin with the factors; ranked ones by their bins.
        for (int p = 0; p < P; ++p) {
            const bool pin = b.m_exps.get_ind(p);
            if (ranked_own[p]) {
                const PBicChangeRankedObs& o = *ranked_own[p];
                int t_in = 0;
                std::vector<int> bin_in(o.m_bin_count, 0);
                for (ds_bitvec_iter v(b.m_vars); v; ++v) {
                    const int vb = o.m_var_bin[g.node_var(v)];
                    if (vb >= 0)
                        ++bin_in[vb];
                    t_in += o.within(g.node_var(v));
                }
                ASSERT_EQ(o.m_bin_in, bin_in) << step;
                ASSERT_EQ(o.m_thresh_in, t_in) << step;
                ASSERT_NEAR(heap.value(2 * B, p), pin ? o.m_gain : -o.m_gain, 1e-4) << step;
                continue;
            }
            const float m = b.get_prop_margin(p);
            ASSERT_NEAR(props[p].m_gain, m, 1e-3 * (1 + std::fabs(m))) << step << " prop " << p;
            ASSERT_NEAR(heap.value(2 * B, p), pin ? 0.5f * m : -1.5f * m, 1e-3 * (1 + std::fabs(m))) << step;
        }
        // The ranked observers whose property is inside list themselves.
        std::set<const PBicChangeRankedObs*> listed(inside.begin(), inside.end()), in_now;
        for (const PBicChangeRankedObs* x : ranked)
            if (b.m_exps.get_ind(x->m_node))
                in_now.insert(x);
        ASSERT_EQ(listed, in_now) << step;
        ASSERT_EQ(listed.size(), inside.size());
        // Variable entries: margin over the graph, ranked part, relation cost.
        for (int v = P; v < N; ++v) {
            const PBicChangeVarObs& o = vars[v];
            const int id = g.node_var(v);
            ASSERT_EQ(o.m_br_count, rel_in[id]) << step << " var " << v;
            float rk = 0.0f;
            for (const PBicChangeRankedObs* x : ranked)
                if (b.m_exps.get_ind(x->m_node))
                    rk += x->within(id) ? x->m_score_in : x->m_score_out;
            ASSERT_NEAR(o.m_ranked, rk, 1e-3 * (1 + std::fabs(rk))) << step;
            const bool vin = b.m_vars.get_ind(v);
            const int bin = r.wgt->get_var_node_bin(v);
            const float full = b.ExpVarBiclust::get_var_margin(v) + o.m_ranked + o.m_br_cost;
            const double entry = vin ? heap.value(2 * bin + 1, v) : heap.value(2 * bin, v);
            ASSERT_NEAR(entry, vin ? full : -full, 2e-3 * (1 + std::fabs(full))) << step << " var " << v;
        }
        // The relation costs of the moved variable and of the variables related to it are current.
        if (!prop) {
            const int id = g.node_var(node);
            for (int v = P; v < N; ++v) {
                const int o = g.node_var(v);
                if (o != id && br.get_relation(o, id) == -1)
                    continue;
                const float c = cost.get_node_cost(v, rel_in[o], !b.m_vars.get_ind(v));
                ASSERT_FLOAT_EQ(vars[v].m_br_cost, c) << step << " var " << v;
            }
        }
    }
    ASSERT_TRUE(heap.verify());
}
