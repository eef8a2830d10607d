// The greedy set cover against a plain model that recomputes every gain from scratch, its stops,
// the edge bit of the counters, the prior and its fatal checks.
#include "BicSetCoverGreedy.h"
#include "PropFixture.h"
#include "ds/BitVecIter.h"

#include <cmath>
#include <random>
#include <set>

namespace {

// The plain model: the pairs a candidate covers are its variables with its focus properties and
// their lower levels (group - 2, - 4, ... of the same property); it holds those of its own
// properties only. Gains are recomputed from the active set at every step.
struct PlainCover {
    PlainCover(const RandomPropGraph& r, const PBicSet& set, const ds_bitvec& focus, const ds_bitvec* marks,
               double factor)
        : r(r), set(set), focus(focus), active(set.size(), false), prior(set.size(), 0.0) {
        for (int b = 0; b < set.size(); ++b)
            if (marks && marks->get_ind(b))
                prior[b] = factor * gain(b);
    }
    double w(int p, int v) const {
        const int bin = r.wgt->get_var_node_bin(v);
        return r.g->get_edge(p, v) != -1 ? r.wgt->get_edge_prop_weight(p, bin)
                                         : r.wgt->get_non_edge_prop_weight(p, bin);
    }
    std::set<int> covered_props(int b) const {
        std::set<int> out;
        for (ds_bitvec_iter p(set.m_bics[b].m_exps); p; ++p) {
            if (!focus.get_ind(p))
                continue;
            out.insert(p);
            for (int grp = r.g->node_group(p) - 2; grp >= 0; grp -= 2) {
                const int low = r.g->m_prop_group_nodes(grp, r.g->node_prop(p));
                if (focus.get_ind(low))
                    out.insert(low);
            }
        }
        return out;
    }
    int count(int p, int v) const {
        int c = 0;
        for (int b = 0; b < set.size(); ++b)
            c += active[b] && set.m_bics[b].m_vars.get_ind(v) && covered_props(b).count(p);
        return c;
    }
    double gain(int b) const {
        double g = 0.0;
        for (ds_bitvec_iter p(set.m_bics[b].m_exps); p; ++p)
            if (focus.get_ind(p))
                for (ds_bitvec_iter v(set.m_bics[b].m_vars); v; ++v) {
                    const int c = count(p, v);
                    if (!active[b] && c == 0)
                        g += w(p, v);
                    if (active[b] && c == 1)
                        g -= w(p, v);
                }
        return active[b] ? g + prior[b] : g - prior[b];
    }
    void run() {
        for (int steps = 0; steps < set.size(); ++steps) {
            int best = -1;
            double bg = 1.0;
            for (int b = 0; b < set.size(); ++b)
                if (gain(b) > bg) {
                    bg = gain(b);
                    best = b;
                }
            if (best < 0)
                return;
            active[best] = !active[best];
        }
    }
    const RandomPropGraph& r;
    const PBicSet& set;
    const ds_bitvec& focus;
    std::vector<bool> active;
    std::vector<double> prior;
};

// `n` distinct random candidates of 1-3 properties and 2-8 variables.
void random_candidates(const RandomPropGraph& r, PBicSet& set, int n, std::mt19937& rng) {
    std::set<std::pair<std::set<int>, std::set<int>>> seen;
    const int P = r.g->m_max_prop_node, V = r.g->m_node_count - P;
    while (set.size() < n) {
        std::set<int> ps, vs;
        for (int i = 1 + rng() % 3; i > 0; --i)
            ps.insert(rng() % P);
        for (int i = 2 + rng() % 7; i > 0; --i)
            vs.insert(P + rng() % V);
        if (!seen.insert({ps, vs}).second)
            continue;
        PropVarBiclust& b = set.m_bics[set.add_bic()];
        for (int p : ps)
            b.add_prop_node(p);
        for (int v : vs)
            b.add_var_node(v);
    }
}

} // namespace

TEST(BicSetCoverGreedy, MatchesPlainGreedyModel) {
    const std::uint32_t seed0 = test_seed();
    int selected = 0;
    for (std::uint32_t seed = seed0; seed < seed0 + 6; ++seed) {
        SCOPED_TRACE(seed);
        RandomPropGraph r(6, 4, 25, 0.3, seed);
        std::mt19937 rng(seed);
        PBicSet set(*r.g, *r.wgt);
        random_candidates(r, set, 30, rng);
        ds_bitvec focus(r.g->m_max_prop_node), marks(set.size());
        for (int p = 0; p < r.g->m_max_prop_node; ++p)
            if (rng() % 4 != 0)
                focus.set_ind(p);
        for (int b = 0; b < set.size(); ++b)
            if (rng() % 3 == 0)
                marks.set_ind(b);
        const double factor = (seed % 2) ? 0.3 : 0.0;
        BicSetCoverGreedy cover(*r.g, *r.wgt, set, &marks, factor, false, true);
        {
            Quiet q;
            cover.optimize(focus); // verify after every step: a disagreement is fatal
        }
        PlainCover model(r, set, focus, &marks, factor);
        model.run();
        for (int b = 0; b < set.size(); ++b)
            EXPECT_EQ(cover.is_active(b), model.active[b]) << b;
        // Counters equal the model's counts, and the edge bit the graph's edges.
        for (size_t i = 0; i < cover.m_focus_props.size(); ++i)
            for (int v : cover.m_used_vars) {
                const int p = cover.m_focus_props[i];
                EXPECT_EQ(cover.m_cover(i, v) & 0x7fff, model.count(p, v));
                EXPECT_EQ((cover.m_cover(i, v) & 0x8000) != 0, r.g->get_edge(p, v) != -1);
            }
        std::list<PropVarBiclust> out;
        std::vector<int> ids;
        cover.get_active_list(out, ids);
        EXPECT_EQ(static_cast<int>(out.size()), std::count(model.active.begin(), model.active.end(), true));
        EXPECT_TRUE(std::is_sorted(ids.begin(), ids.end()));
        selected += static_cast<int>(ids.size());

        // A prior factor of 0 on the marks selects as no marks at all.
        if (factor == 0.0) {
            BicSetCoverGreedy plain(*r.g, *r.wgt, set, nullptr, 0.5f, false, false);
            Quiet q;
            plain.optimize(focus);
            for (int b = 0; b < set.size(); ++b)
                EXPECT_EQ(plain.is_active(b), cover.is_active(b)) << b;
        }
    }
    EXPECT_GT(selected, 20); // the cases select, not only stop at once
}

TEST(BicSetCoverGreedy, GainOfExactlyOneStops) {
    // One property, two variables; the pair weights are 0.5 and `second`.
    for (const float second : {0.5f, 0.625f}) {
        RandomPropGraph r(1, 1, 2, 0.0, 1);
        r.wgt->m_non(0, 0) = 0.5f;
        r.wgt->m_non(0, 1) = second;
        PBicSet set(*r.g, *r.wgt);
        PropVarBiclust& b = set.m_bics[set.add_bic()];
        b.add_prop_node(0);
        b.add_var_node(1);
        b.add_var_node(2);
        ds_bitvec focus(1);
        focus.set_ind(0);
        BicSetCoverGreedy c(*r.g, *r.wgt, set, nullptr, 0.0f, false, true);
        Quiet q;
        c.optimize(focus);
        EXPECT_EQ(c.is_active(0), second != 0.5f);
    }
}

TEST(BicSetCoverGreedy, LongTrajectoryStops) {
    // Property 0 in groups 0 and 2 (nodes 0 and 2), one variable (node 3). B holds (0, v), weight
    // 10, marked with a fifth held back; A holds (2, v), weight 4, and covers the lower level (0, v).
    // B goes first (gain 8), then A (4); B is then no longer the only cover of its pair and its
    // removal gains its prior, 2: a third step, past the two candidates.
    RandomPropGraph r(1, 3, 1, 0.0, 1);
    r.wgt->m_non(0, 0) = 10.0f;
    r.wgt->m_non(2, 0) = 4.0f;
    PBicSet set(*r.g, *r.wgt);
    for (int p : {0, 2}) {
        PropVarBiclust& b = set.m_bics[set.add_bic()];
        b.add_prop_node(p);
        b.add_var_node(3);
    }
    ds_bitvec focus(3), marks(2);
    focus.set(true);
    marks.set_ind(0);
    BicSetCoverGreedy c(*r.g, *r.wgt, set, &marks, 0.2f, false, true);
    Quiet q;
    c.optimize(focus);
    const std::string err = q.done();
    EXPECT_NE(err.find("LONG Bic Cover Greedy trajectory, breaking out at cur imp = -2\n"), std::string::npos)
        << err;
    EXPECT_TRUE(c.is_active(0));
    EXPECT_TRUE(c.is_active(1));
    EXPECT_EQ(c.m_cover(c.m_focus_index[0], 3), 2);
}

TEST(BicSetCoverGreedyDeathTest, FatalTexts) {
    RandomPropGraph r(2, 1, 4, 0.5, 3);
    PBicSet set(*r.g, *r.wgt);
    PropVarBiclust& b = set.m_bics[set.add_bic()];
    b.add_prop_node(0);
    b.add_var_node(2);
    ds_bitvec focus(2);
    focus.set_ind(0);
    BicSetCoverGreedy c(*r.g, *r.wgt, set, nullptr, 0.0f, false, false);
    {
        Quiet q;
        c.optimize(focus);
    }
    c.m_delta[0] += 5.0;
    EXPECT_DEATH(c.verify(), R"(BicSetCoverGreedy\([0-9]+\): Inconsist wgt at (in)?active bid 0 wgt[01] )");

    EXPECT_DEATH(b.add_prop_node(0),
                 R"(PropVarBiclust\([0-9]+\): Trying to multiply add the prop node 0 to the nbicluster)");
    EXPECT_DEATH(
        b.del_prop_node(1),
        R"(PropVarBiclust\([0-9]+\): Trying to delete non existing bic prop node 1 from the bicluster)");
    std::istringstream k("0 1.0\n"), d("0 0 7 0 0.0\n");
    EXPECT_DEATH(set.read(k, d), R"(PropVarBiclust\([0-9]+\): Cant match prop node 7 0)");

    TempDir dir;
    dir.write("expk.txt", "0 a\n");
    VarUniverse u;
    u.init_idspace(2);
    PropMatrix m(u);
    for (const auto& c2 :
         {std::make_pair("5 0 1.0\n", "Bad var num 5"), std::make_pair("1 1 1.0\n", "Bad exp num 1")}) {
        dir.write("expr.txt", c2.first);
        std::map<std::string, std::string> params{{"file", dir.path()}};
        EXPECT_DEATH(m.read("tab", params), std::string(R"(PropMatrix\([0-9]+\): )") + c2.second);
    }
}
