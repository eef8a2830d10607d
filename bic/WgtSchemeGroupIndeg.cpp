// WgtSchemeGroupIndeg and WgtSchemeGroupIndegHS: the weight tables per (bin, condition node) and per edge.
#include "WgtSchemeGroupIndeg.h"

#include "error.h"
#include "options.h"

#include <array>
#include <cmath>
#include <iostream>
#include <map>

static constexpr char kSrc[] = "WgtSchemeGroupIndeg";

namespace {
constexpr float kBadWeight = 3.4028235e+38f;
} // namespace

WgtSchemeGroupIndeg::WgtSchemeGroupIndeg(const ExpVarGraphBase& graph, const ArrayVarEC& ec, options& opts,
                                         const std::string& scope, float model_p, bool do_init)
    : m_graph(graph), m_bins(graph, ec, opts, opts.get_str(scope, "BinningScope", true)), m_ec(ec),
      m_model_p(model_p), m_limit_neg_pos(false), m_min_neg_ratio(0.0f), m_use_series_factor(false),
      m_use_exp_weight(false), m_max_patch_pu(0.0f), m_minimum_pu(0.0f), m_debug(false) {
    m_minimum_pu = opts.get_float(scope, "MinimumPU", true);
    m_debug = opts.get_int(scope, "Logit", true) != 0;
    const int exp_nodes = graph.m_max_exp_node;
    m_edge_exp_weight.resize(m_bins.m_bin_num, exp_nodes, 0.0f);
    m_non_edge_exp_weight.resize(m_bins.m_bin_num, exp_nodes, 0.0f);
    m_edge_exp_cnc.resize(m_bins.m_bin_num, exp_nodes, 0.0f);
    m_edge_weight.assign(graph.edges_id_space_size(), 0.0f);
    m_edge_cnc.assign(graph.edges_id_space_size(), 0.0f);
    if (do_init) {
        read_keys(opts, scope, model_p);
        fill_tables([this](float p_u, bool is_edge, int node) {
            return WgtSchemeGroupIndeg::get_p_weight(p_u, is_edge, m_graph.m_node_exp[node]);
        });
    }
}

long double WgtSchemeGroupIndeg::approximate_p(int d, int bin_d, int E) {
    if (d <= 0)
        return 0.0L;
    long double miss = 1.0L;
    for (int i = 0; i < d; ++i)
        miss *= static_cast<long double>(E - bin_d - i) / static_cast<long double>(E - i);
    return 1.0L - miss;
}

float WgtSchemeGroupIndeg::series_size(int exp_id) const {
    const StateDataSetBase& ds = m_graph.m_dataset;
    if (exp_id < 0 || exp_id >= static_cast<int>(ds.m_e_series.size()))
        return 1.0f;
    const int s = ds.m_e_series[exp_id];
    if (s < 0 || s >= static_cast<int>(ds.m_series.size()) || ds.m_series[s].m_members.empty())
        return 1.0f;
    return static_cast<float>(ds.m_series[s].m_members.size());
}

void WgtSchemeGroupIndeg::log_ratios(float model, float p, int exp_id, float& pos, float& neg) const {
    pos = logf(model) - logf(p);
    neg = logf(1.0f - model) - logf(1.0f - p);
    if (m_limit_neg_pos && -neg < pos * m_min_neg_ratio)
        neg = -m_min_neg_ratio * pos;
    if (m_use_series_factor) {
        const float n = series_size(exp_id);
        pos /= n;
        neg /= n;
    }
}

float WgtSchemeGroupIndeg::get_p_weight(float p_u, bool is_edge, int exp_id) const {
    const float p = p_u > m_max_patch_pu ? m_max_patch_pu : p_u;
    float pos, neg;
    log_ratios(m_model_p, p, exp_id, pos, neg);
    if (m_use_exp_weight) {
        const std::vector<float>& w = m_graph.m_dataset.m_e_weight;
        // A condition without a weight in the data set weighs 1.
        const float f = exp_id >= 0 && exp_id < static_cast<int>(w.size()) ? w[exp_id] : 1.0f;
        pos *= f;
        neg *= f;
    }
    return is_edge ? pos : neg;
}

void WgtSchemeGroupIndeg::reinit(options& opts, const std::string& scope, float model_p) {
    read_keys(opts, scope, model_p);
    fill_tables([this](float p_u, bool is_edge, int node) {
        return get_p_weight(p_u, is_edge, m_graph.m_node_exp[node]);
    });
}

void WgtSchemeGroupIndeg::read_keys(options& opts, const std::string& scope, float model_p) {
    m_model_p = model_p;
    m_limit_neg_pos = opts.get_float(scope, "LimitNegPosRatio", true) != 0.0f;
    m_min_neg_ratio = opts.get_float(scope, "MinNegWeightRatio", true);
    m_use_series_factor = opts.get_int(scope, "UseSeriesFactor", true) != 0;
    m_use_exp_weight = opts.get_int(scope, "UseExpWeight", true) != 0;
    m_max_patch_pu = opts.get_float(scope, "MaxPatchPU", true);
}

void WgtSchemeGroupIndeg::fill_tables(const PWeight& p_weight, const PairCounted& counted,
                                      const PairTrace& trace) {
    const ExpVarGraphBase& g = m_graph;
    const int exp_nodes = g.m_max_exp_node;
    const int bins = m_bins.m_bin_num;
    m_edge_exp_weight.resize(bins, exp_nodes, 0.0f);
    m_non_edge_exp_weight.resize(bins, exp_nodes, 0.0f);
    m_edge_exp_cnc.resize(bins, exp_nodes, 0.0f);
    // approximate_p costs d steps and depends on (d, bin_d, E) only; many bins share a truncated
    // in-degree, so each distinct triple is computed once.
    std::map<std::array<int, 3>, float> p_memo;
    for (int b = 0; b < bins; ++b) {
        const int vg = m_bins.m_bin_var_group[b];
        const ds_bitvec& measured = m_ec.ec_exps(m_bins.m_bin_ec[b]);
        for (int e = 0; e < exp_nodes; ++e) {
            if (!g.node_use(e))
                continue;
            const int exp_id = g.m_node_exp[e];
            if (counted ? !counted(b, e) : !measured.get_ind(exp_id)) {
                m_edge_exp_weight(b, e) = 0.0f;
                m_non_edge_exp_weight(b, e) = 0.0f;
                m_edge_exp_cnc(b, e) = 0.0f;
                continue;
            }
            const int eg = g.m_node_group[e];
            const int bin_d = static_cast<int>(m_bins.m_bin_group_indeg(b, eg));
            const int d = static_cast<int>(g.m_node_var_group_degree(e, vg));
            const int E = static_cast<int>(g.m_group_pair_edges(eg, vg));
            float p_u = m_minimum_pu;
            if (E > 0 && d > 0 && bin_d > 0) {
                const auto found = p_memo.emplace(std::array<int, 3>{d, bin_d, E}, 0.0f);
                if (found.second)
                    found.first->second = static_cast<float>(approximate_p(d, bin_d, E));
                p_u = found.first->second;
            }
            const float w1 = p_weight(p_u, true, e);
            const float w0 = p_weight(p_u, false, e);
            if (std::fabs(w1) >= kBadWeight)
                VESK_FATAL(kSrc, "Bad wgt " << w1);
            if (std::fabs(w0) >= kBadWeight)
                VESK_FATAL(kSrc, "Bad no wgt " << w0);
            m_edge_exp_weight(b, e) = w1;
            m_non_edge_exp_weight(b, e) = w0;
            m_edge_exp_cnc(b, e) = w1 - w0;
            if (m_debug && trace)
                trace(b, e, d, bin_d, E, p_u, w1, w0);
            else if (m_debug)
                std::cerr << "bin " << b << " exp node " << e << " d " << d << " bin_d " << bin_d << " E "
                          << E << " p_u " << p_u << " w1 " << w1 << " w0 " << w0 << std::endl;
        }
    }

    if (m_debug && trace)
        std::cerr << "will init edges weights" << std::endl;
    m_edge_weight.assign(g.edges_id_space_size(), 0.0f);
    m_edge_cnc.assign(g.edges_id_space_size(), 0.0f);
    for (int e = 0; e < exp_nodes; ++e) {
        if (!g.node_use(e))
            continue;
        for (int edge = g.web().root_head(0, e); edge != -1; edge = g.web().next_node(0, edge)) {
            const int b = m_bins.get_var_node_bin(g.edge_dest(edge));
            const float w = edge < static_cast<int>(g.m_edge_weight.size()) ? g.m_edge_weight[edge] : 0.0f;
            const float w1 = m_edge_exp_weight(b, e);
            const float w0 = m_non_edge_exp_weight(b, e);
            m_edge_weight[edge] = w * w1 + (1.0f - w) * w0;
            m_edge_cnc[edge] = w * w1 - w * w0;
        }
    }
}

WgtSchemeGroupIndegHS::WgtSchemeGroupIndegHS(const ExpVarGraphBase& graph, const ArrayVarEC& ec,
                                             const ExpClasses& classes, int cls, options& opts,
                                             const std::string& scope, float model_p)
    : WgtSchemeGroupIndeg(graph, ec, opts, scope, model_p, false), m_classes(classes), m_class(cls),
      m_non_class_p_factor(opts.get_float(scope, "NonClassPFactor", true)) {
    read_keys(opts, scope, model_p);
    fill_tables([this](float p_u, bool is_edge, int node) {
        return WgtSchemeGroupIndegHS::get_p_weight(p_u, is_edge, m_graph.m_node_exp[node]);
    });
    calc_nonclass_contrib();
}

float WgtSchemeGroupIndegHS::get_p_weight(float p_u, bool is_edge, int exp_id) const {
    const float model = in_class(exp_id) ? m_model_p : p_u * m_non_class_p_factor;
    const float p = p_u > m_max_patch_pu ? m_max_patch_pu : p_u;
    float pos, neg;
    log_ratios(model, p, exp_id, pos, neg);
    return is_edge ? pos : neg;
}

void WgtSchemeGroupIndegHS::calc_nonclass_contrib() {
    const ExpVarGraphBase& g = m_graph;
    const int exp_nodes = g.m_max_exp_node;
    std::vector<float> bin_sum(m_bins.m_bin_num, 0.0f);
    for (int b = 0; b < m_bins.m_bin_num; ++b)
        for (int e = 0; e < exp_nodes; ++e)
            if (g.node_use(e) && !in_class(g.m_node_exp[e]))
                bin_sum[b] += m_non_edge_exp_weight(b, e);

    m_var_node_weight.assign(g.nodes_id_space_size(), 0.0f);
    for (int n = exp_nodes; n < g.m_node_count; ++n) {
        if (!g.node_use(n))
            continue;
        m_var_node_weight[n] = bin_sum[m_bins.get_var_node_bin(n)];
        for (int edge = g.web().root_head(1, n); edge != -1; edge = g.web().next_node(1, edge)) {
            const int src = g.edge_source(edge);
            if (src < exp_nodes && !in_class(g.m_node_exp[src]))
                m_var_node_weight[n] += m_edge_cnc[edge];
        }
    }
}
