// HeapBin: a binomial heap of ids with double keys, with change and removal by id.
#ifndef VESK_STDALG_DS_HEAPBIN_H
#define VESK_STDALG_DS_HEAPBIN_H

#include "ds/HeapBase.h"

#include "Pool.h"

#include <cstddef>
#include <ostream>

// Ties are settled by fixed rules, so equal keys come out in a repeatable order that depends on
// the shape of the heap, not on the order of insertion: the newest node takes the cached minimum on
// a tie, the later tree wins a link, and the last root wins the root walk.
class HeapBin : public HeapBase {
public:
    class Node : public HeapBase::Node {
    public:
        // Frees the child list and the following siblings: deleting the head of the root list frees
        // the whole heap.
        ~Node() override {
            delete m_child;
            delete m_sibling;
        }

        static void* operator new(std::size_t) { return Pool<Node, 32>::allocate(); }
        static void operator delete(void* p) { Pool<Node, 32>::release(p); }

        Node* m_parent = nullptr;
        Node* m_child = nullptr;
        Node* m_sibling = nullptr;
        int m_degree = 0;
    };

    explicit HeapBin(bool has_table = true) : HeapBase(has_table), m_roots(nullptr) {}
    // A copy has a table and holds every (id, key) of the source, inserted in a pre-order walk of
    // the source's root list.
    HeapBin(const HeapBin& src);
    HeapBin& operator=(const HeapBin& src);
    // Moving keeps the structure as it is.
    HeapBin(HeapBin&& src) noexcept;
    HeapBin& operator=(HeapBin&& src) noexcept;
    ~HeapBin() override;

    void reset(int n) override;
    void find_min() override;
    void remove_min() override;
    bool verify() override;
    // "NYI": not implemented.
    void print(std::ostream& out) const override;

    virtual void insert(int id, int key) { insert(id, static_cast<double>(key)); }
    virtual void insert(int id, float key) { insert(id, static_cast<double>(key)); }
    virtual void insert(int id, double key);
    // Removes the id and returns its key. Needs the table.
    virtual double remove(int id);
    // Gives the id a new key and returns the old one. Needs the table.
    virtual double change(int id, int key) { return change(id, static_cast<double>(key)); }
    virtual double change(int id, float key) { return change(id, static_cast<double>(key)); }
    virtual double change(int id, double key);

    // Places a new degree-0 node: cached minimum, root list, table.
    virtual void connect(Node* n);
    // Exchanges id and key of the node and its parent; the shape stays.
    virtual void promote(Node* n);
    // Makes `child` the first child of `parent`.
    virtual void attach(Node* child, Node* parent);
    virtual bool verify_node(Node* n);

    const Node* roots() const { return m_roots; }

private:
    static Node* merge(Node* a, Node* b);
    void combine(Node* list);
    bool isok(Node* list, Node* parent);
    void copy_from(const Node* n);
    void release_all();

    Node* m_roots;
};

#endif
