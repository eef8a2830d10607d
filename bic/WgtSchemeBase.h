// WgtSchemeBase: the interface through which biclusters and optimisers read edge and pair weights.
#ifndef VESK_BIC_WGTSCHEMEBASE_H
#define VESK_BIC_WGTSCHEMEBASE_H

#include "VarNodesBins.h"

// Weights are log-likelihood ratios of a module model against a degree-preserving null model,
// tabulated by (condition node, bin of the variable node); each getter is one table look-up.
class WgtSchemeBase {
public:
    virtual ~WgtSchemeBase() {}

    // Expected weight of the (soft) edge, and what it adds over a non-edge of the same pair.
    virtual float get_edge_weight(int edge) const = 0;
    virtual float get_edge_cnc(int edge) const = 0;
    // Weight of an edge, of a non-edge, and their difference, between a condition node and a bin.
    virtual float get_edge_exp_weight(int exp_node, int bin) const = 0;
    virtual float get_non_edge_exp_weight(int exp_node, int bin) const = 0;
    virtual float get_edge_exp_cnc(int exp_node, int bin) const = 0;
    virtual const VarNodesBinsBase& get_var_nodes_bins() const = 0;
    virtual int get_var_node_bin(int node) const = 0;
    // What a variable node carries on its own, whatever the bicluster; 0 here.
    virtual float get_var_node_weight(int /*node*/) const { return 0.0f; }
};

#endif
