// Web<2>: ordered insertion behind marks, every fatal text of the web, verify on a broken list,
// and the print forms.
#include "ds/Web.h"
#include "ds/GraphWeb.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace {

std::vector<int> root_list(const Web<2>& w, int axis, int root) {
    std::vector<int> out;
    for (int id = w.root_head(axis, root); id != -1; id = w.next_node(axis, id))
        out.push_back(id);
    return out;
}

std::vector<int> root_list_back(const Web<2>& w, int axis, int root) {
    std::vector<int> out;
    for (int id = w.root_tail(axis, root); id != -1; id = w.prev_node(axis, id))
        out.insert(out.begin(), id);
    return out;
}

} // namespace

TEST(Web, ConstructionPrintsThreeListLines) {
    testing::internal::CaptureStderr();
    Web<2> w(5, true);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "RaList with 5\nRaList with 5\nRaList with 5\n");
    EXPECT_EQ(w.how_many(), 0);
    EXPECT_EQ(w.free_node_id(), 0);
}

TEST(Web, CellsSitOnOneRootPerAxis) {
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
    EXPECT_EQ(w.how_many(), 3);
    EXPECT_EQ(root_list(w, 0, 4), (std::vector<int>{0, 3}));
    EXPECT_EQ(root_list(w, 0, 0), (std::vector<int>{4}));
    EXPECT_EQ(root_list(w, 1, 0), (std::vector<int>{0, 3, 4}));
    EXPECT_EQ(w.root_size(1, 0), 3);
    EXPECT_FALSE(w.node_in_use(1));
    EXPECT_TRUE(w.node_in_use(3));
    EXPECT_TRUE(w.verify());
    w.remove_node(3);
    EXPECT_EQ(root_list(w, 1, 0), (std::vector<int>{0, 4}));
    EXPECT_EQ(root_list_back(w, 1, 0), (std::vector<int>{0, 4}));
    EXPECT_EQ(w.node_root(0, 3), -1);
    EXPECT_EQ(w.next_node(1, 3), -1);
    EXPECT_TRUE(w.verify());
    // Removing a root takes its cells off the other axis too.
    w.remove_root(0, 4);
    EXPECT_FALSE(w.root_in_use(0, 4));
    EXPECT_EQ(root_list(w, 1, 0), (std::vector<int>{4}));
    EXPECT_EQ(w.how_many(), 1);
    EXPECT_TRUE(w.verify());
    w.clear();
    EXPECT_EQ(w.how_many(), 0);
    EXPECT_EQ(w.axis_size(0), 0);
    EXPECT_EQ(w.node_id_space_size(), 5);
    EXPECT_EQ(w.free_node_id(), 5);
    EXPECT_EQ(w.root_id_space_size(0), 5);
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
    EXPECT_EQ(root_list_back(w, 0, 0), (std::vector<int>{3, 7, 8, 100, 101}));
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

TEST(Web, VerifyFindsACellLinkedTwice) {
    Web<2> w(0, false);
    w.add_root(0, 0);
    w.add_root(1, 0);
    w.m_roots[0] = 0;
    w.m_roots[1] = 0;
    w.insert_node(0);
    w.insert_node(0); // the caller's fault: the cell is already in use
    testing::internal::CaptureStderr();
    EXPECT_FALSE(w.verify());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Connections invalid in node 0\n");
}

TEST(Web, PrintForms) {
    Web<2> w(0, false);
    w.add_root(0, 0);
    w.add_root(1, 0);
    w.add_root(1, 1);
    w.m_roots[0] = 0;
    w.m_roots[1] = 1;
    w.insert_node(-1);
    w.m_roots[1] = 0;
    w.insert_node(-1);
    const std::string cell0 = "level 0:root : 0 next : 1 prev : -1\nlevel 1:root : 1 next : -1 prev : -1\n";
    const std::string cell1 = "level 0:root : 0 next : -1 prev : 0\nlevel 1:root : 0 next : -1 prev : -1\n";
    std::ostringstream a, b, c, d;
    w.print_node(a, 1);
    EXPECT_EQ(a.str(), cell1);
    w.print_nodes(b, 1);
    EXPECT_EQ(b.str(), "Web Nodes ordered by 1 axis\nid : 1\n" + cell1 + "id : 0\n" + cell0);
    w.print_array(c);
    EXPECT_EQ(c.str(), "node id-0\n" + cell0 + "node id-1\n" + cell1);
    RootNode r;
    d << r;
    r.m_head = 2;
    r.m_tail = 9;
    r.m_how_many = 4;
    d << "|" << r;
    EXPECT_EQ(d.str(), "head : -1 tail : -1 how_many : -1|head : 2 tail : 9 how_many : 4");
}

TEST(WebDeathTest, InsertAtFatals) {
    EXPECT_DEATH(
        {
            Web<2> w(0, false);
            w.add_root(0, 0);
            w.m_roots[0] = 0;
            w.m_roots[1] = 0; // no root on axis 1
            w.insert_node_at(0);
        },
        R"(\.\./stdalg/ds/Web\([0-9]+\): Try to connect to non existing root)");
    EXPECT_DEATH(
        {
            GraphWeb g(0, false);
            g.insert_edge_at(0, 1, 5);
            g.insert_edge_at(0, 1, 3);
        },
        R"(\.\./stdalg/ds/Web\([0-9]+\): Not ordered : 5 > 3)");
    EXPECT_DEATH(
        {
            GraphWeb g(0, false);
            g.insert_edge_at(0, 1, 5);
            g.remove_edge(5);
            g.insert_edge_at(0, 1, 7);
        },
        R"(\.\./stdalg/ds/Web\([0-9]+\):  cahced pos for insert node 7 at ax 0 is not used = 5)");
    EXPECT_DEATH(
        {
            GraphWeb g(0, false);
            g.insert_edge_at(0, 1, 5);
            g.remove_edge(5);
            g.insert_edge(2, 1, 5); // cell 5 comes back under another source
            g.insert_edge_at(0, 1, 6);
        },
        R"(\.\./stdalg/ds/Web\([0-9]+\): The cahcehd pos root \(2\) != the root 0)");
    EXPECT_DEATH(
        {
            GraphWeb g(0, false);
            g.insert_edge(0, 1, 3);
            g.insert_edge_at(0, 1, 4); // no mark: goes in front of 3
        },
        R"(\.\./stdalg/ds/Web\([0-9]+\): Not ordered : 3 < 4)");
}

TEST(WebDeathTest, MarkFatals) {
    EXPECT_DEATH(
        {
            GraphWeb g(0, false);
            g.insert_edge(0, 1, 0);
            g.unmark_all();
            g.mark_edge(7);
        },
        R"(\.\./stdalg/ds/Web\([0-9]+\): Try to mark unused node 7)");
    EXPECT_DEATH(
        {
            GraphWeb g(0, false);
            g.insert_edge(0, 1, 0);
            g.unmark_all();
            g.insert_node(-1); // a root added after unmark_all
            g.mark_edge(0);
        },
        R"(\.\./stdalg/ds/Web\([0-9]+\): must unmark after adding m_roots and before calling mark)");
}
