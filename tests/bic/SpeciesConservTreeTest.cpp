// SpeciesHomologyGraph and SpeciesConservTree: the hand-worked table on the five-node tree, the
// threshold edge, and random homology tables on random trees against a brute-force recomputation.
#include "SpeciesConservTree.h"

#include "OrthoTestTree.h"

#include <random>
#include <set>

namespace {

std::unique_ptr<SpeciesConservTree> conserv(SpeciesPhylogeny& tree, float thr, const std::string& table) {
    std::vector<HomRec> recs;
    std::istringstream in(table);
    for (HomRec r; in >> r.sa >> r.ga >> r.sb >> r.gb >> r.score;)
        recs.push_back(r);
    return ortho_conserv(tree, thr, recs);
}

TEST(SpeciesHomologyGraph, KeepsOwnOrderedPairWithoutThreshold) {
    SpeciesHomologyGraph g(0, 3, 3, 2);
    std::istringstream in("0 1 3 0 9.5\n3 0 0 1 0.1\n0 2 3 1 0.5\n0 2 1 1 0.5\n");
    g.read_table(in);
    // Each list as "from-to:score" entries, lists split by "|"; the incoming list by gene of b holds
    // the reversed edge.
    const auto str = [](const std::vector<std::vector<HomologyEdge>>& lists) {
        std::ostringstream os;
        for (const auto& l : lists) {
            os << "|";
            for (const HomologyEdge& e : l)
                os << e.from << "-" << e.to << ":" << e.score << " ";
        }
        return os.str();
    };
    EXPECT_EQ(str(g.m_out), "||1-0:9.5 |2-1:0.5 ");
    EXPECT_EQ(str(g.m_in), "|0-1:9.5 |1-2:0.5 ");
}

// The conservation sets are checked against brute force on random trees below.
TEST(SpeciesConservTree, HandTableOnFiveNodeTree) {
    FiveNodeTree f;
    // A0-B1 kept, A1-C2 equal to the threshold and dropped, B0-C1 kept, A2-C0 above and dropped;
    // the root, an inner node, has no homology graph.
    auto c = conserv(*f.tree, 1.0f, "0 0 3 1 0.5\n0 1 1 2 1.0\n3 0 1 1 0.2\n0 2 1 0 2.0\n");
    EXPECT_EQ(c->graph(0, 1)->m_out[1].size(), 0u);
    EXPECT_EQ(c->graph(3, 0)->m_out[1].size(), 1u);
    EXPECT_EQ(c->graph(2, 0), nullptr);
}

// A random rooted binary tree: leaves merged pairwise at random; ids shuffled; some leaves mapped.
struct RandomTree {
    RandomTree(std::mt19937& rng, int leaves, int genes_max) {
        const int n = 2 * leaves - 1;
        std::vector<int> ids(n);
        for (int i = 0; i < n; ++i)
            ids[i] = i;
        std::shuffle(ids.begin(), ids.end(), rng);
        parent.assign(n, -1);
        inner.assign(n, false);
        std::vector<int> open(ids.begin(), ids.begin() + leaves);
        int next = leaves;
        while (open.size() > 1) {
            const int i = std::uniform_int_distribution<int>(0, int(open.size()) - 1)(rng);
            const int a = open[i];
            open.erase(open.begin() + i);
            const int j = std::uniform_int_distribution<int>(0, int(open.size()) - 1)(rng);
            const int b = open[j];
            open.erase(open.begin() + j);
            const int p = ids[next++];
            parent[a] = parent[b] = p;
            inner[p] = true;
            open.push_back(p);
        }
        genes.assign(n, 0);
        std::ostringstream os;
        std::vector<int> order(ids);
        std::shuffle(order.begin(), order.end(), rng);
        int real = -1;
        for (int id : order) {
            if (inner[id]) {
                os << id << " n" << id << " 1 none " << parent[id] << " 1 0 0 x none\n";
            } else if (real >= 0 && rng() % 4 == 0) {
                genes[id] = genes[real];
                os << id << " s" << id << " " << ~real << " map " << parent[id] << " 0 0 0 x none\n";
            } else {
                genes[id] = 1 + int(rng() % genes_max);
                const std::string f = dir.write("s" + std::to_string(id), ortho_var_table("g", genes[id]));
                os << id << " s" << id << " 0 " << f << " " << parent[id] << " 0 0 0 x none\n";
                real = id;
            }
        }
        table = os.str();
    }
    bool is_ancestor_or_self(int a, int x) const {
        for (; x >= 0; x = parent[x])
            if (x == a)
                return true;
        return false;
    }
    TempDir dir;
    std::vector<int> parent;
    std::vector<bool> inner;
    std::vector<int> genes;
    std::string table;
};

TEST(SpeciesConservTree, RandomTablesMatchBruteForce) {
    const std::uint32_t seed = test_seed(515);
    SCOPED_TRACE(seed);
    std::mt19937 rng(seed);
    for (int round = 0; round < 6; ++round) {
        RandomTree rt(rng, 3 + round * 2, 6);
        options opt;
        auto tree = ortho_read_tree(opt, rt.table);
        const int n = tree->nodes_num();
        std::vector<int> species;
        for (int i = 0; i < n; ++i)
            if (!rt.inner[i])
                species.push_back(i);
        std::vector<HomRec> recs;
        for (int k = 0; k < 40; ++k) {
            HomRec r;
            r.sa = species[rng() % species.size()];
            r.sb = species[rng() % species.size()];
            r.ga = int(rng() % rt.genes[r.sa]);
            r.gb = int(rng() % rt.genes[r.sb]);
            // Scores on a grid of tenths so that some equal the threshold.
            r.score = float(rng() % 11) / 10.0f;
            recs.push_back(r);
        }
        auto c = ortho_conserv(*tree, 0.5f, recs);
        // Brute force: at an inner node, each leaf lies below the left child, the right child, or
        // elsewhere; a kept record whose two species lie on different sides marks both genes.
        for (int node = 0; node < n; ++node) {
            std::vector<std::set<int>> want(n);
            if (!rt.inner[node]) {
                for (int g = 0; g < rt.genes[node]; ++g)
                    want[node].insert(g);
            } else {
                std::vector<int> kids;
                for (int x = 0; x < n; ++x)
                    if (rt.parent[x] == node)
                        kids.push_back(x);
                auto side = [&](int x) {
                    for (std::size_t k = 0; k < kids.size(); ++k)
                        if (rt.is_ancestor_or_self(kids[k], x))
                            return int(k);
                    return 2;
                };
                want = ortho_brute(recs, n, 0.5f, side);
            }
            for (int s : species)
                EXPECT_EQ(ortho_bits(c->m_conserv[node][s]), want[s])
                    << "round " << round << " node " << node << " sp " << s;
        }
    }
}

} // namespace
