// LDTable and LDTableDispatch: table indices against an independent mixed-radix formula, the
// parent limit, fresh and kept entries, filling, reading and writing, the running index of the
// dispatching table, and the log helpers.
#include "LDTable.h"
#include "EbnTestUtil.h"
#include "LocalDist.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <sstream>

namespace {

// The entry of a state: the node's value, then each parent's value times the product of the
// node's card and the cards of the parents before it.
int formula_index(const BNet<int>& net, const BNState<int>& st, int v) {
    int ndx = st[v], stride = net.get_rvar_card(v);
    for (int p : net.get_parents(v)) {
        ndx += st[p] * stride;
        stride *= net.get_rvar_card(p);
    }
    return ndx;
}

// Node 0 with `k` random parents among nodes 1..k of random cards 2-4.
struct StarNet {
    BNet<int> net;
    std::unique_ptr<BNStateDispatch<int>> st;
    StarNet(std::mt19937& rng, int k) {
        std::uniform_int_distribution<int> card(2, 4);
        for (int v = 0; v <= k; ++v)
            net.add_rand_var(v, card(rng));
        std::vector<int> ps;
        for (int v = 1; v <= k; ++v)
            ps.push_back(v);
        std::shuffle(ps.begin(), ps.end(), rng);
        for (int p : ps)
            net.insert_edge(p, 0, -1);
        st.reset(new BNStateDispatch<int>(net));
        net.set_state_ref(*st);
    }
};

// A plain and a dispatching table whose entry i holds i, so logp reads back the index; ten thousand
// single changes over random stars, the dispatching index moving by the changed input's factor.
TEST(LDTable, IndicesMatchTheFormulaAndTheRunningIndexFollowsChanges) {
    const std::uint32_t seed = test_seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 rng(seed);
    for (int round = 0; round < 40; ++round) {
        const int k = round % 7;
        StarNet s(rng, k);
        LDTable t(s.net, *s.st, 0);
        LDTableDispatch d(s.net, *s.st, 0);
        int size = 1;
        for (int v = 0; v <= k; ++v)
            size *= s.net.get_rvar_card(v);
        ASSERT_EQ(t.get_tab_size(), size);
        EXPECT_EQ(t.get_num_inp(), k);
        std::vector<float> vals(size);
        for (int i = 0; i < size; ++i)
            vals[i] = static_cast<float>(i);
        t.set_table(vals);
        d.set_table(vals);
        const std::list<int>& ps = s.net.get_parents(0);
        for (int change = 0; change < 250; ++change) {
            const int v = std::uniform_int_distribution<int>(0, k)(rng);
            const int before = d.get_cur_ndx(), old = (*s.st)[v];
            const int x = std::uniform_int_distribution<int>(0, s.net.get_rvar_card(v) - 1)(rng);
            s.st->set_rv_state(v, x);
            // A parent's factor is the one at its place in the parent list.
            if (v > 0) {
                ASSERT_EQ(d.get_cur_ndx() - before,
                          (x - old) * d.get_input_factor(
                                          std::distance(ps.begin(), std::find(ps.begin(), ps.end(), v))));
            }
            ASSERT_EQ(static_cast<int>(t.logp()), formula_index(s.net, *s.st, 0)) << "change " << change;
            ASSERT_EQ(d.logp(), t.logp()) << "change " << change;
        }
    }
}

TEST(LDTable, FreshKeptAndFilledEntries) {
    TableNet tn({3, 2, 2}, {{1}, {}, {}}, {std::vector<double>(6, 1.0 / 3), bern(0.5), bern(0.5)});
    LDTable t(tn.net, *tn.state, 0);
    const float third = logf(1.0f / 3);
    EXPECT_EQ(t.get_table(), std::vector<float>(6, third));
    std::vector<float> probs = {-1.0f, -2.0f, -3.0f};
    tn.state->set_rv_state(1, 1);
    t.set_func(*tn.state, probs);
    // A new parent: the held entries stay, the new half is log(1/3).
    tn.net.insert_edge(2, 0, -1);
    t.reinit();
    EXPECT_EQ(t.get_table(), (std::vector<float>{third, third, third, -1, -2, -3, third, third, third, third,
                                                 third, third}));
    // Written and read back exactly; a short stream keeps what it read and leaves the rest.
    std::ostringstream os;
    t.write(os);
    LDTable u(tn.net, *tn.state, 0);
    std::istringstream in(os.str()), bad("-5 -6 oops");
    u.read(in);
    EXPECT_EQ(u.get_table(), t.get_table());
    u.read(bad);
    EXPECT_EQ(u.get_table()[1], -6.0f);
    EXPECT_EQ(u.get_table()[2], third);
}

TEST(LDTableDispatch, DestructorUnsubscribes) {
    TableNet tn({2, 2}, {{}, {0}}, {bern(0.5), cat(bern(0.1), bern(0.9))});
    struct Probe {
        void on(int, int, int) {}
    } probe;
    // Event 0 has node 0's table at slot 0 and node 1's at slot 1; a second table of node 1
    // takes slot 2 and must give it back when destroyed.
    { LDTableDispatch extra(tn.net, *tn.state, 1); }
    EXPECT_EQ(tn.state->get_dispatch().subscribe(0, 0, makeFunctor(probe, &Probe::on)), 2)
        << "the freed slot of the destroyed table comes back first";
    tn.state->set_rv_state(0, 1);
    tn.state->set_rv_state(1, 1);
    EXPECT_FLOAT_EQ(tn.net.get_ldist(1)->logp(), logf(0.9f));
}

TEST(LDTableDeathTest, FatalTexts) {
    // Node 0 with 9 parents is accepted; with 10 it dies.
    BNet<int> net;
    for (int v = 0; v <= 10; ++v)
        net.add_rand_var(v, 2);
    for (int p = 1; p <= 9; ++p)
        net.insert_edge(p, 0, -1);
    BNState<int> st(net);
    LDTable nine(net, st, 0);
    EXPECT_EQ(nine.get_tab_size(), 1024);
    net.insert_edge(10, 0, -1);
    std::vector<float> two(2, 0.0f), three(3, 0.0f);
    const struct {
        std::function<void()> call;
        const char* text;
    } cases[] = {
        {[&] { LDTable t(net, st, 0); },
         R"(LDTable\([0-9]+\): Cannot init LDTable with more than 10 parents, exiting on attempt to add 10 parents to rvid 0)"},
        {[&] { nine.reinit(); }, R"(LDTable\([0-9]+\): Cannot init LDTable with more than 10 parents)"},
        {[&] {
             LDTable t(net, st, 1);
             t.set_func(st, three);
         },
         R"(LDTable\([0-9]+\): Tried to set table func with prob vector of size 3 where rvid 1 card is 2)"},
        {[&] {
             LDTable t(net, st, 1);
             t.set_table(three);
         },
         R"(LDTable\([0-9]+\): Tried to set table of size 3 where rvid 1 table size is 2)"},
    };
    for (const auto& c : cases)
        EXPECT_DEATH(c.call(), c.text);
    LDTable one(net, st, 1);
    one.set_table(two);
    EXPECT_EQ(one.logp(), 0.0f);
}

} // namespace
