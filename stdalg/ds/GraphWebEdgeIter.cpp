// GraphWebEdgeIter: edge walks over the two lists of a node.
#include "ds/GraphWebEdgeIter.h"

#include "ds/GraphWeb.h"

GraphWebEdgeIter::GraphWebEdgeIter(const GraphWeb& graph, int node, Direction dir)
    : GraphBaseEdgeIter(node, dir), m_graph(&graph), m_next(-1), m_axis(0), m_prev(-1) {
    seek_first();
}

bool GraphWebEdgeIter::node_ok() const { return m_node >= 0 && m_graph->node_use(m_node); }

void GraphWebEdgeIter::land(int axis, int edge) {
    m_axis = axis;
    m_edge = edge;
    if (edge == -1) {
        m_next = -1;
        m_prev = -1;
        m_other = -1;
        return;
    }
    const Web<2>& w = m_graph->web();
    m_next = w.next_node(axis, edge);
    m_prev = w.prev_node(axis, edge);
    m_other = w.node_root(1 - axis, edge);
    m_cur_dir = axis == 0 ? Out : In;
}

void GraphWebEdgeIter::first() { seek_first(); }

void GraphWebEdgeIter::seek_first() {
    if (!node_ok()) {
        land(m_dir == In ? 1 : 0, -1);
        return;
    }
    const Web<2>& w = m_graph->web();
    if (m_dir == In) {
        land(1, w.root_head(1, m_node));
        return;
    }
    const int e = w.root_head(0, m_node);
    if (e == -1 && m_dir == Both)
        land(1, w.root_head(1, m_node));
    else
        land(0, e);
}

void GraphWebEdgeIter::last() {
    if (!node_ok()) {
        land(m_dir == Out ? 0 : 1, -1);
        return;
    }
    const Web<2>& w = m_graph->web();
    if (m_dir == Out) {
        land(0, w.root_tail(0, m_node));
        return;
    }
    const int e = w.root_tail(1, m_node);
    if (e == -1 && m_dir == Both)
        land(0, w.root_tail(0, m_node));
    else
        land(1, e);
}

GraphWebEdgeIter& GraphWebEdgeIter::operator++() {
    if (m_edge == -1)
        return *this;
    if (m_next == -1 && m_axis == 0 && m_dir == Both)
        land(1, m_graph->web().root_head(1, m_node));
    else
        land(m_axis, m_next);
    return *this;
}

GraphWebEdgeIter& GraphWebEdgeIter::operator--() {
    if (m_edge == -1)
        return *this;
    if (m_prev == -1 && m_axis == 1 && m_dir == Both)
        land(0, m_graph->web().root_tail(0, m_node));
    else
        land(m_axis, m_prev);
    return *this;
}
