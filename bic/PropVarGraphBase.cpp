// PropVarGraphBase and PropVarGraphLayers: property nodes, edges with values, ranged randomisation and
// the layered build.
#include "PropVarGraphBase.h"

#include "Random.h"
#include "options.h"

#include <algorithm>
#include <iostream>

namespace {
constexpr int kWebReserve = 64;
} // namespace

PropVarGraphBase::PropVarGraphBase(VarUniverse& universe, options& opts, const std::string& scope)
    : GraphWeb(kWebReserve, false), PropGraphDataHolder(universe),
      ExpVarGraphBase(universe, m_no_data, opts, scope), m_max_prop_node(m_max_exp_node),
      m_max_prop_group(m_max_exp_group), m_prop_group_nodes(m_exp_group_nodes),
      m_is_prop_node(m_is_exp_node) {
    std::cerr << "univ max vid " << universe.size() << " max vid " << m_var_num << std::endl;
}

void PropVarGraphBase::allocate_max_prop_group(int groups, int prop_num) {
    allocate_max_exp_group(groups);
    if (prop_num > m_prop_group_nodes.cols())
        m_prop_group_nodes.resize(m_prop_group_nodes.rows(), prop_num, -1);
    m_group_layer.resize(m_max_prop_group, 0);
}

int PropVarGraphBase::add_edge(int prop_node, int var_node, float weight, float value) {
    const int id = ExpVarGraphBase::add_edge(prop_node, var_node, 0, weight);
    m_edge_value.resize(m_edge_count, 0.0f);
    m_edge_value[id] = value;
    return id;
}

void PropVarGraphBase::update_max_vid() {
    m_var_num = m_universe.size();
    m_var_bits.set_size(m_var_num);
    if (m_var_group_nodes.cols() < m_var_num)
        m_var_group_nodes.resize(m_var_group_nodes.rows(), m_var_num, -1);
}

void PropVarGraphBase::randomize(int times, const std::vector<float>& ranges) {
    // Edge ids by range.
    std::vector<std::vector<int>> by_range(ranges.size() + 1);
    for (int e = 0; e < edges_id_space_size(); ++e) {
        if (!edge_use(e))
            continue;
        const size_t r = std::upper_bound(ranges.begin(), ranges.end(), m_edge_weight[e]) - ranges.begin();
        by_range[r].push_back(e);
    }
    for (const std::vector<int>& ids : by_range) {
        const int n = static_cast<int>(ids.size());
        if (n < 3)
            continue;
        const long long steps = static_cast<long long>(n) * times;
        for (long long step = 0; step < steps; ++step) {
            // A range where no three edges rotate is left after a bounded number of tries.
            int tries = 0;
            int e1, e2, e3;
            for (;; ++tries) {
                if (tries > 1000)
                    break;
                e1 = ids[Random::bits() % n];
                e2 = ids[Random::bits() % n];
                e3 = ids[Random::bits() % n];
                if (e1 == e2 || e1 == e3 || e2 == e3)
                    continue;
                if (rotatable(e1, e2, e3))
                    break;
            }
            if (tries > 1000)
                break;
            rotate3(e1, e2, e3);
        }
    }
}

PropVarGraphLayers::PropVarGraphLayers(VarUniverse& universe, options& opts, const std::string& scope)
    : GraphWeb(kWebReserve, false), PropVarGraphBase(universe, opts, scope), m_var_cardinality(2),
      m_var_orientation(false) {
    if (scope != "Default") {
        m_var_cardinality = opts.get_int(scope, "VarCardinality", true);
        m_var_orientation = opts.get_int(scope, "VarOrientation", true) != 0;
    }
    const int levels = std::max(0, m_var_cardinality - 1);
    allocate_max_var_group(m_var_orientation ? 2 * levels : levels);
}

void PropVarGraphLayers::build_layers() {
    for (size_t l = 0; l < m_layers.size(); ++l)
        if (m_layers[l])
            m_layers[l]->build_layer_nodes(*this, static_cast<int>(l));
    update_max_vid();
    for (int g = 0; g < m_max_var_group; ++g)
        for (int v = 0; v < m_var_num; ++v)
            add_var_node_to_group(g, v);
    for (size_t l = 0; l < m_layers.size(); ++l)
        if (m_layers[l])
            m_layers[l]->build_layer_edges(*this, static_cast<int>(l));
    print_stats(std::cerr);
}

int PropVarGraphLayers::get_property_number(int node) const {
    return node_layer_obj(node).get_property_number(node_prop(node));
}

void add_single_group_layer(PropVarLayerBase& layer, PropVarGraphLayers& graph, int layer_id, int n) {
    layer.m_first_group = graph.m_max_prop_group;
    layer.m_end_group = layer.m_first_group + 1;
    graph.allocate_max_prop_group(layer.m_end_group, n);
    graph.m_group_layer[layer.m_first_group] = layer_id;
    for (int p = 0; p < n; ++p)
        graph.add_prop_node_to_group(layer.m_first_group, p);
}
