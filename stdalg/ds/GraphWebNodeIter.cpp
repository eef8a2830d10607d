// GraphWebNodeIter: steps along the root list of axis 0.
#include "ds/GraphWebNodeIter.h"

#include "ds/GraphWeb.h"

GraphWebNodeIter::GraphWebNodeIter(const GraphWeb& graph) : m_graph(&graph) { first(); }

GraphWebNodeIter& GraphWebNodeIter::operator++() {
    if (m_node != -1)
        m_node = m_graph->web().root_next(0, m_node);
    return *this;
}

GraphWebNodeIter& GraphWebNodeIter::operator--() {
    if (m_node != -1)
        m_node = m_graph->web().root_prev(0, m_node);
    return *this;
}

void GraphWebNodeIter::first() { m_node = m_graph->web().axis_head(0); }

void GraphWebNodeIter::last() { m_node = m_graph->web().axis_tail(0); }
