// Callback functors, event_dispatch and EventDispatch2Param: slots, order, growth, re-entry.
#include "dispatch.h"
#include "EventDispatch2Param.h"
#include "callback.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string> g_log;

struct Recorder {
    explicit Recorder(const std::string& name) : m_name(name) {}
    void on_event(int e) { g_log.push_back(m_name + ":" + std::to_string(e)); }
    void on_const(int e) const { g_log.push_back(m_name + " const:" + std::to_string(e)); }
    int on_returning(int e) {
        g_log.push_back(m_name + " ret:" + std::to_string(e));
        return e;
    }
    void on_triple(int k, int a, int b) {
        g_log.push_back(m_name + ":" + std::to_string(k) + "," + std::to_string(a) + "," + std::to_string(b));
    }
    void on_float(int k, float a, float b) { m_sum += static_cast<float>(k) * (b - a); }
    void on_nothing() { g_log.push_back(m_name + " called"); }
    std::string m_name;
    float m_sum = 0.0f;
};

void free_handler(int e) { g_log.push_back("free:" + std::to_string(e)); }

// Subscribes a second observer to the same event the first time it is called.
struct Joiner {
    Joiner(event_dispatch& d, Recorder& late) : m_d(d), m_late(late) {}
    void on_event(int e) {
        g_log.push_back("joiner:" + std::to_string(e));
        if (!m_done) {
            m_done = true;
            for (int i = 0; i < 40; ++i) // enough to force the list to reallocate
                m_d.subscribe(e, makeFunctor(m_late, &Recorder::on_event));
        }
    }
    event_dispatch& m_d;
    Recorder& m_late;
    bool m_done = false;
};

class DispatchTest : public ::testing::Test {
protected:
    void SetUp() override { g_log.clear(); }
};

} // namespace

TEST_F(DispatchTest, FunctorsCallTheirTargetAndKnowEmptiness) {
    Recorder r("r");
    const Recorder c("c");
    CBFunctor1<int> empty;
    EXPECT_TRUE(empty.empty());
    EXPECT_EQ(empty.callee, nullptr);

    CBFunctor1<int> f = makeFunctor(r, &Recorder::on_event);
    CBFunctor1<int> g = makeFunctor(c, &Recorder::on_const);
    CBFunctor1<int> h = makeFunctor(&free_handler);
    CBFunctor1<int> k = makeFunctor((CBFunctor1<int>*)nullptr, r, &Recorder::on_returning);
    CBFunctor0 z = makeFunctor(r, &Recorder::on_nothing);
    EXPECT_FALSE(f.empty());
    EXPECT_EQ(f.callee, &r);
    EXPECT_FALSE(h.empty()); // a free function: first word set, no callee
    EXPECT_EQ(h.callee, nullptr);
    CBFunctor1<int> copy = f;
    f(1);
    g(2);
    h(3);
    k(4);
    copy(5);
    z();
    EXPECT_EQ(g_log, (std::vector<std::string>{"r:1", "c const:2", "free:3", "r ret:4", "r:5", "r called"}));
}

TEST_F(DispatchTest, ConstructorAnnouncesItself) {
    testing::internal::CaptureStderr();
    event_dispatch d(3);
    EventDispatch2Param<int, int, int> d2(2);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "in dispatch construction\nin dispatch construction\n");
    EXPECT_EQ(d.events_num(), 3);
    EXPECT_EQ(d2.events_num(), 2);
}

TEST_F(DispatchTest, SlotsAreStableAndReused) {
    event_dispatch d(2);
    Recorder a("a"), b("b"), c("c"), e("e");
    EXPECT_EQ(d.subscribe(1, makeFunctor(a, &Recorder::on_event)), 0);
    EXPECT_EQ(d.subscribe(1, makeFunctor(b, &Recorder::on_event)), 1);
    EXPECT_EQ(d.subscribe(1, makeFunctor(c, &Recorder::on_event)), 2);
    d.unsubscribe(1, 1);
    d.invoke(1);
    EXPECT_EQ(g_log, (std::vector<std::string>{"a:1", "c:1"}));
    // The emptied slot is the first handed out again; the list doesn't grow.
    EXPECT_EQ(d.subscribe(1, makeFunctor(e, &Recorder::on_event)), 1);
    EXPECT_EQ(d.slots_num(1), 3);
    g_log.clear();
    d.invoke(1);
    EXPECT_EQ(g_log, (std::vector<std::string>{"a:1", "e:1", "c:1"}));
    // Other events are separate lists.
    g_log.clear();
    d.invoke(0);
    EXPECT_TRUE(g_log.empty());
}

TEST_F(DispatchTest, InvokePastTheEndDoesNothing) {
    event_dispatch d(2);
    d.invoke(2);
    d.invoke(1000);
    d.invoke(-1);
    EXPECT_EQ(d.events_num(), 2);
    EXPECT_TRUE(g_log.empty());
}

TEST_F(DispatchTest, GrowthRules) {
    Recorder r("r");
    event_dispatch d(0);
    d.subscribe(0, makeFunctor(r, &Recorder::on_event));
    EXPECT_EQ(d.events_num(), 1); // max(0 + 1, 0 + 1)
    d.subscribe(1, makeFunctor(r, &Recorder::on_event));
    EXPECT_EQ(d.events_num(), 2); // max(2, trunc(1.25) + 1)
    event_dispatch d8(8);
    d8.subscribe(8, makeFunctor(r, &Recorder::on_event));
    EXPECT_EQ(d8.events_num(), 11); // max(9, 10 + 1)
    d8.subscribe(30, makeFunctor(r, &Recorder::on_event));
    EXPECT_EQ(d8.events_num(), 31); // max(31, trunc(13.75) + 1)
    d8.subscribe(31, makeFunctor(r, &Recorder::on_event));
    EXPECT_EQ(d8.events_num(), 39); // max(32, trunc(38.75) + 1)

    EventDispatch2Param<int, int, int> p(8);
    p.subscribe(8, 0, makeFunctor(r, &Recorder::on_triple));
    EXPECT_EQ(p.events_num(), 9);
    p.subscribe(20, 0, makeFunctor(r, &Recorder::on_triple));
    EXPECT_EQ(p.events_num(), 21);
}

TEST_F(DispatchTest, ObserverSubscribedDuringInvokeRunsInTheSamePass) {
    event_dispatch d(1);
    Recorder late("late");
    Joiner j(d, late);
    d.subscribe(0, makeFunctor(j, &Joiner::on_event));
    d.invoke(0);
    ASSERT_EQ(g_log.size(), 41u);
    EXPECT_EQ(g_log[0], "joiner:0");
    EXPECT_EQ(g_log[40], "late:0");
}

TEST_F(DispatchTest, TwoParamDispatchPassesKeyAndValues) {
    EventDispatch2Param<int, int, int> d(1);
    Recorder a("a"), b("b");
    EXPECT_EQ(d.subscribe(3, 7, makeFunctor(a, &Recorder::on_triple)), 0);
    EXPECT_EQ(d.subscribe(3, 9, makeFunctor(b, &Recorder::on_triple)), 1);
    d.invoke(3, 1, 2);
    EXPECT_EQ(g_log, (std::vector<std::string>{"a:7,1,2", "b:9,1,2"}));
    d.unsubscribe(3, 0);
    g_log.clear();
    d.invoke(3, 4, 5);
    d.invoke(4, 4, 5);
    EXPECT_EQ(g_log, (std::vector<std::string>{"b:9,4,5"}));
    EXPECT_EQ(d.subscribe(3, 11, makeFunctor(a, &Recorder::on_triple)), 0);
    g_log.clear();
    d.invoke(3, 0, 0);
    EXPECT_EQ(g_log, (std::vector<std::string>{"a:11,0,0", "b:9,0,0"}));

    // A const dispatch still takes subscriptions.
    const EventDispatch2Param<int, float, float> fd(2);
    Recorder s("s");
    fd.subscribe(1, 3, makeFunctor(s, &Recorder::on_float));
    fd.subscribe(1, -1, makeFunctor(s, &Recorder::on_float));
    fd.invoke(1, 0.5f, 2.0f); // 3 * 1.5 - 1 * 1.5
    EXPECT_FLOAT_EQ(s.m_sum, 3.0f);
}
