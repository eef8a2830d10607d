// ExpVarBiclust and DynBiclust: scores and margins worked out by hand, the event sequence, the
// tables, and long random change sequences checked against from-scratch sums, heap entries included.
#include "BicGreedyOpt.h"
#include "BicSynth.h"

#include <random>
#include <sstream>
#include <utility>

namespace {

// Condition nodes 0 (condition 0), 1 (condition 1) in group 0 and 2 (condition 0) in group 1;
// variable nodes 3-6 are genes 0-3. Bins: nodes 3, 4 in bin 0, nodes 5, 6 in bin 1.
// Edges: e0 0-3 (weight 2), e1 0-4 (1.5), e2 1-3 (1), e3 1-5 (3), e4 2-6 (0.5), e5 0-6 (1).
// Non-edge weights, bin 0: -1, -0.5, -0.25 and bin 1: -2, -1, -0.5 for condition nodes 0, 1, 2.
// Node 5 carries an own weight of 0.25.
struct Hand : HandFix {
    Hand()
        : HandFix(4, 2, {0, 0, 1}, {0, 0, 0, 0}, edges_of("0-3:2 0-4:1.5 1-3 1-5:3 2-6:0.5 0-6"), 0,
                  {0, 0, 0, 0, 0, 1, 1}, 2) {
        w->m_non_edge = {{-1.0f, -0.5f, -0.25f}, {-2.0f, -1.0f, -0.5f}};
        w->m_edge = {{2.0f, 2.0f, 2.0f}, {3.0f, 3.0f, 3.0f}};
        w->m_var_w[5] = 0.25f;
    }
};

TEST(ExpVarBiclust, ScoreMarginsAndTablesByHand) {
    Hand h;
    ExpVarBiclust b = make_bic(*h.g, *h.w, {0, 1}, {3, 5});
    // Pairs: (0,3) edge 2, (0,5) non-edge -2, (1,3) edge 1, (1,5) edge 3; plus 0.25 of node 5.
    EXPECT_EQ(b.m_score, 4.25f);
    EXPECT_TRUE(b.verify());
    // Condition node 2 outside: non-edges -0.25 and -0.5; node 5's own weight not in its margin;
    // node 4 outside: edge 1.5, non-edge -0.5.
    EXPECT_EQ((std::vector<float>{b.get_exp_margin(0), b.get_exp_margin(1), b.get_exp_margin(2)}),
              (std::vector<float>{0.0f, 4.0f, -0.75f}));
    EXPECT_EQ((std::vector<float>{b.get_var_margin(3), b.get_var_margin(4), b.get_var_margin(5),
                                  b.get_var_margin(6)}),
              (std::vector<float>{3.0f, 1.0f, 1.0f, 0.0f}));

    std::ostringstream bick, bicd;
    b.dump_to_tables(7, bick, bicd);
    EXPECT_EQ(bick.str(), "7\t4.25\n");
    EXPECT_EQ(bicd.str(), "7\t0\t0\t0\t0\n7\t0\t1\t0\t4\n7\t1\t0\t0\t3\n7\t1\t2\t0\t1\n");

    // Changes are checked against from-scratch sums in the random run below.
    b.del_exp_node(0);
    b.add_var_node(6);
    b.del_exp_node(1);
    EXPECT_EQ(b.m_score, 0.25f); // only the own weight of node 5 is left
    b.del_var_node(5);           // its own weight leaves with it
    EXPECT_EQ(b.m_score, 0.0f);
    b.add_var_node(5);
    ds_bitvec ids;
    b.get_vars_set(ids);
    EXPECT_TRUE(ids.get_ind(0) && ids.get_ind(2) && ids.get_ind(3) && !ids.get_ind(1));
    // Copies are independent.
    ExpVarBiclust c(b);
    c.add_exp_node(2);
    EXPECT_FALSE(c == b);

    // init with a single-node set and the expected weight: (0,4) 1.5 + (1,4) -0.5.
    WeightedVarSet one(4, 1.0f);
    ExpVarBiclust i(*h.g, *h.w, one, id_set({0, 1}, 3));
    EXPECT_EQ(i.m_score, 1.0f);
    EXPECT_EQ(one.get_set(), std::set<int>({4}));
}

TEST(ExpVarBiclust, VerifyReportsADriftedScore) {
    Hand h;
    ExpVarBiclust b = make_bic(*h.g, *h.w, {1}, {3});
    b.m_score = 2.0f; // true score 1
    Quiet q;
    EXPECT_FALSE(b.verify());
    EXPECT_EQ(q.done(), "Bad weight verification at bic, test weight = 1 != cur weight 2\n");
    b.m_score = 1.005f;
    EXPECT_TRUE(b.verify());
}

// Records each event as its code, ":edge" after the codes of edge events; and whether the node is
// already in place when a variable is added.
struct Recorder {
    explicit Recorder(DynBiclust& b) : bic(b) {
        for (int code = 0; code < 7 + 3 * 7; ++code)
            bic.m_dispatch.subscribe(code, makeFunctor((CBFunctor1<int>*)0, *this, &Recorder::on));
    }
    void on(int code) {
        const bool edge_event = code >= 7 && (code - 7) % 3 != 0;
        seen += (seen.empty() ? "" : " ") + std::to_string(code) +
                (edge_event ? ":" + std::to_string(bic.m_cur_edge) : "");
        if (code == 1)
            in_place.push_back(bic.m_vars.get_ind(bic.m_cur_var_node));
        if (code == 0)
            score_at_reset = bic.m_score;
    }
    std::string take() {
        std::string t;
        t.swap(seen);
        return t;
    }
    DynBiclust& bic;
    std::string seen;
    std::vector<bool> in_place;
    float score_at_reset = 0.0f;
};

TEST(DynBiclust, RaisesEveryEventInOrder) {
    Hand h;
    DynBiclust b(*h.g, *h.w);
    Recorder r(b);
    b.add_exp_node(0); // out-edges e0 (to 3), e1 (4), e5 (6): codes 8 + 3k of the variables
    EXPECT_EQ(r.take(), "2 7 17:0 20:1 26:5");
    b.add_var_node(3); // in-edges e0 (from 0), e2 (from 1, outside): codes 8 + 3k of the conditions
    EXPECT_EQ(r.take(), "1 16 8:0 11:2");
    EXPECT_EQ(r.in_place, std::vector<bool>{true});
    EXPECT_EQ(b.m_cur_var_bin, 0);
    ExpVarBiclust saved(*h.g, *h.w);
    b.remember(saved);
    b.del_var_node(3);
    b.del_exp_node(0);
    b.revert(saved);
    EXPECT_EQ(r.take(), "5 3 16 9:0 12:2 4 7 18:0 21:1 27:5 6");
    EXPECT_TRUE(b == saved);
    EXPECT_EQ(b.m_score, 2.0f);
    // Reset first (raised before the reset), then conditions, then variables.
    b.set_to_bic(make_bic(*h.g, *h.w, {2}, {6}));
    EXPECT_EQ(r.score_at_reset, 2.0f);
    EXPECT_EQ(r.take(), "0 2 13 26:4 1 25 14:4 8:5");
    EXPECT_EQ(b.m_score, 0.5f);
}

TEST(DynBiclustDeath, FatalTexts) {
    Hand h;
    ExpVarBiclust b = make_bic(*h.g, *h.w, {1}, {3});
    EXPECT_DEATH(b.add_exp_node(1),
                 R"(DynBiclust\([0-9]+\): Trying to multiply add the exp node 1 to the nbicluster)");
    EXPECT_DEATH(b.del_exp_node(0),
                 R"(DynBiclust\([0-9]+\): Trying to delete non existing bic exp node 0 from the bicluster)");
    EXPECT_DEATH(b.add_var_node(3),
                 R"(DynBiclust\([0-9]+\): Trying to multiply add the node 3 to the nbicluster)");
    EXPECT_DEATH(b.del_var_node(5),
                 R"(DynBiclust\([0-9]+\): Trying delete non existent node 5 from the bic)");
    WeightedVarSet off(4, 1.02f); // true score 1: off by 2%
    EXPECT_DEATH(ExpVarBiclust(*h.g, *h.w, off, id_set({0, 1}, 3)),
                 R"(DynBiclust\([0-9]+\): Weight calc mismatch at bic init 1.02 != 1)");
}

// Long random sequences on a synthetic graph with both orientations (160 condition nodes, 1,200
// variable nodes): after each change the running score agrees with a from-scratch sum, and every
// node's heap entry (sub-heap weight included) with its margin, negated while outside, the
// condition keys with their cost factors.
TEST(DynBiclust, RandomChangesKeepScoreAndHeapExact) {
    const unsigned seed = test_seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::vector<int> pc, pg;
    for (int i = 0; i < 10; ++i)
        pc.push_back(3 * i);
    for (int i = 0; i < 60; ++i)
        pg.push_back(7 * i);
    Synth s(80, 600, pc, pg, 2.5f, seed, true);
    const ExpVarGraphBase& g = *s.graph;
    PairTable pt(g, *s.wgt);
    options& o = bic_options(greedy_text("R", "11110", 0.75f, 1.5f));
    Quiet q;
    BicGreedyOpt opt(g, *s.wgt, o, "R", true);
    DynBiclust& b = opt.m_bic;
    const int B = s.wgt->m_bins.m_bin_num;
    ASSERT_GT(B, 3);
    ExpVarBiclust saved(b);
    std::mt19937 rng(seed);
    auto pick = [&rng](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi - 1)(rng); };
    auto members = PairTable::members;
    opt.m_heap.reset(-1);
    b.reset();
    int checked_verify = 0;
    for (int step = 0; step < 3000; ++step) {
        const int op = pick(0, 100);
        const std::vector<int> in_e = members(b.m_exps), in_v = members(b.m_vars);
        bool heap_synced = true;
        // A node of [lo, hi) not yet in `set`.
        const auto fresh = [&](const ds_bitvec& set, int lo, int hi) {
            int x;
            do
                x = pick(lo, hi);
            while (set.get_ind(x));
            return x;
        };
        if (op < 30 && in_v.size() < 70) {
            b.add_var_node(fresh(b.m_vars, g.m_max_exp_node, g.m_node_count));
        } else if (op < 45 && in_e.size() < 16) {
            b.add_exp_node(fresh(b.m_exps, 0, g.m_max_exp_node));
        } else if (op < 70 && !in_v.empty()) {
            b.del_var_node(in_v[pick(0, static_cast<int>(in_v.size()))]);
        } else if (op < 85 && !in_e.empty()) {
            b.del_exp_node(in_e[pick(0, static_cast<int>(in_e.size()))]);
        } else if (op < 92) {
            b.remember(saved);
        } else if (op < 98) {
            b.revert(saved); // the heap observers don't follow a revert
            heap_synced = false;
        } else if (op < 99) {
            b.reset();
        } else {
            ExpVarBiclust rnd(g, *s.wgt);
            for (int k = 0; k < 5; ++k)
                rnd.m_exps.set_ind(pick(0, g.m_max_exp_node));
            for (int k = 0; k < 30; ++k)
                rnd.m_vars.set_ind(pick(g.m_max_exp_node, g.m_node_count));
            b.set_to_bic(rnd);
            ASSERT_TRUE(b == rnd);
        }
        double mag = 0;
        const double exact = pt.score(b, &mag);
        ASSERT_NEAR(b.m_score, exact, 1e-4 * (mag + 1)) << "step " << step << " op " << op;
        if (std::fabs(exact) > 0.05 * mag && mag > 0) {
            ASSERT_TRUE(b.verify()) << "step " << step;
            ++checked_verify;
        }
        if (!heap_synced) {
            const ExpVarBiclust copy(b);
            b.set_to_bic(copy); // the way back in step with the observers
        }
        // Conditions share one heap, their keys scaled by the cost factors; a variable sits on the
        // heap of its bin, the one of the outside or of the inside, and on no other.
        const std::vector<int> now_e = members(b.m_exps), now_v = members(b.m_vars);
        for (int n = 0; n < g.m_node_count; ++n) {
            const bool ex = n < g.m_max_exp_node, in = (ex ? b.m_exps : b.m_vars).get_ind(n);
            const double m = ex ? pt.exp_margin(now_v, n, &mag) : pt.var_margin(now_e, n, &mag);
            const int heap = ex ? 2 * B : 2 * s.wgt->get_var_node_bin(n) + in;
            ASSERT_TRUE(opt.m_heap.is_used(heap, n) && (ex || !opt.m_heap.is_used(heap ^ 1, n)))
                << "step " << step << " node " << n;
            ASSERT_NEAR(opt.m_heap.value(heap, n), ex ? (in ? 1.5 * m : -0.75 * m) : (in ? m : -m),
                        1e-4 * (mag + 1))
                << "step " << step << " node " << n;
        }
    }
    EXPECT_GT(checked_verify, 1000);
    ASSERT_TRUE(opt.m_heap.verify());
}

} // namespace
