// PropVarBiclust and PBicSet: relation scores, margins, the tables and their reader.
#include "PropVarBiclust.h"

#include "BicSet.h"
#include "ds/BitVecIter.h"
#include "error.h"
#include "options.h"

#include <algorithm>
#include <fstream>
#include <iostream>

static constexpr char kSrc[] = "PropVarBiclust";

PropVarBiclust::PropVarBiclust(const PropVarGraphBase& graph, PropWgtSchemeBase& wgt,
                               const BinRelGraphLayers* br_graph, BinRelWgtSchemeBase* br_wgt)
    : ExpVarBiclust(graph, wgt), m_pgraph(graph), m_br_graph(br_graph), m_br_wgt(br_wgt),
      m_var_ids(br_graph ? graph.m_var_num : 0),
      m_br_iter(br_graph ? br_graph->new_edge_iter(0, GraphBaseEdgeIter::Out) : nullptr), m_br_score(0.0f),
      m_ranked_score(0.0f) {}

PropVarBiclust::PropVarBiclust(const PropVarBiclust& src)
    : ExpVarBiclust(src), m_pgraph(src.m_pgraph), m_br_graph(src.m_br_graph), m_br_wgt(src.m_br_wgt),
      m_var_ids(src.m_var_ids),
      m_br_iter(src.m_br_graph ? src.m_br_graph->new_edge_iter(0, GraphBaseEdgeIter::Out) : nullptr),
      m_br_score(src.m_br_score), m_ranked_score(src.m_ranked_score) {}

PropVarBiclust& PropVarBiclust::operator=(const PropVarBiclust& src) {
    if (this != &src) {
        ExpVarBiclust::operator=(src);
        m_var_ids = src.m_var_ids;
        m_br_score = src.m_br_score;
        m_ranked_score = src.m_ranked_score;
    }
    return *this;
}

void PropVarBiclust::reset() {
    ExpVarBiclust::reset();
    m_var_ids.clear();
    m_br_score = 0.0f;
    m_ranked_score = 0.0f;
}

float PropVarBiclust::relation_sum(int r) const {
    float s = 0.0f;
    for (GraphBaseEdgeIter::Direction dir : {GraphBaseEdgeIter::Out, GraphBaseEdgeIter::In})
        for (m_br_iter->restart(r, dir); !m_br_iter->at_end(); ++*m_br_iter)
            if (m_var_ids.get_ind(m_br_iter->other()))
                s += m_br_wgt->get_edge_weight(m_br_iter->edge());
    return s;
}

void PropVarBiclust::add_var_node(int node) {
    ExpVarBiclust::add_var_node(node);
    if (!m_br_graph)
        return;
    const int r = m_pgraph.node_var(node);
    m_var_ids.set_ind(r);
    m_br_score += relation_sum(r);
}

void PropVarBiclust::del_var_node(int node) {
    ExpVarBiclust::del_var_node(node);
    if (!m_br_graph)
        return;
    const int r = m_pgraph.node_var(node);
    m_br_score -= relation_sum(r);
    m_var_ids.clr_ind(r);
}

void PropVarBiclust::add_prop_node(int node) {
    if (m_exps.get_ind(node))
        VESK_FATAL(kSrc, "Trying to multiply add the prop node " << node << " to the nbicluster");
    add_exp_node(node);
}

void PropVarBiclust::del_prop_node(int node) {
    if (!m_exps.get_ind(node))
        VESK_FATAL(kSrc, "Trying to delete non existing bic prop node " << node << " from the bicluster");
    del_exp_node(node);
}

void PropVarBiclust::add_var_set(const ds_bitvec& vars, int group) {
    for (ds_bitvec_iter it(vars); it; ++it) {
        const int node = m_pgraph.m_var_group_nodes(group, it);
        if (node >= 0 && !m_vars.get_ind(node))
            add_var_node(node);
    }
}

float PropVarBiclust::get_var_margin(int node) const {
    const float m = ExpVarBiclust::get_var_margin(node);
    return m_br_graph ? m + relation_sum(m_pgraph.node_var(node)) : m;
}

void PropVarBiclust::dump_to_tables(int id, const PropVarGraphLayers& layers, std::ostream& bick,
                                    std::ostream& bicd, std::ostream* extra) const {
    bick << id << "\t" << m_score << "\n";
    for (ds_bitvec_iter p(m_exps); p; ++p)
        bicd << id << "\t0\t" << layers.get_property_number(p) << "\t" << layers.node_group(p) << "\t"
             << get_prop_margin(p) << "\n";
    for (ds_bitvec_iter v(m_vars); v; ++v)
        bicd << id << "\t1\t" << layers.node_var(v) << "\t" << layers.node_group(v) << "\t"
             << get_var_margin(v) << "\n";
    if (extra)
        *extra << id << "\t*\t" << m_br_score << "\t" << m_ranked_score << "\n";
}

PBicSet::PBicSet(const PropVarGraphLayers& graph, PropWgtSchemeBase& wgt, const BinRelGraphLayers* br_graph,
                 BinRelWgtSchemeBase* br_wgt)
    : m_graph(graph), m_wgt(wgt), m_br_graph(br_graph), m_br_wgt(br_wgt) {}

bool PBicSet::read(const std::string& bick, const std::string& bicd) {
    std::ifstream k, d;
    if (!open_bic_files(bick, bicd, k, d))
        return false;
    read(k, d);
    return true;
}

void PBicSet::read(std::istream& bick, std::istream& bicd) {
    int count = 0, id;
    float score;
    std::vector<std::pair<int, float>> lines;
    while (bick >> id >> score && id >= 0) {
        lines.emplace_back(id, score);
        if (id + 1 > count)
            count = id + 1;
    }
    m_scores.assign(count, 0.0f);
    for (const auto& l : lines)
        m_scores[l.first] = l.second;
    m_active.set_size(count);
    m_active.set(true);
    m_bics.assign(count, PropVarBiclust(m_graph, m_wgt, m_br_graph, m_br_wgt));

    int kind, element, group;
    float margin;
    while (bicd >> id >> kind >> element >> group >> margin) {
        if (id < 0 || id >= count)
            continue;
        std::cerr << "will add " << kind << " bid " << id << " pid " << element << std::endl;
        if (kind == 1) {
            const int node = group >= 0 && group < m_graph.m_var_group_nodes.rows() && element >= 0 &&
                                     element < m_graph.m_var_group_nodes.cols()
                                 ? m_graph.m_var_group_nodes(group, element)
                                 : -1;
            if (node >= 0)
                m_bics[id].add_var_node(node);
            continue;
        }
        int node = -1;
        if (group >= 0 && group < m_graph.m_prop_group_nodes.rows() && element >= 0 &&
            element < m_graph.m_prop_group_nodes.cols())
            node = m_graph.m_prop_group_nodes(group, element);
        if (node < 0)
            VESK_FATAL(kSrc, "Cant match prop node " << element << " " << group);
        m_bics[id].add_prop_node(node);
    }
}

void PBicSet::init(const std::list<PropVarBiclust>& bics) {
    m_bics.assign(bics.begin(), bics.end());
    m_scores.clear();
    for (const PropVarBiclust& b : bics)
        m_scores.push_back(b.m_score);
    m_active.set_size(size());
    m_active.set(true);
}

int PBicSet::add_bic() {
    m_bics.emplace_back(m_graph, m_wgt, m_br_graph, m_br_wgt);
    m_scores.push_back(0.0f);
    m_active.set_size(size());
    m_active.set_ind(size() - 1);
    return size() - 1;
}

BinRelGlobNodeCost::BinRelGlobNodeCost(const PropVarBiclust& bic, options& opts, const std::string& scope)
    : m_bic(bic), m_min_br_deg(opts.get_int(scope, "MinBrDeg", true)),
      m_table((std::cerr << "will init hg" << std::endl, opts.get_int(scope, "HGCacheTableM", true)),
              opts.get_int(scope, "HGCacheTableM", true)) {
    std::cerr << "done ini hg " << m_table.n_max() << std::endl;
}

float BinRelGlobNodeCost::get_node_cost(int node, int degree, bool flag) {
    if (degree < m_min_br_deg || !m_bic.m_br_graph)
        return 0.0f;
    const int size = m_bic.m_vars.on_bits() + (flag ? 1 : 0);
    const int rel = m_bic.m_br_graph->node_edges_num(m_bic.m_pgraph.node_var(node));
    const int a = std::max(size, rel), b = std::min(size, rel);
    const float c =
        m_table.log_hg(3 * a, a, b, degree) - m_table.log_hg(m_bic.m_pgraph.m_var_num, a, b, degree);
    return c > 0.0f ? c : 0.0f;
}
