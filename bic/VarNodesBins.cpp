// VarNodesBinsGroupIndeg: the binning of variable nodes by truncated group in-degrees.
#include "VarNodesBins.h"

#include "options.h"

#include <algorithm>
#include <iostream>
#include <map>

VarNodesBinsGroupIndeg::VarNodesBinsGroupIndeg(const ExpVarGraphBase& graph, const ArrayVarEC& ec,
                                               options& opts, const std::string& scope)
    : m_graph(graph) {
    // Fewer than one bin per group makes no sense: it counts as one.
    const int max_bins = std::max(1, opts.get_int(scope, "MaxGroupBins", true));
    const int min_interval = opts.get_int(scope, "MinGroupInterval", true);
    const int G = graph.m_max_exp_group;
    const int first = graph.m_max_exp_node;
    const int end = graph.m_node_count;

    std::vector<float> maxdeg(G, 0.0f);
    for (int n = first; n < end; ++n) {
        if (!graph.node_use(n))
            continue;
        for (int g = 0; g < G; ++g)
            if (graph.m_node_exp_group_degree(n, g) > maxdeg[g])
                maxdeg[g] = graph.m_node_exp_group_degree(n, g);
    }
    std::vector<float> interval(G);
    for (int g = 0; g < G; ++g) {
        interval[g] = maxdeg[g] / static_cast<float>(max_bins);
        if (interval[g] < static_cast<float>(min_interval))
            interval[g] = static_cast<float>(min_interval);
    }

    std::map<std::vector<int>, std::vector<int>> lists;
    std::vector<int> key(G + 2);
    for (int n = first; n < end; ++n) {
        if (!graph.node_use(n))
            continue;
        for (int g = 0; g < G; ++g) {
            // A step of 0 (MinGroupInterval 0 on a group without edges) puts every node at 0.
            key[g] =
                interval[g] > 0.0f ? static_cast<int>(graph.m_node_exp_group_degree(n, g) / interval[g]) : 0;
        }
        key[G] = graph.m_node_group[n];
        key[G + 1] = ec.ec_of_var(graph.m_node_var[n]);
        lists[key].push_back(n);
    }

    m_bin_num = static_cast<int>(lists.size());
    std::cerr << "VNBinGIndeg max bin = " << m_bin_num << std::endl;
    m_var_node_bin.assign(graph.nodes_id_space_size(), 0);
    m_bin_var_group.assign(m_bin_num, 0);
    m_bin_size.assign(m_bin_num, 0);
    m_bin_ec.assign(m_bin_num, 0);
    m_bin_group_indeg.resize(m_bin_num, G, 0.0f);
    m_bin_exp_state.resize(m_bin_num, first, 0);

    int b = 0;
    for (const auto& kv : lists) {
        const std::vector<int>& nodes = kv.second;
        const int size = static_cast<int>(nodes.size());
        m_bin_size[b] = size;
        std::cerr << "bin " << b << " size " << size << std::endl;
        for (int n : nodes)
            m_var_node_bin[n] = b;
        for (int g = 0; g < G; ++g) {
            float sum = 0.0f;
            for (int n : nodes)
                sum += graph.m_node_exp_group_degree(n, g);
            m_bin_group_indeg(b, g) = sum / static_cast<float>(size);
            std::cerr << "group " << g << " indeg " << m_bin_group_indeg(b, g) << std::endl;
        }
        m_bin_var_group[b] = kv.first[G];
        m_bin_ec[b] = kv.first[G + 1];
        for (int n = 0; n < first; ++n)
            m_bin_exp_state(b, n) = graph.m_group_pair_state(graph.m_node_group[n], m_bin_var_group[b]);
        ++b;
    }
}
