// CompHeap<H>: a row of heaps, each with an additive weight, read as one priority queue.
#ifndef VESK_STDALG_DS_COMPHEAP_H
#define VESK_STDALG_DS_COMPHEAP_H

#include "ds/HeapBin.h"

#include <vector>

// The minimum of the whole is the sub-heap minimum with the smallest key plus weight; on ties the
// first sub-heap wins. Shifting every key of a sub-heap is one weight change. Keys handed back
// through a reference carry the weight; remove and change return the sub-heap's own keys.
template <class H> class CompHeap {
public:
    CompHeap() {}
    virtual ~CompHeap() {}

    // Resets every sub-heap; their number and weights stay.
    virtual void reset(int n);
    // False for a heap past the end, else the sub-heap's answer.
    virtual bool is_used(int heap, int id) const;
    // Key plus the heap's weight; -1.0 if the heap or the id doesn't exist.
    virtual double value(int heap, int id) const;

    // Extracts from get_min_heap() and returns the id, or -1 when all are empty (the reference is
    // then untouched). The reference gets the sub-heap's key in its own type, then the weight added.
    virtual int extract_min();
    virtual int extract_min(int& x);
    virtual int extract_min(float& x);
    virtual int extract_min(double& x);

    // Grows to heap + 1 sub-heaps if needed (new ones with a table and weight 0), then inserts.
    virtual void insert(int heap, int id, int key);
    virtual void insert(int heap, int id, float key);
    virtual void insert(int heap, int id, double key);
    // Forwarded to the sub-heap; a heap past the end is fatal.
    virtual double remove(int heap, int id);
    virtual double change(int heap, int id, int key);
    virtual double change(int heap, int id, float key);
    virtual double change(int heap, int id, double key);

    // The same as extract_min without removal.
    int peek_min();
    int peek_min(int& x);
    int peek_min(float& x);
    int peek_min(double& x);

    // Sets a sub-heap's additive weight, growing as insert does.
    void set_subheap_wgt(int heap, float w);
    float get_subheap_wgt(int heap) const { return m_wgts[heap]; }
    // Index of the sub-heap whose minimum plus weight is smallest, or -1.
    int get_min_heap();

    int subheaps_num() const { return static_cast<int>(m_heaps.size()); }
    H& subheap(int heap) { return m_heaps[heap]; }
    // Every sub-heap's verify.
    bool verify();

protected:
    void grow(int heap);
    template <class T> int take_min(T& x, bool remove);
    template <class T> double change_key(int heap, int id, T key);

    std::vector<H> m_heaps;
    std::vector<float> m_wgts;
};

#include "ds/CompHeap.tcc"

extern template class CompHeap<HeapBin>;

#endif
