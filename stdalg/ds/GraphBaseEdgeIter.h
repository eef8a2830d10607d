// GraphBaseEdgeIter: the interface of a walk over the edges of one node, out, in or both.
#ifndef VESK_STDALG_DS_GRAPHBASEEDGEITER_H
#define VESK_STDALG_DS_GRAPHBASEEDGEITER_H

// Holds the direction asked for, the node, the current edge (-1 at the end), the direction of the
// list in use and the other end of the current edge. Under Both the out-edges come first, then
// the in-edges, so a self-edge is met once on each list.
class GraphBaseEdgeIter {
public:
    enum Direction { Out = 1, In = 2, Both = 3 };

    GraphBaseEdgeIter(int node, Direction dir)
        : m_dir(dir), m_node(node), m_edge(-1), m_cur_dir(dir), m_other(-1) {}
    virtual ~GraphBaseEdgeIter();

    // Keeps the direction and starts over on `node`.
    virtual void restart(int node);
    // Sets the direction and starts over on `node`.
    virtual void restart(int node, Direction dir);
    virtual GraphBaseEdgeIter& operator++() = 0;
    virtual GraphBaseEdgeIter& operator--() = 0;
    virtual void first() = 0;
    virtual void last() = 0;

    int edge() const { return m_edge; }
    int other() const { return m_other; }
    int node() const { return m_node; }
    Direction direction() const { return m_dir; }
    // Out while on the out-list, In while on the in-list.
    Direction cur_direction() const { return m_cur_dir; }
    bool at_end() const { return m_edge == -1; }

protected:
    Direction m_dir;
    int m_node;
    int m_edge;
    Direction m_cur_dir;
    int m_other;
};

#endif
