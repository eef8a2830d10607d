// Web<D>: a sparse D-dimensional store of linked cells; each cell sits on one root's list per axis.
#ifndef VESK_STDALG_DS_WEB_H
#define VESK_STDALG_DS_WEB_H

#include "ds/RaList.h"

#include <array>
#include <ostream>
#include <vector>

// The first and last cell of a root and their number. m_how_many < 0: the root doesn't exist.
struct RootNode {
    int m_head = -1;
    int m_tail = -1;
    int m_how_many = -1;
};

// "head : h tail : t how_many : n"
std::ostream& operator<<(std::ostream& out, const RootNode& r);

// One cell: per axis its neighbours on the root's list and the root. A fresh entry holds 0, 0, -1;
// a removed one -1 everywhere. A cell is in use when its axis-0 root isn't -1.
template <int D> struct WebNode {
    struct Link {
        int m_next = 0;
        int m_prev = 0;
        int m_root = -1;
    };
    Link m_axis[D];
};

// Cells are given roots through m_roots before an insertion: with D = 2 and axis 0 as the edge
// source and axis 1 as the destination, cells are directed edges on the out-list of their source
// and the in-list of their destination at once. Cell and root ids are stable; neither id space
// shrinks, not even on clear().
template <int D> class Web {
public:
    // `size` is reserved in every list; `keep_ids` keeps a list of the cells in use.
    Web(int size, bool keep_ids);

    // Appends cell `id` (-1: a free id) at the tail of root m_roots[axis] on every axis; the
    // roots aren't tested. Returns the id.
    int insert_node(int id);
    // Inserts cell `id` behind each root's mark and moves the mark on to it, so that cells inserted
    // in ascending id order keep every list ascending in constant time. Broken order is fatal.
    int insert_node_at(int id);
    void remove_node(int id);

    // A new root with no cells (-1: a free id); returns its id.
    int add_root(int axis, int id);
    // Drops the root's mark and cells, and the root itself.
    void remove_root(int axis, int root);
    // Removes every cell of the root's list.
    void remove_root_nodes(int axis, int root);

    // On every axis, the cell's root gets the cell as its mark. The marks must have been sized by
    // unmark_all after the last root of axis 0 was added.
    void mark(int id);
    void unmark(int axis, int root) {
        if (root >= 0 && root < static_cast<int>(m_marks[axis].size()))
            m_marks[axis][root] = -1;
    }
    // One mark per root id on every axis, all -1.
    void unmark_all();
    int get_mark(int axis, int root) const {
        return root >= 0 && root < static_cast<int>(m_marks[axis].size()) ? m_marks[axis][root] : -1;
    }

    // Back to empty; every id space keeps its size.
    void clear();

    int how_many() const { return m_count; }
    int axis_size(int axis) const { return m_axes[axis].get_size(); }
    int axis_head(int axis) const { return m_axes[axis].get_front_id(); }
    int axis_tail(int axis) const { return m_axes[axis].get_back_id(); }
    int root_size(int axis, int root) const { return m_axes[axis][root].m_how_many; }
    bool root_in_use(int axis, int root) const {
        return root >= 0 && root < m_axes[axis].get_id_space_size() && m_axes[axis][root].m_how_many >= 0;
    }
    int root_next(int axis, int root) const { return m_axes[axis].get_next_id(root); }
    int root_prev(int axis, int root) const { return m_axes[axis].get_prev_id(root); }
    int root_head(int axis, int root) const { return m_axes[axis][root].m_head; }
    int root_tail(int axis, int root) const { return m_axes[axis][root].m_tail; }
    int root_id_space_size(int axis = 0) const { return m_axes[axis].get_id_space_size(); }
    int free_root_id(int axis) const { return m_axes[axis].get_free_id(); }

    int node_id_space_size() const { return static_cast<int>(m_nodes.size()); }
    bool node_in_use(int id) const {
        return id >= 0 && id < static_cast<int>(m_nodes.size()) && m_nodes[id].m_axis[0].m_root != -1;
    }
    int node_root(int axis, int id) const { return m_nodes[id].m_axis[axis].m_root; }
    int next_node(int axis, int id) const { return m_nodes[id].m_axis[axis].m_next; }
    int prev_node(int axis, int id) const { return m_nodes[id].m_axis[axis].m_prev; }
    int free_node_id() const {
        return m_keep_ids ? m_node_ids.get_free_id() : static_cast<int>(m_nodes.size());
    }
    bool keeps_ids() const { return m_keep_ids; }
    const RaList<int>& node_ids() const { return m_node_ids; }

    // Every list walked on every axis; false with the reason on the error stream.
    bool verify() const;
    bool verify_node(int id) const;

    // "Web Nodes ordered by <axis> axis", then "id : <id>" and the cell, root by root.
    void print_nodes(std::ostream& out, int axis) const;
    // "node id-<id>" and the cell, for every cell id.
    void print_array(std::ostream& out) const;
    // Per axis "level <a>:root : <r> next : <n> prev : <p>".
    void print_node(std::ostream& out, int id) const;

private:
    int start_insert(int id);
    void unlink(int axis, int id);

    std::array<RaList<RootNode>, D> m_axes;
    std::vector<int> m_marks[D];
    RaList<int> m_node_ids;
    bool m_keep_ids;
    std::vector<WebNode<D>> m_nodes;

public:
    // The roots, one per axis, that the next inserted cell goes to; set by the caller.
    int m_roots[D];

private:
    int m_count;
};

extern template class Web<2>;

#endif
