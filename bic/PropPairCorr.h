// PropPairCorr: the Pearson correlation of two properties over the variables both have a value for.
#ifndef VESK_BIC_PROPPAIRCORR_H
#define VESK_BIC_PROPPAIRCORR_H

#include "PropVarGraphBase.h"

#include <utility>
#include <vector>

// A property node's values are the raw values of its edges (m_edge_value), by variable id; a variable
// reached through several of its nodes counts once, with the value of its edge of lowest id. The
// correlation of two nodes is Pearson's r, in double, over the variable ids both have a value for; it
// is 0 with fewer than two such variables or when either side doesn't vary over them.
class PropPairCorr {
public:
    explicit PropPairCorr(const PropVarGraphBase& graph);

    double get_corr(int prop_a, int prop_b) const;
    // Variables both nodes have a value for.
    int common_count(int prop_a, int prop_b) const;

    const PropVarGraphBase& m_graph;
    // By property node: (variable id, value), ascending by variable id.
    std::vector<std::vector<std::pair<int, float>>> m_values;
};

#endif
