// RaList: linking by id, named ids and id space growth, the kept membership of a last removed
// element, clear, and a random run against std::list.
#include "ds/RaList.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <list>
#include <map>
#include <random>
#include <vector>

namespace {

// Ids from the front; the walk from the back must give the same list reversed.
std::vector<int> ids(const RaList<int>& l) {
    std::vector<int> fwd, back;
    for (int id = l.get_front_id(); id != -1; id = l.get_next_id(id))
        fwd.push_back(id);
    for (int id = l.get_back_id(); id != -1; id = l.get_prev_id(id))
        back.insert(back.begin(), id);
    EXPECT_EQ(fwd, back);
    return fwd;
}

} // namespace

TEST(RaList, NamedIdsAndIdSpace) {
    RaList<int> l;
    EXPECT_EQ(l.push_back(10), 0);
    EXPECT_EQ(l.push_back(30, 5), 5); // grows with free slots 1..4
    EXPECT_EQ(l.get_id_space_size(), 6);
    EXPECT_FALSE(l.is_member(3));
    EXPECT_EQ(l.insert_after(50, -1, 3), 3); // behind nothing: in front
    EXPECT_EQ(l.push_front(20), 6);
    EXPECT_EQ(ids(l), (std::vector<int>{6, 3, 0, 5}));
    l.remove(0);
    EXPECT_FALSE(l.is_member(0));
    EXPECT_FALSE(l.is_member(-1));
    EXPECT_FALSE(l.is_member(99));
    EXPECT_EQ(l.push_back(60), 7);    // removed ids aren't handed out again
    EXPECT_EQ(l.push_back(70, 0), 0); // unless named
    std::vector<int> values;
    for (int v : l)
        values.push_back(v);
    EXPECT_EQ(values, (std::vector<int>{20, 50, 30, 60, 70}));
}

TEST(RaList, LastRemovedElementStaysAMemberAndClearKeepsTheIdSpace) {
    RaList<int> l;
    l.push_back(1, 2);
    l.push_back(2, 4);
    l.remove(2);
    EXPECT_FALSE(l.is_member(2));
    l.remove(4);
    EXPECT_EQ(l.get_size(), 0);
    EXPECT_EQ(ids(l), std::vector<int>{});
    EXPECT_TRUE(l.is_member(4));
    l.push_front(9, 4);
    EXPECT_EQ(ids(l), (std::vector<int>{4}));
    l.clear();
    EXPECT_EQ(ids(l), std::vector<int>{});
    EXPECT_FALSE(l.is_member(4));
    EXPECT_EQ(l.get_id_space_size(), 5);
    EXPECT_EQ(l.push_back(1), 5);
}

TEST(RaList, RandomAgainstStdList) {
    const std::uint32_t seed = test_seed();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 rng(seed);
    RaList<int> l;
    std::list<int> model; // ids in list order
    std::map<int, int> value;
    int created = 0;
    for (int step = 0; step < 4000; ++step) {
        const unsigned op = model.empty() ? 0 : rng() % 5;
        auto at = std::next(model.begin(), model.empty() ? 0 : rng() % model.size());
        int id = -1;
        if (op == 0)
            model.push_back(id = l.push_back(step));
        else if (op == 1)
            model.push_front(id = l.push_front(step));
        else if (op == 2)
            model.insert(std::next(at), id = l.insert_after(step, *at));
        else {
            l.remove(*at);
            value.erase(*at);
            model.erase(at);
        }
        if (id != -1) {
            value[id] = step;
            ++created;
        }
        ASSERT_EQ(l.get_size(), static_cast<int>(model.size())) << "step " << step;
        ASSERT_EQ(l.get_free_id(), created) << "step " << step;
        if (step % 20 == 0) {
            ASSERT_EQ(ids(l), std::vector<int>(model.begin(), model.end())) << "step " << step;
            for (const auto& e : value)
                ASSERT_EQ(l[e.first], e.second);
            ASSERT_TRUE(model.empty() ||
                        (l.get_front() == value[model.front()] && l.get_back() == value[model.back()]));
        }
    }
}
