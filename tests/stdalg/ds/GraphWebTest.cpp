// GraphWeb: iteration in all three directions (with removal and restarts), get_edge's scan rule,
// the option form, and a random run against an adjacency-list model.
#include "ds/GraphWeb.h"

#include "TestSupport.h"
#include "options.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <tuple>
#include <utility>
#include <vector>

namespace {

typedef GraphBaseEdgeIter::Direction Dir;
const Dir kOut = GraphBaseEdgeIter::Out, kIn = GraphBaseEdgeIter::In, kBoth = GraphBaseEdgeIter::Both;

// (edge, other end, direction of the list) as the iterator reports them.
typedef std::tuple<int, int, int> Step;
typedef std::vector<Step> Steps;

Steps collect(GraphBaseEdgeIter& it, bool backward = false) {
    Steps out;
    if (backward)
        it.last();
    for (; !it.at_end(); backward ? --it : ++it)
        out.emplace_back(it.edge(), it.other(), it.cur_direction());
    return out;
}

Steps walk(const GraphBase& g, int node, Dir dir) {
    std::unique_ptr<GraphBaseEdgeIter> it(g.new_edge_iter(node, dir));
    return collect(*it);
}

std::vector<int> node_order(const GraphBase& g, bool backward = false) {
    std::unique_ptr<GraphBaseNodeIter> it(g.new_node_iter());
    std::vector<int> out;
    if (backward)
        it->last();
    for (; !it->at_end(); backward ? --*it : ++*it)
        out.push_back(it->node());
    return out;
}

// The plain model: nodes and edges in the order they were added. Each list of a node holds its
// edges in the order they were added, so it is a filter of that order.
struct Model {
    std::vector<int> nodes, order;
    std::map<int, std::pair<int, int>> edges;
    int node_space = 0, edge_space = 0;

    bool has_node(int n) const { return std::count(nodes.begin(), nodes.end(), n) > 0; }
    void add_node(int n) {
        nodes.push_back(n);
        node_space = std::max(node_space, n + 1);
    }
    void add_edge(int e, int s, int d) {
        for (int n : {s, d})
            if (!has_node(n))
                add_node(n);
        edges[e] = {s, d};
        order.push_back(e);
        edge_space = std::max(edge_space, e + 1);
    }
    // The edges leaving n (Out) or entering it (In).
    std::vector<int> list(int n, Dir dir) const {
        std::vector<int> l;
        for (int e : order)
            if ((dir == kOut ? edges.at(e).first : edges.at(e).second) == n)
                l.push_back(e);
        return l;
    }
    void remove_edges(const std::vector<int>& ids) {
        for (int e : ids) {
            edges.erase(e);
            order.erase(std::find(order.begin(), order.end(), e));
        }
    }
    void remove_node(int n) {
        remove_edges(list(n, kOut));
        remove_edges(list(n, kIn));
        nodes.erase(std::find(nodes.begin(), nodes.end(), n));
    }
    // The out-list then the in-list; walking backward gives the exact reverse.
    Steps steps(int n, Dir dir) const {
        Steps s;
        for (Dir side : {kOut, kIn})
            if (dir == side || dir == kBoth)
                for (int e : list(n, side))
                    s.emplace_back(e, side == kOut ? edges.at(e).second : edges.at(e).first, side);
        return s;
    }
    // The scan rule: the shorter side, the first match from its head.
    int get_edge(int s, int d) const {
        if (!has_node(s) || !has_node(d))
            return -1;
        for (int e : list(s, kOut).size() >= list(d, kIn).size() ? list(d, kIn) : list(s, kOut))
            if (edges.at(e) == std::make_pair(s, d))
                return e;
        return -1;
    }
};

void check_all(const GraphWeb& g, const Model& m, std::mt19937& rng) {
    ASSERT_EQ(node_order(g), m.nodes);
    ASSERT_EQ(node_order(g, true), std::vector<int>(m.nodes.rbegin(), m.nodes.rend()));
    // One iterator restarted on every node and direction; restart(node) keeps the direction.
    std::unique_ptr<GraphBaseEdgeIter> it(g.new_edge_iter(-1, kOut));
    for (int n : m.nodes) {
        SCOPED_TRACE(testing::Message() << "node " << n);
        ASSERT_EQ(g.node_out_edges_num(n), static_cast<int>(m.list(n, kOut).size()));
        ASSERT_EQ(g.node_in_edges_num(n), static_cast<int>(m.list(n, kIn).size()));
        ASSERT_EQ(g.node_edges_num(n), g.node_out_edges_num(n) + g.node_in_edges_num(n));
        for (Dir d : {kOut, kIn, kBoth}) {
            const Steps want = m.steps(n, d);
            it->restart(n, d);
            ASSERT_EQ(collect(*it), want) << "direction " << d;
            ASSERT_TRUE((++*it).at_end()) << "direction " << d; // it stays at the end
            it->restart(n);
            ASSERT_EQ(collect(*it, true), Steps(want.rbegin(), want.rend())) << "direction " << d;
            ASSERT_TRUE((--*it).at_end()) << "direction " << d;
        }
    }
    // Unused and negative nodes give the end at once.
    for (int n = -1; n <= g.nodes_id_space_size(); ++n) {
        ASSERT_EQ(g.node_use(n), m.has_node(n)) << n;
        ASSERT_TRUE(m.has_node(n) || walk(g, n, kBoth).empty()) << n;
    }
    for (int e = -1; e <= g.edges_id_space_size(); ++e) {
        ASSERT_EQ(g.edge_use(e), m.edges.count(e) == 1) << e;
        if (m.edges.count(e)) {
            ASSERT_EQ(std::make_pair(g.edge_source(e), g.edge_dest(e)), m.edges.at(e)) << e;
        }
    }
    for (int k = 0; k < 40 && !m.nodes.empty(); ++k) {
        const int s = m.nodes[rng() % m.nodes.size()], d = m.nodes[rng() % m.nodes.size()];
        ASSERT_EQ(g.get_edge(s, d), m.get_edge(s, d)) << s << "->" << d;
    }
    if (g.keeps_edges()) {
        std::vector<int> listed;
        const RaList<int>& l = g.edge_list();
        for (int id = l.get_front_id(); id != -1; id = l.get_next_id(id))
            listed.push_back(l[id]);
        ASSERT_EQ(listed, m.order);
    }
}

// A graph read from an option text in scope G.
void read_graph(GraphWeb& g, const std::string& text) {
    options o;
    std::istringstream in("[G]\n" + text);
    o.read(in, false);
    g.read_option(o, "G");
}

class GraphWebRandom : public ::testing::TestWithParam<bool> {};

} // namespace

// Parallel edges in different orders on the two lists show which list is scanned: in(dst) when
// out(src) >= in(dst), else out(src).
TEST(GraphWeb, GetEdgeScansTheShorterList) {
    GraphWeb g(0, false);
    g.insert_edge(0, 1, 10);
    g.insert_edge(3, 1, 2);
    g.unmark_all();
    g.mark_edge(2);            // axis 1: behind 2 in in(1); axis 0: root 0 has no mark
    g.insert_edge_at(0, 1, 5); // out(0) = [5, 10], in(1) = [10, 2, 5]
    EXPECT_EQ(walk(g, 0, kOut), (Steps{Step(5, 1, kOut), Step(10, 1, kOut)}));
    EXPECT_EQ(walk(g, 1, kIn), (Steps{Step(10, 0, kIn), Step(2, 3, kIn), Step(5, 0, kIn)}));
    EXPECT_EQ(g.get_edge(0, 1), 5); // 2 < 3: out(0)
    g.insert_edge(0, 4, 11);
    EXPECT_EQ(g.get_edge(0, 1), 10); // 3 >= 3: in(1)
    g.insert_edge(6, 1, 13);
    g.insert_edge(7, 1, 14);
    EXPECT_EQ(g.get_edge(0, 1), 5); // 3 < 5: out(0)
    EXPECT_TRUE(g.verify());
}

TEST(GraphWeb, RemovingEdgesAndNodesWhileIterating) {
    GraphWeb g(0, false);
    g.insert_edge(0, 1, -1); // 0
    g.insert_edge(0, 0, -1); // 1: a self-edge, on both of 0's lists
    g.insert_edge(0, 2, -1); // 2
    g.insert_edge(3, 0, -1); // 3
    // Removing each edge as it is met: the self-edge leaves the in-list with it.
    std::unique_ptr<GraphBaseEdgeIter> it(g.new_edge_iter(0, kBoth));
    std::vector<int> met;
    for (; !it->at_end(); ++*it) {
        met.push_back(it->edge());
        g.remove_edge(it->edge());
        ASSERT_TRUE(g.verify());
    }
    EXPECT_EQ(met, (std::vector<int>{0, 1, 2, 3}));
    EXPECT_EQ(g.edges_num(), 0);

    GraphWeb ring(0, true);
    for (int i = 0; i < 6; ++i)
        ring.insert_edge(i, (i + 1) % 6, -1);
    std::unique_ptr<GraphBaseNodeIter> nit(ring.new_node_iter());
    met.clear();
    for (; !nit->at_end(); ++*nit) {
        met.push_back(nit->node());
        if (nit->node() % 2 == 0)
            ring.remove_node(nit->node());
    }
    EXPECT_EQ(met, (std::vector<int>{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(node_order(ring), (std::vector<int>{1, 3, 5}));
    EXPECT_EQ(ring.edge_list().get_size(), 0);
}

TEST(GraphWeb, VerifyReportsABadWeb) {
    GraphWeb g(0, false);
    g.insert_edge(0, 1, 0);
    g.insert_edge(0, 1, 0); // the caller's fault: edge 0 is in use
    EXPECT_EQ(quiet([&] { EXPECT_FALSE(g.verify()); }), "Connections invalid in node 0\nBad web\n");
}

TEST(GraphWeb, OptionFormRoundTrip) {
    GraphWeb g(0, false);
    read_graph(g, "LineSize = 3\nEdges = { i 9\n5 0 1\n2 1 0\n7 0 2\n}\n");
    std::vector<int> lines(9, -9);
    std::ostringstream out;
    g.write_option(out, lines);
    out << static_cast<const GraphBase&>(g); // neither form writes text
    EXPECT_EQ(lines, (std::vector<int>{5, 0, 1, 7, 0, 2, 2, 1, 0}));
    EXPECT_EQ(out.str(), "");
}

TEST(GraphWebDeathTest, WrongLineSizeIsFatal) {
    GraphWeb g(0, false);
    EXPECT_DEATH(read_graph(g, "LineSize = 4\nEdges = { i 4\n0 0 1 5\n}\n"),
                 R"(ds/GraphBase\([0-9]+\): Number of entries ine dges array is 4 instead of 3)");
    // Ids the store would take blindly: negative or huge node ids, edge ids below -1, past the
    // ceiling or already in use (-1 asks for a new edge and is fine).
    const struct {
        const char *edges, *message;
    } cases[] = {
        {"0 -1 2\n", "Bad node id -1 in edge 1"},
        {"0 1 2\n1 3 -22\n", "Bad node id -22 in edge 2"},
        {"0 4194304 1\n", "Bad node id 4194304 in edge 1"},
        {"-5 0 1\n", "Bad edge id -5 in edge 1"},
        {"2147483647 0 1\n", "Bad edge id 2147483647 in edge 1"},
        {"-1 0 1\n3 1 2\n3 2 0\n", "Bad edge id 3 in edge 3"},
    };
    for (const auto& c : cases) {
        std::istringstream numbers(c.edges);
        int n = 0;
        for (int x; numbers >> x;)
            ++n;
        const std::string text = "LineSize = 3\nEdges = { i " + std::to_string(n) + "\n" + c.edges + "}\n";
        EXPECT_DEATH(read_graph(g, text), std::string(R"(ds/GraphBase\([0-9]+\): )") + c.message + "\n")
            << c.edges;
    }
}

// Thousands of edge and node insertions and removals (ids free, named again, or past the end;
// parallel and self-edges); every list walked in all three directions against the model, both
// ways, with verify() after each step.
TEST_P(GraphWebRandom, AgainstAdjacencyModel) {
    const bool keep_edges = GetParam();
    const std::uint32_t seed = test_seed();
    SCOPED_TRACE(testing::Message() << "seed " << seed << " keep_edges " << keep_edges);
    std::mt19937 rng(seed);
    GraphWeb g(16, keep_edges);
    Model m;
    auto any_node = [&]() { return m.nodes[rng() % m.nodes.size()]; };
    // Mostly existing nodes; sometimes a new one, at the end of the id space or past it.
    auto end_node = [&]() {
        return !m.nodes.empty() && rng() % 5 != 0 ? any_node() : m.node_space + static_cast<int>(rng() % 3);
    };
    // -1 mostly; sometimes a named id, below the end of the id space (unless in use) or past it.
    auto any_id = [&](int space) { return rng() % 5 ? -1 : static_cast<int>(rng() % (space + 4)); };
    for (int step = 0; step < 4000; ++step) {
        SCOPED_TRACE(testing::Message() << "step " << step);
        const unsigned op = rng() % 20;
        if (op < 9 && m.edges.size() <= 250) {
            const int s = end_node();
            const int d = rng() % 8 == 0 ? s : end_node();
            const int named = any_id(m.edge_space), id = m.edges.count(named) ? -1 : named;
            const int want = id == -1 ? m.edge_space : id;
            ASSERT_EQ(g.insert_edge(s, d, id), want);
            m.add_edge(want, s, d);
        } else if (op < 15 && !m.edges.empty()) {
            const int e = std::next(m.edges.begin(), rng() % m.edges.size())->first;
            g.remove_edge(e);
            m.remove_edges({e});
        } else if (op < 16 && !m.nodes.empty()) {
            const int n = any_node();
            g.remove_node(n);
            m.remove_node(n);
        } else if (op < 17) {
            const int named = any_id(m.node_space), id = m.has_node(named) ? -1 : named;
            const int want = id == -1 ? m.node_space : id;
            ASSERT_EQ(g.insert_node(id), want);
            m.add_node(want);
        } else if (op < 19 && !m.nodes.empty()) {
            const int n = any_node();
            switch (rng() % 3) {
            case 0:
                g.rm_node_out_edges(n);
                m.remove_edges(m.list(n, kOut));
                break;
            case 1:
                g.rm_node_in_edges(n);
                m.remove_edges(m.list(n, kIn));
                break;
            default:
                g.rm_node_edges(n);
                m.remove_edges(m.list(n, kOut));
                m.remove_edges(m.list(n, kIn));
            }
        } else if (op == 19 && rng() % 20 == 0) {
            g.clear(); // the id spaces survive
            m.nodes.clear();
            m.order.clear();
            m.edges.clear();
        }
        ASSERT_TRUE(g.verify());
        ASSERT_EQ(g.nodes_num(), static_cast<int>(m.nodes.size()));
        ASSERT_EQ(g.edges_num(), static_cast<int>(m.edges.size()));
        ASSERT_EQ(g.free_node_id(), m.node_space);
        ASSERT_EQ(g.free_edge_id(), m.edge_space);
        ASSERT_EQ(g.edges_id_space_size(), m.edge_space);
        if (step % 10 == 0) {
            check_all(g, m, rng);
            if (HasFatalFailure())
                return;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(KeepEdges, GraphWebRandom, ::testing::Values(false, true));
