// GraphDSetIter: walks the candidate parent sets of one graph node, keeping its in-edges in step.
#ifndef VESK_STDALG_DS_GRAPHDSETITER_H
#define VESK_STDALG_DS_GRAPHDSETITER_H

#include "ds/GraphBase.h"
#include "ds/IdDSetIter.h"

#include <vector>

// The in-edges of the node always show the current subset: first() drops the node's in-edges, and
// every change of a position removes or inserts one edge from the candidate to the node.
class GraphDSetIter : public IdDSetIter {
public:
    GraphDSetIter(GraphBase& graph, int k);

    void restart(int node, const ds_bitvec& allowed, const std::vector<int>& forced,
                 const std::vector<int>& choice);
    void first() override;
    void on_remove_from_set(int position, int id) override;
    void on_add_to_set(int position, int id) override;

    GraphBase* m_graph;
    int m_node;
    std::vector<int> m_edges;
};

#endif
