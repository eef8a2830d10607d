// Observers of a DynBiclust that keep each candidate move's key in a composite heap: one per
// condition node, one per variable node, one per bin.
#ifndef VESK_BIC_BICCHANGEOBS_H
#define VESK_BIC_BICCHANGEOBS_H

#include "BicSide.h"
#include "DynBiclust.h"
#include "ds/CompHeap.h"

#include <utility>
#include <vector>

typedef CompHeap<HeapBin> BicHeap;

// Holds the bicluster, its weights, the heap and the subscriptions. A copy is unattached. attach
// starts with unsubscribe_all, so an observer can move to another bicluster; the destructor
// unsubscribes, so the bicluster must outlive its observers.
class BicChangeObsBase {
public:
    BicChangeObsBase() : m_bic(nullptr), m_wgt(nullptr), m_heap(nullptr) {}
    BicChangeObsBase(const BicChangeObsBase&) : BicChangeObsBase() {}
    BicChangeObsBase& operator=(const BicChangeObsBase&) = delete;
    virtual ~BicChangeObsBase() { unsubscribe_all(); }

    void unsubscribe_all();
    bool attached() const { return m_bic != nullptr; }

    DynBiclust* m_bic;
    WgtSchemeBase* m_wgt;
    BicHeap* m_heap;

protected:
    void bind(DynBiclust& bic, BicHeap* heap);
    template <class T> void subscribe(int code, T& obs, void (T::*handler)(int)) {
        const int slot = m_bic->m_dispatch.subscribe(code, makeFunctor((CBFunctor1<int>*)0, obs, handler));
        m_subs.push_back(std::make_pair(code, slot));
    }
    // Subscribes `obs` to the change of side of `node` and to its neighbours joining and leaving.
    template <class Side, class T>
    void subscribe_node(T& obs, int node, void (T::*change_me)(int), void (T::*adj)(int)) {
        subscribe(m_bic->m_change_me[node], obs, change_me);
        subscribe(Side::add_adj(*m_bic)[node], obs, adj);
        subscribe(Side::del_adj(*m_bic)[node], obs, adj);
    }
    // Insert when absent, change when present.
    void place(int heap, int node, float key);
    void take_out(int heap, int node);
    // Changes the entry when present.
    void rekey(int heap, int node, float key);

    // A node's add move stands in heap `add` while it is outside, its delete move in heap `del` while
    // it is inside (one heap may hold both). switch_side follows a change of side: the entry leaves
    // the old side's heap and enters the new one's with that side's key; restart_entry takes it out
    // of both and puts it back as an add move.
    void switch_side(int node, bool inside, int add, int del, float add_key, float del_key);
    void restart_entry(int node, int add, int del, float add_key);

    // What adjacency event `code` of `node` adds to its gain: the current edge's weight over a
    // non-edge, with the sign of the event.
    template <class Side> float adj_step(int node, int code) const {
        const float w = m_wgt->get_edge_cnc(m_bic->m_cur_edge);
        return code == Side::add_adj(*m_bic)[node] ? w : -w;
    }
    // What add or delete event `code` of the other side adds to weight key `wkey` of this side: the
    // non-edge weight between the key and the node that moved, with the sign of the event.
    template <class Side> float other_step(int wkey, int code) const {
        const float w = Side::non_edge(*m_wgt, wkey, Side::Other::cur_wkey(*m_bic));
        return code == Side::Other::kAdded ? w : -w;
    }

    std::vector<std::pair<int, int>> m_subs; // (event code, slot)
};

// What the observers of a single node share: the node, its gain and its side.
class NodeObs : public BicChangeObsBase {
public:
    int m_node = -1;
    float m_gain = 0.0f;
    bool m_outside = true;

protected:
    // After bind: the node, its starting gain, outside, and `obs` subscribed to the node's change of
    // side and to its neighbours' adds and deletes.
    template <class Side, class T>
    void attach_node(int node, float gain, T& obs, void (T::*change_me)(int), void (T::*adj)(int)) {
        m_node = node;
        m_gain = gain;
        m_outside = true;
        subscribe_node<Side>(obs, node, change_me, adj);
    }
};

// A condition node. m_gain is its margin; its key is -add_factor * m_gain while outside (an add
// move), del_factor * m_gain while inside (a delete move), on one heap for all condition moves.
class BicChangeExpObs : public NodeObs {
public:
    void attach(DynBiclust& bic, BicHeap& heap, int node, int heap_idx, float add_factor, float del_factor);

    int m_heap_idx = -1;
    float m_add_factor = 1.0f;
    float m_del_factor = 1.0f;

private:
    void on_reset(int code);
    void on_var_change(int code);
    void on_adj(int code);
    void on_change_me(int code);
    float add_key() const { return -m_add_factor * m_gain; }
    float del_key() const { return m_gain * m_del_factor; }
};

// A variable node. m_gain is the edge part of its margin plus init_gain; the non-edge part is the
// same for its whole bin and is the weight of the bin's sub-heaps (BicChangeVarBinObs). Key -m_gain
// in the bin's add heap while outside, m_gain in its delete heap while inside.
class BicChangeVarObs : public NodeObs {
public:
    void attach(DynBiclust& bic, BicHeap& heap, int node, int add_heap, int del_heap, float init_gain);

    int m_add_heap = -1;
    int m_del_heap = -1;
    float m_init_gain = 0.0f;

private:
    void on_reset(int code);
    void on_adj(int code);
    void on_change_me(int code);
};

// A bin. m_gain is the sum of non_edge(e, bin) over the conditions inside; the add sub-heap weighs
// -m_gain and the delete sub-heap m_gain.
class BicChangeVarBinObs : public BicChangeObsBase {
public:
    BicChangeVarBinObs() : m_bin(-1), m_add_heap(-1), m_del_heap(-1), m_gain(0.0f) {}

    void attach(DynBiclust& bic, BicHeap& heap, int bin, int add_heap, int del_heap);

    int m_bin;
    int m_add_heap;
    int m_del_heap;
    float m_gain;

private:
    void on_reset(int code);
    void on_exp_change(int code);
    void set_weights();
};

#endif
