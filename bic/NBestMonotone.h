// NBestScoredVal and NBestMonotone: a store of the N best scored values whose entry bar never falls.
#ifndef VESK_BIC_NBESTMONOTONE_H
#define VESK_BIC_NBESTMONOTONE_H

#include "ds/HeapBin.h"

#include <iostream>
#include <vector>

template <class T> struct NBestScoredVal {
    NBestScoredVal() : m_id(-1), m_val(), m_score(0.0f) {}
    NBestScoredVal(int id, const T& val, float score) : m_id(id), m_val(val), m_score(score) {}
    int m_id;
    T m_val;
    float m_score;
};

// Holds up to m_n records; the heap keeps their slot numbers by score. m_worst_best is the smallest
// score held after the last insertion, and a value scoring below it is refused even while slots are
// free: from the second insertion on, the bar is the worst value held, and it only rises.
// Extraction doesn't lower it.
template <class T> class NBestMonotone {
public:
    explicit NBestMonotone(int n = 0) { init(n); }

    void init(int n) {
        m_n = n;
        m_size = 0;
        m_vals.assign(n > 0 ? n : 0, NBestScoredVal<T>());
        m_heap.reset(0);
        m_worst_best = -3.4028235e+38f;
    }

    // False when refused. When a full store drops its worst record to make room, the record goes to
    // `dropped` if given; otherwise `dropped->m_id` is left at -1.
    bool attempt_insert(int id, const T& val, float score, NBestScoredVal<T>* dropped = nullptr) {
        if (dropped)
            dropped->m_id = -1;
        if (score < m_worst_best || m_n <= 0)
            return false;
        int slot;
        if (m_size < m_n) {
            slot = m_size++;
        } else {
            slot = m_heap.extract_min();
            if (dropped)
                *dropped = m_vals[slot];
        }
        m_vals[slot] = NBestScoredVal<T>(id, val, score);
        m_heap.insert(slot, score);
        m_worst_best = static_cast<float>(m_heap.min_node()->m_value);
        return true;
    }

    // Removes and returns the record of smallest score; the last record moves into its slot.
    // Must not be called on an empty store.
    NBestScoredVal<T> extract_worst_best() {
        const int slot = m_heap.extract_min();
        NBestScoredVal<T> out = m_vals[slot];
        const int last = m_size - 1;
        if (slot != last) {
            m_heap.remove(last);
            m_vals[slot] = m_vals[last];
            m_heap.insert(slot, m_vals[slot].m_score);
        }
        m_vals[last] = NBestScoredVal<T>();
        --m_size;
        return out;
    }

    // As extract_worst_best, printing the id of the dropped record on the error stream.
    void del_worst_best() {
        const NBestScoredVal<T> out = extract_worst_best();
        std::cerr << out.m_id << "\n";
    }

    int size() const { return m_size; }

    int m_n;
    int m_size;
    std::vector<NBestScoredVal<T>> m_vals;
    HeapBin m_heap;
    float m_worst_best;
};

#endif
