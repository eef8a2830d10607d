// RaList<T>: a doubly linked list whose elements live in a vector and are addressed by id.
#ifndef VESK_STDALG_DS_RALIST_H
#define VESK_STDALG_DS_RALIST_H

#include <vector>

// The construction trace of every RaList ("RaList with <size>" on the error stream).
void ralist_trace_new(int size);

template <class T> struct RaListNode {
    T m_value = T();
    int m_self = -1; // own id; -1 while the slot is free
    int m_next = -1;
    int m_prev = -1;
};

// The vector only grows, so the id space is the vector's size and ids stay stable. A -1 id asks for
// the end of the id space: ids of removed elements come back only when a caller names them.
// Removing the only element leaves its id a member (until the id is used again); that is relied on.
template <class T> class RaList {
public:
    class iterator {
    public:
        iterator(RaList* list, int id) : m_list(list), m_id(id) {}
        T& operator*() const { return (*m_list)[m_id]; }
        T* operator->() const { return &(*m_list)[m_id]; }
        iterator& operator++() {
            m_id = m_list->get_next_id(m_id);
            return *this;
        }
        bool operator==(const iterator& o) const { return m_id == o.m_id; }
        bool operator!=(const iterator& o) const { return m_id != o.m_id; }
        int id() const { return m_id; }

    private:
        RaList* m_list;
        int m_id;
    };

    // `size` is the vector capacity reserved up front; the id space starts empty.
    explicit RaList(int size = 0) : m_head(-1), m_tail(-1), m_size(0) {
        ralist_trace_new(size);
        if (size > 0)
            m_nodes.reserve(static_cast<std::size_t>(size));
    }

    int push_front(const T& value, int id = -1) {
        id = take(value, id);
        RaListNode<T>& n = m_nodes[id];
        n.m_prev = -1;
        n.m_next = m_head;
        if (m_head != -1)
            m_nodes[m_head].m_prev = id;
        else
            m_tail = id;
        m_head = id;
        return id;
    }

    int push_back(const T& value, int id = -1) {
        id = take(value, id);
        RaListNode<T>& n = m_nodes[id];
        n.m_next = -1;
        n.m_prev = m_tail;
        if (m_tail != -1)
            m_nodes[m_tail].m_next = id;
        else
            m_head = id;
        m_tail = id;
        return id;
    }

    // Links the element behind `after`; an `after` of -1 puts it in front.
    int insert_after(const T& value, int after, int id = -1) {
        if (after == -1)
            return push_front(value, id);
        id = take(value, id);
        RaListNode<T>& n = m_nodes[id];
        const int next = m_nodes[after].m_next;
        n.m_prev = after;
        n.m_next = next;
        m_nodes[after].m_next = id;
        if (next != -1)
            m_nodes[next].m_prev = id;
        else
            m_tail = id;
        return id;
    }

    // The removed slot keeps its own links, so a walk standing on it can still step on.
    void remove(int id) {
        --m_size;
        if (m_size == 0) {
            m_head = -1;
            m_tail = -1;
            return;
        }
        RaListNode<T>& n = m_nodes[id];
        n.m_self = -1;
        if (n.m_prev != -1)
            m_nodes[n.m_prev].m_next = n.m_next;
        else
            m_head = n.m_next;
        if (n.m_next != -1)
            m_nodes[n.m_next].m_prev = n.m_prev;
        else
            m_tail = n.m_prev;
    }

    bool is_member(int id) const {
        return id >= 0 && id < static_cast<int>(m_nodes.size()) && m_nodes[id].m_self == id;
    }
    int get_free_id() const { return static_cast<int>(m_nodes.size()); }

    T& get_front() { return m_nodes[m_head].m_value; }
    T& get_back() { return m_nodes[m_tail].m_value; }
    int get_front_id() const { return m_head; }
    int get_back_id() const { return m_tail; }
    int get_next_id(int id) const { return m_nodes[id].m_next; }
    int get_prev_id(int id) const { return m_nodes[id].m_prev; }
    int get_size() const { return m_size; }
    int get_id_space_size() const { return static_cast<int>(m_nodes.size()); }

    T& operator[](int id) { return m_nodes[id].m_value; }
    const T& operator[](int id) const { return m_nodes[id].m_value; }

    void reserve(int n) { m_nodes.reserve(static_cast<std::size_t>(n)); }

    // Empties the list; the id space (the vector's size) stays.
    void clear() {
        for (RaListNode<T>& n : m_nodes)
            n = RaListNode<T>();
        m_head = -1;
        m_tail = -1;
        m_size = 0;
    }

    iterator begin() { return iterator(this, m_head); }
    iterator end() { return iterator(this, -1); }

private:
    // Resolves the id, grows the vector with free slots up to it, stores the value.
    int take(const T& value, int id) {
        if (id == -1)
            id = get_free_id();
        if (id >= static_cast<int>(m_nodes.size()))
            m_nodes.resize(static_cast<std::size_t>(id) + 1);
        RaListNode<T>& n = m_nodes[id];
        n.m_value = value;
        n.m_self = id;
        ++m_size;
        return id;
    }

    std::vector<RaListNode<T>> m_nodes;
    int m_head;
    int m_tail;
    int m_size;
};

#endif
