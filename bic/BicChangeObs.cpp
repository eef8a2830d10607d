// BicChangeExpObs, BicChangeVarObs, BicChangeVarBinObs: heap keys kept current event by event.
#include "BicChangeObs.h"

void BicChangeObsBase::unsubscribe_all() {
    if (m_bic)
        for (const auto& s : m_subs)
            m_bic->m_dispatch.unsubscribe(s.first, s.second);
    m_subs.clear();
}

void BicChangeObsBase::bind(DynBiclust& bic, BicHeap* heap) {
    unsubscribe_all();
    m_bic = &bic;
    m_wgt = &bic.m_wgt;
    m_heap = heap;
}

void BicChangeObsBase::place(int heap, int node, float key) {
    if (m_heap->is_used(heap, node))
        m_heap->change(heap, node, key);
    else
        m_heap->insert(heap, node, key);
}

void BicChangeObsBase::take_out(int heap, int node) {
    if (m_heap->is_used(heap, node))
        m_heap->remove(heap, node);
}

void BicChangeObsBase::rekey(int heap, int node, float key) {
    if (m_heap->is_used(heap, node))
        m_heap->change(heap, node, key);
}

void BicChangeObsBase::switch_side(int node, bool inside, int add, int del, float add_key, float del_key) {
    if (inside) {
        take_out(add, node);
        m_heap->insert(del, node, del_key);
    } else {
        take_out(del, node);
        m_heap->insert(add, node, add_key);
    }
}

void BicChangeObsBase::restart_entry(int node, int add, int del, float add_key) {
    take_out(add, node);
    take_out(del, node);
    m_heap->insert(add, node, add_key);
}

// ---- BicChangeExpObs

void BicChangeExpObs::attach(DynBiclust& bic, BicHeap& heap, int node, int heap_idx, float add_factor,
                             float del_factor) {
    bind(bic, &heap);
    m_heap_idx = heap_idx;
    m_add_factor = add_factor;
    m_del_factor = del_factor;
    subscribe(0, *this, &BicChangeExpObs::on_reset);
    subscribe(1, *this, &BicChangeExpObs::on_var_change);
    subscribe(3, *this, &BicChangeExpObs::on_var_change);
    attach_node<CondSide>(node, 0.0f, *this, &BicChangeExpObs::on_change_me, &BicChangeExpObs::on_adj);
}

void BicChangeExpObs::on_reset(int) {
    m_gain = 0.0f;
    m_outside = true;
    // The fresh entry's key carries no factor.
    restart_entry(m_node, m_heap_idx, m_heap_idx, -m_gain);
}

void BicChangeExpObs::on_var_change(int code) {
    m_gain += other_step<CondSide>(m_node, code);
    rekey(m_heap_idx, m_node, m_outside ? add_key() : del_key());
}

void BicChangeExpObs::on_adj(int code) {
    m_gain += adj_step<CondSide>(m_node, code);
    rekey(m_heap_idx, m_node, m_outside ? add_key() : del_key());
}

void BicChangeExpObs::on_change_me(int) {
    m_outside = !m_bic->m_exps.get_ind(m_node);
    switch_side(m_node, !m_outside, m_heap_idx, m_heap_idx, add_key(), del_key());
}

// ---- BicChangeVarObs

void BicChangeVarObs::attach(DynBiclust& bic, BicHeap& heap, int node, int add_heap, int del_heap,
                             float init_gain) {
    bind(bic, &heap);
    m_add_heap = add_heap;
    m_del_heap = del_heap;
    m_init_gain = init_gain;
    subscribe(0, *this, &BicChangeVarObs::on_reset);
    attach_node<VarSide>(node, init_gain, *this, &BicChangeVarObs::on_change_me, &BicChangeVarObs::on_adj);
}

void BicChangeVarObs::on_reset(int) {
    m_gain = m_init_gain;
    m_outside = true;
    restart_entry(m_node, m_add_heap, m_del_heap, -m_gain);
}

void BicChangeVarObs::on_adj(int code) {
    m_gain += adj_step<VarSide>(m_node, code);
    if (m_outside)
        rekey(m_add_heap, m_node, -m_gain);
    else
        rekey(m_del_heap, m_node, m_gain);
}

void BicChangeVarObs::on_change_me(int) {
    m_outside = !m_bic->m_vars.get_ind(m_node);
    switch_side(m_node, !m_outside, m_add_heap, m_del_heap, -m_gain, m_gain);
}

// ---- BicChangeVarBinObs

void BicChangeVarBinObs::attach(DynBiclust& bic, BicHeap& heap, int bin, int add_heap, int del_heap) {
    bind(bic, &heap);
    m_bin = bin;
    m_add_heap = add_heap;
    m_del_heap = del_heap;
    m_gain = 0.0f;
    subscribe(0, *this, &BicChangeVarBinObs::on_reset);
    subscribe(2, *this, &BicChangeVarBinObs::on_exp_change);
    subscribe(4, *this, &BicChangeVarBinObs::on_exp_change);
}

void BicChangeVarBinObs::set_weights() {
    m_heap->set_subheap_wgt(m_add_heap, -m_gain);
    m_heap->set_subheap_wgt(m_del_heap, m_gain);
}

void BicChangeVarBinObs::on_reset(int) {
    m_gain = 0.0f;
    set_weights();
}

void BicChangeVarBinObs::on_exp_change(int code) {
    m_gain += other_step<VarSide>(m_bin, code);
    set_weights();
}
