// Exact inference on tables counted from the reinis data (r-cran-deal, fetched by
// bench/data/fetch_reinis.sh, never committed) against numpy enumeration; skipped when absent.
#include "BNInference.h"
#include "EbnTestUtil.h"
#include "JointDist.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>

namespace {

TEST(BNInferExactNaive, ReinisCountedTablesMatchNumpy) {
    const std::string dir = source_dir() + "/bench/data/out/reinis/";
    std::ifstream rows(dir + "reinis.tsv");
    const std::vector<RefNet> nets = read_ref_nets(dir + "reinis_nets.txt");
    if (!rows || nets.empty())
        GTEST_SKIP() << "reinis not fetched (bench/data/fetch_reinis.sh)";
    // The rows: a header of six names, then level indices.
    std::string line;
    std::getline(rows, line);
    std::vector<std::vector<int>> data;
    while (std::getline(rows, line)) {
        std::istringstream ls(line);
        std::vector<int> r(6);
        for (int& x : r)
            ls >> x;
        data.push_back(r);
    }
    ASSERT_EQ(data.size(), 1841u);
    // Count each table here (one added to every cell) and check the generated one against it.
    const RefNet& first = nets[0];
    for (int v = 0; v < 6; ++v) {
        const std::vector<int>& ps = first.parents[v];
        std::vector<double> counts(first.cpts[v].size(), 1.0);
        for (const std::vector<int>& r : data) {
            int ndx = r[v], stride = first.cards[v];
            for (int p : ps) {
                ndx += r[p] * stride;
                stride *= first.cards[p];
            }
            counts[ndx] += 1;
        }
        const int c = first.cards[v];
        for (std::size_t base = 0; base < counts.size(); base += c) {
            double sum = 0;
            for (int y = 0; y < c; ++y)
                sum += counts[base + y];
            for (int y = 0; y < c; ++y)
                EXPECT_NEAR(first.cpts[v][base + y], counts[base + y] / sum, 1e-8) << "node " << v;
        }
    }
    for (std::size_t i = 0; i < nets.size(); ++i) {
        SCOPED_TRACE("evidence set " + std::to_string(i));
        const RefNet& r = nets[i];
        TableNet tn(r.cards, r.parents, r.cpts);
        BNInferQuery<int> q(tn.net);
        for (const auto& e : r.evidence) {
            q.set_var_observed(e.first);
            tn.state->set_rv_state(e.first, e.second);
        }
        const std::list<int> hidden = q.get_hidden_vars();
        for (int v : hidden)
            q.add_query(std::list<int>(1, v), JDLogVector(r.cards[v]));
        BNInferExactNaive exact(tn.net);
        exact.preproc_query(q);
        exact.infer(q);
        int id = 0;
        for (int v : hidden) {
            for (int x = 0; x < r.cards[v]; ++x)
                EXPECT_NEAR(std::exp(q.get_posterior(id)->density({x})), r.post.at(v)[x], 1e-4)
                    << "node " << v;
            ++id;
        }
    }
}

} // namespace
