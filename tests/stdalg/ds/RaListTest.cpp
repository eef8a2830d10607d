// RaList: linking by id, id space growth, the kept membership of a last removed element, clear.
#include "ds/RaList.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <list>
#include <random>
#include <vector>

namespace {

std::vector<int> ids_forward(const RaList<int>& l) {
    std::vector<int> out;
    for (int id = l.get_front_id(); id != -1; id = l.get_next_id(id))
        out.push_back(id);
    return out;
}

std::vector<int> ids_backward(const RaList<int>& l) {
    std::vector<int> out;
    for (int id = l.get_back_id(); id != -1; id = l.get_prev_id(id))
        out.push_back(id);
    return out;
}

} // namespace

TEST(RaList, ConstructorAnnouncesItsSize) {
    testing::internal::CaptureStderr();
    RaList<int> l(17);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "RaList with 17\n");
    EXPECT_EQ(l.get_id_space_size(), 0);
    EXPECT_EQ(l.get_free_id(), 0);
}

TEST(RaList, PushInsertAndRemoveById) {
    RaList<int> l;
    EXPECT_EQ(l.push_back(10), 0);
    EXPECT_EQ(l.push_front(20), 1);
    EXPECT_EQ(l.push_back(30, 5), 5); // grows with free slots 2..4
    EXPECT_EQ(l.get_id_space_size(), 6);
    EXPECT_FALSE(l.is_member(3));
    EXPECT_EQ(l.insert_after(40, 0), 6);
    EXPECT_EQ(l.insert_after(50, -1, 3), 3); // behind nothing: in front
    EXPECT_EQ(ids_forward(l), (std::vector<int>{3, 1, 0, 6, 5}));
    EXPECT_EQ(ids_backward(l), (std::vector<int>{5, 6, 0, 1, 3}));
    EXPECT_EQ(l.get_front(), 50);
    EXPECT_EQ(l.get_back(), 30);
    EXPECT_EQ(l[6], 40);
    EXPECT_EQ(l.get_size(), 5);

    l.remove(0);
    l.remove(3);
    l.remove(5);
    EXPECT_EQ(ids_forward(l), (std::vector<int>{1, 6}));
    EXPECT_EQ(ids_backward(l), (std::vector<int>{6, 1}));
    EXPECT_FALSE(l.is_member(0));
    EXPECT_FALSE(l.is_member(-1));
    EXPECT_FALSE(l.is_member(99));
    EXPECT_EQ(l.get_size(), 2);
    // Removed ids aren't handed out again.
    EXPECT_EQ(l.push_back(60), 7);
    EXPECT_EQ(l.push_back(70, 0), 0); // unless named
    std::vector<int> values;
    for (int v : l)
        values.push_back(v);
    EXPECT_EQ(values, (std::vector<int>{20, 40, 60, 70}));
}

TEST(RaList, LastRemovedElementStaysAMember) {
    RaList<int> l;
    l.push_back(1, 2);
    l.push_back(2, 4);
    l.remove(2);
    EXPECT_FALSE(l.is_member(2));
    l.remove(4);
    EXPECT_EQ(l.get_size(), 0);
    EXPECT_EQ(l.get_front_id(), -1);
    EXPECT_EQ(l.get_back_id(), -1);
    EXPECT_TRUE(l.is_member(4));
    l.push_front(9, 4);
    EXPECT_EQ(ids_forward(l), (std::vector<int>{4}));
}

TEST(RaList, ClearKeepsTheIdSpace) {
    RaList<int> l;
    for (int i = 0; i < 5; ++i)
        l.push_back(i);
    l.clear();
    EXPECT_EQ(l.get_size(), 0);
    EXPECT_EQ(l.get_front_id(), -1);
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
    int created = 0;
    for (int step = 0; step < 4000; ++step) {
        const unsigned op = rng() % 5;
        if (op == 0 || model.empty()) {
            const int id = l.push_back(step);
            model.push_back(id);
            ++created;
        } else if (op == 1) {
            const int id = l.push_front(step);
            model.push_front(id);
            ++created;
        } else if (op == 2) {
            auto it = model.begin();
            std::advance(it, rng() % model.size());
            const int id = l.insert_after(step, *it);
            model.insert(std::next(it), id);
            ++created;
        } else {
            auto it = model.begin();
            std::advance(it, rng() % model.size());
            l.remove(*it);
            model.erase(it);
        }
        ASSERT_EQ(l.get_size(), static_cast<int>(model.size()));
        ASSERT_EQ(l.get_free_id(), created);
        if (step % 20 == 0) {
            ASSERT_EQ(ids_forward(l), std::vector<int>(model.begin(), model.end()));
            ASSERT_EQ(ids_backward(l), std::vector<int>(model.rbegin(), model.rend()));
        }
    }
}
