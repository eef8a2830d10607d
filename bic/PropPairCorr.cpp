// PropPairCorr: per-node value lists and the merge that correlates two of them.
#include "PropPairCorr.h"

#include "ds/GraphBaseEdgeIter.h"

#include <algorithm>
#include <cmath>
#include <memory>

PropPairCorr::PropPairCorr(const PropVarGraphBase& graph) : m_graph(graph), m_values(graph.m_max_prop_node) {
    std::unique_ptr<GraphBaseEdgeIter> it(graph.new_edge_iter(0, GraphBaseEdgeIter::Out));
    std::vector<std::pair<int, int>> edges; // (variable id, edge id)
    for (int p = 0; p < graph.m_max_prop_node; ++p) {
        edges.clear();
        for (it->restart(p); !it->at_end(); ++*it)
            edges.emplace_back(graph.node_var(it->other()), it->edge());
        // The edge of lowest id gives a variable reached twice its value.
        std::sort(edges.begin(), edges.end());
        std::vector<std::pair<int, float>>& vals = m_values[p];
        for (const std::pair<int, int>& ve : edges) {
            if (!vals.empty() && vals.back().first == ve.first)
                continue;
            const int e = ve.second;
            vals.emplace_back(ve.first, e < static_cast<int>(graph.m_edge_value.size())
                                            ? graph.m_edge_value[e]
                                            : graph.m_edge_weight[e]);
        }
    }
}

namespace {
// Calls f(x, y) for every variable id present in both lists.
template <class F>
void for_common(const std::vector<std::pair<int, float>>& a, const std::vector<std::pair<int, float>>& b,
                F f) {
    size_t i = 0, j = 0;
    while (i < a.size() && j < b.size()) {
        if (a[i].first < b[j].first)
            ++i;
        else if (b[j].first < a[i].first)
            ++j;
        else
            f(a[i++].second, b[j++].second);
    }
}
} // namespace

int PropPairCorr::common_count(int prop_a, int prop_b) const {
    int n = 0;
    for_common(m_values[prop_a], m_values[prop_b], [&n](float, float) { ++n; });
    return n;
}

double PropPairCorr::get_corr(int prop_a, int prop_b) const {
    // Two passes: the means, then the centred sums.
    int n = 0;
    double sx = 0.0, sy = 0.0;
    for_common(m_values[prop_a], m_values[prop_b], [&](float x, float y) {
        ++n;
        sx += x;
        sy += y;
    });
    if (n < 2)
        return 0.0;
    const double mx = sx / n, my = sy / n;
    double sxy = 0.0, sxx = 0.0, syy = 0.0;
    for_common(m_values[prop_a], m_values[prop_b], [&](float x, float y) {
        sxy += (x - mx) * (y - my);
        sxx += (x - mx) * (x - mx);
        syy += (y - my) * (y - my);
    });
    if (sxx <= 0.0 || syy <= 0.0)
        return 0.0;
    return sxy / std::sqrt(sxx * syy);
}
