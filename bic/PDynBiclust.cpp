// PDynBiclust: the property bicluster's change events.
#include "PDynBiclust.h"

PDynBiclust::PDynBiclust(const PropVarGraphLayers& graph, PropWgtSchemeBase& wgt,
                         const BinRelGraphLayers* br_graph, BinRelWgtSchemeBase* br_wgt)
    : ExpVarBiclust(graph, wgt), DynBiclust(graph, wgt, 8, 3, graph.m_node_count),
      PropVarBiclust(graph, wgt, br_graph, br_wgt), m_layers(graph), m_br_adj(graph.m_node_count, -1),
      m_ranked_changed(false),
      m_rel_iter(br_graph ? br_graph->new_edge_iter(0, GraphBaseEdgeIter::Out) : nullptr) {
    for (int k = graph.m_max_prop_node; k < graph.m_node_count; ++k)
        m_br_adj[k] = 8 + 3 * graph.m_node_count + k;
}

PDynBiclust::~PDynBiclust() {}

void PDynBiclust::reset() {
    m_dispatch.invoke(0);
    PropVarBiclust::reset();
    m_ranked_changed = false;
}

void PDynBiclust::add_var_node(int node) {
    PropVarBiclust::add_var_node(node);
    announce_var(node, true, true);
    announce_relations(node);
    raise_ranked_if_changed();
}

void PDynBiclust::del_var_node(int node) {
    PropVarBiclust::del_var_node(node);
    announce_var(node, false, true);
    announce_relations(node);
    raise_ranked_if_changed();
}

void PDynBiclust::add_exp_node(int node) {
    ExpVarBiclust::add_exp_node(node);
    announce_exp(node, true);
    if (is_ranked_layer(m_layers.node_layer(node)))
        m_dispatch.invoke(7);
    m_ranked_changed = false;
}

void PDynBiclust::del_exp_node(int node) {
    ExpVarBiclust::del_exp_node(node);
    announce_exp(node, false);
    if (is_ranked_layer(m_layers.node_layer(node)))
        m_dispatch.invoke(7);
    m_ranked_changed = false;
}

void PDynBiclust::remember(PropVarBiclust& target) {
    m_dispatch.invoke(5);
    target.PropVarBiclust::operator=(*this);
}

void PDynBiclust::revert(const PropVarBiclust& source) {
    PropVarBiclust::operator=(source);
    m_dispatch.invoke(6);
}

void PDynBiclust::set_ranked_layer(int layer, bool ranked) {
    if (layer >= static_cast<int>(m_ranked_layer.size()))
        m_ranked_layer.resize(layer + 1, 0);
    m_ranked_layer[layer] = ranked ? 1 : 0;
}

void PDynBiclust::announce_relations(int node) {
    if (!m_br_graph)
        return;
    const int r = m_layers.node_var(node);
    const Matrix<int>& nodes = m_layers.m_var_group_nodes;
    for (GraphBaseEdgeIter::Direction dir : {GraphBaseEdgeIter::Out, GraphBaseEdgeIter::In})
        for (m_rel_iter->restart(r, dir); !m_rel_iter->at_end(); ++*m_rel_iter) {
            const int s = m_rel_iter->other();
            if (s < 0 || s >= nodes.cols())
                continue;
            m_cur_edge = m_rel_iter->edge();
            for (int g = 0; g < nodes.rows(); ++g)
                if (nodes(g, s) >= 0)
                    m_dispatch.invoke(m_br_adj[nodes(g, s)]);
        }
}

void PDynBiclust::raise_ranked_if_changed() {
    if (!m_ranked_changed)
        return;
    m_ranked_changed = false;
    m_dispatch.invoke(7);
}
