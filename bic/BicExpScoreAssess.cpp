// BicExpScoreAssess: sampling of chance margins per condition and count, and the two tables.
#include "BicExpScoreAssess.h"

#include "DynBiclust.h"
#include "FloatRatio.h"
#include "UniformUrn.h"
#include "ds/BitVecIter.h"
#include "ds/GraphBaseEdgeIter.h"
#include "options.h"

#include <cmath>
#include <fstream>
#include <iostream>
#include <memory>

using float_ratio::kMaxFloat;
using float_ratio::ratio;

namespace {
// The running pair of a maximum: a value above the maximum replaces it and pushes the old maximum
// on as the candidate for the second place; otherwise the value itself is the candidate.
void keep_max(float x, float& max1, float& max2) {
    float cand = x;
    if (x > max1) {
        cand = max1;
        max1 = x;
    }
    if (cand > max2)
        max2 = cand;
}

// The groups whose contribution row is not empty, ascending.
std::vector<int> filled_groups(const std::vector<std::vector<float>>& contrib) {
    std::vector<int> groups;
    for (int g = 0; g < static_cast<int>(contrib.size()); ++g)
        if (!contrib[g].empty())
            groups.push_back(g);
    return groups;
}
} // namespace

BicExpScoreAssess::BicExpScoreAssess(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, const ds_bitvec& vars,
                                     options& opts, const std::string& scope)
    : m_graph(graph), m_wgt(wgt), m_num_samp(opts.get_int(scope, "NumAssessSamp", true)),
      m_num_glob_samp(opts.get_int(scope, "NumGlobAssessSamp", true)),
      m_max_vars(opts.get_int(scope, "AssessMaxVars", true)), m_exp_group_for_typic(0), m_debug(false) {
    if (const std::vector<int>* groups = opts.get_ints(scope, "GeneGroups", false))
        m_gene_groups = *groups;
    m_exp_group_for_typic = opts.get_int(scope, "ExpGroupForTypic", true);
    m_debug = opts.get_int(scope, "Logit", false) != 0;
    const std::string stat_path = opts.get_str(scope, "StatTable", false);
    const std::string glob_path = opts.get_str(scope, "GlobStatTable", false);

    for (ds_bitvec_iter it(vars); it; ++it)
        m_vars.push_back(it);
    if (m_max_vars > static_cast<int>(m_vars.size()))
        m_max_vars = static_cast<int>(m_vars.size());
    if (m_max_vars < 0)
        m_max_vars = 0;
    // One column more than the sampled counts: see the class comment.
    m_exp_avg = Matrix<float>(m_graph.m_exp_num, m_max_vars + 1, 0.0f);
    m_exp_max = Matrix<float>(m_graph.m_exp_num, m_max_vars + 1, kMaxFloat);
    m_exp_max2 = Matrix<float>(m_graph.m_exp_num, m_max_vars + 1, kMaxFloat);
    m_glob_max.assign(m_max_vars + 1, -kMaxFloat);
    m_glob_max2.assign(m_max_vars + 1, -kMaxFloat);

    calc_typical_groups();
    std::cerr << "vars to samp " << m_vars.size() << std::endl;
    for (int e = 0; e < m_graph.m_exp_num; ++e) {
        if (m_debug)
            std::cerr << "BESA will sample eid " << e << std::endl;
        else if (e % 10 == 0)
            std::cerr << "\rBESA eid " << e << std::flush;
        assess_exp_score_dist(e);
    }
    if (!m_debug)
        std::cerr << std::endl;
    assess_set_score_dist();

    std::ofstream stats(stat_path.c_str());
    std::ofstream glob(glob_path.c_str());
    dump_stats(stats, glob);
}

int BicExpScoreAssess::exp_node(int group, int exp) const {
    const Matrix<int>& nodes = m_graph.m_exp_group_nodes;
    if (group < 0 || group >= nodes.rows() || exp < 0 || exp >= nodes.cols())
        return -1;
    return nodes(group, exp);
}

int BicExpScoreAssess::var_node(int group, int var) const {
    const Matrix<int>& nodes = m_graph.m_var_group_nodes;
    if (group < 0 || group >= nodes.rows() || var < 0 || var >= nodes.cols())
        return -1;
    return nodes(group, var);
}

void BicExpScoreAssess::calc_typical_groups() {
    std::cerr << "will calc typic" << std::endl;
    ExpVarBiclust bic(m_graph, m_wgt);
    for (int e = 0; e < m_graph.m_exp_num; ++e) {
        const int node = exp_node(m_exp_group_for_typic, e);
        if (node != -1)
            bic.add_exp_node(node);
    }
    std::cerr << "bic init" << std::endl;
    m_typical_group.assign(m_graph.m_var_num, -1);
    for (int v = 0; v < m_graph.m_var_num; ++v) {
        float best = 0.0f;
        for (int group : m_gene_groups) {
            const int node = var_node(group, v);
            if (node == -1)
                continue;
            const float margin = bic.get_var_margin(node);
            if (m_typical_group[v] == -1 || margin > best) {
                m_typical_group[v] = group;
                best = margin;
            }
        }
    }
}

void BicExpScoreAssess::calc_contribs(int exp, std::vector<std::vector<float>>& contrib) const {
    contrib.assign(m_graph.m_max_exp_group, std::vector<float>());
    std::unique_ptr<GraphBaseEdgeIter> it(m_graph.new_edge_iter(0, GraphBaseEdgeIter::Out));
    for (int g = 0; g < m_graph.m_max_exp_group; ++g) {
        const int n = exp_node(g, exp);
        if (n == -1)
            continue;
        std::vector<float>& row = contrib[g];
        row.assign(m_graph.m_var_num, -kMaxFloat);
        for (int v = 0; v < m_graph.m_var_num; ++v) {
            const int tn = var_node(m_typical_group[v], v);
            if (tn != -1)
                row[v] = m_wgt.get_non_edge_exp_weight(n, m_wgt.get_var_node_bin(tn));
        }
        for (it->restart(n, GraphBaseEdgeIter::Out); !it->at_end(); ++*it) {
            const int dest = it->other();
            const int v = m_graph.node_var(dest);
            if (m_graph.node_group(dest) == m_typical_group[v])
                row[v] += m_wgt.get_edge_cnc(it->edge());
        }
    }
}

void BicExpScoreAssess::assess_exp_score_dist(int exp) {
    std::vector<std::vector<float>> contrib;
    calc_contribs(exp, contrib);
    const std::vector<int> groups = filled_groups(contrib);
    // A condition with no node, or nothing to sample, keeps the rows of an unscalable distribution.
    if (groups.empty() || m_num_samp <= 0 || m_max_vars < 2)
        return;

    std::vector<float> total(m_max_vars, 0.0f), max1(m_max_vars, -kMaxFloat), max2(m_max_vars, -kMaxFloat);
    std::vector<float> sum(contrib.size());
    UniformUrn urn(m_vars);
    for (int s = 0; s < m_num_samp; ++s) {
        urn.reset();
        for (int g : groups)
            sum[g] = 0.0f;
        for (int count = 1; count < m_max_vars; ++count) {
            const int v = urn.draw();
            float best = -kMaxFloat;
            bool first = true;
            for (int g : groups) {
                sum[g] += contrib[g][v];
                if (first || sum[g] > best)
                    best = sum[g];
                first = false;
            }
            total[count] += best;
            keep_max(best, max1[count], max2[count]);
        }
    }
    for (int count = 1; count < m_max_vars; ++count) {
        const float avg = total[count] / static_cast<float>(m_num_samp);
        m_exp_avg(exp, count) = avg;
        if (ratio(std::fabs(max1[count] - avg), std::fabs(avg)) >= 0.0001f) {
            m_exp_max(exp, count) = max1[count];
            m_exp_max2(exp, count) = max2[count];
        } else {
            // A degenerate distribution can't be scaled: score_exp gives 0.
            m_exp_max(exp, count) = kMaxFloat;
            m_exp_max2(exp, count) = kMaxFloat;
        }
    }
}

void BicExpScoreAssess::assess_set_score_dist() {
    if (m_num_glob_samp <= 0 || m_max_vars < 2)
        return;
    std::vector<float> total(m_graph.m_max_exp_node);
    std::unique_ptr<GraphBaseEdgeIter> it(m_graph.new_edge_iter(0, GraphBaseEdgeIter::In));
    UniformUrn urn(m_vars);
    for (int s = 0; s < m_num_glob_samp; ++s) {
        urn.reset();
        std::fill(total.begin(), total.end(), 0.0f);
        for (int count = 1; count < m_max_vars; ++count) {
            const int v = urn.draw();
            const int node = var_node(m_typical_group[v], v);
            if (node != -1) {
                const int bin = m_wgt.get_var_node_bin(node);
                for (int c = 0; c < m_graph.m_max_exp_node; ++c)
                    total[c] += m_wgt.get_non_edge_exp_weight(c, bin);
                // The edge's whole weight on top of the non-edge weight, as the sampler always did.
                for (it->restart(node, GraphBaseEdgeIter::In); !it->at_end(); ++*it)
                    total[it->other()] += m_wgt.get_edge_weight(it->edge());
            }
            float sum = 0.0f;
            for (int e = 0; e < m_graph.m_exp_num; ++e) {
                float e_wgt = -kMaxFloat;
                for (int g = 0; g < m_graph.m_max_exp_group; ++g) {
                    const int n = exp_node(g, e);
                    if (n != -1 && total[n] > e_wgt)
                        e_wgt = total[n];
                }
                const float sc = score_exp(e, e_wgt, count);
                if (m_debug && sc != 0.0f)
                    std::cerr << "BESA glob samp " << e << " e_wgt " << e_wgt << " cou " << count << " max "
                              << m_exp_max(e, count) << " avg " << m_exp_avg(e, count) << std::endl;
                sum += sc;
            }
            if (sum > m_glob_max[count])
                std::cerr << "BESA new max for count " << count << " " << sum << std::endl;
            keep_max(sum, m_glob_max[count], m_glob_max2[count]);
        }
    }
}

float BicExpScoreAssess::score_exp(int exp, float weight, int count) const {
    if (exp < 0 || exp >= m_exp_avg.rows() || count < 0 || count >= m_exp_avg.cols())
        return 0.0f;
    if (weight <= m_exp_max2(exp, count))
        return 0.0f;
    const float avg = m_exp_avg(exp, count);
    return ratio(weight - avg, m_exp_max(exp, count) - avg);
}

float BicExpScoreAssess::test(int exp) {
    std::vector<std::vector<float>> contrib;
    calc_contribs(exp, contrib);
    const std::vector<int> groups = filled_groups(contrib);
    float samp_max = -kMaxFloat;
    int samp_grp = -1;
    if (groups.empty())
        return samp_max;
    std::vector<float> sum(contrib.size(), 0.0f);
    UniformUrn urn(m_vars);
    for (int count = 1; count < m_max_vars; ++count) {
        const int v = urn.draw();
        float best = -kMaxFloat;
        int best_grp = -1;
        for (int g : groups) {
            sum[g] += contrib[g][v];
            if (best_grp == -1 || sum[g] > best) {
                best = sum[g];
                best_grp = g;
            }
        }
        std::cerr << "TEST total at count " << count << " var " << v << " " << best << std::endl;
        if (samp_grp == -1 || best > samp_max) {
            samp_max = best;
            samp_grp = best_grp;
        }
    }
    std::cerr << "TEST samp max " << samp_max << " e " << exp << " grp " << samp_grp << std::endl;
    return samp_max;
}

void BicExpScoreAssess::dump_stats(std::ostream& stats, std::ostream& glob) const {
    for (int e = 0; e < m_exp_avg.rows(); ++e)
        for (int count = 1; count < m_max_vars; ++count)
            stats << e << "\t" << count << "\t" << m_exp_avg(e, count) << "\t" << m_exp_max(e, count) << "\t"
                  << m_exp_max2(e, count) << "\n";
    for (int count = 1; count < m_max_vars; ++count)
        glob << count << "\t" << m_glob_max[count] << "\t" << m_glob_max2[count] << "\n";
}
