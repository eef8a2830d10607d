// GraphWebEdgeIter: walks one node's out-list (axis 0), in-list (axis 1), or both in that order.
#ifndef VESK_STDALG_DS_GRAPHWEBEDGEITER_H
#define VESK_STDALG_DS_GRAPHWEBEDGEITER_H

#include "ds/GraphBaseEdgeIter.h"

class GraphWeb;

// The neighbours of the current edge are read and cached when the iterator lands on it, so the
// current edge may be removed before stepping on. A node that isn't in use gives the end at once.
class GraphWebEdgeIter : public GraphBaseEdgeIter {
public:
    // Starts on the node's first edge in `dir`.
    GraphWebEdgeIter(const GraphWeb& graph, int node, Direction dir);

    GraphWebEdgeIter& operator++() override;
    GraphWebEdgeIter& operator--() override;
    // Out-list head first (in-list head for In); under Both an empty out-list goes on to the in-list.
    void first() override;
    // The mirror: in-list tail first (out-list tail for Out).
    void last() override;

    int axis() const { return m_axis; }

private:
    // The body of first(), also run by the constructor, where no override may be called.
    void seek_first();
    void land(int axis, int edge);
    bool node_ok() const;

    const GraphWeb* m_graph;
    int m_next;
    int m_axis;
    int m_prev;
};

#endif
