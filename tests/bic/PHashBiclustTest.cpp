// Property keys, the property hash table against a plain model of a pass (forced groups, kept
// neighbours, the key's room, a full table), candidates and their growth, the sampling filters and
// the reduction of overlapping results.
#include "PHashBiclust.h"

#include "PropFixture.h"
#include "PropPairCorr.h"
#include "Random.h"
#include "ds/BitVecIter.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <map>
#include <random>
#include <set>

namespace {

// A layered graph made by hand: layer 0 has kConds properties in two orientation groups (0, 1),
// layer 1 kPssms properties in group 2, layer 2 kClasses in group 3; `vars` variables in one group.
// Each variable reaches a condition in one orientation with probability 0.3 (both in 1 of 20), one or
// two PSSMs, and each class with probability 0.3. Raw values are distinct; edge weights are drawn
// from (-0.5, 2.5), so some edges don't count, except those of PSSMs, from (0.5, 2.5).
struct HashWorld {
    static constexpr int kConds = 8, kPssms = 10, kClasses = 6;
    HashWorld(int vars, std::uint32_t seed) : universe(nullptr) {
        Quiet q;
        universe.init_idspace(vars);
        g.reset(new PropVarGraphLayers(universe, bic_options(""), "Default"));
        g->allocate_max_prop_group(4, kPssms);
        const int sizes[4] = {kConds, kConds, kPssms, kClasses};
        for (int grp = 0; grp < 4; ++grp) {
            g->m_group_layer[grp] = grp < 2 ? 0 : grp - 1;
            for (int p = 0; p < sizes[grp]; ++p)
                g->add_prop_node_to_group(grp, p);
        }
        g->update_max_vid();
        for (int v = 0; v < vars; ++v)
            g->add_var_node_to_group(0, v);
        std::mt19937 rng(seed);
        std::uniform_real_distribution<float> u(0.0f, 1.0f);
        const int P = g->m_max_prop_node;
        for (int v = P; v < g->m_node_count; ++v) {
            for (int c = 0; c < kConds; ++c) {
                const float r = u(rng);
                if (r < 0.3f)
                    edge(c + (r < 0.15f ? 0 : kConds), v, rng);
                if (r < 0.05f)
                    edge(c + kConds, v, rng);
            }
            const int first = 2 * kConds + static_cast<int>(rng() % kPssms);
            edge(first, v, rng);
            if (u(rng) < 0.5f)
                edge(2 * kConds + (first - 2 * kConds + 1 + rng() % (kPssms - 1)) % kPssms, v, rng);
            for (int c = 0; c < kClasses; ++c)
                if (u(rng) < 0.3f)
                    edge(2 * kConds + kPssms + c, v, rng);
        }
        wgt.reset(new TableWgt(*g));
        for (int p = 0; p < P; ++p)
            for (int b = 0; b < vars; ++b) {
                // PSSM edges always count, so every variable has a forced neighbour for group 2.
                const bool pssm = g->node_group(p) == 2;
                wgt->m_edge(p, b) = (pssm ? 0.5f : -0.5f) + (pssm ? 2.0f : 3.0f) * u(rng);
                wgt->m_non(p, b) = -0.2f;
            }
    }
    void edge(int p, int v, std::mt19937& rng) {
        if (g->get_edge(p, v) == -1)
            g->add_edge(p, v, 1.0f, std::uniform_real_distribution<float>(0.0f, 100.0f)(rng));
    }
    VarUniverse universe;
    std::unique_ptr<PropVarGraphLayers> g;
    std::unique_ptr<TableWgt> wgt;
};

struct HashCase {
    const char* name;
    int min_deg, max_deg, min_size, max_size, top_val, mb;
    std::vector<int> forced;
};

std::string hash_scope(const HashCase& c) {
    std::ostringstream t;
    t << "[" << c.name << "]\nMinHashDegree = " << c.min_deg << "\nMaxHashDegree = " << c.max_deg
      << "\nMaxHashSize = " << c.max_size << "\nMinHashSize = " << c.min_size << "\nMaxHashSizeMB = " << c.mb
      << "\nTopValNonForcedNeigToSamp = " << c.top_val << "\n";
    return t.str();
}

typedef std::map<std::vector<int>, double> ModelTable;

// A plain model of one pass from `start`: the neighbours of every admitted variable in the order of
// the graph's walk, the non-forced ones kept by a store whose bar is the smallest value kept, every
// key grown in list order, opened only while the table has room.
struct PassModel {
    PassModel(const HashWorld& w, const HashCase& c, unsigned int limit, int start) {
        const PropVarGraphLayers& g = *w.g;
        const int cap = std::min(c.max_size, 6);
        std::unique_ptr<GraphBaseEdgeIter> it(g.new_edge_iter(0, GraphBaseEdgeIter::In));
        for (int v = std::max(start, g.m_max_prop_node); v < g.m_node_count; ++v) {
            const int deg = g.node_in_edges_num(v);
            if (deg < c.min_deg || deg > c.max_deg)
                continue;
            std::vector<int> forced;
            std::vector<std::pair<float, int>> held;
            float bar = -FLT_MAX;
            for (it->restart(v); !it->at_end(); ++*it) {
                const int p = it->other();
                const float wgt = w.wgt->get_edge_weight(it->edge());
                if (!(wgt > 0.0f))
                    continue;
                weight[p] = wgt;
                if (std::count(c.forced.begin(), c.forced.end(), g.node_group(p))) {
                    forced.push_back(p);
                    continue;
                }
                const float val = g.m_edge_value[it->edge()];
                if (c.top_val <= 0 || val < bar)
                    continue;
                if (static_cast<int>(held.size()) == c.top_val)
                    held.erase(std::min_element(held.begin(), held.end()));
                held.emplace_back(val, p);
                bar = std::min_element(held.begin(), held.end())->first;
            }
            if (static_cast<int>(forced.size()) > cap)
                continue;
            std::sort(forced.begin(), forced.end());
            std::vector<int> kept;
            for (const auto& h : held)
                kept.push_back(h.second);
            std::sort(kept.begin(), kept.end());
            list = forced;
            list.insert(list.end(), kept.begin(), kept.end());
            double base = 0.0;
            for (int p : forced)
                base += weight[p];
            grow(g, forced, base, forced.size(), c.min_size, cap, limit);
            if (stop == -1 && table.size() >= limit)
                stop = v;
        }
    }
    void grow(const PropVarGraphLayers& g, std::vector<int> key, double wgt, size_t next, int min_size,
              int cap, unsigned int limit) {
        const int depth = static_cast<int>(key.size());
        if (depth >= min_size) {
            std::vector<int> sorted = key;
            std::sort(sorted.begin(), sorted.end());
            auto f = table.find(sorted);
            if (f != table.end())
                f->second += wgt;
            else if (table.size() < limit && wgt > 0.0)
                table[sorted] = wgt;
        }
        if (depth >= cap)
            return;
        for (size_t i = next; i < list.size(); ++i) {
            const int p = list[i];
            bool twin = false;
            for (int k : key)
                twin |= g.node_layer(k) == g.node_layer(p) && g.node_prop(k) == g.node_prop(p);
            if (twin)
                continue;
            key.push_back(p);
            grow(g, key, wgt + weight[p], i + 1, min_size, cap, limit);
            key.pop_back();
        }
    }
    std::map<int, float> weight;
    std::vector<int> list;
    ModelTable table;
    int stop = -1;
};

ModelTable table_of(const PNeigHash& h) {
    ModelTable out;
    for (const auto& e : h.m_table) {
        std::vector<int> k;
        for (int i = 0; i < e.first.size(); ++i)
            k.push_back(e.first[i]);
        out[k] = e.second;
    }
    return out;
}

void expect_same(const ModelTable& got, const ModelTable& want) {
    ASSERT_EQ(got.size(), want.size());
    for (const auto& e : want) {
        auto f = got.find(e.first);
        ASSERT_TRUE(f != got.end());
        EXPECT_NEAR(f->second, e.second, 1e-4 * (1.0 + e.second));
    }
}

} // namespace

TEST(SmallPropSet, SortedSixSlotsEqualityAndHash) {
    EXPECT_EQ(sizeof(SmallPropSet), 12u);
    SmallPropSet a, b;
    for (int n : {40, 3, 17, 3, 900})
        a.add(n);
    for (int n : {900, 17, 40, 3})
        b.add(n);
    EXPECT_EQ(a.size(), 4);
    const int want[6] = {3, 17, 40, 900, 0xFFFF, 0xFFFF};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(a[i], want[i]) << i;
    EXPECT_TRUE(a == b);
    EXPECT_EQ(a.hash(), b.hash());
    a.del(17);
    a.del(5);
    EXPECT_EQ(a.size(), 3);
    EXPECT_EQ(a[1], 40);
    EXPECT_FALSE(a.contains(17));
    EXPECT_TRUE(a != b);
}

TEST(SmallPropSetDeath, FullSetAndWideNode) {
    SmallPropSet full;
    for (int n = 0; n < 6; ++n)
        full.add(n * 2);
    const struct {
        int node;
        const char* re;
    } cases[] = {{7, R"(PHashBiclust\([0-9]+\): Small prop set is full, cannot add prop node 7)"},
                 {0xFFFF, R"(PHashBiclust\([0-9]+\): Prop node 65535 does not fit a small prop set)"},
                 {-1, R"(PHashBiclust\([0-9]+\): Prop node -1 does not fit a small prop set)"}};
    for (const auto& c : cases) {
        SmallPropSet k = full;
        EXPECT_DEATH(k.add(c.node), c.re) << c.node;
    }
    // A node already held is no addition.
    full.add(4);
    EXPECT_EQ(full.size(), 6);
}

TEST(PNeigHash, TableLimitFormula) {
    // (MB * 15625 mod 2^32 mod 2^26) * 4, worked out beside the code; 65927748 is 100 times the
    // inverse of 15625 modulo 2^26, a table of 400 entries.
    const std::pair<int, unsigned int> cases[] = {{0, 0u},          {1, 62500u},          {16, 1000000u},
                                                  {275, 17187500u}, {4294, 268375000u},   {4295, 2044u},
                                                  {8590, 4088u},    {300000, 227953536u}, {65927748, 400u}};
    for (const auto& c : cases)
        EXPECT_EQ(PNeigHash::table_limit(c.first), c.second) << c.first;
}

TEST(PNeigHash, PassesAgainstPlainModel) {
    const std::uint32_t seed = test_seed();
    SCOPED_TRACE(seed);
    HashWorld w(70, seed);
    const HashCase cases[] = {
        {"Open", 1, 99, 1, 3, 4, 16, {}},         {"Degrees", 4, 7, 2, 3, 3, 16, {}},
        {"Forced", 1, 99, 2, 3, 3, 16, {2}},      {"Room", 1, 99, 5, 8, 8, 16, {2}},
        {"NoneKept", 1, 99, 1, 4, 0, 16, {2, 3}}, {"Full", 1, 99, 1, 4, 8, 65927748, {}},
    };
    std::string text;
    for (const HashCase& c : cases)
        text += hash_scope(c);
    options& opts = bic_options(text);
    for (const HashCase& c : cases) {
        SCOPED_TRACE(c.name);
        Quiet q;
        PNeigHash h(*w.g, *w.wgt, opts, c.name);
        ds_bitvec forced(4);
        for (int grp : c.forced)
            forced.set_ind(grp);
        h.set_forced_groups(forced);
        const int stop = h.hash(0);
        const unsigned int limit = PNeigHash::table_limit(c.mb);
        PassModel m(w, c, limit, 0);
        EXPECT_EQ(stop, m.stop);
        const ModelTable got = table_of(h);
        expect_same(got, m.table);
        size_t largest = 0;
        for (const auto& e : got) {
            largest = std::max(largest, e.first.size());
            // Every key holds a forced neighbour (each variable has one), and at most one
            // orientation of a condition.
            if (!c.forced.empty()) {
                EXPECT_TRUE(std::any_of(e.first.begin(), e.first.end(),
                                        [&](int p) { return w.g->node_group(p) == 2; }));
            }
            for (int p : e.first)
                EXPECT_FALSE(p < HashWorld::kConds &&
                             std::count(e.first.begin(), e.first.end(), p + HashWorld::kConds));
        }
        EXPECT_LE(largest, 6u);
        if (std::string(c.name) == "Room") {
            EXPECT_EQ(largest, 6u); // MaxHashSize 8 is capped at the key's six slots
        }
        if (std::string(c.name) == "Full") {
            // The table fills in the first pass; keys open no more, known ones keep collecting.
            ASSERT_NE(stop, -1);
            EXPECT_EQ(got.size(), limit);
            const int again = h.hash(stop);
            PassModel m2(w, c, limit, stop);
            EXPECT_EQ(again, m2.stop);
            expect_same(table_of(h), m2.table);
        }
    }
}

namespace {

// Records every bicluster it is asked to grow; with `collapse` it turns each into the same one.
struct RecordingOpt : PBicLocalOpt {
    void grow(PropVarBiclust& bic) override {
        seen.push_back(&bic);
        if (collapse) {
            bic.reset();
            bic.add_prop_node(0);
            bic.add_var_node(bic.m_graph.m_max_exp_node);
        }
    }
    std::vector<PropVarBiclust*> seen;
    bool collapse = false;
};

std::string search_scope(const std::string& name, int local, int min_vars, const std::string& extra = "") {
    return "[" + name +
           "]\nMinHashDegree = 1\nMaxHashDegree = 99\nMaxHashSize = 3\nMinHashSize = 1\nMaxHashSizeMB = 1\n"
           "TopValNonForcedNeigToSamp = 6\nFocusallProp = 1\nFocusallVar = 1\nMaxGrowBics = 3\nMinVarSetSize "
           "= " +
           std::to_string(min_vars) + "\nShouldLocal = " + std::to_string(local) +
           "\nNBestEach = 4\nActivePropGroup = { i 4\n0 1 2 3\n}\nActiveVarGroup = { i 1\n0\n}\n" + extra;
}

} // namespace

TEST(PropVarBiclust, InitPropSetCliqueTakesEveryCommonVariable) {
    HashWorld w(40, 7);
    PropVarBiclust b(*w.g, *w.wgt, nullptr, nullptr);
    // Three properties of the first variable, so the clique holds at least that one.
    SmallPropSet key;
    std::unique_ptr<GraphBaseEdgeIter> it(w.g->new_edge_iter(w.g->m_max_prop_node, GraphBaseEdgeIter::In));
    for (; !it->at_end() && key.size() < 3; ++*it)
        key.add(it->other());
    ASSERT_EQ(key.size(), 3);
    b.init_prop_set_clique(key, 1.0f);
    int common = 0;
    for (int v = w.g->m_max_prop_node; v < w.g->m_node_count; ++v) {
        bool all = true;
        for (int i = 0; i < key.size(); ++i)
            all = all && w.g->get_edge(key[i], v) != -1;
        common += all;
        EXPECT_EQ(b.m_vars.get_ind(v), all) << v;
    }
    ASSERT_GT(common, 0);
    EXPECT_EQ(b.m_exps.on_bits(), 3);
    EXPECT_TRUE(b.verify());
    b.init_prop_set_clique(SmallPropSet(), 0.0f);
    EXPECT_EQ(b.m_exps.on_bits() + b.m_vars.on_bits(), 0);
}

TEST(PHashBiclust, CandidatesAreCliquesGrownOnceAndResultsDistinct) {
    HashWorld w(60, 3);
    options& opts =
        bic_options(search_scope("Rec", 1, 2) + search_scope("Same", 1, 2) + search_scope("Off", 0, 4));
    RecordingOpt rec;
    {
        Quiet q;
        PHashBiclust s(*w.g, *w.wgt, rec, opts, "Rec");
        // Each candidate is grown once, though several focus nodes may hold it.
        std::set<PropVarBiclust*> distinct(rec.seen.begin(), rec.seen.end());
        EXPECT_EQ(distinct.size(), rec.seen.size());
        EXPECT_GT(rec.seen.size(), 10u);
        EXPECT_EQ(static_cast<int>(s.m_grown.on_bits()), static_cast<int>(rec.seen.size()));
        EXPECT_LE(s.m_bics.size(), rec.seen.size());
    }
    RecordingOpt same;
    same.collapse = true;
    {
        Quiet q;
        PHashBiclust s(*w.g, *w.wgt, same, opts, "Same");
        ASSERT_EQ(s.m_bics.size(), 1u); // every candidate grew into one bicluster
        EXPECT_GT(same.seen.size(), 1u);
    }
    RecordingOpt none;
    Quiet q;
    PHashBiclust s(*w.g, *w.wgt, none, opts, "Off");
    EXPECT_TRUE(none.seen.empty());
    ASSERT_FALSE(s.m_bics.empty());
    // Ungrown candidates are the kernels themselves: all pairs edges, more than MinVarSetSize
    // variables, at most three properties.
    for (const PropVarBiclust& b : s.m_bics) {
        EXPECT_GT(b.m_vars.on_bits(), 4);
        EXPECT_LE(b.m_exps.on_bits(), 3);
        for (ds_bitvec_iter p(b.m_exps); p; ++p)
            for (ds_bitvec_iter v(b.m_vars); v; ++v)
                EXPECT_NE(w.g->get_edge(p, v), -1);
        EXPECT_TRUE(b.verify());
    }
}

TEST(PHashBiclust, ReduceCountsBothOrientationsAsOneProperty) {
    HashWorld w(20, 5);
    options& opts = bic_options(search_scope("Red", 0, 0));
    RecordingOpt rec;
    Quiet q;
    ds_bitvec all(20);
    all.set(true);
    PHashBiclust s(*w.g, *w.wgt, rec, all, opts, "Red");
    const int P = w.g->m_max_prop_node;
    auto make = [&](int prop, std::vector<int> vars, float score) {
        PropVarBiclust b(*w.g, *w.wgt, nullptr, nullptr);
        b.add_prop_node(prop);
        for (int v : vars)
            b.add_var_node(P + v);
        b.m_score = score;
        return b;
    };
    // Condition 0 up (node 0) and down (node kConds): one property; 3 shared variables of 4 and 4,
    // overlap 3 / (4 + 4 - 3) = 0.6. The PSSM of the same property id (node 2 kConds) is another.
    const int K = HashWorld::kConds;
    const struct {
        int prop2;
        float max_overlap;
        float score1, score2;
        size_t left;
        int front_prop;
    } cases[] = {{K, 0.59f, 1.0f, 2.0f, 1, K},     // the lower b1 goes
                 {K, 0.59f, 2.0f, 1.0f, 1, 0},     // the lower b2 goes
                 {K, 0.59f, 2.0f, 2.0f, 1, K},     // b1 goes on a tie
                 {K, 0.6f, 1.0f, 2.0f, 2, 0},      // 0.6 is not above 0.6
                 {2 * K, 0.0f, 1.0f, 2.0f, 2, 0}}; // no shared property
    for (const auto& c : cases) {
        s.m_bics.clear();
        s.m_bics.push_back(make(0, {0, 1, 2, 3}, c.score1));
        s.m_bics.push_back(make(c.prop2, {0, 1, 2, 5}, c.score2));
        s.reduce_bic_set(c.max_overlap);
        ASSERT_EQ(s.m_bics.size(), c.left);
        EXPECT_TRUE(s.m_bics.front().m_exps.get_ind(c.front_prop));
    }
}

TEST(PHashBiclust, PropFilterOneDrawPerNodeAndCorrFilter) {
    HashWorld w(30, 9);
    options& opts =
        bic_options(search_scope("Samp", 0, 0, "HashCandTotPThresh = 0.3\nHashCandLocTotPThresh = 0.7\n"));
    RecordingOpt rec;
    Quiet q;
    ds_bitvec all(30);
    all.set(true);
    PHashBiclust s(*w.g, *w.wgt, rec, all, opts, "Samp");
    const int P = w.g->m_max_prop_node;
    Random::reset(4242);
    std::vector<int> want(P);
    for (int p = 0; p < P; ++p) {
        const double u = Random::bits() / 4294967295.0;
        want[p] = u < (p < 2 * HashWorld::kConds ? 0.3 : 0.7) ? 0 : 1;
    }
    Random::reset(4242);
    s.gen_prop_filter();
    EXPECT_EQ(s.m_neig.m_prop_ignored, want);

    // Correlation filter on a graph of four properties over five variables: b = 2a (r = 1), c = -a
    // (r = -1), and d with r(a, d) = 5 / sqrt(10 * 30.8) by hand.
    VarUniverse u(nullptr);
    u.init_idspace(5);
    PropVarGraphLayers g(u, bic_options(""), "Default");
    g.allocate_max_prop_group(1, 4);
    for (int p = 0; p < 4; ++p)
        g.add_prop_node_to_group(0, p);
    g.update_max_vid();
    for (int v = 0; v < 5; ++v)
        g.add_var_node_to_group(0, v);
    const float a[5] = {1, 2, 3, 4, 5}, d[5] = {2, -4, 1, -1, 3};
    for (int v = 0; v < 5; ++v) {
        g.add_edge(0, 4 + v, 1.0f, a[v]);
        g.add_edge(1, 4 + v, 1.0f, 2 * a[v]);
        g.add_edge(2, 4 + v, 1.0f, -a[v]);
        g.add_edge(3, 4 + v, 1.0f, d[v]);
    }
    TableWgt tw(g);
    PropPairCorr corr(g);
    const struct {
        std::vector<int> sample;
        float bar;
        std::vector<int> ignored;
    } cases[] = {{{0, 1, 2, 3}, 0.99f, {0, 1, 1, 0}}, // a drops b and c; d stays
                 {{1, 2, 3}, 0.99f, {1, 0, 1, 0}},    // b drops c
                 {{0, 1, 2, 3}, 1.0f, {0, 0, 0, 0}},  // |r| = 1 is not above 1
                 {{0, 3}, 0.0f, {0, 1, 1, 1}}};       // r(a, d) = 0.285 is above 0
    ASSERT_NEAR(corr.get_corr(0, 3), 5.0 / std::sqrt(308.0), 1e-6);
    for (const auto& c : cases) {
        PHashBiclust f(g, tw, rec, all, opts, "Samp");
        ds_bitvec sample(4);
        for (int p : c.sample)
            sample.set_ind(p);
        f.m_neig.set_prop_filter(sample);
        f.prepare_prop_corr_filter(corr, c.bar);
        EXPECT_EQ(f.m_neig.m_prop_ignored, c.ignored);
    }
}
