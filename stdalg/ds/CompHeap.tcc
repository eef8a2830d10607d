// Template body of CompHeap<H>.
#ifndef VESK_STDALG_DS_COMPHEAP_TCC
#define VESK_STDALG_DS_COMPHEAP_TCC

#include "error.h"

#include <limits>

inline constexpr char kCompHeapSrc[] = "../stdalg/ds/CompHeap";

template <class H> void CompHeap<H>::grow(int heap) {
    if (heap >= static_cast<int>(m_heaps.size())) {
        m_heaps.resize(heap + 1, H(true));
        m_wgts.resize(heap + 1, 0.0f);
    }
}

template <class H> void CompHeap<H>::reset(int n) {
    for (H& h : m_heaps)
        h.reset(n);
}

template <class H> bool CompHeap<H>::is_used(int heap, int id) const {
    if (heap < 0 || heap >= static_cast<int>(m_heaps.size()))
        return false;
    return m_heaps[heap].is_used(id);
}

template <class H> double CompHeap<H>::value(int heap, int id) const {
    if (!is_used(heap, id))
        return -1.0;
    return m_heaps[heap].value(id) + static_cast<double>(m_wgts[heap]);
}

template <class H> int CompHeap<H>::get_min_heap() {
    // A key whose sum reaches the largest float stands for "no move" and is never picked.
    double best = static_cast<double>(std::numeric_limits<float>::max());
    int best_heap = -1;
    for (std::size_t i = 0; i < m_heaps.size(); ++i) {
        const HeapBase::Node* m = m_heaps[i].min_node();
        if (!m || m->m_id == -1)
            continue;
        const double v = m->m_value + static_cast<double>(m_wgts[i]);
        if (v < best) {
            best = v;
            best_heap = static_cast<int>(i);
        }
    }
    return best_heap;
}

template <class H> template <class T> int CompHeap<H>::take_min(T& x, bool remove) {
    const int h = get_min_heap();
    if (h == -1)
        return -1;
    int id;
    if (remove) {
        id = m_heaps[h].extract_min(x);
    } else {
        const HeapBase::Node* m = m_heaps[h].min_node();
        id = m->m_id;
        x = static_cast<T>(m->m_value);
    }
    x = static_cast<T>(x + m_wgts[h]);
    return id;
}

template <class H> int CompHeap<H>::extract_min() {
    const int h = get_min_heap();
    return h == -1 ? -1 : m_heaps[h].extract_min();
}
template <class H> int CompHeap<H>::extract_min(int& x) { return take_min(x, true); }
template <class H> int CompHeap<H>::extract_min(float& x) { return take_min(x, true); }
template <class H> int CompHeap<H>::extract_min(double& x) { return take_min(x, true); }

template <class H> int CompHeap<H>::peek_min() {
    const int h = get_min_heap();
    return h == -1 ? -1 : m_heaps[h].min_node()->m_id;
}
template <class H> int CompHeap<H>::peek_min(int& x) { return take_min(x, false); }
template <class H> int CompHeap<H>::peek_min(float& x) { return take_min(x, false); }
template <class H> int CompHeap<H>::peek_min(double& x) { return take_min(x, false); }

template <class H> void CompHeap<H>::insert(int heap, int id, int key) {
    grow(heap);
    m_heaps[heap].insert(id, key);
}
template <class H> void CompHeap<H>::insert(int heap, int id, float key) {
    grow(heap);
    m_heaps[heap].insert(id, key);
}
template <class H> void CompHeap<H>::insert(int heap, int id, double key) {
    grow(heap);
    m_heaps[heap].insert(id, key);
}

template <class H> double CompHeap<H>::remove(int heap, int id) {
    if (heap < 0 || heap >= static_cast<int>(m_heaps.size()))
        VESK_FATAL(kCompHeapSrc, "Trying to remove from non existent bin " << heap);
    return m_heaps[heap].remove(id);
}

template <class H> template <class T> double CompHeap<H>::change_key(int heap, int id, T key) {
    if (heap < 0 || heap >= static_cast<int>(m_heaps.size()))
        VESK_FATAL(kCompHeapSrc, "Trying to change from non existent bin " << heap);
    return m_heaps[heap].change(id, key);
}
template <class H> double CompHeap<H>::change(int heap, int id, int key) { return change_key(heap, id, key); }
template <class H> double CompHeap<H>::change(int heap, int id, float key) {
    return change_key(heap, id, key);
}
template <class H> double CompHeap<H>::change(int heap, int id, double key) {
    return change_key(heap, id, key);
}

template <class H> void CompHeap<H>::set_subheap_wgt(int heap, float w) {
    grow(heap);
    m_wgts[heap] = w;
}

template <class H> bool CompHeap<H>::verify() {
    for (H& h : m_heaps)
        if (!h.verify())
            return false;
    return true;
}

#endif
