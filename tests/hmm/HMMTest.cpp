// Tests of the HMM store: state ids, edge copies, the consistency check, and the log-space helpers.
#include "HMM.h"
#include "HMMTestUtil.h"
#include "LogSpace.h"

#include <gtest/gtest.h>

#include <cmath>
#include <list>
#include <sstream>
#include <vector>

namespace {

// The far ends of a state's out-edges (`&HMMAdjacency::to`) or in-edges (`&HMMAdjacency::from`).
std::vector<int> ends(const std::list<HMMAdjacency>& l, int HMMAdjacency::*end) {
    std::vector<int> v;
    for (const HMMAdjacency& a : l)
        v.push_back(a.*end);
    return v;
}

TEST(HMM, FreshModelAndStates) {
    HMM h(4);
    ASSERT_EQ(1, h.num_states());
    EXPECT_TRUE(h.m_states[0].m_active);
    EXPECT_TRUE(h.m_states[0].m_silent);
    EXPECT_EQ(-1, h.m_finish_state);
    const int s = h.new_state(false);
    EXPECT_EQ(1, s);
    EXPECT_EQ((std::vector<float>(4, 0.0f)), h.m_states[s].m_emit);
    EXPECT_EQ((std::vector<float>(4, 1.0f)), h.m_states[s].m_log_emit);
    h.add_finish_state();
    EXPECT_EQ(2, h.m_finish_state);
    EXPECT_TRUE(h.m_states[2].m_silent);
    h.reset();
    EXPECT_EQ(1, h.num_states());
    EXPECT_EQ(-1, h.m_finish_state);
    EXPECT_EQ(1, h.new_state(true));
    std::ostringstream out;
    h.print(out);
    EXPECT_EQ("Implemented in derived classes!\n", out.str());
}

TEST(HMM, EdgesAreStoredTwiceWithLogs) {
    HMM h(2);
    h.new_state(false);
    h.add_transition(0, 1, 0.25f);
    h.add_transition(0, 1, 0.0f); // no check for an existing edge
    ASSERT_EQ(2u, h.m_adj[0].size());
    ASSERT_EQ(2u, h.m_back_adj[1].size());
    EXPECT_EQ(logf(0.25f), h.m_adj[0].front().log_p);
    EXPECT_EQ(kLogZero, h.m_back_adj[1].back().log_p);
    HMMAdjacency a(0, 1, 0.5f);
    a.set_adj_log_prob(logf(0.125f));
    EXPECT_FLOAT_EQ(0.125f, a.p);
    a.set_adj_prob(0.0f);
    EXPECT_EQ(kLogZero, a.log_p);
}

TEST(HMM, DeletedIdsComeBackSmallestFirstWithTheirOldState) {
    QuietCerr quiet;
    HMM h(2);
    for (int i = 0; i < 5; ++i)
        h.new_state(i % 2 == 1); // 1 emitting, 2 silent, 3 emitting, 4 silent, 5 emitting
    h.set_state_emission(3, 1, 0.5f);
    h.add_transition(0, 3, 1.0f);
    h.add_transition(3, 3, 0.5f);
    h.add_transition(3, 5, 0.5f);
    h.add_transition(2, 3, 1.0f);
    h.add_transition(3, 1, 0.25f);
    // Edges that do not touch the deleted states stay in both lists.
    h.add_transition(0, 1, 0.5f);
    h.add_transition(5, 1, 1.0f);
    h.del_state(4);
    h.del_state(3);
    EXPECT_FALSE(h.m_states[3].m_active);
    for (const std::list<HMMAdjacency>* l : {&h.m_adj[3], &h.m_back_adj[3], &h.m_adj[2], &h.m_back_adj[5]})
        EXPECT_TRUE(l->empty());
    EXPECT_EQ((std::vector<int>{1}), ends(h.m_adj[0], &HMMAdjacency::to));
    EXPECT_EQ((std::vector<int>{0, 5}), ends(h.m_back_adj[1], &HMMAdjacency::from));
    EXPECT_TRUE(h.verify());
    EXPECT_NE(std::string::npos,
              quiet.text().find("HMM del state 3\nHMM will del forward back\nHMM try del"));

    // Id 3 first, asked silent but staying emitting with its old emissions; then 4; then a new id.
    EXPECT_EQ(3, h.new_state(true));
    EXPECT_TRUE(h.m_states[3].m_active);
    EXPECT_FALSE(h.m_states[3].m_silent);
    EXPECT_EQ(0.5f, h.m_states[3].m_emit[1]);
    EXPECT_EQ(4, h.new_state(false));
    EXPECT_TRUE(h.m_states[4].m_silent);
    EXPECT_EQ(6, h.new_state(false));
}

TEST(HMM, VerifyReportsSumsButNotTheFinish) {
    QuietCerr quiet;
    HMM h(1);
    h.new_state(false);
    h.new_state(false);
    h.add_finish_state();
    h.add_transition(0, 1, 0.5f);
    h.add_transition(0, 2, 0.4995f); // within 0.001
    h.add_transition(1, 3, 0.9f);    // off by 0.1
    h.add_transition(2, 3, 1.0f);
    EXPECT_TRUE(h.verify());
    EXPECT_EQ("HMM verif, tot out prob not equal 1, state 1 total 0.9\n", quiet.text());
}

TEST(HMMDeathTest, VerifyFailsOnDifferentEdgeCopies) {
    HMM h(1);
    h.new_state(false);
    h.add_transition(0, 1, 1.0f);
    h.m_adj[0].front().set_adj_prob(0.5f);
    EXPECT_DEATH(h.verify(), R"(HMM\([0-9]+\): Incompatible adj/back in states 0 to 1 0\.5 1)");
}

} // namespace
