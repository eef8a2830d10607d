// Inference engines: exact enumeration against the 1988 Asia figures and numpy enumeration, Gibbs
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

void observe(TableNet& tn, BNInferQuery<int>& q, const std::map<int, int>& ev) {
    for (const auto& e : ev) {
        q.set_var_observed(e.first);
        tn.state->set_rv_state(e.first, e.second);
    }
}

// Single-variable queries, one counter of each node's own cardinality, on every hidden node.
template <class JD> void query_hidden(TableNet& tn, BNInferQuery<int>& q) {
    const std::list<int> hidden = q.get_hidden_vars();
    for (int v : hidden)
        q.add_query(std::list<int>(1, v), JD(tn.net.get_rvar_card(v)));
}

// P(value | evidence) of query `id` as a probability.
double prob(BNInferQuery<int>& q, int id, int value) {
    JointDist<int>* p = q.get_posterior(id);
    const float d = p->density(std::vector<int>(1, value));
    return p->is_log_space() ? std::exp(static_cast<double>(d)) : d;
}

const std::map<int, int> kAsiaEvidence = {{0, 1}, {6, 1}, {7, 1}};

TEST(BNInferExactNaive, AsiaPosteriorsMatchThe1988Figures) {
    std::unique_ptr<TableNet> asia = make_asia(false);
    BNInferQuery<int> q(asia->net);
    observe(*asia, q, kAsiaEvidence);
    query_hidden<JDLogVector>(*asia, q);
    BNInferExactNaive exact(asia->net);
    exact.preproc_query(q);
    exact.infer(q);
    // Hidden nodes in rising rvid order: tub, smoke, lung, bron, either.
    const double expected[] = {0.391712, 0.702025, 0.444271, 0.628822, 0.813769};
    for (int i = 0; i < 5; ++i) {
        EXPECT_NEAR(prob(q, i, 1), expected[i], 1e-4) << "query " << i;
        EXPECT_NEAR(prob(q, i, 0) + prob(q, i, 1), 1.0, 1e-5);
    }
    // The evidence's probability, by hand: sum of the joint over the hidden nodes.
    double pe = 0;
    for (int t = 0; t < 2; ++t)
        for (int s = 0; s < 2; ++s)
            for (int l = 0; l < 2; ++l)
                for (int b = 0; b < 2; ++b) {
                    const int e = t | l;
                    const double dy[2][2] = {{0.1, 0.7}, {0.8, 0.9}};
                    pe += 0.01 * (t ? 0.05 : 0.95) * 0.5 * (l ? (s ? 0.1 : 0.01) : (s ? 0.9 : 0.99)) *
                          (b ? (s ? 0.6 : 0.3) : (s ? 0.4 : 0.7)) * (e ? 0.98 : 0.05) * dy[b][e];
                }
    EXPECT_NEAR(exact.get_log_evidence(), std::log(pe), 1e-4);
}

TEST(BNInferExactNaive, RandomNetworksMatchNumpyEnumeration) {
    const std::vector<RefNet> nets = read_ref_nets(source_dir() + "/data/ebn/random_nets.txt");
    ASSERT_EQ(nets.size(), 24u);
    for (std::size_t i = 0; i < nets.size(); ++i) {
        SCOPED_TRACE("network " + std::to_string(i));
        const RefNet& r = nets[i];
        TableNet tn(r.cards, r.parents, r.cpts);
        BNInferQuery<int> q(tn.net);
        observe(tn, q, r.evidence);
        query_hidden<JDLogVector>(tn, q);
        BNInferExactNaive exact(tn.net);
        exact.preproc_query(q);
        exact.infer(q);
        int id = 0;
        for (int v : q.get_query_vars()) {
            const std::vector<double>& want = r.post.at(v);
            for (std::size_t x = 0; x < want.size(); ++x)
                EXPECT_NEAR(prob(q, id, static_cast<int>(x)), want[x], 1e-4)
                    << "node " << v << " value " << x;
            ++id;
        }
        EXPECT_EQ(id, static_cast<int>(r.post.size()));
        // Evidence values are never overwritten.
        for (const auto& e : r.evidence)
            EXPECT_EQ(tn.state->get_rv_state(e.first), e.second);
    }
}

TEST(BNInferExactNaive, JointQueryAndAllObservedOnePass) {
    // Two-node chain a -> b: a joint query over (a, b) in a JDTabular sums to the joint itself.
    TableNet tn({2, 3}, {{}, {0}}, {bern(0.25), {0.5, 0.3, 0.2, 0.1, 0.1, 0.8}});
    BNInferQuery<int> q(tn.net);
    JDTabular proto({2, 3});
    proto.set_log_space(true);
    q.add_query({0, 1}, proto);
    BNInferExactNaive exact(tn.net);
    exact.preproc_query(q);
    exact.infer(q);
    const double joint[2][3] = {{0.75 * 0.5, 0.75 * 0.3, 0.75 * 0.2}, {0.25 * 0.1, 0.25 * 0.1, 0.25 * 0.8}};
    for (int a = 0; a < 2; ++a)
        for (int b = 0; b < 3; ++b)
            EXPECT_NEAR(std::exp(q.get_posterior(0)->density({a, b})), joint[a][b], 1e-6);

    // Everything observed: one pass, one count, with the joint's log as its weight.
    BNInferQuery<int> all(tn.net);
    all.set_var_observed(0);
    all.set_var_observed(1);
    tn.state->set_rv_state(0, 1);
    tn.state->set_rv_state(1, 2);
    all.add_query({1}, JDVector(3));
    exact.preproc_query(all);
    exact.infer(all);
    EXPECT_FLOAT_EQ(all.get_posterior(0)->get_total(), logf(0.25f) + logf(0.8f));
    EXPECT_NEAR(exact.get_log_evidence(), std::log(0.25 * 0.8), 1e-6);
}

TEST(BNInferGibbs, LeakyAsiaWithinOneHundredthOfExact) {
    Random::reset(20240611);
    std::unique_ptr<TableNet> asia = make_asia(true);
    options o = gibbs_options(20000, 30);
    BNInferQuery<int> q(asia->net);
    observe(*asia, q, kAsiaEvidence);
    query_hidden<JDVector>(*asia, q);
    BNInferGibbs gibbs(asia->net, o, "G");
    gibbs.preproc_query(q);
    gibbs.infer(q);
    // Numpy enumeration of the leaky network (data/ebn/asia_refs.txt).
    const double expected[] = {0.286168108, 0.646357545, 0.324643362, 0.595803184, 0.863227339};
    for (int i = 0; i < 5; ++i)
        EXPECT_NEAR(prob(q, i, 1), expected[i], 0.01) << "query " << i;
    EXPECT_EQ(asia->state->get_rv_state(0), 1);
    EXPECT_EQ(asia->state->get_rv_state(6), 1);
}

TEST(BNInferGibbs, TrueAsiaCannotCrossTheDeterministicOr) {
    // Under asia = xray = dysp = true, either = 1 and either = 0 (with tub = lung = 0) are joined
    // only through zero-probability states, so each run stays in the half its random start picks
    // and the estimate of either reflects the starts, not the posterior 0.813769.
    Random::reset(7);
    std::unique_ptr<TableNet> asia = make_asia(false);
    options o = gibbs_options(4000, 40);
    BNInferQuery<int> q(asia->net);
    observe(*asia, q, kAsiaEvidence);
    q.add_query({5}, JDVector(2));
    q.add_query({1}, JDVector(2));
    BNInferGibbs gibbs(asia->net, o, "G");
    gibbs.preproc_query(q);
    gibbs.infer(q);
    EXPECT_GT(std::fabs(prob(q, 0, 1) - 0.813769), 0.05);
}

TEST(BNInferGibbs, SampledSetFollowsTheWorkList) {
    // 0 -> 1 -> 2 -> 3, 4 -> 2, 5 alone. Observe 1, query 4: sampled are 4 and the descendants
    // of 1 and 4 (2, 3); 0 and 5 keep their values.
    TableNet tn({2, 2, 2, 2, 2, 2}, {{}, {0}, {1, 4}, {2}, {}, {}},
                {bern(0.5), cat(bern(0.2), bern(0.7)),
                 cat(cat(bern(0.1), bern(0.5)), cat(bern(0.6), bern(0.9))), cat(bern(0.3), bern(0.8)),
                 bern(0.4), bern(0.5)});
    options o = gibbs_options(10, 5);
    BNInferQuery<int> q(tn.net);
    q.set_var_observed(1);
    q.add_query({4}, JDVector(2));
    BNInferGibbs gibbs(tn.net, o, "G");
    gibbs.preproc_query(q);
    std::vector<int> sampled = gibbs.get_sample_vars();
    std::sort(sampled.begin(), sampled.end());
    EXPECT_EQ(sampled, (std::vector<int>{2, 3, 4}));
    for (int v : {0, 5})
        EXPECT_EQ(gibbs.get_sample_pos(v), -1);
    EXPECT_NE(gibbs.get_sample_pos(1), -1);
    tn.state->set_rv_state(0, 1);
    tn.state->set_rv_state(5, 1);
    gibbs.infer(q);
    EXPECT_EQ(tn.state->get_rv_state(0), 1);
    EXPECT_EQ(tn.state->get_rv_state(5), 1);
}

TEST(BNInferGibbs, ZeroStepsCountTheRandomStarts) {
    // With GibbsT 0 each run counts its random start: a uniform draw whatever the tables say.
    Random::reset(99);
    TableNet tn({3}, {{}}, {{0.9, 0.05, 0.05}});
    options o = gibbs_options(30000, 0);
    BNInferQuery<int> q(tn.net);
    q.add_query({0}, JDVector(3));
    BNInferGibbs gibbs(tn.net, o, "G");
    gibbs.preproc_query(q);
    gibbs.infer(q);
    for (int x = 0; x < 3; ++x)
        EXPECT_NEAR(prob(q, 0, x), 1.0 / 3, 0.015);
    // With steps it follows the table.
    BNInferQuery<int> q2(tn.net);
    q2.add_query({0}, JDVector(3));
    options o2 = gibbs_options(30000, 1);
    BNInferGibbs g2(tn.net, o2, "G");
    g2.preproc_query(q2);
    g2.infer(q2);
    EXPECT_NEAR(prob(q2, 0, 0), 0.9, 0.015);
}

TEST(BNInferGibbs, FrozenCoParentConditionsTheQuery) {
    // a -> c <- b, c observed 1, only a queried: b is neither queried nor a descendant of an
    // observed or queried node, so it keeps its value and the answer is P(a | c, b) for that b.
    // c = 1 with probability 0.9 when a = b, 0.2 otherwise; a and b uniform.
    TableNet tn({2, 2, 2}, {{}, {}, {0, 1}},
                {bern(0.5), bern(0.5), cat(cat(bern(0.9), bern(0.2)), cat(bern(0.2), bern(0.9)))});
    Random::reset(5);
    options o = gibbs_options(20000, 10);
    BNInferQuery<int> q(tn.net);
    q.set_var_observed(2);
    tn.state->set_rv_state(2, 1);
    tn.state->set_rv_state(1, 1);
    q.add_query({0}, JDVector(2));
    BNInferGibbs gibbs(tn.net, o, "G");
    gibbs.preproc_query(q);
    gibbs.infer(q);
    // P(a = 1 | c = 1, b = 1) = 0.9 / (0.9 + 0.2); the true marginal P(a = 1 | c = 1) is 0.5.
    EXPECT_NEAR(prob(q, 0, 1), 0.9 / 1.1, 0.01);
    EXPECT_EQ(tn.state->get_rv_state(1), 1);
}

TEST(BNInferGibbsModes, DistinctStatesCountOnceWithTheirJointWeight) {
    Random::reset(3);
    TableNet tn({2, 3}, {{}, {0}}, {bern(0.3), {0.5, 0.3, 0.2, 0.1, 0.1, 0.8}});
    options o = gibbs_options(400, 3);
    BNInferQuery<int> q(tn.net);
    q.set_var_observed(0);
    tn.state->set_rv_state(0, 1);
    q.add_query({1}, JDLogVector(3));
    BNInferGibbsModes modes(tn.net, o, "G");
    modes.preproc_query(q);
    modes.infer(q);
    // Three states, each visited many times; the visit counts add up to the runs.
    ASSERT_EQ(modes.get_visited().size(), 3u);
    int visits = 0;
    for (const auto& s : modes.get_visited())
        visits += s.second;
    EXPECT_EQ(visits, 400);
    // Counted once each with weight 0.3 * p(b | a = 1): the total is log 0.3 before normalizing
    // would have made it 0, and the posterior is the exact one.
    EXPECT_NEAR(prob(q, 0, 0), 0.1, 1e-5);
    EXPECT_NEAR(prob(q, 0, 2), 0.8, 1e-5);
}

} // namespace

namespace {

TEST(BNInferGibbsDeathTest, UnsampleableConditionalIsFatal) {
    // A table of not-a-number logs gives no value x with r + t not above entry x.
    TableNet tn({2}, {{}}, {bern(0.5)});
    static_cast<LDTable*>(tn.net.get_ldist(0))->set_table({std::nanf(""), std::nanf("")});
    options o = gibbs_options(1, 1);
    BNInferQuery<int> q(tn.net);
    q.add_query({0}, JDVector(2));
    BNInferGibbs gibbs(tn.net, o, "G");
    gibbs.preproc_query(q);
    EXPECT_DEATH(
        gibbs.infer(q),
        R"(BNInference\([0-9]+\): ERROR: could not sample from var 0 nax dust was nan rand was nan)");
}

} // namespace
