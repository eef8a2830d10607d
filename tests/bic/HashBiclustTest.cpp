// NeigHash tables worked by hand and against a plain model of a pass; HashBiclust seeds, growth,
// deduplication and reduction on small hand graphs; the fatal of a kernel whose weight disagrees.
#include "HashBiclust.h"

#include "BicSynth.h"
#include "Random.h"
#include "ds/BitVecIter.h"

#include <algorithm>
#include <functional>
#include <map>
#include <random>
#include <set>

namespace {

std::string hash_text(const std::string& scope, int min_deg, int max_deg, int min_size, int max_size,
                      int min_vars, int greedy, int mb = 10, int neig = 20) {
    std::ostringstream t;
    t << "[" << scope << "]\nMaxNeigSize = " << neig << "\nMinHashDegree = " << min_deg
      << "\nMaxHashDegree = " << max_deg << "\nMaxHashSize = " << max_size << "\nMinHashSize = " << min_size
      << "\nMaxHashSizeMB = " << mb
      << "\nFocusallExp = 1\nFocusallVar = 0\nDesiredIterNum = 1\nMaxGrowBics = 5\nMinVarSetSize = "
      << min_vars << "\nShouldGreedy = " << greedy
      << "\nNBestEach = 5\nLogit = 0\nActiveExpGroup = { i 2\n0 1\n}\n"
      << "ActiveVarGroup = { i 2\n0 1\n}\n";
    return t.str();
}

options& hash_options() {
    static options& o =
        bic_options(hash_text("Plain", 1, 3, 1, 2, 1, 0) + hash_text("Deg2", 2, 2, 1, 2, 1, 0) +
                    hash_text("Deg5", 5, 9, 1, 2, 1, 0) + hash_text("Zero", 1, 9, 0, 1, 0, 0) +
                    hash_text("Three", 1, 9, 1, 3, 0, 0) + hash_text("Vars2", 1, 9, 1, 2, 2, 0) +
                    hash_text("Pairs", 1, 9, 2, 2, 2, 1) + hash_text("Pass", 1, 99, 1, 3, 0, 0, 1, 99) +
                    greedy_text("Greedy"));
    return o;
}

// Conditions by node (groups given), `vars` variables by node in group 0, edges with weights.
OneBin hash_fix(const std::vector<int>& exp_groups, int vars, const Edges& edges, float non_edge = 0.0f,
                int conds = 40) {
    return OneBin(exp_groups, std::vector<int>(vars, 0), edges, non_edge, std::max(64, vars), conds, 1);
}

// Conditions 0, 1, 2 (nodes 0-2); variables nodes 3-6: node 3 on all three (0.5, 1, 2), node 4 on
// 0 and 1 (1, 1), node 5 on 1 (1), node 6 on nothing.
OneBin three_conds() { return hash_fix({0, 0, 0}, 4, edges_of("0-3:0.5 1-3 2-3:2 0-4 1-4 1-5")); }

// The keys, weights and variables of a pass are checked against a plain model below.
TEST(NeigHash, DegreeBoundsAreInclusiveAndAnEmptyRangeRecordsNothing) {
    OneBin f = three_conds();
    Quiet q;
    NeigHash h(*f.g, *f.w, hash_options(), "Plain");
    EXPECT_EQ(h.hash(0), -1);
    // 3 condition nodes: keys of 0 bytes, 10 MB / 72 entries; {0}, {1}, {2} and their pairs.
    EXPECT_EQ(h.m_max_hash_table_size, 138888u);
    EXPECT_EQ(h.m_table.size(), 6u);
    NeigHash two(*f.g, *f.w, hash_options(), "Deg2");
    EXPECT_EQ(two.hash(0), -1);
    ASSERT_EQ(two.m_table.size(), 3u); // only node 4, with exactly two edges
    for (auto& e : two.m_table)
        EXPECT_EQ(e.second.get_set(), std::set<int>{4});

    NeigHash none(*f.g, *f.w, hash_options(), "Deg5");
    EXPECT_EQ(none.hash(3), -1);
    EXPECT_TRUE(none.m_table.empty());

    // With MinHashSize 0 the empty key is reached with weight 0 and never opened.
    NeigHash zero(*f.g, *f.w, hash_options(), "Zero");
    zero.hash(0);
    EXPECT_EQ(zero.m_table.size(), 3u);
    EXPECT_TRUE(zero.m_table.find(ds_bitvec(f.g->m_max_exp_node)) == zero.m_table.end());
    EXPECT_EQ(q.done().find("hasing v 6\n"), std::string::npos); // no edges: out of the degree range
}

TEST(NeigHash, OneConditionNeverStandsTwiceInAKey) {
    // Condition 0 as node 0 (group 0) and node 2 (group 1); condition 1 as node 1.
    OneBin f = hash_fix({0, 0, 1}, 1, edges_of("0-3 1-3 2-3"));
    Quiet q;
    NeigHash h(*f.g, *f.w, hash_options(), "Three");
    h.hash(0);
    // {0}, {1}, {2}, {0,1}, {1,2}: never {0,2} nor {0,1,2}.
    EXPECT_EQ(h.m_table.size(), 5u);
    for (const auto& e : h.m_table)
        EXPECT_FALSE(e.first.get_ind(0) && e.first.get_ind(2));
}

TEST(NeigHash, FiltersOfVariablesClassesAndRandomSubsets) {
    OneBin f = three_conds();
    Quiet q;
    NeigHash h(*f.g, *f.w, hash_options(), "Plain");
    h.set_var_filter(id_set({1}, 64)); // variable 1 is node 4
    h.hash(0);
    EXPECT_EQ(h.m_table.size(), 3u);

    std::istringstream key("0 A\n1 B\n"), assoc("0 0 0\n0 1 1\n0 1 2\n");
    ExpClasses classes(key, assoc, 3);
    NeigHash c(*f.g, *f.w, hash_options(), "Plain");
    c.ignore_non_class(classes, 1); // conditions 1 and 2 only
    c.hash(0);
    EXPECT_EQ(c.m_table.size(), 3u); // {1}, {2}, {1,2}
    EXPECT_TRUE(c.m_table.find(id_set({0}, f.g->m_max_exp_node)) == c.m_table.end());

    NeigHash r(*f.g, *f.w, hash_options(), "Plain");
    r.m_random_exp_subset_size = 2;
    r.randomize_exp_subset();
    EXPECT_EQ(std::count(r.m_exp_ignored.begin(), r.m_exp_ignored.end(), 0), 2);
}

// A plain model of the passes: a map from sorted condition lists to (weight, variables), filled
// variable by variable from `start` round the node space, with the fill rule and the penalty.
struct PassModel {
    std::map<std::vector<int>, std::pair<float, std::set<int>>> table;
    int run(const OneBin& f, int start, size_t limit, int max_size) {
        table.clear();
        const int tot = f.g->m_node_count;
        int stop = -1;
        for (int i = start; i < start + tot; ++i) {
            const int v = i % tot;
            if (f.g->is_exp_node(v) || f.g->node_in_edges_num(v) == 0)
                continue;
            std::vector<std::pair<int, float>> neig;
            for (int id = 0; id < f.g->m_edge_count; ++id)
                if (f.g->edge_dest(id) == v)
                    neig.emplace_back(f.g->edge_source(id),
                                      i > tot ? f.w->m_edge_w[id] - 3.4028234e+35f : f.w->m_edge_w[id]);
            std::sort(neig.begin(), neig.end());
            // Subsets in growing order: {a}, {a,b}, {a,b,c}, ..., {a,c}, ... as the enumeration meets them.
            std::vector<int> k;
            std::function<void(int, float)> grow = [&](int last, float w) {
                if (!k.empty()) {
                    auto it = table.find(k);
                    if (it != table.end() || (table.size() < limit && w > 0.0f)) {
                        auto& e = table[k];
                        e.first += w;
                        e.second.insert(v);
                    }
                }
                if (static_cast<int>(k.size()) >= max_size)
                    return;
                for (size_t b = static_cast<size_t>(last + 1); b < neig.size(); ++b) {
                    k.push_back(neig[b].first);
                    grow(static_cast<int>(b), w + neig[b].second);
                    k.pop_back();
                }
            };
            grow(-1, 0.0f);
            if (stop == -1 && table.size() >= limit)
                stop = v;
        }
        return stop;
    }
};

TEST(NeigHash, PassesFillStopAndPenaliseAsAPlainModel) {
    // 200 conditions (key of 25 bytes: 1000000 / 97 = 10309 entries), 160 variables of 8 random
    // neighbours each: a pass opens up to 92 keys per variable and fills the table part way.
    const std::uint32_t seed = test_seed(99);
    std::mt19937 rng(seed);
    Edges edges;
    const int conds = 200, vars = 160;
    for (int v = 0; v < vars; ++v) {
        std::set<int> pick;
        while (pick.size() < 8)
            pick.insert(static_cast<int>(rng() % conds));
        for (int c : pick)
            edges.emplace_back(c, conds + v, 0.25f * static_cast<float>(1 + rng() % 8));
    }
    OneBin f = hash_fix(std::vector<int>(conds, 0), vars, edges, 0.0f, conds);
    Quiet q;
    NeigHash h(*f.g, *f.w, hash_options(), "Pass");
    PassModel m;
    const int stop = h.hash(0);
    ASSERT_EQ(h.m_max_hash_table_size, 10309u);
    ASSERT_EQ(stop, m.run(f, 0, 10309, 3)) << "seed " << seed;
    ASSERT_NE(stop, -1) << "the table should fill in the first pass";
    for (int pass = 0; pass < 2; ++pass) {
        ASSERT_EQ(h.m_table.size(), m.table.size());
        int spoiled = 0;
        for (const auto& e : m.table) {
            const ds_bitvec k = id_set(e.first, conds);
            auto it = h.m_table.find(k);
            ASSERT_TRUE(it != h.m_table.end()) << "pass " << pass << " key " << k;
            ASSERT_EQ(it->second.get_set(), e.second.second);
            if (e.second.first < -1e30f) {
                ++spoiled;
                ASSERT_LT(it->second.m_weight, -1e30f);
            } else {
                ASSERT_NEAR(it->second.m_weight, e.second.first, 1e-4f);
            }
        }
        if (pass == 0) {
            EXPECT_EQ(spoiled, 0);
            const int stop2 = h.hash(stop);
            ASSERT_EQ(stop2, m.run(f, stop, 10309, 3));
        } else {
            EXPECT_GT(spoiled, 0); // the second pass reaches keys of the first
        }
    }
}

TEST(HashBiclust, MinVarSetSizeIsStrictAndResultsAreTheKernels) {
    OneBin f = three_conds();
    Quiet q;
    BicGreedyOpt opt(*f.g, *f.w, hash_options(), "Greedy", true);
    // Only key {1} has more than two variables.
    HashBiclust h(*f.g, *f.w, opt, hash_options(), "Vars2");
    ASSERT_EQ(h.m_bics.size(), 1u);
    EXPECT_TRUE(h.m_bics.front() == f.bic({1}, {3, 4, 5}));
    EXPECT_FLOAT_EQ(h.m_bics.front().m_score, 3.0f);
    EXPECT_EQ(h.m_cand_count, 1);
}

TEST(HashBiclust, SharedCandidateGrownOnceAndEqualGrowsKeptOnce) {
    // Three conditions by three variables, all edges of weight 1, non-edges -1, and a fourth
    // variable with one edge. Keys of two conditions: {0,1}, {0,2}, {1,2}, each held by both its
    // nodes; the optimiser grows each to the full 3 x 3 block.
    OneBin f = hash_fix({0, 0, 0}, 4, edges_of("0-3 1-3 2-3 0-4 1-4 2-4 0-5 1-5 2-5 0-6"), -1.0f);
    Quiet q;
    BicGreedyOpt opt(*f.g, *f.w, hash_options(), "Greedy", true);
    HashBiclust h(*f.g, *f.w, opt, hash_options(), "Pairs");
    const std::string err = q.done();
    EXPECT_EQ(h.m_cand_count, 3);
    ASSERT_EQ(h.m_bics.size(), 1u);
    EXPECT_TRUE(h.m_bics.front() == f.bic({0, 1, 2}, {3, 4, 5}));
    EXPECT_FLOAT_EQ(h.m_bics.front().m_score, 9.0f);
    auto count = [&](const std::string& s) {
        size_t n = 0;
        for (size_t p = err.find(s); p != std::string::npos; p = err.find(s, p + 1))
            ++n;
        return n;
    };
    EXPECT_EQ(count("finish growing, current score is 9 bic is :"), 3u); // six holdings, three grows
    EXPECT_EQ(count("HASHBIC bic exists in hash"), 2u);
    EXPECT_EQ(count("tot_nodes 7 des it 1"), 1u);
}

TEST(HashBiclust, ReduceRemovesTheLowerAndTheFirstOnATie) {
    // Condition 0 also as node 3 (group 1); variable nodes 4-7.
    OneBin f = hash_fix({0, 0, 0, 1}, 4, edges_of("0-4 1-4 0-5 1-5 0-6 1-6 3-6 2-7"));
    Quiet q;
    BicGreedyOpt opt(*f.g, *f.w, hash_options(), "Greedy", true);
    ds_bitvec all(64);
    all.set(true);
    HashBiclust h(*f.g, *f.w, opt, all, hash_options(), "Plain");
    // b1 = {0,1} x {4,5} (score 4), b2 = {3,1} x {5,6} (score 3: node 3 meets condition 0),
    // cells 4 each, shared 2 x 1: overlap 2 / 6.
    const ExpVarBiclust b1 = f.bic({0, 1}, {4, 5}), b2 = f.bic({3, 1}, {5, 6}), b3 = f.bic({2}, {7});
    ASSERT_FLOAT_EQ(b2.m_score, 3.0f);
    h.m_bics = {b1, b2, b3};
    h.reduce_bic_set(0.34f);
    EXPECT_EQ(h.m_bics.size(), 3u);
    h.reduce_bic_set(0.33f);
    ASSERT_EQ(h.m_bics.size(), 2u);
    EXPECT_TRUE(h.m_bics.front() == b1);

    // Equal scores: the first goes, and the scan goes on after it.
    const ExpVarBiclust c1 = f.bic({0, 1}, {4, 6}), c2 = f.bic({0, 1}, {4, 5});
    ASSERT_EQ(c1.m_score, c2.m_score);
    h.m_bics = {c1, c2, b3};
    h.reduce_bic_set(0.1f);
    ASSERT_EQ(h.m_bics.size(), 2u);
    EXPECT_TRUE(h.m_bics.front() == c2);
    EXPECT_NE(q.done().find("remove b1 "), std::string::npos);
}

// Edge weights twice what the score counts: a kernel's hash weight can't match its score.
class SkewWgt : public HandWgt {
public:
    using HandWgt::HandWgt;
    float get_edge_weight(int edge) const override { return 2.0f * HandWgt::get_edge_weight(edge); }
};

TEST(HashBiclustDeath, KernelWeightOffItsScoreIsFatal) {
    OneBin f = three_conds();
    SkewWgt w(*f.g, std::vector<int>(f.g->m_node_count, 0), 1);
    w.m_edge_w = f.w->m_edge_w;
    EXPECT_DEATH(
        {
            BicGreedyOpt opt(*f.g, w, hash_options(), "Greedy", true);
            HashBiclust h(*f.g, w, opt, hash_options(), "Plain");
        },
        R"(DynBiclust\([0-9]+\): Weight calc mismatch at bic init [0-9.]+ != [0-9.]+)");
}

} // namespace
