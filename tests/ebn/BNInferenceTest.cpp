// Inference engines: exact enumeration against the 1988 Asia figures and numpy enumeration (random
// networks, the reinis counts), Gibbs
// on the leaky Asia, the sampled set, random starts, frozen co-parents, and Gibbs modes.
#include "BNInference.h"
#include "EbnTestUtil.h"
#include "JointDist.h"
#include "Random.h"
#include "TestSupport.h"
#include "options.h"

#include <gtest/gtest.h>

#include <cmath>
#include <list>
#include <sstream>

namespace {

options gibbs_options(int repeats, int t) {
    options o;
    std::istringstream in("[G]\nGibbsRepeats = " + std::to_string(repeats) +
                          "\nGibbsT = " + std::to_string(t) + "\nLogit = 0\n");
    o.read(in, false);
    return o;
}

const std::map<int, int> kAsiaEvidence = {{0, 1}, {6, 1}, {7, 1}};
// P(true) of tub, smoke, lung, bron, either: the 1988 figures, and numpy for the leaky network
// (data/ebn/asia_refs.txt).
const double kAsiaExact[] = {0.391712, 0.702025, 0.444271, 0.628822, 0.813769};
const double kLeakyExact[] = {0.286168108, 0.646357545, 0.324643362, 0.595803184, 0.863227339};

TEST(BNInferExactNaive, AsiaPosteriorsMatchThe1988Figures) {
    std::unique_ptr<TableNet> asia = make_asia(false);
    BNInferExactNaive exact(asia->net);
    const auto post = run<JDLogVector>(*asia, exact, kAsiaEvidence);
    ASSERT_EQ(post.size(), 5u);
    for (int i = 0; i < 5; ++i)
        EXPECT_NEAR(post[i][1], kAsiaExact[i], 1e-4) << "query " << i;
}

// Random networks, and tables counted from the reinis data (r-cran-deal, fetched and counted by
// bench/data/fetch_reinis.sh, never committed; skipped when absent).
TEST(BNInferExactNaive, RandomNetworksMatchNumpyEnumeration) {
    const std::vector<RefNet> nets = read_ref_nets(source_dir() + "/data/ebn/random_nets.txt");
    ASSERT_EQ(nets.size(), 24u);
    for (std::size_t i = 0; i < nets.size(); ++i) {
        SCOPED_TRACE("network " + std::to_string(i));
        expect_ref_posteriors(nets[i]);
    }
}

TEST(BNInferExactNaive, ReinisCountedTablesMatchNumpy) {
    const std::vector<RefNet> nets = read_ref_nets(source_dir() + "/bench/data/out/reinis/reinis_nets.txt");
    if (nets.empty())
        GTEST_SKIP() << "reinis not fetched (bench/data/fetch_reinis.sh)";
    for (std::size_t i = 0; i < nets.size(); ++i) {
        SCOPED_TRACE("evidence set " + std::to_string(i));
        expect_ref_posteriors(nets[i]);
    }
}

TEST(BNInferExactNaive, JointQueryAndAllObservedOnePass) {
    // a -> b: a joint query over (a, b) in a log-space JDTabular is the joint itself.
    TableNet tn({2, 3}, {{}, {0}}, {bern(0.25), {0.5, 0.3, 0.2, 0.1, 0.1, 0.8}});
    BNInferQuery<int> q(tn.net);
    JDTabular proto({2, 3});
    proto.set_log_space(true);
    q.add_query({0, 1}, proto);
    BNInferExactNaive exact(tn.net);
    exact.preproc_query(q);
    exact.infer(q);
    EXPECT_NEAR(std::exp(q.get_posterior(0)->density({1, 2})), 0.25 * 0.8, 1e-6);
    EXPECT_NEAR(std::exp(q.get_posterior(0)->density({0, 1})), 0.75 * 0.3, 1e-6);
    // Everything observed: one pass, one count of weight log P(a = 1, b = 2).
    BNInferQuery<int> all(tn.net);
    all.set_var_observed(0);
    all.set_var_observed(1);
    tn.state->set_rv_state(0, 1);
    tn.state->set_rv_state(1, 2);
    all.add_query({1}, JDVector(3));
    exact.preproc_query(all);
    exact.infer(all);
    EXPECT_FLOAT_EQ(all.get_posterior(0)->get_total(), logf(0.25f) + logf(0.8f));
}

TEST(BNInferGibbs, LeakyAsiaWithinOneHundredthOfExact) {
    Random::reset(20240611);
    std::unique_ptr<TableNet> asia = make_asia(true);
    options o = gibbs_options(20000, 30);
    BNInferGibbs gibbs(asia->net, o, "G");
    const auto post = run<JDVector>(*asia, gibbs, kAsiaEvidence);
    for (int i = 0; i < 5; ++i)
        EXPECT_NEAR(post[i][1], kLeakyExact[i], 0.01) << "query " << i;
}

TEST(BNInferGibbs, TrueAsiaCannotCrossTheDeterministicOr) {
    // Under this evidence either = 1 and either = 0 (tub = lung = 0) are joined only through
    // zero-probability states: each run stays in the half its start picks.
    Random::reset(7);
    std::unique_ptr<TableNet> asia = make_asia(false);
    options o = gibbs_options(4000, 40);
    BNInferGibbs gibbs(asia->net, o, "G");
    EXPECT_GT(std::fabs(run<JDVector>(*asia, gibbs, kAsiaEvidence, {5})[0][1] - kAsiaExact[4]), 0.05);
}

TEST(BNInferGibbs, SampledSetFollowsTheWorkList) {
    // 0 -> 1 -> 2 -> 3, 4 -> 2, 5 alone. Observe 1, query 4: sampled are 4 and the descendants
    // of 1 and 4 (2, 3); 0 and 5 keep their values.
    TableNet tn({2, 2, 2, 2, 2, 2}, {{}, {0}, {1, 4}, {2}, {}, {}},
                {bern(0.5), cat(bern(0.2), bern(0.7)),
                 cat(cat(bern(0.1), bern(0.5)), cat(bern(0.6), bern(0.9))), cat(bern(0.3), bern(0.8)),
                 bern(0.4), bern(0.5)});
    options o = gibbs_options(10, 5);
    BNInferGibbs gibbs(tn.net, o, "G");
    tn.state->set_rv_state(0, 1);
    tn.state->set_rv_state(5, 1);
    run<JDVector>(tn, gibbs, {{1, 0}}, {4});
    std::vector<int> sampled = gibbs.get_sample_vars();
    std::sort(sampled.begin(), sampled.end());
    EXPECT_EQ(sampled, (std::vector<int>{2, 3, 4}));
    EXPECT_EQ(gibbs.get_sample_pos(0), -1);
    EXPECT_NE(gibbs.get_sample_pos(1), -1) << "observed variables take a position too";
    EXPECT_EQ(tn.state->get_rv_state(0) + tn.state->get_rv_state(5), 2);
}

TEST(BNInferGibbs, ZeroStepsCountTheRandomStarts) {
    // GibbsT 0: each run counts its uniform random start whatever the table says; one step
    // already follows the table.
    TableNet tn({3}, {{}}, {{0.9, 0.05, 0.05}});
    Random::reset(99);
    for (int t : {0, 1}) {
        options o = gibbs_options(30000, t);
        BNInferGibbs gibbs(tn.net, o, "G");
        EXPECT_NEAR(run<JDVector>(tn, gibbs, {})[0][0], t ? 0.9 : 1.0 / 3, 0.015) << "GibbsT " << t;
    }
}

TEST(BNInferGibbs, FrozenCoParentConditionsTheQuery) {
    // a -> c <- b, c = 1 observed, only a queried: b is neither queried nor a descendant of an
    // observed or queried node, so it keeps its value 1 and the answer is P(a | c, b = 1) =
    // 0.9 / 1.1, not the marginal 0.5. c = 1 with 0.9 when a = b, 0.2 otherwise; a, b uniform.
    TableNet tn({2, 2, 2}, {{}, {}, {0, 1}},
                {bern(0.5), bern(0.5), cat(cat(bern(0.9), bern(0.2)), cat(bern(0.2), bern(0.9)))});
    Random::reset(5);
    options o = gibbs_options(20000, 10);
    BNInferGibbs gibbs(tn.net, o, "G");
    tn.state->set_rv_state(1, 1);
    EXPECT_NEAR(run<JDVector>(tn, gibbs, {{2, 1}}, {0})[0][1], 0.9 / 1.1, 0.01);
}

TEST(BNInferGibbsModes, DistinctStatesCountOnceWithTheirJointWeight) {
    // Three reachable states, each visited many times: counted once each with its joint weight,
    // the posterior is the exact one (visit-weighted it would not be).
    Random::reset(3);
    TableNet tn({2, 3}, {{}, {0}}, {bern(0.3), {0.5, 0.3, 0.2, 0.1, 0.1, 0.8}});
    options o = gibbs_options(400, 3);
    BNInferGibbsModes modes(tn.net, o, "G");
    const auto post = run<JDLogVector>(tn, modes, {{0, 1}});
    ASSERT_EQ(modes.get_visited().size(), 3u);
    int visits = 0;
    for (const auto& s : modes.get_visited())
        visits += s.second;
    EXPECT_EQ(visits, 400);
    EXPECT_NEAR(post[0][0], 0.1, 1e-5);
    EXPECT_NEAR(post[0][2], 0.8, 1e-5);
}

TEST(BNInferGibbsDeathTest, UnsampleableConditionalIsFatal) {
    // Not-a-number logs leave no x with r + t not above entry x.
    TableNet tn({2}, {{}}, {bern(0.5)});
    static_cast<LDTable*>(tn.net.get_ldist(0))->set_table({std::nanf(""), std::nanf("")});
    options o = gibbs_options(1, 1);
    BNInferGibbs gibbs(tn.net, o, "G");
    EXPECT_DEATH(
        run<JDVector>(tn, gibbs, {}),
        R"(BNInference\([0-9]+\): ERROR: could not sample from var 0 nax dust was nan rand was nan)");
}

} // namespace
