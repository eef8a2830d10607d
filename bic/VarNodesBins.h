// VarNodesBinsBase and VarNodesBinsGroupIndeg: variable nodes put into bins of like in-degree per
// condition group, variable group and measurement class.
#ifndef VESK_BIC_VARNODESBINS_H
#define VESK_BIC_VARNODESBINS_H

#include "ArrayVarEC.h"
#include "ExpVarGraphBase.h"
#include "Matrix.h"

#include <string>
#include <vector>

class options;

class VarNodesBinsBase {
public:
    virtual int get_var_node_bin(int node) const { return m_var_node_bin[node]; }
    virtual int get_bin_var_group(int bin) const { return m_bin_var_group[bin]; }
    virtual ~VarNodesBinsBase() {}

    int m_bin_num = 0;
    std::vector<int> m_var_node_bin;  // by node id; condition nodes hold 0
    std::vector<int> m_bin_var_group; // by bin
    std::vector<int> m_bin_size;      // by bin
    std::vector<int> m_bin_ec;        // by bin: measurement class of its variables
};

// Keys read in the scope given: MaxGroupBins (about this many bins per condition group) and
// MinGroupInterval (the smallest degree step). A node's key is, per condition group, its in-degree
// from that group divided by the group's step and truncated, then its variable group and the
// measurement class of its variable; bins are the distinct keys in ascending order.
class VarNodesBinsGroupIndeg : public VarNodesBinsBase {
public:
    VarNodesBinsGroupIndeg(const ExpVarGraphBase& graph, const ArrayVarEC& ec, options& opts,
                           const std::string& scope);

    const ExpVarGraphBase& m_graph;
    Matrix<float> m_bin_group_indeg; // bin by condition group: mean in-degree of its nodes
    Matrix<int> m_bin_exp_state;     // bin by condition node: state of an edge into the bin
};

#endif
