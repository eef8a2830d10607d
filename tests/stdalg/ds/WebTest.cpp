// Web<2>: cells on one root per axis, ordered insertion behind marks, every fatal text of the web,
// the print forms, and the list-size lines every RaList prints.
#include "ds/Web.h"
#include "ds/GraphWeb.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace {

// The cells of a root, walked from the head; the walk from the tail must give the same list.
std::vector<int> root_list(const Web<2>& w, int axis, int root) {
    std::vector<int> fwd, back;
    for (int id = w.root_head(axis, root); id != -1; id = w.next_node(axis, id))
        fwd.push_back(id);
    for (int id = w.root_tail(axis, root); id != -1; id = w.prev_node(axis, id))
        back.insert(back.begin(), id);
    EXPECT_EQ(fwd, back) << "axis " << axis << " root " << root;
    return fwd;
}

} // namespace

TEST(Web, EveryListAnnouncesItsSize) {
    testing::internal::CaptureStderr();
    RaList<int> l(17);
    Web<2> w(5, true);
    GraphWeb g(3, true);
    auto lines = [](int size, int times) {
        std::string s;
        while (times--)
            s += "RaList with " + std::to_string(size) + "\n";
        return s;
    };
    // One for the list, three for the web (two axes and its ids), four for the graph.
    EXPECT_EQ(testing::internal::GetCapturedStderr(), lines(17, 1) + lines(5, 3) + lines(3, 4));
}

// Through GraphWeb the web keeps no id list; with one, -1 takes the list's free id.
TEST(Web, CellsSitOnOneRootPerAxisAndKeptIds) {
    Web<2> w(0, true);
    EXPECT_EQ(w.add_root(0, -1), 0);
    EXPECT_EQ(w.add_root(0, 4), 4);
    EXPECT_EQ(w.add_root(1, -1), 0);
    w.m_roots[0] = 4;
    w.m_roots[1] = 0;
    EXPECT_EQ(w.insert_node(-1), 0);
    EXPECT_EQ(w.insert_node(3), 3);
    w.m_roots[0] = 0;
    EXPECT_EQ(w.insert_node(-1), 4);
    EXPECT_EQ(root_list(w, 0, 4), (std::vector<int>{0, 3}));
    EXPECT_EQ(root_list(w, 0, 0), (std::vector<int>{4}));
    EXPECT_EQ(root_list(w, 1, 0), (std::vector<int>{0, 3, 4}));
    w.remove_node(3);
    EXPECT_EQ(w.insert_node(-1), 5); // a removed id isn't handed out again
    EXPECT_EQ(root_list(w, 1, 0), (std::vector<int>{0, 4, 5}));
    EXPECT_EQ(w.node_ids().get_size(), 3);
    EXPECT_TRUE(w.verify());
    w.clear();
    EXPECT_EQ(w.free_node_id(), 6);
    EXPECT_TRUE(w.verify());
}

// Lists hold high ids from plain insertion; low ids inserted in ascending order with
// insert_edge_at go in front of them and stay ascending, the marks moving on.
TEST(Web, InsertAtKeepsListsAscending) {
    GraphWeb g(0, false);
    g.insert_edge(0, 1, 100);
    g.insert_edge(0, 2, 101);
    g.unmark_all();
    g.insert_edge_at(0, 1, 3);
    g.insert_edge_at(0, 2, 7);
    g.insert_edge_at(0, 1, 8);
    g.insert_edge_at(3, 1, 9); // node 3 is new: its root has no mark yet
    const Web<2>& w = g.web();
    EXPECT_EQ(root_list(w, 0, 0), (std::vector<int>{3, 7, 8, 100, 101}));
    EXPECT_EQ(root_list(w, 1, 1), (std::vector<int>{3, 8, 9, 100}));
    EXPECT_EQ(root_list(w, 1, 2), (std::vector<int>{7, 101}));
    EXPECT_EQ(root_list(w, 0, 3), (std::vector<int>{9}));
    EXPECT_EQ(w.get_mark(0, 0), 8);
    EXPECT_EQ(w.get_mark(1, 1), 9);
    EXPECT_TRUE(g.verify());
    // A mark puts the next insertion behind the marked cell on both axes.
    g.mark_edge(3);
    g.insert_edge_at(0, 1, 5);
    EXPECT_EQ(root_list(w, 0, 0), (std::vector<int>{3, 5, 7, 8, 100, 101}));
    EXPECT_EQ(root_list(w, 1, 1), (std::vector<int>{3, 5, 8, 9, 100}));
    g.unmark_node(0, 0);
    g.unmark_node(2, 1);
    EXPECT_EQ(w.get_mark(0, 0), -1);
    EXPECT_EQ(w.get_mark(1, 2), -1);
    g.insert_edge_at(0, 2, 1);
    EXPECT_EQ(root_list(w, 0, 0), (std::vector<int>{1, 3, 5, 7, 8, 100, 101}));
    EXPECT_EQ(root_list(w, 1, 2), (std::vector<int>{1, 7, 101}));
    EXPECT_TRUE(g.verify());
}

TEST(Web, PrintForms) {
    GraphWeb g(0, false);
    g.insert_edge(0, 1, -1);
    g.insert_edge(0, 0, -1);
    const Web<2>& w = g.web();
    const std::string cell0 = "level 0:root : 0 next : 1 prev : -1\nlevel 1:root : 1 next : -1 prev : -1\n";
    const std::string cell1 = "level 0:root : 0 next : -1 prev : 0\nlevel 1:root : 0 next : -1 prev : -1\n";
    std::ostringstream a, b, c, d;
    w.print_node(a, 1);
    w.print_nodes(b, 1);
    w.print_array(c);
    EXPECT_EQ(a.str(), cell1);
    EXPECT_EQ(b.str(), "Web Nodes ordered by 1 axis\nid : 1\n" + cell1 + "id : 0\n" + cell0);
    EXPECT_EQ(c.str(), "node id-0\n" + cell0 + "node id-1\n" + cell1);
    RootNode r;
    d << r << "|";
    r.m_head = 2;
    r.m_tail = 9;
    r.m_how_many = 4;
    d << r;
    EXPECT_EQ(d.str(), "head : -1 tail : -1 how_many : -1|head : 2 tail : 9 how_many : 4");
}

// Each fatal call runs in a child process, so the graphs below carry on unchanged in this one.
TEST(WebDeathTest, InsertAtAndMarkFatals) {
    const std::string at = R"(\.\./stdalg/ds/Web\([0-9]+\): )";
    Web<2> w(0, false);
    w.add_root(0, 0);
    w.m_roots[0] = 0;
    w.m_roots[1] = 0; // no root on axis 1
    EXPECT_DEATH(w.insert_node_at(0), at + "Try to connect to non existing root");

    GraphWeb g(0, false);
    g.insert_edge_at(0, 1, 5);
    EXPECT_DEATH(g.insert_edge_at(0, 1, 3), at + "Not ordered : 5 > 3");
    g.remove_edge(5);
    EXPECT_DEATH(g.insert_edge_at(0, 1, 7), at + " cahced pos for insert node 7 at ax 0 is not used = 5");
    g.insert_edge(2, 1, 5); // cell 5 comes back under another source
    EXPECT_DEATH(g.insert_edge_at(0, 1, 6), at + R"(The cahcehd pos root \(2\) != the root 0)");

    GraphWeb h(0, false);
    h.insert_edge(0, 1, 3);
    EXPECT_DEATH(h.insert_edge_at(0, 1, 4), at + "Not ordered : 3 < 4"); // no mark: in front of 3
    h.unmark_all();
    EXPECT_DEATH(h.mark_edge(7), at + "Try to mark unused node 7");
    h.insert_node(-1); // a root added after unmark_all
    EXPECT_DEATH(h.mark_edge(3), at + "must unmark after adding m_roots and before calling mark");
}
