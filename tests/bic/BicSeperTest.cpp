// Separation trackers and observers against brute force on small random graphs, the two separation
// optimisers, and the trackers' fatal texts.
#include "BicGreedyOpt.h"
#include "BicSynth.h"

#include <algorithm>
#include <cfloat>
#include <random>

namespace {

const int kConds = 6, kGenes = 12;
// Classes of conditions 0-5; class 0 is the bicluster's, so conditions 2, 3 and 5 are the others.
const char* kClassKey = "0 in\n1 out\n";
const char* kClassAssoc = "0 0 0\n0 0 1\n0 1 2\n0 1 3\n0 1 5\n";

// Condition nodes 0-5 (conditions 0-5), variable nodes 6-17 (genes 0-11) in three bins. Non-edge
// weights in [-1, 0), edge weights in [0, 2): the bin-level edge weight (2) bounds them all.
struct RandGraph {
    explicit RandGraph(unsigned seed) : d(kGenes, nullptr, cond_key(kConds), "") {
        std::mt19937 rng(seed);
        std::uniform_real_distribution<float> u(0.0f, 1.0f);
        Edges edges;
        for (int e = 0; e < kConds; ++e)
            for (int v = kConds; v < kConds + kGenes; ++v)
                if (u(rng) < 0.4f)
                    edges.emplace_back(e, v, 1.0f);
        g.reset(hand_graph(d, std::vector<int>(kConds, 0), std::vector<int>(kGenes, 0), edges));
        std::vector<int> bins(kConds + kGenes, 0);
        for (int v = kConds; v < kConds + kGenes; ++v)
            bins[v] = (v * 7) % 3;
        w.reset(new HandWgt(*g, bins, 3));
        for (int b = 0; b < 3; ++b)
            for (int e = 0; e < kConds; ++e) {
                w->m_non_edge[b][e] = -u(rng);
                w->m_edge[b][e] = 2.0f;
            }
        for (float& x : w->m_edge_w)
            x = 2.0f * u(rng);
        std::istringstream ck(kClassKey), ca(kClassAssoc);
        classes.reset(new ExpClasses(ck, ca, kConds));
        vars.set_size(kGenes);
        for (int gene = 0; gene < kGenes; gene += 2)
            vars.set_ind(gene); // the odd genes are the outside set
    }
    BicData d;
    std::unique_ptr<ExpVarGraphACO> g;
    std::unique_ptr<HandWgt> w;
    std::unique_ptr<ExpClasses> classes;
    ds_bitvec vars;
};

// min over `lo` of a(x), max over `hi` of b(x), as the observers define the separation after a move.
template <class A, class B>
double gap(const std::vector<int>& lo, const std::vector<int>& hi, A a, B b, double seper) {
    double mn = FLT_MAX, mx = -FLT_MAX;
    for (int x : lo)
        mn = std::min(mn, a(x));
    for (int x : hi)
        mx = std::max(mx, b(x));
    return (mn - mx) - seper;
}

TEST(SeperTrack, TracksAndObserversMatchBruteForce) {
    const unsigned base = test_seed();
    for (unsigned rep = 0; rep < 6; ++rep) {
        const unsigned seed = base + rep;
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandGraph r(seed);
        const ExpVarGraphBase& g = *r.g;
        const HandWgt& w = *r.w;
        PairTable pt(g, w);
        Quiet q;
        DynBiclust b(g, *r.w);
        BicHeap eh, vh;
        AllVarSeperTrack vt;
        AllCondSeperTrack ct;
        vt.attach(b, r.vars);
        ct.attach(b, *r.classes, 0);
        std::vector<BicChangeExpSepeObs> eo(kConds);
        std::vector<BicChangeVarSepeObs> vo(kConds + kGenes);
        for (int e = 0; e < kConds; ++e)
            eo[e].attach(b, eh, &vt, e, 0, 1.0f, 1.0f, 0.0f, false);
        for (int v = kConds; v < kConds + kGenes; ++v)
            vo[v].attach(b, vh, &ct, v, 0, 1, 0.0f, false);
        std::vector<int> var_out, cond_out = {2, 3, 5};
        for (int v = kConds; v < kConds + kGenes; ++v)
            if (!r.vars.get_ind(g.node_var(v)))
                var_out.push_back(v);
        std::mt19937 rng(seed);
        auto pick = [&rng](int n) { return std::uniform_int_distribution<int>(0, n - 1)(rng); };
        double var_seper = 0, cond_seper = 0; // kept while a list is empty
        for (int step = 0; step < 400; ++step) {
            const int op = pick(20);
            const int e = pick(kConds), v = kConds + pick(kGenes);
            if (op == 0) {
                eh.reset(-1);
                vh.reset(-1);
                b.reset();
            } else if (op < 6) {
                b.m_exps.get_ind(e) ? b.del_exp_node(e) : b.add_exp_node(e);
            } else {
                b.m_vars.get_ind(v) ? b.del_var_node(v) : b.add_var_node(v);
            }
            const std::vector<int> in_e = PairTable::members(b.m_exps), in_v = PairTable::members(b.m_vars);
            auto vscore = [&](int x) { return pt.var_margin(in_e, x); };
            auto escore = [&](int x) { return pt.exp_margin(in_v, x); };
            // Track scores, members, lists in ascending order of score, separations.
            const auto check_track = [&](const auto& t, int from, int to, auto score,
                                         const std::vector<int>& in, size_t out_size) {
                for (int x = from; x < to; ++x)
                    ASSERT_NEAR(t.score(x), score(x), 1e-4) << "step " << step;
                std::vector<int> got;
                for (const auto& tr : t.m_in)
                    got.push_back(tr.m_node);
                std::sort(got.begin(), got.end());
                ASSERT_EQ(got, in);
                ASSERT_EQ(t.m_out.size(), out_size);
                for (const auto* list : {&t.m_in, &t.m_out})
                    for (size_t i = 1; i < list->size(); ++i)
                        ASSERT_LE(t.score((*list)[i - 1].m_node), t.score((*list)[i].m_node));
            };
            check_track(vt, kConds, kConds + kGenes, vscore, in_v, var_out.size());
            check_track(ct, 0, kConds, escore, in_e, cond_out.size());
            if (!in_v.empty())
                var_seper = gap(in_v, var_out, vscore, vscore, 0.0);
            if (!in_e.empty())
                cond_seper = gap(in_e, cond_out, escore, escore, 0.0);
            ASSERT_NEAR(vt.m_seper, var_seper, 1e-4) << "step " << step;
            ASSERT_NEAR(ct.m_seper, cond_seper, 1e-4) << "step " << step;

            // The observers of one side, on the separation of the other: the own gain is the margin; a
            // node outside without a positive gain has no entry; else its entry (conditions on heap 0,
            // variables on 0 outside and 1 inside) is minus the change of separation its move brings:
            // without it the other side's scores lose its pair weight; with it the members gain their
            // non-edge weight and the others their pair weight.
            const auto check_side = [&](auto& obs, BicHeap& h, int from, int to, bool cond,
                                        const std::vector<int>& o_in, const std::vector<int>& o_out,
                                        auto o_score, double seper) {
                for (int x = from; x < to; ++x) {
                    SCOPED_TRACE("step " + std::to_string(step) + " node " + std::to_string(x));
                    const double m = cond ? escore(x) : vscore(x);
                    ASSERT_NEAR(obs[x].m_gain, m, 1e-4);
                    const bool in = (cond ? b.m_exps : b.m_vars).get_ind(x);
                    const int heap = !cond && in ? 1 : 0;
                    if (!in && m <= 1e-4) {
                        if (m <= 0 && obs[x].m_gain <= 0) {
                            ASSERT_FALSE(h.is_used(0, x));
                        }
                        continue;
                    }
                    ASSERT_TRUE(h.is_used(heap, x));
                    ASSERT_FALSE(!cond && h.is_used(1 - heap, x));
                    if (o_in.empty() || (!in && o_out.empty()))
                        continue;
                    const auto pair = [&](int o) { return cond ? pt.pair(x, o) : pt.pair(o, x); };
                    const auto non_edge = [&](int o) {
                        return cond ? w.get_non_edge_exp_weight(x, w.get_var_node_bin(o))
                                    : w.get_non_edge_exp_weight(o, w.get_var_node_bin(x));
                    };
                    const auto without = [&](int o) { return o_score(o) - pair(o); };
                    const double delta =
                        in ? gap(o_in, o_out, without, without, seper)
                           : gap(
                                 o_in, o_out, [&](int o) { return o_score(o) + non_edge(o); },
                                 [&](int o) { return o_score(o) + pair(o); }, seper);
                    ASSERT_NEAR(obs[x].m_delta, delta, 1e-4);
                    ASSERT_NEAR(h.value(heap, x), -delta, 1e-4);
                }
            };
            check_side(eo, eh, 0, kConds, true, in_v, var_out, vscore, var_seper);
            check_side(vo, vh, kConds, kConds + kGenes, false, in_e, cond_out, escore, cond_seper);
        }
    }
}

options& seper_options(const std::string& can_del_init_var) {
    return bic_options(greedy_text("S", "111" + can_del_init_var + "0") + "VarTrackLogit = 0\n");
}

// Both optimisers end, and the separation they report is that of the bicluster they return.
TEST(SeperGreedy, BothOptimisersEndOnTheirSeparation) {
    const unsigned base = test_seed();
    for (unsigned rep = 0; rep < 4; ++rep) {
        SCOPED_TRACE("seed " + std::to_string(base + rep));
        RandGraph r(base + rep);
        PairTable pt(*r.g, *r.w);
        ExpVarBiclust seed(*r.g, *r.w);
        seed.add_exp_node(0);
        seed.add_exp_node(1);
        for (int v = kConds; v < kConds + 4; ++v)
            seed.add_var_node(v);
        Quiet q;
        BicSeperGreedy cond_opt(*r.g, *r.w, *r.classes, 0, seper_options("1"), "S");
        ExpVarBiclust a(seed);
        cond_opt.grow(a);
        EXPECT_TRUE(a == cond_opt.m_bic);
        const std::vector<int> ae = PairTable::members(a.m_exps), av = PairTable::members(a.m_vars);
        ASSERT_FALSE(ae.empty());
        for (int e : ae) // no condition of another class enters
            EXPECT_TRUE(e == 0 || e == 1 || e == 4) << e;
        auto escore = [&](int x) { return pt.exp_margin(av, x); };
        EXPECT_NEAR(cond_opt.get_cur_score(), gap(ae, {2, 3, 5}, escore, escore, 0.0), 1e-4);

        BicVarSeperGreedy var_opt(*r.g, *r.w, r.vars, seper_options("1"), "S");
        ExpVarBiclust c(seed);
        var_opt.grow(c);
        const std::vector<int> ce = PairTable::members(c.m_exps), cv = PairTable::members(c.m_vars);
        std::vector<int> out;
        for (int v = kConds; v < kConds + kGenes; ++v)
            if (!r.vars.get_ind(r.g->node_var(v)))
                out.push_back(v);
        // A variable outside the set has no observer: it neither enters nor leaves.
        for (int v : out)
            EXPECT_EQ(c.m_vars.get_ind(v), seed.m_vars.get_ind(v)) << v;
        for (int v : cv)
            EXPECT_TRUE(r.vars.get_ind(r.g->node_var(v)) || v < kConds + 4) << v;
        auto vscore = [&](int y) { return pt.var_margin(ce, y); };
        if (!cv.empty()) {
            EXPECT_NEAR(var_opt.get_cur_score(), gap(cv, out, vscore, vscore, 0.0), 1e-4);
        }
    }
}

TEST(SeperDeath, FatalTexts) {
    RandGraph r(7);
    EXPECT_DEATH(BicSeperGreedy(*r.g, *r.w, *r.classes, 0, seper_options("0"), "S"),
                 R"(BicGreedyOpt\([0-9]+\): Seper Greedy can work only with can_del_init_var == true)");
    DynBiclust b(*r.g, *r.w);
    AllVarSeperTrack t;
    t.attach(b, r.vars);
    r.w->m_edge_w.assign(r.w->m_edge_w.size(), FLT_MAX);
    for (auto& row : r.w->m_non_edge)
        row.assign(row.size(), 0.0f);
    EXPECT_DEATH(b.add_exp_node(0), R"(BicSeperObs\([0-9]+\): Bad weight 3.40282e\+38 at all var add exp)");
    r.w->m_edge_w.assign(r.w->m_edge_w.size(), -FLT_MAX); // edge cnc 0
    for (auto& row : r.w->m_non_edge)
        row.assign(row.size(), -FLT_MAX);
    EXPECT_DEATH(b.add_exp_node(0),
                 R"(BicSeperObs\([0-9]+\): Bad non weight -3.40282e\+38 at all var add exp)");
}

} // namespace
