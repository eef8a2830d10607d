// Template body of Web<D>: insertion, ordered insertion with marks, removal, checks and printing.
#ifndef VESK_STDALG_DS_WEB_TCC
#define VESK_STDALG_DS_WEB_TCC

#include "ds/Web.h"

#include "error.h"

#include <algorithm>
#include <iostream>
#include <utility>

inline constexpr char kWebSrc[] = "../stdalg/ds/Web";

namespace web_detail {
template <std::size_t... I>
std::array<RaList<RootNode>, sizeof...(I)> make_axes(int size, std::index_sequence<I...>) {
    return {{((void)I, RaList<RootNode>(size))...}};
}
} // namespace web_detail

template <int D>
Web<D>::Web(int size, bool keep_ids)
    : m_axes(web_detail::make_axes(size, std::make_index_sequence<D>())), m_node_ids(size),
      m_keep_ids(keep_ids), m_count(0) {
    if (size > 0)
        m_nodes.reserve(static_cast<std::size_t>(size));
    for (int a = 0; a < D; ++a)
        m_roots[a] = -1;
}

// Resolves the id and grows the cell vector to it.
template <int D> int Web<D>::start_insert(int id) {
    if (m_keep_ids)
        id = m_node_ids.push_front(0, id);
    else if (id == -1)
        id = static_cast<int>(m_nodes.size());
    if (id >= static_cast<int>(m_nodes.size()))
        m_nodes.resize(static_cast<std::size_t>(id) + 1);
    return id;
}

template <int D> int Web<D>::insert_node(int id) {
    id = start_insert(id);
    for (int a = 0; a < D; ++a) {
        const int r = m_roots[a];
        RootNode& root = m_axes[a][r];
        typename WebNode<D>::Link& link = m_nodes[id].m_axis[a];
        link.m_root = r;
        link.m_next = -1;
        link.m_prev = root.m_tail;
        if (root.m_tail != -1)
            m_nodes[root.m_tail].m_axis[a].m_next = id;
        else
            root.m_head = id;
        root.m_tail = id;
        ++root.m_how_many;
    }
    ++m_count;
    return id;
}

template <int D> int Web<D>::insert_node_at(int id) {
    id = start_insert(id);
    for (int a = 0; a < D; ++a) {
        const int r = m_roots[a];
        if (!root_in_use(a, r))
            VESK_FATAL(kWebSrc, "Try to connect to non existing root");
        // A root that never had a mark has none yet: marks cover the axis's whole id space.
        if (r >= static_cast<int>(m_marks[a].size()))
            m_marks[a].resize(static_cast<std::size_t>(m_axes[a].get_id_space_size()), -1);
        RootNode& root = m_axes[a][r];
        typename WebNode<D>::Link& link = m_nodes[id].m_axis[a];
        link.m_root = r;
        const int prev = m_marks[a][r];
        link.m_prev = prev;
        m_marks[a][r] = id;
        if (id <= prev)
            VESK_FATAL(kWebSrc, "Not ordered : " << prev << " > " << id);
        if (prev != -1) {
            if (!node_in_use(prev))
                VESK_FATAL(kWebSrc, " cahced pos for insert node " << id << " at ax " << a
                                                                   << " is not used = " << prev);
            if (m_nodes[prev].m_axis[a].m_root != r)
                VESK_FATAL(kWebSrc, "The cahcehd pos root (" << m_nodes[prev].m_axis[a].m_root
                                                             << ") != the root " << r);
        }
        if (prev == id)
            VESK_FATAL(kWebSrc, "Insert node " << id << " when cahced pos equals the same");
        if (prev == -1) {
            link.m_next = root.m_head;
            root.m_head = id;
        } else {
            link.m_next = m_nodes[prev].m_axis[a].m_next;
            m_nodes[prev].m_axis[a].m_next = id;
        }
        if (link.m_next == -1) {
            root.m_tail = id;
        } else {
            if (link.m_next <= id)
                VESK_FATAL(kWebSrc, "Not ordered : " << link.m_next << " < " << id);
            m_nodes[link.m_next].m_axis[a].m_prev = id;
        }
        ++root.m_how_many;
    }
    ++m_count;
    return id;
}

template <int D> void Web<D>::unlink(int a, int id) {
    typename WebNode<D>::Link& link = m_nodes[id].m_axis[a];
    RootNode& root = m_axes[a][link.m_root];
    if (link.m_prev != -1)
        m_nodes[link.m_prev].m_axis[a].m_next = link.m_next;
    else
        root.m_head = link.m_next;
    if (link.m_next != -1)
        m_nodes[link.m_next].m_axis[a].m_prev = link.m_prev;
    else
        root.m_tail = link.m_prev;
    --root.m_how_many;
    link.m_next = -1;
    link.m_prev = -1;
    link.m_root = -1;
}

template <int D> void Web<D>::remove_node(int id) {
    if (m_keep_ids)
        m_node_ids.remove(id);
    for (int a = 0; a < D; ++a)
        unlink(a, id);
    --m_count;
}

template <int D> int Web<D>::add_root(int axis, int id) {
    RootNode r;
    r.m_how_many = 0;
    return m_axes[axis].push_back(r, id);
}

template <int D> void Web<D>::remove_root_nodes(int axis, int root) {
    int id = m_axes[axis][root].m_head;
    while (id != -1) {
        const int next = m_nodes[id].m_axis[axis].m_next;
        remove_node(id);
        id = next;
    }
}

template <int D> void Web<D>::remove_root(int axis, int root) {
    unmark(axis, root);
    remove_root_nodes(axis, root);
    m_axes[axis][root] = RootNode();
    m_axes[axis].remove(root);
}

template <int D> void Web<D>::mark(int id) {
    if (!node_in_use(id))
        VESK_FATAL(kWebSrc, "Try to mark unused node " << id);
    if (static_cast<int>(m_marks[0].size()) != m_axes[0].get_id_space_size())
        VESK_FATAL(kWebSrc, "must unmark after adding m_roots and before calling mark");
    for (int a = 0; a < D; ++a) {
        const int r = m_nodes[id].m_axis[a].m_root;
        if (r >= static_cast<int>(m_marks[a].size()))
            m_marks[a].resize(static_cast<std::size_t>(m_axes[a].get_id_space_size()), -1);
        m_marks[a][r] = id;
    }
}

template <int D> void Web<D>::unmark_all() {
    for (int a = 0; a < D; ++a)
        m_marks[a].assign(static_cast<std::size_t>(m_axes[a].get_id_space_size()), -1);
}

template <int D> void Web<D>::clear() {
    for (WebNode<D>& n : m_nodes)
        n = WebNode<D>();
    m_count = 0;
    m_node_ids.clear();
    for (int a = 0; a < D; ++a) {
        m_axes[a].clear();
        std::fill(m_marks[a].begin(), m_marks[a].end(), -1);
    }
}

template <int D> bool Web<D>::verify_node(int id) const {
    for (int a = 0; a < D; ++a) {
        const typename WebNode<D>::Link& link = m_nodes[id].m_axis[a];
        if (!root_in_use(a, link.m_root)) {
            std::cerr << "This node points to non existing root - so," << std::endl;
            return false;
        }
        const RootNode& root = m_axes[a][link.m_root];
        const bool next_ok = link.m_next == -1
                                 ? root.m_tail == id
                                 : link.m_next >= 0 && link.m_next < static_cast<int>(m_nodes.size()) &&
                                       m_nodes[link.m_next].m_axis[a].m_prev == id;
        const bool prev_ok = link.m_prev == -1
                                 ? root.m_head == id
                                 : link.m_prev >= 0 && link.m_prev < static_cast<int>(m_nodes.size()) &&
                                       m_nodes[link.m_prev].m_axis[a].m_next == id;
        if (!next_ok || !prev_ok)
            return false;
    }
    if (m_keep_ids && !m_node_ids.is_member(id)) {
        std::cerr << "The node is somehow marked as unused, so," << std::endl;
        return false;
    }
    return true;
}

template <int D> bool Web<D>::verify() const {
    const int n = static_cast<int>(m_nodes.size());
    for (int a = 0; a < D; ++a) {
        std::vector<int> met(static_cast<std::size_t>(n), 0);
        int total = 0;
        for (int r = m_axes[a].get_front_id(); r != -1; r = m_axes[a].get_next_id(r)) {
            int len = 0;
            for (int id = m_axes[a][r].m_head; id != -1; id = m_nodes[id].m_axis[a].m_next) {
                if (id < 0 || id >= n || ++met[id] > 1 || m_nodes[id].m_axis[a].m_root != r ||
                    !verify_node(id)) {
                    std::cerr << "Connections invalid in node " << id << std::endl;
                    return false;
                }
                ++len;
            }
            if (len != m_axes[a][r].m_how_many) {
                std::cerr << "Number of nodes for root " << r << " in axis " << a << " is " << len
                          << " instead of " << m_axes[a][r].m_how_many << std::endl;
                return false;
            }
            total += len;
        }
        for (int id = 0; id < n; ++id) {
            if (node_in_use(id) && met[id] != 1) {
                std::cerr << "Connections invalid in node " << id << std::endl;
                return false;
            }
        }
        if (total != m_count) {
            std::cerr << "Number of nodes accessed for axis " << a << " is " << total << " instead of "
                      << m_count << std::endl;
            return false;
        }
    }
    return true;
}

template <int D> void Web<D>::print_node(std::ostream& out, int id) const {
    for (int a = 0; a < D; ++a) {
        const typename WebNode<D>::Link& link = m_nodes[id].m_axis[a];
        out << "level " << a << ":"
            << "root : " << link.m_root << " next : " << link.m_next << " prev : " << link.m_prev
            << std::endl;
    }
}

template <int D> void Web<D>::print_nodes(std::ostream& out, int axis) const {
    out << "Web Nodes ordered by " << axis << " axis" << std::endl;
    for (int r = m_axes[axis].get_front_id(); r != -1; r = m_axes[axis].get_next_id(r)) {
        for (int id = m_axes[axis][r].m_head; id != -1; id = m_nodes[id].m_axis[axis].m_next) {
            out << "id : " << id << std::endl;
            print_node(out, id);
        }
    }
}

template <int D> void Web<D>::print_array(std::ostream& out) const {
    for (int id = 0; id < static_cast<int>(m_nodes.size()); ++id) {
        out << "node id-" << id << std::endl;
        print_node(out, id);
    }
}

#endif
