// BicAssocPatScore and BicAssocPatCondObs: margin upkeep per condition and the score of a pattern's
// gene set against chance tables.
#include "BicAssocPatScore.h"

#include "error.h"
#include "options.h"

#include <cmath>
#include <iostream>

static constexpr char kSrc[] = "BicAssocPatScore";

namespace {
const float kLowest = -3.4028235e+38f;
}

BicAssocPatCondObs::BicAssocPatCondObs()
    : m_bic(nullptr), m_wgt(nullptr), m_heap(nullptr), m_sum(nullptr), m_cond(-1), m_best_margin(0.0f),
      m_best_node(-1), m_best_count(0), m_saved_best_margin(0.0f), m_saved_best_node(-1),
      m_saved_best_count(0) {}

void BicAssocPatCondObs::unsubscribe_all() {
    for (const std::pair<int, int>& s : m_subs)
        m_bic->m_dispatch.unsubscribe(s.first, s.second);
    m_subs.clear();
}

void BicAssocPatCondObs::attach(DynBiclust& bic, WgtSchemeBase& wgt, NBestHeapSum* heap, double* sum,
                                int cond) {
    if (m_bic)
        unsubscribe_all();
    m_bic = &bic;
    m_wgt = &wgt;
    m_heap = heap;
    m_sum = sum;
    m_cond = cond;
    m_exp_nodes.clear();
    const Matrix<int>& nodes = bic.m_graph.m_exp_group_nodes;
    for (int g = 0; g < nodes.rows(); ++g)
        if (cond < nodes.cols() && nodes(g, cond) >= 0)
            m_exp_nodes.push_back(nodes(g, cond));
    m_margins.assign(m_exp_nodes.size(), 0.0f);
    m_adj_counts.assign(m_exp_nodes.size(), 0);
    m_saved_margins = m_margins;
    m_saved_adj_counts = m_adj_counts;
    m_best_node = m_exp_nodes.empty() ? -1 : m_exp_nodes[0];
    m_best_margin = 0.0f;
    m_best_count = 0;
    m_saved_best_node = m_best_node;
    m_saved_best_margin = 0.0f;
    m_saved_best_count = 0;
    typedef CBFunctor1<int> F;
    const auto sub = [this](int code, void (BicAssocPatCondObs::*h)(int)) {
        m_subs.push_back(
            std::make_pair(code, m_bic->m_dispatch.subscribe(code, makeFunctor((F*)0, *this, h))));
    };
    sub(0, &BicAssocPatCondObs::on_reset);
    sub(1, &BicAssocPatCondObs::on_var);
    sub(3, &BicAssocPatCondObs::on_var);
    sub(5, &BicAssocPatCondObs::on_remember);
    sub(6, &BicAssocPatCondObs::on_revert);
    for (int n : m_exp_nodes) {
        sub(bic.m_exp_add_adj[static_cast<std::size_t>(n)], &BicAssocPatCondObs::on_adj);
        sub(bic.m_exp_del_adj[static_cast<std::size_t>(n)], &BicAssocPatCondObs::on_adj);
    }
}

void BicAssocPatCondObs::find_best() {
    m_best_margin = kLowest;
    for (std::size_t i = 0; i < m_exp_nodes.size(); ++i) {
        if (m_margins[i] > m_best_margin) {
            m_best_margin = m_margins[i];
            m_best_node = m_exp_nodes[i];
            m_best_count = m_adj_counts[i];
        }
    }
    if (m_exp_nodes.empty())
        m_best_margin = 0.0f;
}

void BicAssocPatCondObs::update_sum_val(float old_val, float new_val) {
    if (old_val <= 0.0f && new_val <= 0.0f)
        return;
    if (old_val <= 0.0f)
        *m_sum += new_val;
    else if (new_val <= 0.0f)
        *m_sum -= old_val;
    else
        *m_sum += new_val - old_val;
}

void BicAssocPatCondObs::on_var(int code) {
    const float old = m_best_margin;
    for (std::size_t i = 0; i < m_exp_nodes.size(); ++i) {
        const float w = m_wgt->get_non_edge_exp_weight(m_exp_nodes[i], m_bic->m_cur_var_bin);
        m_margins[i] = code == 1 ? m_margins[i] + w : m_margins[i] - w;
    }
    find_best();
    update_sum_val(old, m_best_margin);
    m_heap->set_value(m_cond, m_best_margin);
}

void BicAssocPatCondObs::on_adj(int code) {
    const float old = m_best_margin;
    for (std::size_t i = 0; i < m_exp_nodes.size(); ++i) {
        const std::size_t n = static_cast<std::size_t>(m_exp_nodes[i]);
        if (code != m_bic->m_exp_add_adj[n] && code != m_bic->m_exp_del_adj[n])
            continue;
        const float w = m_wgt->get_edge_cnc(m_bic->m_cur_edge);
        if (code == m_bic->m_exp_add_adj[n]) {
            m_margins[i] += w;
            ++m_adj_counts[i];
        } else {
            m_margins[i] -= w;
            --m_adj_counts[i];
        }
    }
    find_best();
    update_sum_val(old, m_best_margin);
    m_heap->set_value(m_cond, m_best_margin);
}

void BicAssocPatCondObs::on_reset(int) {
    std::fill(m_margins.begin(), m_margins.end(), 0.0f);
    std::fill(m_adj_counts.begin(), m_adj_counts.end(), 0);
    m_best_node = m_exp_nodes.empty() ? -1 : m_exp_nodes[0];
    m_best_margin = 0.0f;
    m_best_count = 0;
    m_heap->set_value(m_cond, 0.0f);
}

void BicAssocPatCondObs::on_remember(int) {
    m_saved_margins = m_margins;
    m_saved_best_margin = m_best_margin;
    m_saved_best_node = m_best_node;
    m_saved_adj_counts = m_adj_counts;
    m_saved_best_count = m_best_count;
}

void BicAssocPatCondObs::on_revert(int) {
    const float old = m_best_margin;
    m_margins = m_saved_margins;
    m_best_margin = m_saved_best_margin;
    m_best_node = m_saved_best_node;
    m_adj_counts = m_saved_adj_counts;
    m_best_count = m_saved_best_count;
    update_sum_val(old, m_best_margin);
    m_heap->set_value(m_cond, m_best_margin);
}

bool BicAssocPatCondObs::verify() const {
    if (m_best_node < 0)
        return true;
    const float a = m_best_margin, b = m_bic->get_exp_margin(m_best_node);
    // Running sums drift by float rounding: a margin back at zero may read -1e-6. Differences that
    // small pass whatever their relative size.
    const float den = std::fabs(a) + std::fabs(b);
    if (std::fabs(a - b) > 1e-4f && std::fabs(a - b) / den > 0.001f)
        VESK_FATAL(kSrc, "BicAssocPatCondObs verify failed at cond " << m_cond << ": best " << a << " margin "
                                                                     << b);
    return true;
}

BicAssocPatScore::BicAssocPatScore(const ExpVarGraphBase& graph, WgtSchemeBase& wgt,
                                   AssocPatternBase<Dna8MerPattern>& assoc, options& opts,
                                   const std::string& scope)
    : m_graph(graph), m_wgt(wgt), m_assoc(&assoc), m_bic(graph, wgt), m_saved_bic(graph, wgt) {
    setup(opts, scope);
    typedef CBFunctor1<int> F;
    const auto sub = [this](int code, void (BicAssocPatScore::*h)(int)) {
        m_subs.push_back(
            std::make_pair(code, m_assoc->get_dispatch().subscribe(code, makeFunctor((F*)0, *this, h))));
    };
    sub(0, &BicAssocPatScore::on_add_gene);
    sub(1, &BicAssocPatScore::on_del_gene);
    sub(3, &BicAssocPatScore::on_revert);
    sub(4, &BicAssocPatScore::on_remember);
    sub(5, &BicAssocPatScore::on_reset);
    const ds_bitvec& genes = assoc.get_genes();
    for (int g = 0; g < genes.size(); ++g) {
        if (!genes.get_ind(g))
            continue;
        if (m_debug)
            std::cerr << "BAPS init add gene " << g << std::endl;
        add_gene(g, -1);
    }
}

BicAssocPatScore::BicAssocPatScore(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, options& opts,
                                   const std::string& scope)
    : m_graph(graph), m_wgt(wgt), m_assoc(nullptr), m_bic(graph, wgt), m_saved_bic(graph, wgt) {
    setup(opts, scope);
}

BicAssocPatScore::~BicAssocPatScore() {
    if (m_assoc)
        for (const std::pair<int, int>& s : m_subs)
            m_assoc->get_dispatch().unsubscribe(s.first, s.second);
}

void BicAssocPatScore::setup(options& opts, const std::string& scope) {
    m_heap.m_n = opts.get_int(scope, "NumOfScoreConds", true);
    m_var_group = opts.get_int(scope, "VarGroup", true);
    m_max_vars = opts.get_int(scope, "AssessMaxVars", true);
    m_cache = opts.get_int(scope, "CacheCondScores", false) != 0;
    m_debug = opts.get_int(scope, "Logit", false) != 0;
    m_sum = 0.0;
    m_gene_count = m_degree_sum = 0;
    m_saved_gene_count = m_saved_degree_sum = 0;
    m_score = 0.0f;
    m_genes.set_size(m_graph.m_universe.size());
    m_saved_genes = m_genes;
    const int conds = m_graph.m_exp_num;
    m_avg = Matrix<float>(conds, m_max_vars + 1, 0.0f);
    m_max2 = m_avg;
    m_thresh = m_avg;
    m_cond_scores.assign(static_cast<std::size_t>(conds), 0.0f);
    m_obs.resize(static_cast<std::size_t>(conds));
    for (int c = 0; c < conds; ++c)
        m_obs[static_cast<std::size_t>(c)].attach(m_bic, m_wgt, &m_heap, &m_sum, c);
}

void BicAssocPatScore::read_score_stat(std::istream& stats, std::istream& /*glob*/) {
    int cond, count;
    float avg, max2, thresh;
    while (stats >> cond >> count >> avg >> max2 >> thresh) {
        if (cond < 0 || cond >= m_avg.rows() || count < 0 || count >= m_avg.cols())
            continue;
        m_avg(cond, count) = avg;
        m_max2(cond, count) = max2;
        m_thresh(cond, count) = thresh;
    }
}

void BicAssocPatScore::init_from_assess(const BicExpScoreAssess& assess) {
    for (int c = 0; c < m_avg.rows() && c < assess.m_exp_avg.rows(); ++c)
        for (int n = 0; n < m_avg.cols() && n < assess.m_exp_avg.cols(); ++n) {
            m_avg(c, n) = assess.m_exp_avg(c, n);
            m_max2(c, n) = assess.m_exp_max(c, n);
            m_thresh(c, n) = assess.m_exp_max2(c, n);
        }
}

int BicAssocPatScore::scaled_count(float& factor) const {
    int n = m_gene_count;
    factor = 1.0f;
    if (n > m_max_vars) {
        n = m_max_vars - 1;
        factor = static_cast<float>(n) / static_cast<float>(m_gene_count);
    }
    return n;
}

float BicAssocPatScore::score(std::ostream* out, int e) {
    float factor;
    const int n = scaled_count(factor);
    std::fill(m_cond_scores.begin(), m_cond_scores.end(), 0.0f);
    float total = 0.0f;
    for (int i = 0; i < static_cast<int>(m_obs.size()); ++i) {
        const float x = factor * m_obs[static_cast<std::size_t>(i)].m_best_margin;
        float s = 0.0f;
        if (m_thresh(i, n) < x) {
            s = (x - m_avg(i, n)) / (m_max2(i, n) - m_avg(i, n));
            if (m_cache)
                m_cond_scores[static_cast<std::size_t>(i)] = s;
            total += s;
        }
        if (out && e >= 0)
            *out << e << "\t" << i << "\t" << x << "\t" << s << "\n";
    }
    m_score = total;
    return total;
}

void BicAssocPatScore::get_conds(std::vector<int>& conds, std::vector<int>& groups) const {
    conds.clear();
    groups.clear();
    float factor;
    const int n = scaled_count(factor);
    for (int i = 0; i < static_cast<int>(m_obs.size()); ++i) {
        const BicAssocPatCondObs& o = m_obs[static_cast<std::size_t>(i)];
        if (m_thresh(i, n) < factor * o.m_best_margin) {
            conds.push_back(i);
            groups.push_back(o.m_best_node);
        }
    }
}

void BicAssocPatScore::add_gene(int gene, int group) {
    const int g = group < 0 ? m_var_group : group;
    const Matrix<int>& nodes = m_graph.m_var_group_nodes;
    if (g >= nodes.rows() || gene >= nodes.cols() || nodes(g, gene) < 0)
        return; // a gene without a node in the group has no part in the bicluster
    const int node = nodes(g, gene);
    m_genes.set_ind(gene);
    ++m_gene_count;
    m_degree_sum += static_cast<int>(m_graph.m_node_degree[static_cast<std::size_t>(node)]);
    m_bic.add_var_node(node);
}

void BicAssocPatScore::del_gene(int gene) {
    const Matrix<int>& nodes = m_graph.m_var_group_nodes;
    if (!m_genes.get_ind(gene))
        return;
    const int node = nodes(m_var_group, gene);
    m_genes.clr_ind(gene);
    --m_gene_count;
    m_degree_sum -= static_cast<int>(m_graph.m_node_degree[static_cast<std::size_t>(node)]);
    m_bic.del_var_node(node);
}

void BicAssocPatScore::on_add_gene(int) { add_gene(m_assoc->get_cur_oper_gene(), -1); }

void BicAssocPatScore::on_del_gene(int) { del_gene(m_assoc->get_cur_oper_gene()); }

void BicAssocPatScore::on_remember(int) {
    m_saved_genes = m_genes;
    m_saved_gene_count = m_gene_count;
    m_saved_degree_sum = m_degree_sum;
    m_bic.remember(m_saved_bic);
}

void BicAssocPatScore::on_revert(int) {
    m_genes = m_saved_genes;
    m_gene_count = m_saved_gene_count;
    m_degree_sum = m_saved_degree_sum;
    m_bic.revert(m_saved_bic);
}

void BicAssocPatScore::clear_genes() {
    m_bic.reset();
    m_genes.clear();
    m_gene_count = 0;
    m_degree_sum = 0;
    m_sum = 0.0;
}

void BicAssocPatScore::on_reset(int) { clear_genes(); }

float BicAssocPatScore::score_set(const ds_bitvec& genes, std::ostream* out, int e) {
    clear_genes();
    for (int g = 0; g < genes.size(); ++g)
        if (genes.get_ind(g))
            add_gene(g, -1);
    const float s = score(out, e);
    m_genes = genes;
    return s;
}

bool BicAssocPatScore::verify() const {
    for (const BicAssocPatCondObs& o : m_obs)
        o.verify();
    return true;
}
