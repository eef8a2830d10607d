// BinRelGraphLayers and BinRelWgtSchemeDegree: reading, degree-keeping randomisation and weights.
#include "BinRelGraphLayers.h"

#include "Random.h"

#include <cmath>

BinRelGraphLayers::BinRelGraphLayers() : GraphWeb(64, false) {}

void BinRelGraphLayers::read_tables(std::istream& key, std::istream& rels, int n_vars) {
    for (int v = nodes_id_space_size(); v < n_vars; ++v)
        insert_node(v);
    int layer;
    std::string name;
    while (key >> layer >> name) {
        if (layer < 0)
            continue;
        if (static_cast<int>(m_layer_names.size()) <= layer)
            m_layer_names.resize(layer + 1);
        m_layer_names[layer] = name;
    }
    int a, b;
    while (rels >> layer >> a >> b)
        if (a >= 0 && b >= 0 && a < n_vars && b < n_vars)
            add_relation(layer, a, b);
}

int BinRelGraphLayers::get_relation(int a, int b) const {
    const int e = get_edge(a, b);
    return e != -1 ? e : get_edge(b, a);
}

int BinRelGraphLayers::add_relation(int layer, int a, int b) {
    if (a == b || get_relation(a, b) != -1)
        return -1;
    const int e = insert_edge(a, b);
    if (static_cast<int>(m_edge_layer.size()) <= e)
        m_edge_layer.resize(e + 1, -1);
    m_edge_layer[e] = layer;
    return e;
}

void BinRelGraphLayers::randomize(int times) {
    std::vector<int> ids;
    for (int e = 0; e < edges_id_space_size(); ++e)
        if (edge_use(e))
            ids.push_back(e);
    const int n = static_cast<int>(ids.size());
    if (n < 2)
        return;
    const long long steps = static_cast<long long>(n) * times;
    for (long long s = 0; s < steps; ++s) {
        const int e1 = ids[Random::bits() % n];
        const int e2 = ids[Random::bits() % n];
        if (e1 == e2)
            continue;
        const int a = edge_source(e1), b = edge_dest(e1);
        const int c = edge_source(e2), d = edge_dest(e2);
        if (a == d || c == b || get_relation(a, d) != -1 || get_relation(c, b) != -1)
            continue;
        remove_edge(e1);
        remove_edge(e2);
        insert_edge(a, d, e1);
        insert_edge(c, b, e2);
    }
}

BinRelWgtSchemeDegree::BinRelWgtSchemeDegree(const BinRelGraphLayers& graph)
    : m_weight(graph.edges_id_space_size(), 0.0f) {
    const double E = graph.edges_num();
    for (int e = 0; e < graph.edges_id_space_size(); ++e) {
        if (!graph.edge_use(e))
            continue;
        const double da = graph.node_edges_num(graph.edge_source(e));
        const double db = graph.node_edges_num(graph.edge_dest(e));
        const double w = std::log(2.0 * E / (da * db));
        m_weight[e] = w > 0.0 ? static_cast<float>(w) : 0.0f;
    }
}
