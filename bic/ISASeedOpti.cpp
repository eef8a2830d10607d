// ISASeedOpti: property and gene scores against weighted sets, their z-scores, thresholds and the
// alternation that refines a seed.
#include "ISASeedOpti.h"

#include "ds/BitVecIter.h"
#include "ds/GraphBaseEdgeIter.h"
#include "options.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>

namespace {
// Population mean and deviation of `vals` over [begin, end), in double.
void mean_sd(const std::vector<float>& vals, int begin, int end, float& mean, float& sd) {
    const int n = end - begin;
    if (n <= 0) {
        mean = sd = 0.0f;
        return;
    }
    double s = 0.0;
    for (int i = begin; i < end; ++i)
        s += vals[i];
    const double m = s / n;
    double ss = 0.0;
    for (int i = begin; i < end; ++i)
        ss += (vals[i] - m) * (vals[i] - m);
    mean = static_cast<float>(m);
    sd = static_cast<float>(std::sqrt(ss / n));
}

float z_of(float x, float mean, float sd) { return sd > 0.0f ? (x - mean) / sd : 0.0f; }
} // namespace

ISASeedOpti::ISASeedOpti(const PropVarGraphBase& graph, PropWgtSchemeBase& wgt, options& opts,
                         const std::string& scope)
    : m_graph(graph), m_wgt(wgt), m_tc(0.0f), m_tg(0.0f), m_prop_mean(0.0f), m_prop_sd(0.0f),
      m_gene_mean(0.0f), m_gene_sd(0.0f) {
    m_tg_default = opts.get_float(scope, "TG", true);
    m_prop_set_inter_to_converg = opts.get_float(scope, "PropSetInterToConverg", true);
    m_init_tc_factor = opts.get_float(scope, "InitTCFactor", true);
    m_min_tc = opts.get_float(scope, "MinTC", true);
    m_init_tg_factor = opts.get_float(scope, "InitTGFactor", true);
    m_min_tg = opts.get_float(scope, "MinTG", true);
    m_stable_iter_to_stop = opts.get_int(scope, "StableIterToStop", true);
    m_max_iters = opts.get_int(scope, "MaxIters", true);
    m_min_num_props = opts.get_int(scope, "MinNumProps", true);
    m_debug = opts.get_int(scope, "Logit", false) != 0;
}

void ISASeedOpti::size_vectors() {
    const int nodes = m_graph.m_node_count;
    m_prop_score.assign(m_graph.m_max_prop_node, 1.0f);
    m_gene_score.assign(nodes, 0.0f);
    m_gene_weight.assign(nodes, 0.0f);
    m_bin_mass.assign(m_wgt.get_var_nodes_bins().m_bin_num, 0.0f);
    for (ds_bitvec* b : {&m_props, &m_prev_props, &m_genes}) {
        b->set_size(std::max(1, nodes));
        b->clear();
    }
}

void ISASeedOpti::add_gene_node(int node, float weight) {
    m_gene_weight[node] += weight;
    m_bin_mass[m_wgt.get_var_node_bin(node)] += weight;
    m_genes.set_ind(node);
}

void ISASeedOpti::del_gene_node(int node) {
    m_bin_mass[m_wgt.get_var_node_bin(node)] -= m_gene_weight[node];
    m_gene_weight[node] = 0.0f;
    m_genes.clr_ind(node);
}

void ISASeedOpti::restimate_prop_stats() {
    std::vector<int> bins;
    for (int b = 0; b < static_cast<int>(m_bin_mass.size()); ++b)
        if (m_bin_mass[b] != 0.0f)
            bins.push_back(b);
    for (int p = 0; p < m_graph.m_max_prop_node; ++p) {
        float s = 0.0f;
        for (int b : bins)
            s += m_wgt.get_non_edge_prop_weight(p, b) * m_bin_mass[b];
        m_prop_score[p] = s;
    }
    // The edge part walks the genes' edges: a gene set touches far fewer edges than the properties.
    std::unique_ptr<GraphBaseEdgeIter> it(m_graph.new_edge_iter(0, GraphBaseEdgeIter::In));
    for (ds_bitvec_iter v(m_genes); v; ++v)
        for (it->restart(v); !it->at_end(); ++*it)
            m_prop_score[it->other()] += m_wgt.get_edge_cnc(it->edge()) * m_gene_weight[v];
    mean_sd(m_prop_score, 0, m_graph.m_max_prop_node, m_prop_mean, m_prop_sd);
}

float ISASeedOpti::prop_z(int node) const { return z_of(m_prop_score[node], m_prop_mean, m_prop_sd); }
float ISASeedOpti::gene_z(int node) const { return z_of(m_gene_score[node], m_gene_mean, m_gene_sd); }

void ISASeedOpti::init_tc(const ds_bitvec& props) {
    float low = 1000.0f;
    for (ds_bitvec_iter p(props); p; ++p)
        low = std::min(low, prop_z(p));
    m_tc = std::max(low * m_init_tc_factor, m_min_tc);
    if (m_debug)
        std::cerr << "ISA init tc " << m_tc << "\n";
}

int ISASeedOpti::reinit_bic_props() {
    m_props.clear();
    for (int p = 0; p < m_graph.m_max_prop_node; ++p)
        if (prop_z(p) >= m_tc)
            m_props.set_ind(p);
    return m_props.on_bits();
}

void ISASeedOpti::restimate_gene_stats() {
    const int bins = static_cast<int>(m_bin_mass.size());
    std::vector<float> bin_sum(bins, 0.0f);
    for (ds_bitvec_iter p(m_props); p; ++p)
        for (int b = 0; b < bins; ++b)
            bin_sum[b] += m_wgt.get_non_edge_prop_weight(p, b);
    const int first = m_graph.m_max_prop_node, end = m_graph.m_node_count;
    for (int v = first; v < end; ++v)
        m_gene_score[v] = bin_sum[m_wgt.get_var_node_bin(v)];
    std::unique_ptr<GraphBaseEdgeIter> it(m_graph.new_edge_iter(0, GraphBaseEdgeIter::Out));
    for (ds_bitvec_iter p(m_props); p; ++p)
        for (it->restart(p); !it->at_end(); ++*it)
            m_gene_score[it->other()] += m_wgt.get_edge_cnc(it->edge());
    mean_sd(m_gene_score, first, end, m_gene_mean, m_gene_sd);
}

void ISASeedOpti::init_tg(const ds_bitvec& genes) {
    if (genes.on_bits() == 0) {
        m_tg = m_tg_default;
        return;
    }
    float low = 1000.0f;
    for (ds_bitvec_iter v(genes); v; ++v)
        low = std::min(low, gene_z(v));
    m_tg = std::max(low * m_init_tg_factor, m_min_tg);
    if (m_debug)
        std::cerr << "ISA init tg " << m_tg << "\n";
}

float ISASeedOpti::reinit_bic_genes() {
    std::vector<int> old;
    for (ds_bitvec_iter v(m_genes); v; ++v)
        old.push_back(v);
    for (int v : old)
        del_gene_node(v);
    for (int v = m_graph.m_max_prop_node; v < m_graph.m_node_count; ++v)
        if (gene_z(v) >= m_tg)
            add_gene_node(v, 1.0f);
    ds_bitvec either = m_props;
    either.oreq(m_prev_props);
    const int changed = either.on_bits() - m_props.on_bits_and(m_prev_props);
    const float diff = either.on_bits() > 0 ? static_cast<float>(changed) / either.on_bits() : 0.0f;
    std::cerr << "diff after init genes " << diff << "\n";
    return diff;
}

void ISASeedOpti::grow(PropVarBiclust& bic) {
    size_vectors();
    ds_bitvec seed_props = m_props, seed_genes = m_genes;
    for (ds_bitvec_iter p(bic.m_exps); p; ++p)
        seed_props.set_ind(p);
    for (ds_bitvec_iter v(bic.m_vars); v; ++v) {
        seed_genes.set_ind(v);
        add_gene_node(v, 1.0f);
    }
    m_props = seed_props;
    int stable = 0;
    for (int iter = 0; iter < m_max_iters; ++iter) {
        std::cerr << "ISA iter " << iter << "\n";
        m_prev_props = m_props;
        restimate_prop_stats();
        if (iter == 0)
            init_tc(seed_props);
        if (reinit_bic_props() < m_min_num_props)
            break;
        restimate_gene_stats();
        if (iter == 0)
            init_tg(seed_genes);
        if (reinit_bic_genes() > m_prop_set_inter_to_converg)
            stable = 0;
        else
            ++stable;
        if (stable >= m_stable_iter_to_stop)
            break;
    }
    bic.reset();
    if (m_props.on_bits() < m_min_num_props)
        return;
    for (ds_bitvec_iter p(m_props); p; ++p)
        bic.add_prop_node(p);
    for (ds_bitvec_iter v(m_genes); v; ++v)
        bic.add_var_node(v);
}
