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

// ---- BicChangeExpObs

void BicChangeExpObs::attach(DynBiclust& bic, BicHeap& heap, int node, int heap_idx, float add_factor,
                             float del_factor) {
    bind(bic, &heap);
    m_node = node;
    m_heap_idx = heap_idx;
    m_add_factor = add_factor;
    m_del_factor = del_factor;
    m_gain = 0.0f;
    m_outside = true;
    subscribe(0, *this, &BicChangeExpObs::on_reset);
    subscribe(1, *this, &BicChangeExpObs::on_var_change);
    subscribe(3, *this, &BicChangeExpObs::on_var_change);
    subscribe(bic.m_change_me[node], *this, &BicChangeExpObs::on_change_me);
    subscribe(bic.m_exp_add_adj[node], *this, &BicChangeExpObs::on_adj);
    subscribe(bic.m_exp_del_adj[node], *this, &BicChangeExpObs::on_adj);
}

void BicChangeExpObs::update_key() {
    if (m_heap->is_used(m_heap_idx, m_node))
        m_heap->change(m_heap_idx, m_node, key());
}

void BicChangeExpObs::on_reset(int) {
    m_gain = 0.0f;
    m_outside = true;
    take_out(m_heap_idx, m_node);
    m_heap->insert(m_heap_idx, m_node, -m_gain);
}

void BicChangeExpObs::on_var_change(int code) {
    const float w = m_wgt->get_non_edge_exp_weight(m_node, m_bic->m_cur_var_bin);
    if (code == 1)
        m_gain += w;
    else
        m_gain -= w;
    update_key();
}

void BicChangeExpObs::on_adj(int code) {
    const float w = m_wgt->get_edge_cnc(m_bic->m_cur_edge);
    if (code == m_bic->m_exp_add_adj[m_node])
        m_gain += w;
    else
        m_gain -= w;
    update_key();
}

void BicChangeExpObs::on_change_me(int) {
    take_out(m_heap_idx, m_node);
    m_outside = !m_bic->m_exps.get_ind(m_node);
    m_heap->insert(m_heap_idx, m_node, key());
}

// ---- BicChangeVarObs

void BicChangeVarObs::attach(DynBiclust& bic, BicHeap& heap, int node, int add_heap, int del_heap,
                             float init_gain) {
    bind(bic, &heap);
    m_node = node;
    m_add_heap = add_heap;
    m_del_heap = del_heap;
    m_init_gain = init_gain;
    m_gain = init_gain;
    m_outside = true;
    subscribe(0, *this, &BicChangeVarObs::on_reset);
    subscribe(bic.m_change_me[node], *this, &BicChangeVarObs::on_change_me);
    subscribe(bic.m_var_add_adj[node], *this, &BicChangeVarObs::on_adj);
    subscribe(bic.m_var_del_adj[node], *this, &BicChangeVarObs::on_adj);
}

void BicChangeVarObs::on_reset(int) {
    m_gain = m_init_gain;
    m_outside = true;
    take_out(m_add_heap, m_node);
    take_out(m_del_heap, m_node);
    m_heap->insert(m_add_heap, m_node, -m_gain);
}

void BicChangeVarObs::on_adj(int code) {
    const float w = m_wgt->get_edge_cnc(m_bic->m_cur_edge);
    if (code == m_bic->m_var_add_adj[m_node])
        m_gain += w;
    else
        m_gain -= w;
    if (m_outside) {
        if (m_heap->is_used(m_add_heap, m_node))
            m_heap->change(m_add_heap, m_node, -m_gain);
    } else if (m_heap->is_used(m_del_heap, m_node)) {
        m_heap->change(m_del_heap, m_node, m_gain);
    }
}

void BicChangeVarObs::on_change_me(int) {
    if (m_bic->m_vars.get_ind(m_node)) {
        take_out(m_add_heap, m_node);
        m_outside = false;
        m_heap->insert(m_del_heap, m_node, m_gain);
    } else {
        take_out(m_del_heap, m_node);
        m_outside = true;
        m_heap->insert(m_add_heap, m_node, -m_gain);
    }
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
    const float w = m_wgt->get_non_edge_exp_weight(m_bic->m_cur_exp_node, m_bin);
    if (code == 2)
        m_gain += w;
    else
        m_gain -= w;
    set_weights();
}
