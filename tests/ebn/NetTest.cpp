// Net: topological orders and Markov blankets of random DAGs against a plain adjacency model,
// the event sequence seen by a subscriber, edge indices across removals, node reading.
#include "Net.h"
#include "TestSupport.h"
#include "callback.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

// A random DAG over n nodes: a hidden permutation fixes which way an edge may go, so edges run
// from high rvids to low ones as often as the other way. Edges inserted in random order.
std::vector<std::pair<int, int>> random_dag(std::mt19937& rng, int n, double density) {
    std::vector<int> rank(n);
    for (int i = 0; i < n; ++i)
        rank[i] = i;
    std::shuffle(rank.begin(), rank.end(), rng);
    std::bernoulli_distribution coin(density);
    std::vector<std::pair<int, int>> edges;
    for (int a = 0; a < n; ++a)
        for (int b = 0; b < n; ++b)
            if (rank[a] < rank[b] && coin(rng))
                edges.push_back({a, b});
    std::shuffle(edges.begin(), edges.end(), rng);
    return edges;
}

// Brute-force blanket: parents, children and co-parents from the edge list, without the node.
std::vector<int> brute_blanket(const std::set<std::pair<int, int>>& edges, int v) {
    std::set<int> b;
    for (const auto& e : edges) {
        if (e.second == v)
            b.insert(e.first);
        if (e.first == v) {
            b.insert(e.second);
            for (const auto& f : edges)
                if (f.second == e.second)
                    b.insert(f.first);
        }
    }
    b.erase(v);
    return std::vector<int>(b.begin(), b.end());
}

void check_against_model(const Net& net, const std::set<std::pair<int, int>>& edges, int n) {
    ASSERT_TRUE(net.verify());
    std::list<int> order;
    net.compute_topo_order(order);
    ASSERT_EQ(static_cast<int>(order.size()), n);
    std::vector<int> pos(n, -1);
    int i = 0;
    for (int v : order)
        pos[v] = i++;
    for (int v = 0; v < n; ++v)
        ASSERT_NE(pos[v], -1) << "node " << v << " missing from the order";
    for (const auto& e : edges)
        EXPECT_LT(pos[e.first], pos[e.second]) << e.first << "->" << e.second;
    std::vector<std::list<int>> blankets(1, std::list<int>{42});
    net.compute_markov_blankets(blankets);
    ASSERT_EQ(static_cast<int>(blankets.size()), n + 1) << "lists are appended";
    EXPECT_EQ(blankets[0], std::list<int>{42});
    for (int v = 0; v < n; ++v) {
        const std::vector<int> want = brute_blanket(edges, v);
        EXPECT_EQ(std::vector<int>(blankets[v + 1].begin(), blankets[v + 1].end()), want) << "node " << v;
    }
}

TEST(Net, RandomDagsOrdersAndBlanketsAgainstBruteForce) {
    const std::uint32_t seed = test_seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 rng(seed);
    for (int round = 0; round < 60; ++round) {
        const int n = 1 + round % 15;
        const auto edges = random_dag(rng, n, round % 3 == 0 ? 0.6 : 0.25);
        Net net;
        for (int v = 0; v < n; ++v)
            net.add_rand_var(v, 2);
        std::set<std::pair<int, int>> model(edges.begin(), edges.end());
        for (const auto& e : edges)
            net.insert_edge(e.first, e.second, -1);
        check_against_model(net, model, n);
        // Remove a third of the edges, alternating the two forms, and check again.
        for (std::size_t k = 0; k < edges.size(); k += 3) {
            const auto& e = edges[k];
            if (k % 2)
                net.remove_edge(e.first, e.second);
            else
                net.remove_edge(net.get_edge_index(e.first, e.second));
            model.erase(e);
            ASSERT_TRUE(net.verify());
        }
        EXPECT_EQ(net.get_edges_num(), static_cast<int>(model.size()));
        EXPECT_EQ(net.get_edge_slots(), static_cast<int>(edges.size()));
        check_against_model(net, model, n);
    }
}

TEST(Net, OrderTiesFollowRvidAndParentOrder) {
    // Chain 2 -> 1 -> 0 built child first; then 3 with parents 4 then 0.
    Net net;
    for (int v = 0; v < 5; ++v)
        net.add_rand_var(v, 2);
    net.insert_edge(1, 0, -1);
    net.insert_edge(2, 1, -1);
    net.insert_edge(4, 3, -1);
    net.insert_edge(0, 3, -1);
    std::list<int> order;
    net.compute_topo_order(order);
    EXPECT_EQ(order, (std::list<int>{2, 1, 0, 4, 3}));
    Net empty;
    empty.compute_topo_order(order);
    EXPECT_TRUE(order.empty());
    std::vector<std::list<int>> blankets;
    empty.compute_markov_blankets(blankets);
    EXPECT_TRUE(blankets.empty());
}

struct EventLog {
    const Net* net = nullptr;
    std::vector<std::string> seen;
    void on(int e) {
        seen.push_back(std::to_string(e) + ":" + std::to_string(net->get_last_from()) + ">" +
                       std::to_string(net->get_last_to()));
    }
};

TEST(Net, SubscriberSeesParentThenChildEvents) {
    Net net;
    for (int v = 0; v < 3; ++v)
        EXPECT_EQ(net.add_rand_var(10 + v, 2), v);
    // Four consecutive ids per node: parent added, child added, parent removed, child removed.
    for (int v = 0; v < 3; ++v)
        EXPECT_EQ((std::vector<int>{net.get_parent_added_event(v), net.get_child_added_event(v),
                                    net.get_parent_removed_event(v), net.get_child_removed_event(v)}),
                  (std::vector<int>{4 * v, 4 * v + 1, 4 * v + 2, 4 * v + 3}));
    EventLog log;
    log.net = &net;
    for (int e = 0; e < 12; ++e)
        net.get_dispatch().subscribe(e, makeFunctor(log, &EventLog::on));
    net.insert_edge(0, 2, -1);
    net.insert_edge(1, 2, -1);
    net.remove_edge(0, 2);
    net.remove_edge(net.get_edge_index(1, 2));
    net.set_dispatch_on(false);
    net.insert_edge(0, 1, -1);
    EXPECT_EQ(log.seen, (std::vector<std::string>{"8:0>2", "1:0>2", "8:1>2", "5:1>2", "10:0>2", "3:0>2",
                                                  "10:1>2", "7:1>2"}));
}

TEST(Net, EdgeIndicesStayValidAfterRemovals) {
    Net net;
    for (int v = 0; v < 4; ++v)
        net.add_rand_var(v, 2);
    const int edges[][2] = {{0, 1}, {0, 2}, {1, 3}, {2, 3}};
    for (const auto& e : edges)
        net.insert_edge(e[0], e[1], -1);
    net.remove_edge(1);
    net.remove_edge(3);
    EXPECT_EQ(net.get_edge_index(1, 3), 2);
    net.insert_edge(2, 3, -1);
    EXPECT_EQ(net.get_edge_index(2, 3), 4) << "a removed index is never given out again";
    net.remove_edge(2);
    EXPECT_EQ(net.get_parents(3), std::list<int>{2});
    EXPECT_EQ(net.get_children(0), std::list<int>{1});
}

TEST(Net, NodesFromTriplesAndSparseVids) {
    Net net;
    std::istringstream in("0 7 2\n1 3 3\n2 7 4\n9");
    net.add_all_nodes(in);
    ASSERT_EQ(net.get_nodes_num(), 3);
    EXPECT_EQ(net.get_vid(0), 7);
    EXPECT_EQ(net.get_vid(1), 3);
    EXPECT_EQ(net.get_rvar_card(1), 3);
    EXPECT_EQ(net.get_rvid(7), 2) << "the second node for vid 7 takes the vid";
    EXPECT_EQ(net.get_rvid(3), 1);
    EXPECT_EQ(net.get_rvid(5), 0) << "vids never added map to rvid 0 below the table's end";
    EXPECT_EQ(net.get_rvid(8), -1);
}

TEST(NetDeathTest, RemovingAnAbsentEdgeIsFatal) {
    Net net;
    for (int v = 0; v < 2; ++v)
        net.add_rand_var(v, 2);
    net.insert_edge(0, 1, -1);
    // The text carries its own line end and one more follows.
    EXPECT_DEATH(net.remove_edge(1, 0), "Net\\([0-9]+\\): Tried to remove non existing edge\n\n");
}

} // namespace
