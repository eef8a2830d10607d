// randomize against a plain edge-list model; randomize_all by its per-cell edge counts and its stop
// messages; DistribWgtSet by its draw frequencies.
#include "BicTestUtil.h"
#include "DistribWgtSet.h"
#include "Random.h"
#include "ValSpace3.h"

#include <cmath>
#include <map>
#include <memory>
#include <random>
#include <set>

namespace {

typedef std::pair<int, int> Ends;

// A random crisp table on ValSpace3 (a fifth of the cells up or down): each non-zero cell gives
// two edges of weight 1, one per condition orientation.
struct RandomGraph {
    RandomGraph(std::uint32_t seed, int conds, int genes) : vs(bic_options(""), "V") {
        std::mt19937 rng(seed);
        std::ostringstream cells;
        for (int v = 0; v < genes; ++v)
            for (int e = 0; e < conds; ++e)
                if (const unsigned r = rng() % 10; r < 2)
                    cells << v << " " << e << (r ? " -2\n" : " 2\n");
        d.reset(new BicData(genes, &vs, cond_key(conds), cells.str()));
        Quiet q;
        g.reset(
            new ExpVarGraphACO(d->universe, d->data,
                               bic_options("[R]\nLogit = 0\nEdgePThresh = 0.5\nEdgeNonZeroP = 0.5\n"
                                           "AllowConditionOrientation = 1\nAllowVarOrientation = 1\n"
                                           "ExpCardinality = 2\nVarCardinality = 2\nFactors = { f 1\n1\n}\n"
                                           "StateOfGroupPair = { i 12\n0 0 1\n0 1 2\n1 0 2\n1 1 1\n}\n"
                                           "BuildEdgesFromFile = 0\n"),
                               "R", true));
    }
    std::vector<Ends> ends() const {
        std::vector<Ends> out;
        for (int id = 0; id < g->edges_id_space_size(); ++id)
            out.push_back(g->edge_use(id) ? Ends(g->edge_source(id), g->edge_dest(id)) : Ends(-1, -1));
        return out;
    }
    std::string run(int seed, int times) {
        Random::reset(seed);
        Quiet q;
        times ? g->randomize(times) : g->randomize_all();
        return q.done();
    }
    ValSpace3 vs;
    std::unique_ptr<BicData> d;
    std::unique_ptr<ExpVarGraphACO> g;
};

// The rotation on a plain edge list: the same draws, acceptance rule and records.
void model_randomize(std::vector<Ends>& ends, std::map<Ends, int>& rewired) {
    const int E = static_cast<int>(ends.size());
    std::set<Ends> adj(ends.begin(), ends.end());
    auto draw = [E]() {
        return static_cast<int>((E - 0.5) * static_cast<float>(Random::bits() / 4294967295.0));
    };
    for (int step = 0; step < E; ++step) {
        const int e1 = draw();
        int e2, e3;
        do {
            e2 = draw();
            e3 = draw();
        } while (e1 == e2 || e1 == e3 || e2 == e3 || adj.count(Ends(ends[e1].first, ends[e2].second)) ||
                 adj.count(Ends(ends[e2].first, ends[e3].second)) ||
                 adj.count(Ends(ends[e3].first, ends[e1].second)));
        const Ends o1 = ends[e1], o2 = ends[e2], o3 = ends[e3];
        for (const Ends& o : {o1, o2, o3})
            adj.erase(o);
        ends[e1] = Ends(o1.first, o2.second);
        ends[e2] = Ends(o2.first, o3.second);
        ends[e3] = Ends(o3.first, o1.second);
        for (int e : {e1, e2, e3})
            adj.insert(ends[e]);
        rewired[o1] = e1; // the old ends of e1, the new ends of e2 and e3
        rewired[ends[e2]] = e2;
        rewired[ends[e3]] = e3;
    }
}

std::vector<int> degrees(const ExpVarGraphACO& g) {
    std::vector<int> d;
    for (int n = 0; n < g.nodes_id_space_size(); ++n)
        d.push_back(g.node_out_edges_num(n) * 100000 + g.node_in_edges_num(n));
    return d;
}

int count_lines(const std::string& log, const std::string& start) {
    int n = 0;
    for (size_t p = log.find(start); p != std::string::npos; p = log.find(start, p + 1))
        n += p == 0 || log[p - 1] == '\n';
    return n;
}

} // namespace

TEST(ExpVarGraphRandomize, RotationKeepsDegreesAndFollowsTheModel) {
    const int seed = static_cast<int>(test_seed());
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomGraph a(seed, 60, 200);
    ASSERT_GT(a.g->edges_id_space_size(), 3000);
    const std::vector<int> deg = degrees(*a.g);
    std::vector<Ends> model = a.ends();
    EXPECT_EQ(a.run(seed, 1), "changed 0 times\n");
    EXPECT_TRUE(a.g->verify());
    EXPECT_EQ(degrees(*a.g), deg);

    std::map<Ends, int> model_rewired;
    Random::reset(seed);
    model_randomize(model, model_rewired);
    EXPECT_EQ(a.ends(), model);
    EXPECT_EQ(a.g->m_rewired_edges, model_rewired);

    RandomGraph b(seed, 60, 200); // the same seed gives the same graph
    b.run(seed, 1);
    EXPECT_EQ(b.ends(), a.ends());
}

TEST(ExpVarGraphRandomize, RandomizeAllPlacesTheTruncatedCellDegrees) {
    const int seed = static_cast<int>(test_seed());
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomGraph a(seed, 40, 150);
    const ExpVarGraphACO& g = *a.g;
    const Matrix<float> exp_deg = g.m_node_var_group_degree, var_deg = g.m_node_exp_group_degree;
    const std::string log = a.run(seed, 0);
    EXPECT_TRUE(g.verify());
    EXPECT_NE(log.find("will remove  all edges \n"), std::string::npos);

    // Per cell, the edges placed plus what the final report leaves is the truncated degree.
    std::map<std::pair<std::string, Ends>, int> cell;
    for (int id = 0; id < g.edges_id_space_size(); ++id)
        if (g.edge_use(id)) {
            const int s = g.edge_source(id), t = g.edge_dest(id);
            ++cell[{"exp", Ends(s, g.m_node_group[t])}];
            ++cell[{"var", Ends(t, g.m_node_group[s])}];
        }
    std::istringstream in(log.substr(log.find("terminated, remaining degrees :\n") + 32));
    std::string side, w;
    int node, grp, d, count = -1, total = -1;
    while (in >> side && side != "final" && in >> node >> w >> grp >> w >> d)
        cell[{side, Ends(node, grp)}] += d;
    in >> w >> count >> w >> w >> total;
    EXPECT_EQ(g.edges_num(), count);
    EXPECT_EQ(g.edges_id_space_size(), g.m_edge_count);
    for (int id = 0; id < count; ++id)
        EXPECT_TRUE(g.edge_use(id)) << "new edges take ids 0 .. count - 1";
    int want_total = 0;
    for (int n = 0; n < g.m_node_count; ++n)
        for (int k = 0; k < 2; ++k) {
            const bool ex = n < g.m_max_exp_node;
            const int want = static_cast<int>(ex ? exp_deg(n, k) : var_deg(n, k));
            want_total += ex ? want : 0;
            EXPECT_EQ((cell[{ex ? "exp" : "var", Ends(n, k)}]), want) << n << " " << k;
        }
    EXPECT_EQ(total, want_total);
    EXPECT_GT(count, 1000);
    EXPECT_EQ(count_lines(log, "e_count 1000\n"), 1);
    // The degree tables keep the values of the graph as built.
    EXPECT_EQ(g.m_node_var_group_degree.m_vals, exp_deg.m_vals);

    RandomGraph b(seed, 40, 150);
    b.run(seed, 0);
    EXPECT_EQ(b.ends(), a.ends());
}

TEST(ExpVarGraphRandomize, RandomizeAllStops) {
    const int seed = static_cast<int>(test_seed());
    BicData d(3, nullptr, cond_key(3), "");
    struct Case {
        const char *exp_groups, *var_groups, *edges;
        int max_var_group, edges_left, dest; // dest: of the one edge left
        const char *part1, *part2;           // in the log
        const char* zero_line;               // sampled-zero lines, more than `zeros` of them
        int zeros;
    };
    const Case cases[] = {
        // Condition demand 2 (node 0: 1.2 -> 1, node 1: 1), variable supply 1 (node 2: 1.6 -> 1,
        // node 3: 0.6 -> 0): after one edge only empty variable cells remain.
        {"0 0", "0 0", "0-2:0.6 0-3:0.6 1-2", 0, 1, 2, " grp 0 exp_grp_d 1\nfinal edges, 1 E = 2\n", "",
         "sampled zero ", 1000},
        // The only full condition cell (node 0 towards variable group 18) and the only full variable
        // cell (node 5, of group 19) never match. Cell 18 lies past the end of the variable cell
        // array, so no draw of an empty variable cell can clear it.
        {"0 0 0", "18 18 19", "0-3:0.5 0-4:0.5 1-5:0.5 2-5:0.5", 20, 0, -1,
         "Miss consect breaking, e_count0\n",
         "exp 0 grp 18 exp_grp_d 1\nvar 5 grp 0 var_grp_d 1\nfinal edges, 0 E = 1\n", nullptr, 0},
        // Four variable groups: condition cell 3 is (node 0, group 3), which wants 2 edges; variable
        // cell 3 is node 3, which has none. Once node 1's one edge is placed only empty variable
        // cells are drawn, and drawing cell 3 clears condition cell 3 (the crossed index): from then
        // on every draw of it reports a zero weight.
        {"0", "3 3 3", "0-1 0-2:0.5 0-3:0.5", 4, 1, 1, "exp 0 grp 3 exp_grp_d 1\nfinal edges, 1 E = 2\n", "",
         "sampled zero 0\n", 900},
    };
    for (const Case& c : cases) {
        std::unique_ptr<ExpVarGraphACO> g(
            hand_graph(d, ints(c.exp_groups), ints(c.var_groups), edges_of(c.edges), c.max_var_group));
        Random::reset(seed);
        Quiet q;
        g->randomize_all();
        const std::string log = q.done();
        ASSERT_EQ(g->edges_num(), c.edges_left) << c.max_var_group;
        if (c.edges_left) {
            EXPECT_EQ(g->edge_dest(0), c.dest);
        }
        for (const std::string part : {c.part1, c.part2})
            EXPECT_NE(log.find(part), std::string::npos) << part;
        if (c.zero_line) {
            EXPECT_GT(count_lines(log, c.zero_line), c.zeros);
        }
    }
}

TEST(DistribWgtSet, DrawsInProportionToTheSnapshot) {
    Random::reset(static_cast<int>(test_seed()));
    std::vector<float> w = {0.0f, 1.0f, 3.0f, -2.0f, 4.0f};
    DistribWgtSet d(w);
    EXPECT_EQ(d.total(), 8.0);
    w[0] = 100.0f; // not seen until init_weights
    const int n = 80000;
    std::vector<int> hits(5, 0);
    for (int i = 0; i < n; ++i)
        ++hits.at(d.sample());
    EXPECT_EQ(hits[0] + hits[3], 0); // zero and negative weights are never drawn
    for (int i : {1, 2, 4}) {
        const double p = w[i] / 8.0; // within five binomial standard deviations
        EXPECT_NEAR(hits[i], n * p, 5.0 * std::sqrt(n * p * (1 - p))) << i;
    }
    d.init_weights(w);
    EXPECT_EQ(d.total(), 108.0);
    const float none[2] = {0.0f, 0.0f};
    d.init_weights(none, 2);
    EXPECT_EQ(d.sample(), -1);
}
