// GraphWebNodeIter: walks the nodes of a GraphWeb in the order of its axis-0 root list.
#ifndef VESK_STDALG_DS_GRAPHWEBNODEITER_H
#define VESK_STDALG_DS_GRAPHWEBNODEITER_H

#include "ds/GraphBaseNodeIter.h"

class GraphWeb;

class GraphWebNodeIter : public GraphBaseNodeIter {
public:
    // Starts on the first node.
    explicit GraphWebNodeIter(const GraphWeb& graph);

    GraphWebNodeIter& operator++() override;
    GraphWebNodeIter& operator--() override;
    void first() override;
    void last() override;

private:
    const GraphWeb* m_graph;
};

#endif
