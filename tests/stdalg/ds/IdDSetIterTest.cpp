// IdDSetIter and GraphDSetIter against a brute-force enumeration of the subsets in walking order.
#include "ds/IdDSetIter.h"
#include "ds/GraphDSetIter.h"
#include "ds/GraphWeb.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace {

typedef std::vector<int> Ids;

// All index combinations of size k over `n` entries in lexicographic order.
void combos(int n, int k, int from, Ids& cur, std::vector<Ids>& out) {
    if (static_cast<int>(cur.size()) == k) {
        out.push_back(cur);
        return;
    }
    for (int i = from; i < n; ++i) {
        cur.push_back(i);
        combos(n, k, i + 1, cur, out);
        cur.pop_back();
    }
}

// The subsets the walk must give: forced entries hold their places, the position after them takes
// entry f or f + 1 when there are choice ids.
std::vector<Ids> brute_subsets(int k, int nallowed, const std::vector<bool>& allowed, const Ids& forced,
                               const Ids& choice) {
    std::vector<Ids> out;
    const int f = static_cast<int>(forced.size());
    if (k < f + (choice.empty() ? 0 : 1))
        return out;
    Ids order = forced;
    order.insert(order.end(), choice.begin(), choice.end());
    for (int id = 0; id < nallowed; ++id)
        if (allowed[id] && std::find(order.begin(), order.end(), id) == order.end())
            order.push_back(id);
    std::vector<Ids> all;
    Ids cur;
    combos(static_cast<int>(order.size()), k, 0, cur, all);
    for (const Ids& c : all) {
        bool ok = true;
        for (int j = 0; j < f; ++j)
            ok = ok && c[j] == j;
        if (!choice.empty())
            ok = ok && c[f] <= f + 1;
        if (!ok)
            continue;
        Ids s;
        for (int i : c)
            s.push_back(order[i]);
        out.push_back(s);
    }
    return out;
}

// Keeps the subset that the hooks describe and fails on a hook that doesn't fit it.
class Tracker : public IdDSetIter {
public:
    explicit Tracker(int k) : IdDSetIter(k), state(k, -1) {}
    void on_add_to_set(int position, int id) override {
        EXPECT_EQ(state[position], -1) << "add on a filled position";
        state[position] = id;
        ++adds;
    }
    void on_remove_from_set(int position, int id) override {
        EXPECT_EQ(state[position], id) << "remove of another id";
        state[position] = -1;
        ++removes;
    }
    Ids state;
    int adds = 0, removes = 0;
};

Ids current(const IdDSetIter& it) {
    Ids s;
    for (int j = 0; j < it.k(); ++j)
        s.push_back(it.id_at(j));
    return s;
}

TEST(IdDSetIter, RandomRestartsMatchBruteForce) {
    const std::uint32_t seed = test_seed(1616);
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 rng(seed);
    const int n = 12;
    for (int round = 0; round < 1500; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        // Allowed sets of every density, a quarter of them empty (only forced and choice ids left).
        ds_bitvec allowed(n);
        std::vector<bool> model(n);
        const unsigned density = rng() % 4;
        for (int i = 0; i < n; ++i)
            if ((model[i] = rng() % 4 < density))
                allowed.set_ind(i);
        Ids pool(n);
        std::iota(pool.begin(), pool.end(), 0);
        std::shuffle(pool.begin(), pool.end(), rng);
        const int nf = static_cast<int>(rng() % 3), nc = static_cast<int>(rng() % 4);
        Ids forced(pool.begin(), pool.begin() + nf), choice(pool.begin() + nf, pool.begin() + nf + nc);
        const int k = static_cast<int>(rng() % 5);
        const std::vector<Ids> want = brute_subsets(k, n, model, forced, choice);

        Tracker it(k);
        it.restart(allowed, forced, choice);
        std::vector<Ids> got;
        for (it.first(); it.valid(); ++it) {
            got.push_back(current(it));
            ASSERT_EQ(it.state, got.back());
        }
        EXPECT_EQ(got, want);
        EXPECT_EQ(it.adds, it.removes);
        EXPECT_EQ(it.state, Ids(k, -1));
    }
}

TEST(GraphDSetIter, InEdgesFollowTheSubset) {
    const std::uint32_t seed = test_seed(61);
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 rng(seed);
    GraphWeb g(0, false);
    for (int i = 0; i < 10; ++i)
        g.insert_node(i);
    for (int round = 0; round < 40; ++round) {
        const int node = static_cast<int>(rng() % 10);
        // Stale in-edges from an earlier walk or elsewhere go at first().
        g.insert_edge(static_cast<int>(rng() % 10), node);
        ds_bitvec allowed(10);
        for (int i = 0; i < 10; ++i)
            if (i != node && rng() % 3)
                allowed.set_ind(i);
        const int k = 1 + static_cast<int>(rng() % 3);
        GraphDSetIter it(g, k);
        it.restart(node, allowed, {}, {});
        int subsets = 0;
        for (it.first(); it.valid(); ++it) {
            Ids want = current(it), got;
            std::unique_ptr<GraphBaseEdgeIter> e(g.new_edge_iter(node, GraphBaseEdgeIter::In));
            for (e->first(); !e->at_end(); ++*e)
                got.push_back(e->other());
            std::sort(want.begin(), want.end());
            std::sort(got.begin(), got.end());
            ASSERT_EQ(got, want) << "round " << round;
            ++subsets;
        }
        EXPECT_EQ(g.node_in_edges_num(node), 0);
        EXPECT_TRUE(g.verify());
        const int m = allowed.on_bits();
        long long binom = 1;
        for (int i = 0; i < k; ++i)
            binom = binom * (m - i) / (i + 1);
        EXPECT_EQ(subsets, m >= k ? binom : 0);
    }
}

} // namespace
