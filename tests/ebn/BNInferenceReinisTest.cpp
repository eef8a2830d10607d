// Exact inference on tables counted from the reinis data (r-cran-deal, fetched and counted by
// bench/data/fetch_reinis.sh, never committed) against numpy enumeration; skipped when absent.
#include "BNInference.h"
#include "EbnTestUtil.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

namespace {

TEST(BNInferExactNaive, ReinisCountedTablesMatchNumpy) {
    const std::vector<RefNet> nets = read_ref_nets(source_dir() + "/bench/data/out/reinis/reinis_nets.txt");
    if (nets.empty())
        GTEST_SKIP() << "reinis not fetched (bench/data/fetch_reinis.sh)";
    for (std::size_t i = 0; i < nets.size(); ++i) {
        SCOPED_TRACE("evidence set " + std::to_string(i));
        const RefNet& r = nets[i];
        TableNet tn(r.cards, r.parents, r.cpts);
        BNInferExactNaive exact(tn.net);
        const auto post = run<JDLogVector>(tn, exact, r.evidence);
        ASSERT_EQ(post.size(), r.post.size());
        auto want = r.post.begin();
        for (const std::vector<double>& p : post) {
            for (std::size_t x = 0; x < p.size(); ++x)
                EXPECT_NEAR(p[x], want->second[x], 1e-4) << "node " << want->first;
            ++want;
        }
    }
}

} // namespace
