// CondSide and VarSide: the two sides of the condition-variable graph as policies, so that code doing
// the same thing on either side is written once over `template <class Side>`.
#ifndef VESK_BIC_BICSIDE_H
#define VESK_BIC_BICSIDE_H

#include "DynBiclust.h"
#include "ExpVarGraphBase.h"
#include "WgtSchemeBase.h"
#include "ds/BitVec.h"
#include "ds/GraphBaseEdgeIter.h"

#include <vector>

struct VarSide;

// Weights between the sides are tabulated by (condition node, bin of the variable node): a node's
// weight key is the node itself for a condition, its bin for a variable. In what follows `mine` and
// `theirs` are nodes (or weight keys) of this side and of the other one.
struct CondSide {
    typedef VarSide Other;
    // DynBiclust codes for a node of this side joining and leaving.
    static constexpr int kAdded = 2;
    static constexpr int kDeleted = 4;
    // The edges of a node of this side lead to the other side in this direction.
    static constexpr GraphBaseEdgeIter::Direction kToOther = GraphBaseEdgeIter::Out;

    // This side's node ids are [begin, end).
    static int begin(const ExpVarGraphBase&) { return 0; }
    static int end(const ExpVarGraphBase& g) { return g.m_max_exp_node; }
    // The condition (variable) id a node stands for.
    static int id_of(const ExpVarGraphBase& g, int node) { return g.node_exp(node); }
    static const ds_bitvec& members(const ExpVarBiclust& b) { return b.m_exps; }
    static void add(DynBiclust& b, int node) { b.add_exp_node(node); }
    static void del(DynBiclust& b, int node) { b.del_exp_node(node); }

    static int wkey(const WgtSchemeBase&, int node) { return node; }
    // The node (weight key) of this side that the event being raised is about.
    static int cur_node(const DynBiclust& b) { return b.m_cur_exp_node; }
    static int cur_wkey(const DynBiclust& b) { return b.m_cur_exp_node; }
    // Records `node` as the one the events being raised are about.
    static void set_current(DynBiclust& b, int node) { b.m_cur_exp_node = node; }
    // Codes of a node of this side for a neighbour joining and leaving.
    static const std::vector<int>& add_adj(const DynBiclust& b) { return b.m_exp_add_adj; }
    static const std::vector<int>& del_adj(const DynBiclust& b) { return b.m_exp_del_adj; }

    // Weight of a non-edge and of an edge between weight keys.
    static float non_edge(const WgtSchemeBase& w, int mine, int theirs) {
        return w.get_non_edge_exp_weight(mine, theirs);
    }
    static float edge_weight(const WgtSchemeBase& w, int mine, int theirs) {
        return w.get_edge_exp_weight(mine, theirs);
    }
    // The edge between two nodes, looked up along the edges' direction or against it (-1 if none).
    static int edge(const ExpVarGraphBase& g, int mine, int theirs) { return g.get_edge(mine, theirs); }
    static int edge_against(const ExpVarGraphBase& g, int mine, int theirs) {
        return g.get_edge(theirs, mine);
    }
};

struct VarSide {
    typedef CondSide Other;
    static constexpr int kAdded = 1;
    static constexpr int kDeleted = 3;
    static constexpr GraphBaseEdgeIter::Direction kToOther = GraphBaseEdgeIter::In;

    static int begin(const ExpVarGraphBase& g) { return g.m_max_exp_node; }
    static int end(const ExpVarGraphBase& g) { return g.m_node_count; }
    static int id_of(const ExpVarGraphBase& g, int node) { return g.node_var(node); }
    static const ds_bitvec& members(const ExpVarBiclust& b) { return b.m_vars; }
    static void add(DynBiclust& b, int node) { b.add_var_node(node); }
    static void del(DynBiclust& b, int node) { b.del_var_node(node); }

    static int wkey(const WgtSchemeBase& w, int node) { return w.get_var_node_bin(node); }
    static int cur_node(const DynBiclust& b) { return b.m_cur_var_node; }
    static int cur_wkey(const DynBiclust& b) { return b.m_cur_var_bin; }
    static void set_current(DynBiclust& b, int node) {
        b.m_cur_var_bin = b.m_wgt.get_var_node_bin(node);
        b.m_cur_var_node = node;
    }
    static const std::vector<int>& add_adj(const DynBiclust& b) { return b.m_var_add_adj; }
    static const std::vector<int>& del_adj(const DynBiclust& b) { return b.m_var_del_adj; }

    static float non_edge(const WgtSchemeBase& w, int mine, int theirs) {
        return w.get_non_edge_exp_weight(theirs, mine);
    }
    static float edge_weight(const WgtSchemeBase& w, int mine, int theirs) {
        return w.get_edge_exp_weight(theirs, mine);
    }
    static int edge(const ExpVarGraphBase& g, int mine, int theirs) { return g.get_edge(theirs, mine); }
    static int edge_against(const ExpVarGraphBase& g, int mine, int theirs) {
        return g.get_edge(mine, theirs);
    }
};

#endif
