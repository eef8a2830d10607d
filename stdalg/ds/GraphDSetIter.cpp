// GraphDSetIter: the subset walk as edge insertions and removals on a graph.
#include "ds/GraphDSetIter.h"

GraphDSetIter::GraphDSetIter(GraphBase& graph, int k)
    : IdDSetIter(k), m_graph(&graph), m_node(-1), m_edges(k, -1) {}

void GraphDSetIter::restart(int node, const ds_bitvec& allowed, const std::vector<int>& forced,
                            const std::vector<int>& choice) {
    IdDSetIter::restart(allowed, forced, choice);
    m_node = node;
}

void GraphDSetIter::first() {
    m_graph->rm_node_in_edges(m_node);
    IdDSetIter::first();
}

void GraphDSetIter::on_remove_from_set(int position, int) {
    m_graph->remove_edge(m_edges[position]);
    m_edges[position] = -1;
}

void GraphDSetIter::on_add_to_set(int position, int id) {
    m_edges[position] = m_graph->insert_edge(id, m_node, -1);
}
