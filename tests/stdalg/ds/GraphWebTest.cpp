// GraphWeb: id rules, parallel and self-edges, iteration in all three directions (with removal),
// get_edge's scan rule, the option form, and a random run against an adjacency-list model.
#include "ds/GraphWeb.h"

#include "TestSupport.h"
#include "options.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <utility>
#include <vector>

namespace {

typedef GraphBaseEdgeIter::Direction Dir;

// (edge, other end, direction of the list) as the iterator reports them.
struct Step {
    int edge, other, dir;
    bool operator==(const Step& o) const { return edge == o.edge && other == o.other && dir == o.dir; }
};
std::ostream& operator<<(std::ostream& out, const Step& s) {
    return out << "(" << s.edge << "," << s.other << "," << s.dir << ")";
}

std::vector<Step> walk(const GraphBase& g, int node, Dir dir) {
    std::unique_ptr<GraphBaseEdgeIter> it(g.new_edge_iter(node, dir));
    std::vector<Step> out;
    for (; !it->at_end(); ++*it)
        out.push_back({it->edge(), it->other(), it->cur_direction()});
    return out;
}

std::vector<Step> walk_back(const GraphBase& g, int node, Dir dir) {
    std::unique_ptr<GraphBaseEdgeIter> it(g.new_edge_iter(node, dir));
    std::vector<Step> out;
    for (it->last(); !it->at_end(); --*it)
        out.push_back({it->edge(), it->other(), it->cur_direction()});
    return out;
}

std::vector<int> node_order(const GraphBase& g, bool backward = false) {
    std::unique_ptr<GraphBaseNodeIter> it(g.new_node_iter());
    std::vector<int> out;
    if (backward)
        for (it->last(); !it->at_end(); --*it)
            out.push_back(it->node());
    else
        for (; !it->at_end(); ++*it)
            out.push_back(it->node());
    return out;
}

// The plain model: nodes in the order they were added, each with its out- and in-list of edge ids.
struct Model {
    std::vector<int> nodes;
    std::map<int, std::pair<int, int>> edges;
    std::vector<int> edge_order;
    std::map<int, std::vector<int>> out, in;
    int node_space = 0, edge_space = 0;

    bool has_node(int n) const { return std::find(nodes.begin(), nodes.end(), n) != nodes.end(); }
    void add_node(int n) {
        nodes.push_back(n);
        out[n];
        in[n];
        node_space = std::max(node_space, n + 1);
    }
    void add_edge(int e, int s, int d) {
        if (!has_node(s))
            add_node(s);
        if (!has_node(d))
            add_node(d);
        edges[e] = {s, d};
        out[s].push_back(e);
        in[d].push_back(e);
        edge_order.push_back(e);
        edge_space = std::max(edge_space, e + 1);
    }
    static void erase(std::vector<int>& v, int x) { v.erase(std::find(v.begin(), v.end(), x)); }
    void remove_edge(int e) {
        erase(out[edges[e].first], e);
        erase(in[edges[e].second], e);
        erase(edge_order, e);
        edges.erase(e);
    }
    void remove_node(int n) {
        while (!out[n].empty())
            remove_edge(out[n].front());
        while (!in[n].empty())
            remove_edge(in[n].front());
        erase(nodes, n);
        out.erase(n);
        in.erase(n);
    }
    std::vector<Step> steps(int n, Dir dir) const {
        std::vector<Step> s;
        if (dir != GraphBaseEdgeIter::In)
            for (int e : out.at(n))
                s.push_back({e, edges.at(e).second, GraphBaseEdgeIter::Out});
        if (dir != GraphBaseEdgeIter::Out)
            for (int e : in.at(n))
                s.push_back({e, edges.at(e).first, GraphBaseEdgeIter::In});
        return s;
    }
    std::vector<Step> steps_back(int n, Dir dir) const {
        std::vector<Step> s;
        if (dir != GraphBaseEdgeIter::Out)
            for (auto it = in.at(n).rbegin(); it != in.at(n).rend(); ++it)
                s.push_back({*it, edges.at(*it).first, GraphBaseEdgeIter::In});
        if (dir != GraphBaseEdgeIter::In)
            for (auto it = out.at(n).rbegin(); it != out.at(n).rend(); ++it)
                s.push_back({*it, edges.at(*it).second, GraphBaseEdgeIter::Out});
        return s;
    }
    // The scan rule: the shorter side, the first match from its head.
    int get_edge(int s, int d) const {
        if (!has_node(s) || !has_node(d))
            return -1;
        if (out.at(s).size() >= in.at(d).size()) {
            for (int e : in.at(d))
                if (edges.at(e).first == s)
                    return e;
        } else {
            for (int e : out.at(s))
                if (edges.at(e).second == d)
                    return e;
        }
        return -1;
    }
};

void check_all(const GraphWeb& g, const Model& m, std::mt19937& rng) {
    ASSERT_EQ(node_order(g), m.nodes);
    std::vector<int> back(m.nodes.rbegin(), m.nodes.rend());
    ASSERT_EQ(node_order(g, true), back);
    for (int n : m.nodes) {
        SCOPED_TRACE(testing::Message() << "node " << n);
        ASSERT_TRUE(g.node_use(n));
        ASSERT_EQ(g.node_out_edges_num(n), static_cast<int>(m.out.at(n).size()));
        ASSERT_EQ(g.node_in_edges_num(n), static_cast<int>(m.in.at(n).size()));
        ASSERT_EQ(g.node_edges_num(n), static_cast<int>(m.out.at(n).size() + m.in.at(n).size()));
        for (Dir d : {GraphBaseEdgeIter::Out, GraphBaseEdgeIter::In, GraphBaseEdgeIter::Both}) {
            ASSERT_EQ(walk(g, n, d), m.steps(n, d)) << "direction " << d;
            ASSERT_EQ(walk_back(g, n, d), m.steps_back(n, d)) << "direction " << d;
        }
    }
    for (int n = -1; n <= g.nodes_id_space_size(); ++n)
        ASSERT_EQ(g.node_use(n), m.has_node(n)) << n;
    for (int e = -1; e <= g.edges_id_space_size(); ++e) {
        ASSERT_EQ(g.edge_use(e), m.edges.count(e) == 1) << e;
        if (m.edges.count(e)) {
            ASSERT_EQ(g.edge_source(e), m.edges.at(e).first);
            ASSERT_EQ(g.edge_dest(e), m.edges.at(e).second);
        }
    }
    if (!m.nodes.empty()) {
        for (int k = 0; k < 40; ++k) {
            const int s = m.nodes[rng() % m.nodes.size()], d = m.nodes[rng() % m.nodes.size()];
            ASSERT_EQ(g.get_edge(s, d), m.get_edge(s, d)) << s << "->" << d;
        }
    }
    if (g.keeps_edges()) {
        std::vector<int> listed;
        const RaList<int>& l = g.edge_list();
        for (int id = l.get_front_id(); id != -1; id = l.get_next_id(id))
            listed.push_back(l[id]);
        ASSERT_EQ(listed, m.edge_order);
    }
}

class GraphWebRandom : public ::testing::TestWithParam<bool> {};

} // namespace

TEST(GraphWeb, ConstructionPrintsFourListLines) {
    testing::internal::CaptureStderr();
    GraphWeb g(3, true);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "RaList with 3\nRaList with 3\nRaList with 3\nRaList with 3\n");
    EXPECT_EQ(g.line_size(), 3);
    EXPECT_EQ(g.free_node_id(), 0);
    EXPECT_EQ(g.free_edge_id(), 0);
}

TEST(GraphWeb, IdsPastTheEnd) {
    GraphWeb g(0, true);
    EXPECT_EQ(g.insert_edge(2, 7, -1), 0);
    EXPECT_TRUE(g.node_use(2));
    EXPECT_TRUE(g.node_use(7));
    EXPECT_FALSE(g.node_use(3));
    EXPECT_FALSE(g.node_use(8));
    EXPECT_EQ(g.nodes_num(), 2);
    EXPECT_EQ(g.nodes_id_space_size(), 8);
    EXPECT_EQ(g.free_node_id(), 8);
    EXPECT_EQ(g.insert_node(-1), 8);
    EXPECT_EQ(g.insert_edge(1, 2, 10), 10);
    EXPECT_EQ(g.edges_num(), 2);
    EXPECT_EQ(g.edges_id_space_size(), 11);
    EXPECT_EQ(g.free_edge_id(), 11);
    EXPECT_FALSE(g.edge_use(5));
    EXPECT_EQ(node_order(g), (std::vector<int>{2, 7, 8, 1}));
    // A removed id isn't handed out again by -1.
    g.remove_edge(10);
    EXPECT_EQ(g.insert_edge(1, 2, -1), 11);
    g.remove_node(8);
    EXPECT_EQ(g.insert_node(-1), 9);
    EXPECT_EQ(g.insert_node(8), 8); // unless named
    EXPECT_TRUE(g.verify());
}

TEST(GraphWeb, ParallelEdgesAndGetEdge) {
    GraphWeb g(0, false);
    EXPECT_EQ(g.insert_edge(0, 1, -1), 0);
    EXPECT_EQ(g.insert_edge(0, 1, -1), 1);
    EXPECT_EQ(g.insert_edge(2, 1, -1), 2);
    EXPECT_EQ(g.insert_node(-1), 3);
    EXPECT_EQ(g.node_out_edges_num(0), 2);
    EXPECT_EQ(g.node_in_edges_num(1), 3);
    EXPECT_EQ(g.get_edge(0, 1), 0); // out(0) = 2 < in(1) = 3: scans 0's out-list
    EXPECT_EQ(g.get_edge(2, 1), 2);
    EXPECT_EQ(g.get_edge(1, 0), -1); // 1 has no out-edges
    EXPECT_EQ(g.get_edge(3, 0), -1);
    EXPECT_EQ(g.get_edge(0, 2), -1);
    EXPECT_EQ(g.get_edge(0, 50), -1); // not a node
    g.remove_edge(0);
    EXPECT_EQ(g.get_edge(0, 1), 1);
    EXPECT_TRUE(g.verify());
}

// Parallel edges in different orders on the two lists show which list is scanned: in(dst) when
// out(src) >= in(dst), else out(src).
TEST(GraphWeb, GetEdgeScansTheShorterList) {
    GraphWeb g(0, false);
    g.insert_edge(0, 1, 10);
    g.insert_edge(3, 1, 2);
    g.unmark_all();
    g.mark_edge(2);            // axis 1: behind 2 in in(1); axis 0: root 0 has no mark
    g.insert_edge_at(0, 1, 5); // out(0) = [5, 10], in(1) = [10, 2, 5]
    EXPECT_EQ(walk(g, 0, GraphBaseEdgeIter::Out), (std::vector<Step>{{5, 1, 1}, {10, 1, 1}}));
    EXPECT_EQ(walk(g, 1, GraphBaseEdgeIter::In), (std::vector<Step>{{10, 0, 2}, {2, 3, 2}, {5, 0, 2}}));
    EXPECT_EQ(g.get_edge(0, 1), 5); // 2 < 3: out(0)
    g.insert_edge(0, 4, 11);
    EXPECT_EQ(g.get_edge(0, 1), 10); // 3 >= 3: in(1)
    g.insert_edge(0, 4, 12);
    EXPECT_EQ(g.get_edge(0, 1), 10); // 4 >= 3: in(1)
    g.insert_edge(6, 1, 13);
    g.insert_edge(7, 1, 14);
    EXPECT_EQ(g.get_edge(0, 1), 5); // 4 < 5: out(0)
    EXPECT_TRUE(g.verify());
}

TEST(GraphWeb, SelfEdgesUnderBothDirections) {
    GraphWeb g(0, false);
    g.insert_edge(0, 1, -1);           // 0
    g.insert_edge(0, 0, -1);           // 1
    g.insert_edge(0, 2, -1);           // 2
    g.insert_edge(3, 0, -1);           // 3
    EXPECT_EQ(g.node_edges_num(0), 5); // the self-edge counts twice
    const std::vector<Step> both = {{0, 1, 1}, {1, 0, 1}, {2, 2, 1}, {1, 0, 2}, {3, 3, 2}};
    EXPECT_EQ(walk(g, 0, GraphBaseEdgeIter::Both), both);
    EXPECT_EQ(walk_back(g, 0, GraphBaseEdgeIter::Both), std::vector<Step>(both.rbegin(), both.rend()));
    EXPECT_EQ(g.get_edge(0, 0), 1);
    // Removing each edge as it is met: the self-edge leaves the in-list with it.
    std::unique_ptr<GraphBaseEdgeIter> it(g.new_edge_iter(0, GraphBaseEdgeIter::Both));
    std::vector<int> met;
    for (; !it->at_end(); ++*it) {
        met.push_back(it->edge());
        g.remove_edge(it->edge());
        ASSERT_TRUE(g.verify());
    }
    EXPECT_EQ(met, (std::vector<int>{0, 1, 2, 3}));
    EXPECT_EQ(g.edges_num(), 0);
    EXPECT_EQ(g.node_edges_num(0), 0);
}

TEST(GraphWeb, IteratorStartsAndRestarts) {
    GraphWeb g(0, false);
    g.insert_edge(1, 0, -1);
    g.insert_edge(2, 0, -1);
    g.insert_edge(0, 3, -1);
    g.insert_node(5);
    // Only in-edges under Both: all reported.
    EXPECT_EQ(walk(g, 1, GraphBaseEdgeIter::In), std::vector<Step>{});
    const std::vector<Step> into_zero = {{0, 1, 2}, {1, 2, 2}};
    std::unique_ptr<GraphBaseEdgeIter> it(g.new_edge_iter(3, GraphBaseEdgeIter::Both));
    EXPECT_EQ(it->edge(), 2);
    EXPECT_EQ(it->other(), 0);
    EXPECT_EQ(it->cur_direction(), GraphBaseEdgeIter::In);
    it->restart(0, GraphBaseEdgeIter::In);
    std::vector<Step> got;
    for (; !it->at_end(); ++*it)
        got.push_back({it->edge(), it->other(), it->cur_direction()});
    EXPECT_EQ(got, into_zero);
    it->restart(1); // keeps In
    EXPECT_TRUE(it->at_end());
    it->restart(1, GraphBaseEdgeIter::Out);
    EXPECT_EQ(it->edge(), 0);
    ++*it;
    EXPECT_TRUE(it->at_end());
    ++*it; // stays at the end
    EXPECT_TRUE(it->at_end());
    // Unused, negative and isolated nodes give the end at once.
    for (int n : {4, -1, 5, 99})
        EXPECT_TRUE(walk(g, n, GraphBaseEdgeIter::Both).empty()) << n;
    // Stepping back from the first in-edge under Both goes to the out-list's tail.
    g.insert_edge(0, 4, -1);
    it->restart(0, GraphBaseEdgeIter::Both);
    ++*it;
    ++*it;
    EXPECT_EQ(it->edge(), 0);
    --*it;
    EXPECT_EQ(it->edge(), 3);
    EXPECT_EQ(it->cur_direction(), GraphBaseEdgeIter::Out);
}

TEST(GraphWeb, RemovingNodesDuringNodeIteration) {
    GraphWeb g(0, true);
    for (int i = 0; i < 6; ++i)
        g.insert_edge(i, (i + 1) % 6, -1);
    std::unique_ptr<GraphBaseNodeIter> it(g.new_node_iter());
    std::vector<int> met;
    for (; !it->at_end(); ++*it) {
        met.push_back(it->node());
        if (it->node() % 2 == 0)
            g.remove_node(it->node());
    }
    EXPECT_EQ(met, (std::vector<int>{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(node_order(g), (std::vector<int>{1, 3, 5}));
    EXPECT_EQ(g.edges_num(), 0);
    EXPECT_EQ(g.edge_list().get_size(), 0);
    EXPECT_TRUE(g.verify());
    EXPECT_FALSE(g.node_use(0));
}

TEST(GraphWeb, RemoveNodeOutAndInEdges) {
    GraphWeb g(0, true);
    g.insert_edge(0, 1, -1);
    g.insert_edge(1, 0, -1);
    g.insert_edge(0, 0, -1);
    g.insert_edge(2, 0, -1);
    g.rm_node_out_edges(0);
    EXPECT_EQ(g.edges_num(), 2);
    EXPECT_EQ(walk(g, 0, GraphBaseEdgeIter::Both), (std::vector<Step>{{1, 1, 2}, {3, 2, 2}}));
    g.rm_node_in_edges(0);
    EXPECT_EQ(g.edges_num(), 0);
    EXPECT_EQ(g.nodes_num(), 3);
    EXPECT_TRUE(g.verify());
}

TEST(GraphWeb, ClearKeepsTheIdSpaces) {
    GraphWeb g(0, true);
    g.insert_edge(0, 4, -1);
    g.insert_edge(4, 2, -1);
    g.clear();
    EXPECT_EQ(g.nodes_num(), 0);
    EXPECT_EQ(g.edges_num(), 0);
    EXPECT_FALSE(g.node_use(4));
    EXPECT_FALSE(g.edge_use(0));
    EXPECT_EQ(g.free_node_id(), 5);
    EXPECT_EQ(g.free_edge_id(), 2);
    EXPECT_TRUE(node_order(g).empty());
    EXPECT_EQ(g.insert_edge(0, 1, -1), 2);
    EXPECT_EQ(g.insert_node(-1), 5);
    EXPECT_TRUE(g.verify());
}

TEST(GraphWeb, VerifyReportsABadWeb) {
    GraphWeb g(0, false);
    g.insert_edge(0, 1, 0);
    g.insert_edge(0, 1, 0); // the caller's fault: edge 0 is in use
    testing::internal::CaptureStderr();
    EXPECT_FALSE(g.verify());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Connections invalid in node 0\nBad web\n");
}

TEST(GraphWeb, OptionFormRoundTrip) {
    options o;
    std::istringstream text("[G]\nLineSize = 3\nEdges = { i 9\n5 0 1\n2 1 0\n7 0 2\n}\n");
    o.read(text, false);
    GraphWeb g(0, false);
    g.read_option(o, "G");
    EXPECT_EQ(g.edges_num(), 3);
    EXPECT_EQ(g.edge_source(2), 1);
    EXPECT_EQ(g.edge_dest(7), 2);
    std::vector<int> lines(9, -9);
    std::ostringstream out;
    g.write_option(out, lines);
    EXPECT_EQ(lines, (std::vector<int>{5, 0, 1, 7, 0, 2, 2, 1, 0}));
    EXPECT_EQ(out.str(), "");
    std::ostringstream shown;
    shown << static_cast<const GraphBase&>(g);
    EXPECT_EQ(shown.str(), "");
}

TEST(GraphWebDeathTest, WrongLineSizeIsFatal) {
    options o;
    std::istringstream text("[G]\nLineSize = 4\nEdges = { i 4\n0 0 1 5\n}\n");
    o.read(text, false);
    GraphWeb g(0, false);
    EXPECT_DEATH(g.read_option(o, "G"),
                 R"(ds/GraphBase\([0-9]+\): Number of entries ine dges array is 4 instead of 3)");
}

// Thousands of edge and node insertions and removals; every list walked in all three directions
// against the model, verify() after each step.
TEST_P(GraphWebRandom, AgainstAdjacencyModel) {
    const bool keep_edges = GetParam();
    const std::uint32_t seed = test_seed();
    SCOPED_TRACE(testing::Message() << "seed " << seed << " keep_edges " << keep_edges);
    std::mt19937 rng(seed);
    GraphWeb g(16, keep_edges);
    Model m;
    auto any_node = [&]() { return m.nodes[rng() % m.nodes.size()]; };
    auto end_node = [&]() {
        // Mostly existing nodes; sometimes a new one, at the end of the id space or past it.
        if (!m.nodes.empty() && rng() % 5 != 0)
            return any_node();
        int n = m.node_space + static_cast<int>(rng() % 3);
        return n;
    };
    for (int step = 0; step < 4000; ++step) {
        const unsigned op = rng() % 20;
        const bool crowded = m.edges.size() > 250;
        if (op < 9 && !crowded) {
            const int s = end_node();
            const int d = rng() % 8 == 0 ? s : end_node();
            int id = -1;
            const unsigned how = rng() % 10;
            if (how == 0) {
                id = m.edge_space + static_cast<int>(rng() % 4); // past the end
            } else if (how == 1 && static_cast<int>(m.edges.size()) < m.edge_space) {
                do
                    id = static_cast<int>(rng() % m.edge_space);
                while (m.edges.count(id)); // a removed id, named again
            }
            const int want = id == -1 ? m.edge_space : id;
            ASSERT_EQ(g.insert_edge(s, d, id), want);
            m.add_edge(want, s, d);
        } else if (op < 15 && !m.edges.empty()) {
            auto it = m.edges.begin();
            std::advance(it, rng() % m.edges.size());
            const int e = it->first;
            g.remove_edge(e);
            m.remove_edge(e);
        } else if (op < 16 && !m.nodes.empty()) {
            const int n = any_node();
            g.remove_node(n);
            m.remove_node(n);
        } else if (op < 17) {
            ASSERT_EQ(g.insert_node(-1), m.node_space);
            m.add_node(m.node_space);
        } else if (op < 18 && !m.nodes.empty()) {
            const int n = any_node();
            if (rng() % 2) {
                g.rm_node_out_edges(n);
                while (!m.out[n].empty())
                    m.remove_edge(m.out[n].front());
            } else {
                g.rm_node_in_edges(n);
                while (!m.in[n].empty())
                    m.remove_edge(m.in[n].front());
            }
        } else if (op == 19 && rng() % 50 == 0) {
            g.clear();
            const int ns = m.node_space, es = m.edge_space;
            m = Model();
            m.node_space = ns;
            m.edge_space = es;
        }
        ASSERT_TRUE(g.verify()) << "step " << step;
        ASSERT_EQ(g.nodes_num(), static_cast<int>(m.nodes.size())) << "step " << step;
        ASSERT_EQ(g.edges_num(), static_cast<int>(m.edges.size())) << "step " << step;
        ASSERT_EQ(g.free_node_id(), m.node_space) << "step " << step;
        ASSERT_EQ(g.free_edge_id(), m.edge_space) << "step " << step;
        ASSERT_EQ(g.edges_id_space_size(), m.edge_space);
        if (step % 10 == 0) {
            SCOPED_TRACE(testing::Message() << "step " << step);
            check_all(g, m, rng);
            if (HasFatalFailure())
                return;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(KeepEdges, GraphWebRandom, ::testing::Values(false, true));
