// HeapBase: the id-table layer of the priority queues (id -> node, cached minimum, verify scratch).
#ifndef VESK_STDALG_DS_HEAPBASE_H
#define VESK_STDALG_DS_HEAPBASE_H

#include <ostream>
#include <vector>

// A priority queue of integer ids with double keys; the smallest key comes out first. With a
// table, ids can be looked up, changed and removed; without one the heap is a plain queue.
class HeapBase {
public:
    class Node {
    public:
        virtual ~Node() {}
        // " node <id> {", the value, " }", each on its own line.
        virtual void printon(std::ostream& out) const;
        // "  Value: <key>" and a line end.
        virtual void print(std::ostream& out) const;

        int m_id = -1;
        double m_value = 0.0;
    };

    explicit HeapBase(bool has_table) : m_has_table(has_table), m_min(nullptr) {}
    virtual ~HeapBase() {}

    // Empties the heap; the argument isn't used. m_has_table is kept.
    virtual void reset(int n);
    // False for a negative id or one past the table, else whether the id has a node.
    virtual bool is_used(int id) const;
    // The key of the id; no test.
    virtual double value(int id) const { return m_table[id]->m_value; }

    // Removes the minimum and returns its id, or -1 when empty. The reference forms store the key
    // (truncated toward zero for an int) and leave it untouched when the heap is empty.
    virtual int extract_min();
    virtual int extract_min(int& x);
    virtual int extract_min(float& x);
    virtual int extract_min(double& x);

    // Enters the node in the table (growing it to the id + 1).
    virtual void base_connect(Node* n);
    // Points the table entries of both nodes' ids at them, after their contents were exchanged.
    virtual void swap(Node* a, Node* b);
    // Clears the node's table entry and deletes it.
    virtual void disconnect(Node* n);
    // Sets m_min to a root of minimal key; it stays null on an empty heap.
    virtual void find_min() = 0;
    // Takes m_min out of the structure and deletes it.
    virtual void remove_min();
    // Sizes the verify scratch to the table and clears it.
    virtual void clear();
    // Marks the node's id as seen; a repeat fails with "node <id> appears twice".
    virtual bool base_verify_node(Node* n);
    // Table consistency against the marks left by the structure walk.
    virtual bool verify();
    // " Min: " and the minimum's id (-1 when unknown).
    virtual void print(std::ostream& out) const;

    // Drops lookup by id.
    void no_table();
    bool has_table() const { return m_has_table; }
    // The minimum node, running find_min when the cache is empty; null on an empty heap.
    const Node* min_node() {
        if (!m_min)
            find_min();
        return m_min;
    }
    // The cached minimum as it stands (null: unknown or empty).
    const Node* cached_min() const { return m_min; }
    int table_size() const { return static_cast<int>(m_table.size()); }

protected:
    template <class T> int extract_into(T& x);

    std::vector<Node*> m_table;
    bool m_has_table;
    Node* m_min;
    std::vector<bool> m_seen;
};

#endif
