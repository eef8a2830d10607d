// ASAPCalc: gene set scores against the chance tables, kept current by condition observers.
#include "ASAPCalc.h"

#include "BicExpScoreAssess.h"
#include "FloatRatio.h"
#include "ds/BitVecIter.h"
#include "options.h"

#include <algorithm>
#include <iostream>

using float_ratio::kMaxFloat;
using float_ratio::ratio;

ASAPCalc::ASAPCalc(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, options& opts, const std::string& scope,
                   ds_bitvec* focus)
    : m_graph(graph), m_wgt(wgt), m_bic(graph, wgt), m_set(graph.m_var_num), m_scratch(graph, wgt),
      m_obs(graph.m_max_exp_node), m_var_group(opts.get_int(scope, "VarGroup", true)), m_count(0),
      m_group_num(graph.m_max_exp_group), m_max_vars(opts.get_int(scope, "AssessMaxVars", true)),
      m_node_score(graph.m_exp_num, 0.0f), m_node_group(graph.m_exp_num, -1), m_score(0.0f),
      m_max_node_score(0.0f), m_node_cap(static_cast<float>(opts.get_int(scope, "NodeMaxScore", true))),
      m_focus(focus), m_logit(opts.get_int(scope, "Logit", true) != 0) {
    if (m_max_vars < 1)
        m_max_vars = 1;
    fit_tables(0.0f, 0.0f);
    if (m_logit) {
        std::cerr << "ASAP construction, scratch bicluster:" << std::endl;
        m_scratch.print(std::cerr);
    }
    for (int node = 0; node < graph.m_max_exp_node; ++node)
        if (!m_focus || (node < m_focus->size() && m_focus->get_ind(node)))
            m_obs[node].attach(m_bic, m_heap, node, 0, 1.0f, 1.0f);
}

void ASAPCalc::fit_tables(float avg_fill, float max_fill) {
    // Column m_max_vars is read for a set of exactly AssessMaxVars genes: AssessMaxVars + 1 columns.
    const int rows = std::max(m_exp_avg.rows(), m_graph.m_max_exp_node);
    const int cols = std::max(m_exp_avg.cols(), m_max_vars + 1);
    m_exp_avg.resize(rows, cols, avg_fill);
    m_exp_max.resize(rows, cols, max_fill);
    m_exp_max2.resize(rows, cols, max_fill);
}

int ASAPCalc::var_node(int group, int gene) const {
    const Matrix<int>& nodes = m_graph.m_var_group_nodes;
    if (group < 0 || group >= nodes.rows() || gene < 0 || gene >= nodes.cols())
        return -1;
    return nodes(group, gene);
}

void ASAPCalc::add_gene(int gene, int group) {
    // A gene with no node in the group can't join the bicluster, and is passed over.
    const int node = var_node(group == -1 ? m_var_group : group, gene);
    if (node == -1)
        return;
    m_set.set_ind(gene);
    ++m_count;
    if (m_logit)
        std::cerr << "ASAP add gene " << gene << " n " << node << " aft num " << m_count << std::endl;
    m_bic.add_var_node(node);
}

void ASAPCalc::del_gene(int gene) {
    const int node = var_node(m_var_group, gene);
    if (node == -1)
        return;
    m_set.clr_ind(gene);
    --m_count;
    if (m_logit)
        std::cerr << "BAPS del gene " << gene << " n " << node << " aft num " << m_count << std::endl;
    m_bic.del_var_node(node);
}

void ASAPCalc::on_reset() {
    m_bic.reset();
    m_count = 0;
    m_set.clear();
}

void ASAPCalc::score(std::ostream* os, int tag) {
    int n = m_count;
    float f = 1.0f;
    if (m_max_vars < m_count) {
        // A set larger than the tables is scaled down to their last column.
        n = m_max_vars - 1;
        f = static_cast<float>(n) / static_cast<float>(m_count);
    }
    std::fill(m_node_score.begin(), m_node_score.end(), 0.0f);
    std::fill(m_node_group.begin(), m_node_group.end(), -1);
    m_max_node_score = 0.0f;
    float total = 0.0f;
    const Matrix<int>& nodes = m_graph.m_exp_group_nodes;
    const int conds = std::min(static_cast<int>(m_node_score.size()), nodes.cols());
    const int groups = std::min(m_group_num, nodes.rows());
    for (int e = 0; e < conds; ++e) {
        for (int g = 0; g < groups; ++g) {
            const int node = nodes(g, e);
            if (node == -1 || (m_focus && !(node < m_focus->size() && m_focus->get_ind(node))))
                continue;
            const float v = f * m_obs[node].m_gain;
            if (!(v > m_exp_max2(node, n) + 0.001f))
                continue;
            const float avg = m_exp_avg(node, n);
            float s = ratio(v - avg, m_exp_max(node, n) - avg); // tables still all 0: +inf, then the cap
            if (s > m_node_cap)
                s = m_node_cap;
            if (s > m_node_score[e]) {
                const float old = m_node_score[e];
                m_node_score[e] = s;
                m_node_group[e] = g;
                if (s > m_max_node_score)
                    m_max_node_score = s;
                total = s + (total - old);
            }
        }
    }
    if (os && tag >= 0)
        for (int e = 0; e < conds; ++e)
            if (m_node_score[e] > 0.0f)
                *os << e << "\t" << m_node_score[e] << std::endl;
    m_score = total;
}

float ASAPCalc::score_set(const ds_bitvec& set, std::ostream* os, int tag) {
    m_bic.reset();
    m_count = 0;
    m_set.clear();
    for (ds_bitvec_iter it(set); it; ++it) {
        const int node = var_node(m_var_group, it);
        if (node == -1)
            continue;
        ++m_count;
        if (m_logit)
            std::cerr << "BAPS init add gene " << static_cast<int>(it) << " n " << node << " aft num "
                      << m_count << std::endl;
        m_bic.add_var_node(node);
    }
    score(os, tag);
    m_set = set;
    return m_score;
}

void ASAPCalc::get_conds(std::vector<int>& conds, std::vector<int>& groups) const {
    conds.clear();
    groups.clear();
    for (int e = 0; e < static_cast<int>(m_node_score.size()); ++e)
        if (m_node_score[e] > 0.0f) {
            conds.push_back(e);
            groups.push_back(m_node_group[e]);
        }
}

void ASAPCalc::init_from_assess(const BicExpScoreAssess& assess) {
    m_exp_avg = assess.m_exp_avg;
    m_exp_max = assess.m_exp_max;
    m_exp_max2 = assess.m_exp_max2;
    // The assessment's rows are by condition id; nodes past them, and columns past its counts, were
    // never sampled.
    fit_tables(0.0f, kMaxFloat);
}

void ASAPCalc::read_score_stat(std::istream& in) {
    int cond = 0, count = 0;
    float avg = 0.0f, max = 0.0f, max2 = 0.0f;
    while (in >> cond >> count >> avg >> max >> max2) {
        if (cond < 0 || cond >= m_exp_avg.rows() || count < 0 || count >= m_exp_avg.cols())
            continue;
        m_exp_avg(cond, count) = avg;
        m_exp_max(cond, count) = max;
        m_exp_max2(cond, count) = max2;
    }
}
