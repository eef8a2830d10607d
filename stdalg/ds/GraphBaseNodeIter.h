// GraphBaseNodeIter: the interface of a walk over the nodes of a graph.
#ifndef VESK_STDALG_DS_GRAPHBASENODEITER_H
#define VESK_STDALG_DS_GRAPHBASENODEITER_H

// Holds the current node id, -1 at the end.
class GraphBaseNodeIter {
public:
    GraphBaseNodeIter() : m_node(-1) {}
    virtual ~GraphBaseNodeIter();

    virtual GraphBaseNodeIter& operator++() = 0;
    virtual GraphBaseNodeIter& operator--() = 0;
    virtual void first() = 0;
    virtual void last() = 0;

    int node() const { return m_node; }
    bool at_end() const { return m_node == -1; }

protected:
    int m_node;
};

#endif
