// GraphWeb: directed graphs on a two-axis Web; an edge is a cell on its source's out-list (axis 0)
// and its destination's in-list (axis 1).
#ifndef VESK_STDALG_DS_GRAPHWEB_H
#define VESK_STDALG_DS_GRAPHWEB_H

#include "ds/GraphBase.h"
#include "ds/RaList.h"
#include "ds/Web.h"

// A node id is a root id on both axes; an edge id is a cell id. Ids of either kind that were
// handed out are never reused by a -1 request, and survive clear(). Parallel edges and self-edges
// are allowed.
class GraphWeb : public virtual GraphBase {
public:
    // `size` is reserved in every list; `keep_edges` keeps a list of the edge ids in use.
    GraphWeb(int size, bool keep_edges);

    void clear() override;
    // A root on both axes (-1: a free id); returns the id.
    int insert_node(int id = -1) override;
    // Drops the node and every edge at it.
    void remove_node(int id) override;
    // Appends an edge (-1: a free id) to the source's out-list and the destination's in-list,
    // creating a missing end node under its own id. Returns the edge id.
    int insert_edge(int src, int dst, int id = -1) override;
    // The same, inserting behind the marks so that lists stay ascending in edge id.
    int insert_edge_at(int src, int dst, int id = -1) override;
    void mark_edge(int id) override { m_web.mark(id); }
    void unmark_node(int node, int axis) override { m_web.unmark(axis, node); }
    void unmark_all() override { m_web.unmark_all(); }
    void remove_edge(int id) override;
    void rm_node_edges(int node) override;
    void rm_node_out_edges(int node) override;
    void rm_node_in_edges(int node) override;
    // A self-edge counts twice in the sum.
    int node_edges_num(int node) const override { return node_out_edges_num(node) + node_in_edges_num(node); }
    int node_out_edges_num(int node) const override { return m_web.root_size(0, node); }
    int node_in_edges_num(int node) const override { return m_web.root_size(1, node); }
    bool node_use(int id) const override { return m_web.root_in_use(0, id); }
    bool edge_use(int id) const override { return m_web.node_in_use(id); }
    int nodes_num() const override { return m_web.axis_size(0); }
    int nodes_id_space_size() const override { return m_web.root_id_space_size(0); }
    int edges_num() const override { return m_web.how_many(); }
    int edges_id_space_size() const override { return m_web.node_id_space_size(); }
    // An edge from src to dst, or -1; of parallel edges the one nearest the head of the scanned list.
    int get_edge(int src, int dst) const override;
    int edge_source(int id) const override { return m_web.node_root(0, id); }
    int edge_dest(int id) const override { return m_web.node_root(1, id); }
    GraphBaseNodeIter* new_node_iter() const override;
    GraphBaseEdgeIter* new_edge_iter(int node, GraphBaseEdgeIter::Direction dir) const override;
    bool verify() const override;
    int free_node_id() const override { return m_web.free_root_id(0); }
    int free_edge_id() const override { return m_web.free_node_id(); }

    const Web<2>& web() const { return m_web; }
    bool keeps_edges() const { return m_keep_edges; }
    // The edge ids in use, in insertion order (kept only with keep_edges).
    const RaList<int>& edge_list() const { return m_edge_list; }

protected:
    int place_edge(int src, int dst, int id, bool ordered);

    Web<2> m_web;
    RaList<int> m_edge_list;
    bool m_keep_edges;
};

#endif
