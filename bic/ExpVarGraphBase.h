// ExpVarGraphBase: the bipartite condition-variable graph with its per-group node maps and degree tables.
#ifndef VESK_BIC_EXPVARGRAPHBASE_H
#define VESK_BIC_EXPVARGRAPHBASE_H

#include "Matrix.h"
#include "StateDataSetBase.h"
#include "ValSpaceBase.h"
#include "VarUniverse.h"
#include "ds/BitVec.h"
#include "ds/GraphWeb.h"

#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

class DistribWgtSet;
class options;

// A node stands for one condition or one variable in one group (an orientation of a level): group
// 2*level is the positive orientation, 2*level+1 the negative one; the two sides number their groups
// apart. Node ids are dense from 0 in creation order, condition nodes first: ids below
// m_max_exp_node are condition nodes, the ones from there to m_node_count variable nodes. Every
// edge runs from a condition node to a variable node and carries a state and a weight (the
// probability of that state); the weighted degrees per node and group and the total weight per
// group pair are kept up to date by add_edge, because the weight schemes and optimisers read them
// for every node and bin.
class ExpVarGraphBase : public virtual GraphWeb {
public:
    // Reads `Logit` from `scope` unless the scope is the literal "Default" (then the trace is off).
    ExpVarGraphBase(VarUniverse& universe, StateDataSetBase& dataset, options& opts,
                    const std::string& scope);
    ~ExpVarGraphBase() override;

    // Makes the nodes of one level's condition group (one per condition it admits).
    virtual void add_exp_group(int level, float factor, int sign) = 0;

    // New node for condition `exp_id` (variable `var_id`) in `group`; allocates the group if needed.
    // Returns the node id.
    int add_exp_node_to_group(int group, int exp_id);
    int add_var_node_to_group(int group, int var_id);
    // Sets the number of groups of one side and sizes every table indexed by them.
    void allocate_max_exp_group(int num);
    void allocate_max_var_group(int num);
    // An edge from a condition node to a variable node, with the next edge id; updates all degree
    // tables. Returns the edge id.
    int add_edge(int exp_node, int var_node, int state, float weight);

    // Replaces every edge by a random one, aiming at the same truncated weighted degree per
    // (condition node, variable group) and (variable node, condition group) cell. The degree tables
    // keep the values of the graph as built. Ends short, with its messages, when it gets stuck.
    void randomize_all();
    // Rotates edges three at a time, edges_id_space_size() * times steps: every node keeps its in-
    // and out-degree exactly and every edge id keeps its state and weight. Must not be used on a
    // graph where no three edges can be rotated: it would not end.
    void randomize(int times);
    // "Bipartite Condition-Genes graph statistics :" and the counts, then the weight of each group pair.
    void print_stats(std::ostream& out) const;

    // Accessors for readers of the tables.
    bool is_exp_node(int node) const { return m_is_exp_node.get_ind(node); }
    int node_group(int node) const { return m_node_group[node]; }
    int node_exp(int node) const { return m_node_exp[node]; }
    int node_var(int node) const { return m_node_var[node]; }

    VarUniverse& m_universe;
    ValSpaceBase* m_val_space;
    StateDataSetBase& m_dataset;
    int m_max_exp_group;
    int m_max_var_group;
    ds_bitvec m_var_bits; // variables that have at least one node
    int m_exp_num;
    int m_max_exp_node;
    int m_var_num;
    int m_max_var_node;
    std::vector<int> m_node_exp;
    std::vector<int> m_node_var;
    Matrix<int> m_exp_group_nodes; // group by condition id: node, -1 if none
    Matrix<int> m_var_group_nodes; // group by variable id: node, -1 if none
    ds_bitvec m_is_exp_node;
    float m_max_var_degree;
    std::vector<float> m_max_group_degree; // by variable group
    std::vector<float> m_node_degree;      // by node
    Matrix<float> m_node_exp_group_degree; // node by condition group
    Matrix<float> m_node_var_group_degree; // node by variable group
    std::vector<int> m_node_group;         // by node, the group of its own side
    std::vector<int> m_edge_state;         // by edge id
    std::vector<float> m_edge_weight;      // by edge id
    Matrix<float> m_group_pair_edges;      // condition group by variable group: total weight
    int m_node_count;
    int m_edge_count;
    Matrix<int> m_group_pair_state;                     // condition group by variable group: edge state
    std::map<std::pair<int, int>, int> m_rewired_edges; // filled by randomize
    bool m_debug;

protected:
    // The sampling cells of one side in randomize_all: weights and degrees left, by cell.
    struct RandomCells {
        explicit RandomCells(size_t n) : weight(n, kCellFloor), left(n, 0) {}
        // One edge placed at `cell`: its degree and weight go down by one; an exhausted cell drops
        // to the floor and the sampler takes the new weights.
        void take(int cell, DistribWgtSet& dist);

        // Weight of a sample cell with nothing left to place.
        static constexpr float kCellFloor = 0.0001f;
        std::vector<float> weight;
        std::vector<int> left;
    };
    // The sampling loop of randomize_all: draws a cell of each side and joins them when their
    // groups match and no edge joins them yet; returns the number of edges placed.
    int place_random_edges(long long total, RandomCells& exp, DistribWgtSet& exp_dist, RandomCells& var,
                           DistribWgtSet& var_dist);
    // Registers a new node id with the web and grows the per-node tables.
    int new_node(int group, int exp_id, int var_id, bool is_exp);
    // A new node of condition (variable) `id` in `group`, recorded in that side's group map.
    int add_group_node(Matrix<int>& group_nodes, int group, int id, bool is_exp);
    // Whether three edges (a1, b1), (a2, b2), (a3, b3) can rotate to (a1, b2), (a2, b3), (a3, b1): none
    // of those edges exists yet. rotate3 does it, each id keeping its state and weight.
    bool rotatable(int e1, int e2, int e3) const;
    void rotate3(int e1, int e2, int e3);
    // A uniform edge index below E, from one 32-bit draw.
    static int draw_edge_index(int E);
};

#endif
