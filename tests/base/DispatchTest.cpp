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
    // Logs, then the first time subscribes on_event of this recorder 40 times to the same event,
    // enough to force the list to reallocate.
    void on_join(int e) {
        on_event(e);
        for (int i = 0; m_join && i < 40; ++i)
            m_join->subscribe(e, makeFunctor(*this, &Recorder::on_event));
        m_join = nullptr;
    }
    std::string m_name;
    float m_sum = 0.0f;
    const event_dispatch* m_join = nullptr;
};

void free_handler(int e) { g_log.push_back("free:" + std::to_string(e)); }

class DispatchTest : public ::testing::Test {
protected:
    void SetUp() override { g_log.clear(); }
};

} // namespace

TEST_F(DispatchTest, FunctorsCallTheirTargetAndKnowEmptiness) {
    Recorder r("r");
    const Recorder c("c");
    CBFunctor1<int> empty;
    CBFunctor1<int> f = makeFunctor(r, &Recorder::on_event);
    CBFunctor1<int> h = makeFunctor(&free_handler);
    EXPECT_TRUE(empty.empty());
    EXPECT_FALSE(f.empty());
    EXPECT_FALSE(h.empty()); // a free function: first word set, no callee
    CBFunctor1<int> copy = f;
    f(1);
    makeFunctor(c, &Recorder::on_const)(2);
    h(3);
    makeFunctor((CBFunctor1<int>*)nullptr, r, &Recorder::on_returning)(4);
    copy(5);
    makeFunctor(r, &Recorder::on_nothing)();
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
    // The emptied slot is the first handed out again; the list doesn't grow.
    EXPECT_EQ(d.subscribe(1, makeFunctor(e, &Recorder::on_event)), 1);
    EXPECT_EQ(d.slots_num(1), 3);
    d.invoke(1);
    // Other events are separate lists, and events past the end do nothing.
    for (int other : {0, 2, 1000, -1})
        d.invoke(other);
    EXPECT_EQ(g_log, (std::vector<std::string>{"a:1", "c:1", "a:1", "e:1", "c:1"}));
    EXPECT_EQ(d.events_num(), 2);
}

// A subscription past the end grows the table to max(event + 1, trunc(1.25 * old size) + 1):
// from 0, event 0 gives max(1, 1) and event 1 max(2, trunc(1.25) + 1); from 8, event 8 gives
// max(9, 10 + 1), then event 30 max(31, trunc(13.75) + 1) and event 31 max(32, trunc(38.75) + 1).
TEST_F(DispatchTest, GrowthRules) {
    Recorder r("r");
    event_dispatch d0(0), d8(8);
    const struct {
        const event_dispatch* d;
        int event, want;
    } steps[] = {{&d0, 0, 1}, {&d0, 1, 2}, {&d8, 8, 11}, {&d8, 30, 31}, {&d8, 31, 39}};
    for (const auto& s : steps) {
        s.d->subscribe(s.event, makeFunctor(r, &Recorder::on_event));
        EXPECT_EQ(s.d->events_num(), s.want) << s.event;
    }
    EventDispatch2Param<int, int, int> p(8);
    p.subscribe(8, 0, makeFunctor(r, &Recorder::on_triple));
    EXPECT_EQ(p.events_num(), 9); // the two-parameter dispatch grows to event + 1 only
    p.subscribe(20, 0, makeFunctor(r, &Recorder::on_triple));
    EXPECT_EQ(p.events_num(), 21);
}

TEST_F(DispatchTest, ObserverSubscribedDuringInvokeRunsInTheSamePass) {
    event_dispatch d(1);
    Recorder j("j");
    j.m_join = &d;
    d.subscribe(0, makeFunctor(j, &Recorder::on_join));
    d.invoke(0);
    EXPECT_EQ(g_log, std::vector<std::string>(41, "j:0"));
}

TEST_F(DispatchTest, TwoParamDispatchPassesKeyAndValues) {
    EventDispatch2Param<int, int, int> d(1);
    Recorder a("a"), b("b");
    EXPECT_EQ(d.subscribe(3, 7, makeFunctor(a, &Recorder::on_triple)), 0);
    EXPECT_EQ(d.subscribe(3, 9, makeFunctor(b, &Recorder::on_triple)), 1);
    d.invoke(3, 1, 2);
    d.unsubscribe(3, 0);
    d.invoke(3, 4, 5);
    d.invoke(4, 4, 5);
    EXPECT_EQ(d.subscribe(3, 11, makeFunctor(a, &Recorder::on_triple)), 0);
    d.invoke(3, 0, 0);
    EXPECT_EQ(g_log, (std::vector<std::string>{"a:7,1,2", "b:9,1,2", "b:9,4,5", "a:11,0,0", "b:9,0,0"}));

    // A const dispatch still takes subscriptions.
    const EventDispatch2Param<int, float, float> fd(2);
    Recorder s("s");
    fd.subscribe(1, 3, makeFunctor(s, &Recorder::on_float));
    fd.subscribe(1, -1, makeFunctor(s, &Recorder::on_float));
    fd.invoke(1, 0.5f, 2.0f); // 3 * 1.5 - 1 * 1.5
    EXPECT_FLOAT_EQ(s.m_sum, 3.0f);
}
