// PBicChangePropObs, PBicChangeVarBinObs, PBicChangeVarObs and PBicChangeRankedObs: keys of the
// property moves and the variable moves kept current event by event.
#include "PBicChangeObs.h"

#include "error.h"
#include "options.h"

#include <algorithm>
#include <iostream>
#include <utility>

static constexpr char kSrc[] = "PBicChangeObs";

// ---- PBicChangePropObs, PBicChangeVarBinObs

void PBicChangePropObs::attach(PDynBiclust& bic, BicHeap& heap, int node, int heap_idx, float add_factor,
                               float del_factor) {
    BicChangeExpObs::attach(bic, heap, node, heap_idx, add_factor, del_factor);
    m_pbic = &bic;
}

void PBicChangeVarBinObs::attach(PDynBiclust& bic, BicHeap& heap, int bin, int add_heap, int del_heap) {
    BicChangeVarBinObs::attach(bic, heap, bin, add_heap, del_heap);
    m_pbic = &bic;
}

// ---- PBicChangeVarObs

void PBicChangeVarObs::attach(PDynBiclust& bic, BicHeap& heap, int node, int add_heap, int del_heap,
                              float init_gain, BinRelGlobNodeCost* cost,
                              const std::vector<PBicChangeRankedObs*>* ranked) {
    // The base's handlers come first in each list: they switch the entry's side and reset the gain
    // before the parts below are added.
    BicChangeVarObs::attach(bic, heap, node, add_heap, del_heap, init_gain);
    m_pbic = &bic;
    m_ranked = 0.0f;
    m_br_cost = 0.0f;
    m_br_count = 0;
    m_cost = bic.m_br_graph ? cost : nullptr;
    m_ranked_obs = ranked;
    subscribe(0, *this, &PBicChangeVarObs::on_reset_parts);
    if (m_cost) {
        subscribe(bic.m_br_adj[node], *this, &PBicChangeVarObs::on_relation);
        subscribe(bic.m_change_me[node], *this, &PBicChangeVarObs::on_own_move);
    }
    if (m_ranked_obs)
        subscribe(7, *this, &PBicChangeVarObs::on_ranked_prop_change_wgts);
}

void PBicChangeVarObs::rekey_entry() {
    if (m_outside)
        rekey(m_add_heap, m_node, -m_gain);
    else
        rekey(m_del_heap, m_node, m_gain);
}

void PBicChangeVarObs::on_reset_parts(int) {
    // The base has set the gain back to init_gain; the bicluster is about to be emptied.
    m_ranked = 0.0f;
    m_br_cost = 0.0f;
    m_br_count = 0;
}

void PBicChangeVarObs::on_ranked_prop_change_wgts(int) {
    const int var = m_pbic->m_layers.node_var(m_node);
    float sum = 0.0f;
    for (const PBicChangeRankedObs* r : *m_ranked_obs)
        if (r && r->attached() && m_pbic->m_exps.get_ind(r->m_node))
            sum += r->within(var) ? r->m_score_in : r->m_score_out;
    m_gain += sum - m_ranked;
    m_ranked = sum;
    rekey_entry();
}

void PBicChangeVarObs::update_br_cost() {
    const float c = m_cost->get_node_cost(m_node, m_br_count, m_outside);
    m_gain += c - m_br_cost;
    m_br_cost = c;
    rekey_entry();
}

void PBicChangeVarObs::on_relation(int) {
    m_br_count += m_pbic->m_vars.get_ind(m_pbic->m_cur_var_node) ? 1 : -1;
    update_br_cost();
}

void PBicChangeVarObs::on_own_move(int) { update_br_cost(); }

// ---- RankedObsParams

RankedObsParams::RankedObsParams(options& opts, const std::string& scope)
    : m_add_factor(opts.get_float(scope, "AddPropFactor", true)),
      m_del_factor(opts.get_float(scope, "DelPropFactor", true)),
      m_bins(opts.get_int(scope, "NumOfAffinBins", true)),
      m_thresh_update_factor(opts.get_float(scope, "ThreshUpdateFactor", true)),
      m_deriv_update_factor(opts.get_float(scope, "ScoreDerivUpdateFactor", true)),
      m_debug(opts.get_int(scope, "Logit", true) != 0),
      m_min_num_genes(opts.get_int(scope, "MinNumOfGenes", true)),
      m_min_log_pv(opts.get_float(scope, "MinLogPV", true)),
      m_first_bin_min_size(opts.get_int(scope, "FirstBinMinSize", true)) {}

// ---- PBicChangeRankedObs

void PBicChangeRankedObs::attach(PDynBiclust& bic, BicHeap& heap, int node, int heap_idx,
                                 const std::vector<float>& values, const RankedObsParams& params,
                                 BinomFuncTable& table, std::vector<PBicChangeRankedObs*>* inside) {
    bind(bic, &heap);
    m_inside_list = inside;
    m_pbic = &bic;
    m_node = node;
    m_heap_idx = heap_idx;
    m_params = params;
    m_table = &table;
    m_min_log_pv = params.m_min_log_pv;
    m_min_num_genes = params.m_min_num_genes;
    m_universe_size = static_cast<int>(values.size());
    init_bins(values);
    subscribe(0, *this, &PBicChangeRankedObs::on_reset);
    subscribe(1, *this, &PBicChangeRankedObs::on_add_var);
    subscribe(3, *this, &PBicChangeRankedObs::on_del_var);
    subscribe(bic.m_change_me[node], *this, &PBicChangeRankedObs::on_change_me);
}

void PBicChangeRankedObs::init_bins(const std::vector<float>& values) {
    std::vector<std::pair<float, int>> ranked;
    for (int v = 0; v < static_cast<int>(values.size()); ++v)
        if (values[v] < 3.4028235e+37f)
            ranked.emplace_back(values[v], v);
    std::sort(ranked.begin(), ranked.end());
    m_bin_count = m_params.m_bins > 0 ? m_params.m_bins : 1;
    m_bin_size.assign(m_bin_count, 0);
    m_bin_in.assign(m_bin_count, 0);
    m_var_bin.assign(values.size(), -1);
    const int total = static_cast<int>(ranked.size());
    int pos = 0;
    for (int b = 0; b < m_bin_count && pos < total; ++b) {
        int size = (total - pos) / (m_bin_count - b);
        if (b == 0)
            size = std::max(size, std::min(m_params.m_first_bin_min_size, total));
        int end = pos + size;
        while (end > pos && end < total && ranked[end].first == ranked[end - 1].first)
            ++end;
        for (int i = pos; i < end; ++i)
            m_var_bin[ranked[i].second] = b;
        m_bin_size[b] = end - pos;
        pos = end;
    }
    if (m_params.m_debug)
        std::cerr << "ranked obs " << m_node << " ranked " << total << " of " << values.size() << std::endl;
}

double PBicChangeRankedObs::neg_log_hg(int size, int in) const {
    return -m_table->dbl_log_hg(m_universe_size, m_thresh_all, size, in);
}

void PBicChangeRankedObs::update_thresh() {
    ++m_thresh_updates;
    const int size = m_pbic->m_vars.on_bits();
    int all = 0, in = 0;
    double best = 0.0;
    bool found = false;
    for (int b = 0; b < m_bin_count; ++b) {
        all += m_bin_size[b];
        in += m_bin_in[b];
        if (in <= 0)
            continue;
        const double s = -m_table->dbl_log_hg(m_universe_size, all, size, in);
        if (s > m_min_log_pv && (!found || s > best)) {
            found = true;
            best = s;
            m_thresh_bin = static_cast<float>(b);
            m_thresh_all = all;
            m_thresh_in = in;
        }
    }
    if (m_params.m_debug)
        std::cerr << "ranked obs " << m_node << " thresh bin " << m_thresh_bin << " all " << m_thresh_all
                  << " in " << m_thresh_in << " size " << size << std::endl;
    recalc_deriv();
}

void PBicChangeRankedObs::recalc_deriv() {
    ++m_deriv_updates;
    if (m_thresh_in == 0) {
        m_gain = m_score_in = m_score_out = 0.0f;
    } else {
        const int size = m_pbic->m_vars.on_bits();
        const double gain = neg_log_hg(size, m_thresh_in);
        m_gain = static_cast<float>(gain);
        if (m_thresh_all != m_thresh_in) {
            m_score_in = static_cast<float>(neg_log_hg(size + 1, m_thresh_in + 1) - gain);
            m_score_out = static_cast<float>(neg_log_hg(size + 1, m_thresh_in) - gain);
        }
        m_gain -= m_min_log_pv;
    }
    m_pbic->m_ranked_changed = true;
}

void PBicChangeRankedObs::rekey_entry() { rekey(m_heap_idx, m_node, m_outside ? add_key() : del_key()); }

void PBicChangeRankedObs::on_reset(int) {
    m_gain = m_score_in = m_score_out = 0.0f;
    m_thresh_bin = -100.0f;
    m_thresh_all = m_thresh_in = 0;
    std::fill(m_bin_in.begin(), m_bin_in.end(), 0);
    m_thresh_countdown = m_deriv_countdown = 0;
    m_outside = true;
    list_inside(false);
    restart_entry(m_node, m_heap_idx, m_heap_idx, -m_gain);
}

void PBicChangeRankedObs::on_change_me(int) {
    m_outside = !m_pbic->m_exps.get_ind(m_node);
    list_inside(!m_outside);
    switch_side(m_node, !m_outside, m_heap_idx, m_heap_idx, add_key(), del_key());
}

void PBicChangeRankedObs::list_inside(bool inside) {
    if (!m_inside_list)
        return;
    const auto at = std::find(m_inside_list->begin(), m_inside_list->end(), this);
    if (inside && at == m_inside_list->end())
        m_inside_list->push_back(this);
    else if (!inside && at != m_inside_list->end())
        m_inside_list->erase(at);
}

void PBicChangeRankedObs::on_add_var(int) { on_var_move(1); }

void PBicChangeRankedObs::on_del_var(int) { on_var_move(-1); }

void PBicChangeRankedObs::on_var_move(int sign) {
    const int n = m_pbic->m_vars.on_bits();
    const int var = m_pbic->m_layers.node_var(m_pbic->m_cur_var_node);
    const int b = m_var_bin[var];
    const bool in_thresh = within(var);
    if (b >= 0) {
        m_bin_in[b] += sign;
        if (in_thresh)
            m_thresh_in += sign;
    }
    if (m_thresh_countdown <= 0 && n >= m_min_num_genes) {
        update_thresh();
        m_thresh_countdown = static_cast<int>(m_params.m_thresh_update_factor * static_cast<float>(n));
        m_deriv_countdown = static_cast<int>(m_params.m_deriv_update_factor * static_cast<float>(n));
    } else if (m_deriv_countdown <= 0 && n >= m_min_num_genes) {
        recalc_deriv();
        m_deriv_countdown = static_cast<int>(m_params.m_deriv_update_factor * static_cast<float>(n));
        --m_thresh_countdown;
    } else {
        --m_thresh_countdown;
        --m_deriv_countdown;
        m_gain += static_cast<float>(sign) * (in_thresh ? m_score_in : m_score_out);
    }
    rekey_entry();
    if (m_thresh_in > m_thresh_all)
        VESK_FATAL(kSrc, "Ranked obs thresh in " << m_thresh_in << " above thresh all " << m_thresh_all);
}
