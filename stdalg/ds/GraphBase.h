// GraphBase: the interface of directed graphs with stable node and edge ids.
#ifndef VESK_STDALG_DS_GRAPHBASE_H
#define VESK_STDALG_DS_GRAPHBASE_H

#include "ds/GraphBaseEdgeIter.h"
#include "ds/GraphBaseNodeIter.h"

#include <ostream>
#include <string>
#include <vector>

class options;

class GraphBase {
public:
    virtual ~GraphBase();

    // Numbers per edge line in the option form: edge id, source, destination.
    virtual int line_size() const { return 3; }
    // Adds the edges of the int array `Edges` in `scope`, `LineSize` numbers a line; a `LineSize`
    // other than line_size() is fatal.
    virtual void read_option(options& opt, const std::string& scope);
    // Fills `lines` (sized by the caller) with (edge id, source, destination), node by node and each
    // node's out-edges in list order; nothing goes to the stream.
    virtual void write_option(std::ostream& out, std::vector<int>& lines) const;

    virtual void clear() = 0;
    virtual int insert_node(int id = -1) = 0;
    virtual void remove_node(int id) = 0;
    virtual int insert_edge(int src, int dst, int id = -1) = 0;
    virtual int insert_edge_at(int src, int dst, int id = -1) = 0;
    virtual void mark_edge(int id) = 0;
    virtual void unmark_node(int node, int axis) = 0;
    virtual void unmark_all() = 0;
    virtual void remove_edge(int id) = 0;
    virtual void rm_node_edges(int node) = 0;
    virtual void rm_node_out_edges(int node) = 0;
    virtual void rm_node_in_edges(int node) = 0;
    virtual int node_edges_num(int node) const = 0;
    virtual int node_out_edges_num(int node) const = 0;
    virtual int node_in_edges_num(int node) const = 0;
    virtual bool node_use(int id) const = 0;
    virtual bool edge_use(int id) const = 0;
    virtual int nodes_num() const = 0;
    virtual int nodes_id_space_size() const = 0;
    virtual int edges_num() const = 0;
    virtual int edges_id_space_size() const = 0;
    virtual int get_edge(int src, int dst) const = 0;
    virtual int edge_source(int id) const = 0;
    virtual int edge_dest(int id) const = 0;
    // New iterators, owned by the caller.
    virtual GraphBaseNodeIter* new_node_iter() const = 0;
    virtual GraphBaseEdgeIter* new_edge_iter(int node, GraphBaseEdgeIter::Direction dir) const = 0;
    virtual bool verify() const = 0;
    virtual int free_node_id() const = 0;
    virtual int free_edge_id() const = 0;
};

// Sizes a vector of line_size() * edges_num() and hands it to write_option; the stream itself
// receives nothing.
std::ostream& operator<<(std::ostream& out, const GraphBase& g);

#endif
