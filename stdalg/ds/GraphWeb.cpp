// GraphWeb: nodes as roots, edges as cells of a two-axis Web.
#include "ds/GraphWeb.h"

#include "ds/GraphWebEdgeIter.h"
#include "ds/GraphWebNodeIter.h"

#include <iostream>
#include <vector>

// The web doesn't keep its own list of cell ids: the edge list does that when asked for.
GraphWeb::GraphWeb(int size, bool keep_edges)
    : m_web(size, false), m_edge_list(size), m_keep_edges(keep_edges) {}

void GraphWeb::clear() {
    m_web.clear();
    m_edge_list.clear();
}

int GraphWeb::insert_node(int id) {
    if (id == -1)
        id = free_node_id();
    m_web.add_root(0, id);
    m_web.add_root(1, id);
    return id;
}

void GraphWeb::remove_node(int id) {
    if (m_keep_edges)
        rm_node_edges(id);
    m_web.remove_root(0, id);
    m_web.remove_root(1, id);
}

int GraphWeb::place_edge(int src, int dst, int id, bool ordered) {
    if (id == -1)
        id = free_edge_id();
    if (!node_use(src))
        insert_node(src);
    if (!node_use(dst))
        insert_node(dst);
    m_web.m_roots[0] = src;
    m_web.m_roots[1] = dst;
    if (ordered)
        m_web.insert_node_at(id);
    else
        m_web.insert_node(id);
    if (m_keep_edges)
        m_edge_list.push_back(id, id);
    return id;
}

int GraphWeb::insert_edge(int src, int dst, int id) { return place_edge(src, dst, id, false); }

int GraphWeb::insert_edge_at(int src, int dst, int id) { return place_edge(src, dst, id, true); }

void GraphWeb::remove_edge(int id) {
    m_web.remove_node(id);
    if (m_keep_edges)
        m_edge_list.remove(id);
}

void GraphWeb::rm_node_edges(int node) {
    rm_node_out_edges(node);
    rm_node_in_edges(node);
}

void GraphWeb::rm_node_out_edges(int node) {
    for (int e = m_web.root_head(0, node); e != -1;) {
        const int next = m_web.next_node(0, e);
        remove_edge(e);
        e = next;
    }
}

void GraphWeb::rm_node_in_edges(int node) {
    for (int e = m_web.root_head(1, node); e != -1;) {
        const int next = m_web.next_node(1, e);
        remove_edge(e);
        e = next;
    }
}

int GraphWeb::get_edge(int src, int dst) const {
    if (!node_use(src) || !node_use(dst))
        return -1;
    if (node_out_edges_num(src) >= node_in_edges_num(dst)) {
        for (int e = m_web.root_head(1, dst); e != -1; e = m_web.next_node(1, e))
            if (m_web.node_root(0, e) == src)
                return e;
    } else {
        for (int e = m_web.root_head(0, src); e != -1; e = m_web.next_node(0, e))
            if (m_web.node_root(1, e) == dst)
                return e;
    }
    return -1;
}

GraphBaseNodeIter* GraphWeb::new_node_iter() const { return new GraphWebNodeIter(*this); }

GraphBaseEdgeIter* GraphWeb::new_edge_iter(int node, GraphBaseEdgeIter::Direction dir) const {
    return new GraphWebEdgeIter(*this, node, dir);
}

bool GraphWeb::verify() const {
    if (!m_web.verify()) {
        std::cerr << "Bad web" << std::endl;
        return false;
    }
    std::vector<int> in(static_cast<std::size_t>(nodes_id_space_size()), 0);
    for (int n = m_web.axis_head(0); n != -1; n = m_web.root_next(0, n))
        for (int e = m_web.root_head(0, n); e != -1; e = m_web.next_node(0, e))
            ++in[m_web.node_root(1, e)];
    for (int n = m_web.axis_head(0); n != -1; n = m_web.root_next(0, n)) {
        if (in[n] != node_in_edges_num(n)) {
            std::cerr << "The " << n << " node is not valid (by " << in[n] << " )" << std::endl;
            return false;
        }
    }
    return true;
}
