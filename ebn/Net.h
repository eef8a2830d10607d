// Net: the directed acyclic graph of discrete random variables, with change events per node.
#ifndef VESK_EBN_NET_H
#define VESK_EBN_NET_H

#include "dispatch.h"

#include <istream>
#include <list>
#include <map>
#include <utility>
#include <vector>

// A node has the caller's number (`vid`, may be sparse) and a dense index (`rvid`, in order of
// insertion); every array here goes by rvid. Each node owns four event ids, taken in the order
// parent added, child added, parent removed, child removed; while an edge event is sent,
// get_last_from() and get_last_to() name the edge.
class Net {
public:
    Net();
    virtual ~Net();
    Net(const Net&) = delete;
    Net& operator=(const Net&) = delete;

    // Appends a node and returns its rvid. A vid given twice maps to the newer node.
    virtual int add_rand_var(int vid, int card);

    // Appends the edge at the end of both lists; `pos` is ignored (callers pass -1). Nothing
    // checks that the edge is new or that the graph stays acyclic.
    void insert_edge(int from, int to, int pos);
    // Removes the edge with that index; an index already removed is the caller's fault.
    void remove_edge(int edge_index);
    // Removes the edge from -> to; fatal if there is none.
    void remove_edge(int from, int to);

    const std::list<int>& get_parents(int rvid) const { return m_parents[rvid]; }
    const std::list<int>& get_children(int rvid) const { return m_children[rvid]; }
    int get_rvar_card(int rvid) const { return m_card[rvid]; }
    int get_nodes_num() const { return static_cast<int>(m_rvid_to_vid.size()); }
    int get_vid(int rvid) const { return m_rvid_to_vid[rvid]; }
    // The rvid of a vid; vids never added map to 0 below the table's end and to -1 past it.
    int get_rvid(int vid) const;
    // Index of the present edge from -> to, or -1.
    int get_edge_index(int from, int to) const;
    // Edge indices handed out so far, removed ones included.
    int get_edge_slots() const { return static_cast<int>(m_edge_child_pos.size()); }
    int get_edges_num() const { return static_cast<int>(m_edge_index.size()); }

    // Parents before children: a depth-first walk from rvid 0 up that emits a node after its
    // parents. The order is traced on the error stream.
    void compute_topo_order(std::list<int>& out) const;
    // Appends one list per node: parents, children and the children's other parents, rising.
    void compute_markov_blankets(std::vector<std::list<int>>& out) const;

    // Checks that every present edge stands once in its tail's child list and its head's parent
    // list at the stored positions, and that the lists hold nothing else; says why on the error
    // stream when not.
    bool verify() const;

    // Reads triples (unused, vid, card) until the stream fails, adding one node for each.
    void add_all_nodes(std::istream& is);

    const event_dispatch& get_dispatch() const { return m_dispatch; }
    void set_dispatch_on(bool on) { m_dispatch_on = on; }
    int get_parent_added_event(int rvid) const { return m_parent_added_event[rvid]; }
    int get_child_added_event(int rvid) const { return m_child_added_event[rvid]; }
    int get_parent_removed_event(int rvid) const { return m_parent_removed_event[rvid]; }
    int get_child_removed_event(int rvid) const { return m_child_removed_event[rvid]; }
    int get_last_from() const { return m_last_from; }
    int get_last_to() const { return m_last_to; }

protected:
    std::vector<int> m_vid_to_rvid;
    std::vector<int> m_rvid_to_vid;
    std::vector<int> m_card;
    std::vector<std::list<int>> m_parents;
    std::vector<std::list<int>> m_children;
    std::vector<std::list<int>::iterator> m_edge_child_pos;
    std::vector<std::list<int>::iterator> m_edge_parent_pos;
    std::map<std::pair<int, int>, int> m_edge_index;
    event_dispatch m_dispatch;
    bool m_dispatch_on;
    int m_next_event;
    std::vector<int> m_parent_added_event;
    std::vector<int> m_child_added_event;
    std::vector<int> m_parent_removed_event;
    std::vector<int> m_child_removed_event;
    int m_last_from;
    int m_last_to;

private:
    void topo_order_dive(int n, std::vector<int>& visited, std::list<int>& out) const;
    void erase_edge(int from, int to, int edge_index);
};

#endif
