// BNet, BNState and BNStateDispatch: distribution slots, state resizing and order, and the
// dispatch that announces a change before storing it.
#include "BNet.h"
#include "BNState.h"
#include "EbnTestUtil.h"
#include "callback.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

template <class T> class BNetTyped : public ::testing::Test {};
typedef ::testing::Types<int, float> ValueTypes;
TYPED_TEST_SUITE(BNetTyped, ValueTypes);

TYPED_TEST(BNetTyped, StateResetKeepsValuesAndGrowsWithZeros) {
    BNet<TypeParam> net;
    net.add_rand_var(0, 2);
    net.add_rand_var(1, 3);
    BNState<TypeParam> st(net);
    net.set_state_ref(st);
    EXPECT_EQ(&net.get_state(), &st);
    ASSERT_EQ(st.size(), 2);
    st.set_rv_state(1, TypeParam(2));
    net.add_rand_var(5, 2);
    st.reset();
    ASSERT_EQ(st.size(), 3);
    EXPECT_EQ(st[1], TypeParam(2));
    EXPECT_EQ(st.get_rv_state(2), TypeParam(0));
    st.reset_all(TypeParam(1));
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(st[i], TypeParam(1));
    std::ostringstream os;
    st.print(os);
    EXPECT_EQ(os.str(), "0 : 1\n1 : 1\n2 : 1\n");
    EXPECT_EQ(net.get_ldist(2), nullptr);
}

TYPED_TEST(BNetTyped, DispatchSendsOldAndNewBeforeStoring) {
    BNet<TypeParam> net;
    for (int v = 0; v < 3; ++v)
        net.add_rand_var(v, 4);
    BNStateDispatch<TypeParam> st(net);
    struct Obs {
        const BNState<TypeParam>* st;
        std::vector<std::string> seen;
        void on(int key, TypeParam a, TypeParam b) {
            std::ostringstream os;
            os << key << ":" << a << ">" << b << " held " << (*st)[1];
            seen.push_back(os.str());
        }
    } obs{&st, {}};
    st.get_dispatch().subscribe(1, 7, makeFunctor(obs, &Obs::on));
    st.set_rv_state(1, TypeParam(3));
    st.set_rv_state(1, TypeParam(3)); // same value: no event
    st.set_rv_state(0, TypeParam(2)); // nobody listens to 0
    st.set_rv_state(1, TypeParam(1));
    EXPECT_EQ(obs.seen, (std::vector<std::string>{"7:0>3 held 0", "7:3>1 held 3"}));
    EXPECT_EQ(st[1], TypeParam(1));
}

TEST(BNState, LexicographicOrderFromRvidZero) {
    BNet<int> net;
    for (int v = 0; v < 3; ++v)
        net.add_rand_var(v, 3);
    BNState<int> a(net), b(net);
    EXPECT_FALSE(a < b);
    b.set_rv_state(2, 1);
    EXPECT_TRUE(a < b);
    a.set_rv_state(0, 1);
    EXPECT_FALSE(a < b);
    EXPECT_TRUE(b < a);
    // An empty left state is never less.
    BNet<int> none;
    BNState<int> e(none);
    EXPECT_FALSE(e < a);
    // Usable as a map key: distinct states count once each.
    std::set<BNState<int>> seen{a, b, a, BNState<int>(b)};
    EXPECT_EQ(seen.size(), 2u);
}

TEST(BNetDeathTest, SetLdistStoresAndDiesPastTheNodes) {
    TableNet tn({2, 2}, {{}, {0}}, {bern(0.5), cat(bern(0.1), bern(0.9))});
    LDTable* t = new LDTable(tn.net, *tn.state, 1);
    tn.dists.add_ld(t);
    tn.net.set_ldist(1, t);
    EXPECT_EQ(tn.net.get_ldist(1), t);
    EXPECT_DEATH(tn.net.set_ldist(2, t),
                 R"(\.\./ebn/BNet\([0-9]+\): Cannot set ldist for rvid 2 which is larger than the max id 2)");
}

} // namespace
