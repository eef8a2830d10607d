// BicSetCoverGreedy: pair counters, incremental gains, the greedy loop and its check.
#include "BicSetCoverGreedy.h"

#include "ds/BitVecIter.h"
#include "error.h"

#include <cmath>
#include <iostream>

static constexpr char kSrc[] = "BicSetCoverGreedy";

BicSetCoverGreedy::BicSetCoverGreedy(const PropVarGraphBase& graph, PropWgtSchemeBase& wgt, PBicSet& set,
                                     const ds_bitvec* prior_set, float prior_factor, bool debug,
                                     bool verify_each)
    : m_graph(graph), m_wgt(wgt), m_set(set), m_edge_iter(graph.new_edge_iter(0, GraphBaseEdgeIter::In)),
      m_prior_set(prior_set), m_prior_factor(prior_factor), m_debug(debug), m_verify_each(verify_each) {}

double BicSetCoverGreedy::pair_weight(int p, int v) const {
    const int node = m_focus_props[p];
    const int bin = m_wgt.get_var_node_bin(v);
    return (m_cover(p, v) & kEdgeBit) ? m_wgt.get_edge_prop_weight(node, bin)
                                      : m_wgt.get_non_edge_prop_weight(node, bin);
}

void BicSetCoverGreedy::init_bic_prop_adjs() {
    const PropVarGraphBase& g = m_graph;
    const int nbics = m_set.size();
    m_focus_props.clear();
    m_focus_index.assign(g.m_max_prop_node, -1);
    for (ds_bitvec_iter it(m_focus_groups); it; ++it)
        if (static_cast<int>(it) < g.m_max_prop_node) {
            m_focus_index[it] = static_cast<int>(m_focus_props.size());
            m_focus_props.push_back(it);
        }
    const int nf = static_cast<int>(m_focus_props.size());
    m_prop_bics.assign(nf, ds_bitvec(nbics));
    m_var_bics.assign(g.m_node_count, ds_bitvec(nbics));
    m_bic_props.assign(nbics, std::list<int>());
    // The first group of each layer, for the levels within it.
    std::vector<int> layer_first(g.m_group_layer.size() + 1, -1);
    for (int grp = static_cast<int>(g.m_group_layer.size()) - 1; grp >= 0; --grp)
        layer_first[g.m_group_layer[grp]] = grp;
    ds_bitvec used(g.m_node_count);
    for (int b = 0; b < nbics; ++b) {
        const PropVarBiclust& bic = m_set.m_bics[b];
        ds_bitvec listed(nf);
        for (ds_bitvec_iter it(bic.m_exps); it; ++it) {
            const int idx = m_focus_index[it];
            if (idx < 0)
                continue;
            if (!listed.get_ind(idx)) {
                listed.set_ind(idx);
                m_bic_props[b].push_back(idx);
            }
            m_prop_bics[idx].set_ind(b);
            const int grp = g.node_group(it);
            const int first = layer_first[g.m_group_layer[grp]];
            for (int lvl = grp - first - 2; lvl >= 0; lvl -= 2) {
                const int low = g.m_prop_group_nodes(first + lvl, g.node_prop(it));
                if (low < 0 || m_focus_index[low] < 0 || bic.m_exps.get_ind(low) ||
                    listed.get_ind(m_focus_index[low]))
                    continue;
                listed.set_ind(m_focus_index[low]);
                m_bic_props[b].push_back(m_focus_index[low]);
            }
        }
        for (ds_bitvec_iter v(bic.m_vars); v; ++v) {
            m_var_bics[v].set_ind(b);
            used.set_ind(v);
        }
    }
    m_used_vars.clear();
    for (ds_bitvec_iter v(used); v; ++v)
        m_used_vars.push_back(v);
}

void BicSetCoverGreedy::init_deltas() {
    const int nbics = m_set.size();
    const int nf = static_cast<int>(m_focus_props.size());
    m_active.set_size(nbics);
    m_active.clear();
    m_changed.set_size(nbics);
    m_cover.resize(nf, m_graph.m_node_count, 0);
    for (int p = 0; p < nf; ++p)
        for (int v = 0; v < m_graph.m_node_count; ++v)
            m_cover(p, v) = 0;
    m_delta.assign(nbics, 0.0);
    m_prior.assign(nbics, 0.0);
    for (int v : m_used_vars) {
        for (m_edge_iter->restart(v, GraphBaseEdgeIter::In); !m_edge_iter->at_end(); ++*m_edge_iter) {
            const int idx = m_focus_index[m_edge_iter->other()];
            if (idx >= 0)
                m_cover(idx, v) |= kEdgeBit;
        }
        for (int p = 0; p < nf; ++p) {
            const double w = pair_weight(p, v);
            ds_bitvec both = m_prop_bics[p];
            both.andeq(m_var_bics[v]);
            for (ds_bitvec_iter b(both); b; ++b)
                m_delta[b] += w;
        }
    }
    m_heap.reset(nbics);
    for (int b = 0; b < nbics; ++b) {
        if (!m_prior_set || b >= m_prior_set->size() || !m_prior_set->get_ind(b)) {
            m_prior[b] = 0.0;
        } else {
            m_prior[b] = m_delta[b] * m_prior_factor;
            m_delta[b] -= m_prior[b];
        }
        if (m_debug)
            std::cerr << "delta of " << b << " is " << m_delta[b] << " after prior " << m_prior[b]
                      << std::endl;
        m_heap.insert(b, -m_delta[b]);
    }
}

void BicSetCoverGreedy::move_pair(int b, int p, int v, int step) {
    std::uint16_t& cell = m_cover(p, v);
    const int old = cell & kCountMask;
    if (step < 0 && old == 0)
        VESK_FATAL(kSrc, "Negative counter at " << p << " " << v << " count " << old << " in del bic " << b);
    const int c = old + step;
    cell = static_cast<std::uint16_t>((cell & kEdgeBit) | (c & kCountMask));
    // Gains change only where the count passes through 0, 1 or 2.
    if ((step > 0 && c >= 3) || (step < 0 && c >= 2))
        return;
    const double w = pair_weight(p, v);
    if (holds(b, p, v)) {
        if (step > 0 && c == 1)
            m_delta[b] -= w;
        if (step < 0 && c == 0)
            m_delta[b] += w;
    }
    ds_bitvec both = m_prop_bics[p];
    both.andeq(m_var_bics[v]);
    for (ds_bitvec_iter it(both); it; ++it) {
        const int o = it;
        if (o == b)
            continue;
        const bool active = m_active.get_ind(o);
        if (step > 0) {
            if (!active && c == 1)
                m_delta[o] -= w;
            if (active && c == 2)
                m_delta[o] += w;
        } else {
            if (!active && c == 0)
                m_delta[o] += w;
            if (active && c == 1)
                m_delta[o] -= w;
        }
        m_changed.set_ind(o);
    }
}

void BicSetCoverGreedy::update_heap() {
    for (ds_bitvec_iter it(m_changed); it; ++it)
        m_heap.change(static_cast<int>(it), -m_delta[it]);
}

void BicSetCoverGreedy::update_add_bic(int b) {
    m_changed.clear();
    m_delta[b] = m_prior[b];
    m_active.set_ind(b);
    for (ds_bitvec_iter v(m_set.m_bics[b].m_vars); v; ++v)
        for (int p : m_bic_props[b])
            move_pair(b, p, v, 1);
    m_changed.set_ind(b);
    update_heap();
}

void BicSetCoverGreedy::update_del_bic(int b) {
    m_changed.clear();
    m_delta[b] = -m_prior[b];
    m_active.clr_ind(b);
    m_changed.set_ind(b);
    for (ds_bitvec_iter v(m_set.m_bics[b].m_vars); v; ++v)
        for (int p : m_bic_props[b])
            move_pair(b, p, v, -1);
    update_heap();
}

double BicSetCoverGreedy::total() const {
    double tot = 0.0;
    for (int v : m_used_vars)
        for (int p = 0; p < static_cast<int>(m_focus_props.size()); ++p)
            if (m_cover(p, v) & kCountMask)
                tot += pair_weight(p, v);
    return tot;
}

void BicSetCoverGreedy::optimize(const ds_bitvec& focus_groups) {
    m_focus_groups = focus_groups;
    init_bic_prop_adjs();
    init_deltas();
    verify();
    std::cerr << "size of foc groups bv " << m_focus_props.size() << std::endl;
    auto top = [this](double& imp) {
        const HeapBase::Node* n = m_heap.min_node();
        imp = n ? n->m_value : 0.0;
        return n ? n->m_id : -1;
    };
    double imp;
    int b = top(imp);
    int steps = 0;
    while (imp < -1.0) {
        if (steps == m_set.size()) {
            std::cerr << "LONG Bic Cover Greedy trajectory, breaking out at cur imp = " << imp << std::endl;
            return;
        }
        if (m_debug)
            std::cerr << "at bic " << b << " imp " << imp << " sizes " << m_set.m_bics[b].m_exps.on_bits()
                      << " " << m_set.m_bics[b].m_vars.on_bits() << std::endl;
        if (m_active.get_ind(b))
            update_del_bic(b);
        else
            update_add_bic(b);
        if (m_verify_each) {
            std::cerr << "new tot = " << total() << std::endl;
            verify();
        }
        b = top(imp);
        ++steps;
    }
}

bool BicSetCoverGreedy::verify() const {
    for (int b = 0; b < m_set.size(); ++b) {
        double wgt0 = 0.0, wgt1 = 0.0;
        for (ds_bitvec_iter v(m_set.m_bics[b].m_vars); v; ++v)
            for (int p : m_bic_props[b]) {
                if (!holds(b, p, v))
                    continue;
                const int c = m_cover(p, v) & kCountMask;
                if (c == 0)
                    wgt0 += pair_weight(p, v);
                else if (c == 1)
                    wgt1 -= pair_weight(p, v);
            }
        const bool active = m_active.get_ind(b);
        const double want = active ? wgt1 + m_prior[b] : wgt0 - m_prior[b];
        const double have = m_delta[b];
        const double ratio = want / have;
        if (std::fabs(want - have) >= 0.1 && (ratio >= 1.01 || ratio <= 0.99)) {
            if (active)
                VESK_FATAL(kSrc, "Inconsist wgt at active bid " << b << " wgt1 " << wgt1 << " delt " << have);
            VESK_FATAL(kSrc, "Inconsist wgt at inactive bid " << b << " wgt0 " << wgt0 << " delt " << have);
        }
    }
    return true;
}

void BicSetCoverGreedy::get_active_list(std::list<PropVarBiclust>& out, std::vector<int>& ids) const {
    ids.assign(m_active.on_bits(), -1);
    int i = 0;
    for (ds_bitvec_iter it(m_active); it; ++it) {
        ids[i++] = it;
        out.push_back(m_set.m_bics[it]);
    }
}
