// BNInferQuery: observed and hidden lists, query slots and their posteriors.
#include "BNInferQuery.h"
#include "BNet.h"

#include <gtest/gtest.h>

namespace {

TEST(BNInferQuery, ObservedHiddenAndQueries) {
    BNet<int> net;
    for (int v = 0; v < 4; ++v)
        net.add_rand_var(v, 2);
    BNInferQuery<int> q(net);
    EXPECT_EQ(q.get_hidden_vars(), (std::list<int>{0, 1, 2, 3}));
    q.set_var_observed(2);
    q.set_var_observed(0);
    q.set_var_observed(2);
    EXPECT_EQ(q.get_observed_vars(), (std::list<int>{2, 0}));
    EXPECT_EQ(q.get_hidden_vars(), (std::list<int>{1, 3}));
    q.set_var_hidden(2);
    EXPECT_EQ(q.get_hidden_vars(), (std::list<int>{1, 3, 2}));
    EXPECT_FALSE(q.is_observed(2));
    EXPECT_TRUE(q.is_observed(0));

    JDVector proto(2);
    proto.count({1});
    EXPECT_EQ(q.add_query({3, 1}, proto), 0);
    EXPECT_EQ(q.add_query({1}, proto), 1);
    EXPECT_EQ(q.add_query({}, proto), 2);
    EXPECT_EQ(q.add_query({2}, proto), 2) << "the slot with an empty list is reused";
    EXPECT_EQ(q.get_query_vars(), (std::list<int>{3, 1, 2}));
    EXPECT_TRUE(q.is_query(1));
    EXPECT_FALSE(q.is_query(0));
    EXPECT_EQ(q.get_max_query_id(), 3);
    EXPECT_EQ(q.get_query(2), std::list<int>{2});
    // Posteriors are clones: counting into one leaves the prototype and the others alone.
    ASSERT_NE(q.get_posterior(0), q.get_posterior(1));
    q.get_posterior(0)->count({0});
    EXPECT_EQ(q.get_posterior(0)->get_total(), 2.0f);
    EXPECT_EQ(q.get_posterior(1)->get_total(), 1.0f);
    EXPECT_EQ(proto.get_total(), 1.0f);
    EXPECT_FALSE(q.is_single_var_query());

    q.reset_to_single_var_queries({3, 0}, JDVector(2));
    EXPECT_TRUE(q.is_single_var_query());
    EXPECT_EQ(q.get_max_query_id(), 2);
    EXPECT_EQ(q.get_query(1), std::list<int>{0});
    EXPECT_EQ(q.get_observed_vars().size(), 0u);
    EXPECT_EQ(q.get_posterior(1)->get_total(), 0.0f);
}

} // namespace
