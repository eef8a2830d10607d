// ExpVarBiclust, WeightedVarSet and DynBiclust: running scores, checks, tables and change events.
#include "DynBiclust.h"

#include "BicSide.h"
#include "ds/BitVecIter.h"
#include "error.h"

#include <algorithm>
#include <iostream>

static constexpr char kSrc[] = "DynBiclust";

WeightedVarSet::WeightedVarSet(int node, float weight) : m_node(node), m_weight(weight), m_made(false) {}

WeightedVarSet::WeightedVarSet(const std::set<int>& nodes, float weight)
    : m_node(-1), m_weight(weight), m_set(nodes), m_made(true) {}

std::set<int>& WeightedVarSet::get_set() {
    if (!m_made) {
        if (m_node != -1)
            m_set.insert(m_node);
        m_made = true;
    }
    return m_set;
}

void WeightedVarSet::add_var(int node) {
    if (!m_made && m_node == -1)
        m_node = node;
    else
        get_set().insert(node);
}

ExpVarBiclust::ExpVarBiclust(const ExpVarGraphBase& graph, WgtSchemeBase& wgt)
    : m_graph(graph), m_wgt(wgt), m_exps(graph.m_max_exp_node), m_vars(graph.m_node_count), m_score(0.0f),
      m_exp_bin_sum(wgt.get_var_nodes_bins().m_bin_num, 0.0f),
      m_bin_count(wgt.get_var_nodes_bins().m_bin_num, 0),
      m_edge_iter(graph.new_edge_iter(0, GraphBaseEdgeIter::Out)) {}

ExpVarBiclust::ExpVarBiclust(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, WeightedVarSet& vars,
                             const ds_bitvec& exps)
    : ExpVarBiclust(graph, wgt) {
    load(vars.m_weight, vars.get_set(), exps, true);
}

ExpVarBiclust::ExpVarBiclust(const ExpVarBiclust& src)
    : m_graph(src.m_graph), m_wgt(src.m_wgt), m_exps(src.m_exps), m_vars(src.m_vars), m_score(src.m_score),
      m_exp_bin_sum(src.m_exp_bin_sum), m_bin_count(src.m_bin_count),
      m_edge_iter(src.m_graph.new_edge_iter(0, GraphBaseEdgeIter::Out)) {}

ExpVarBiclust& ExpVarBiclust::operator=(const ExpVarBiclust& src) {
    if (this != &src) {
        m_exps = src.m_exps;
        m_vars = src.m_vars;
        m_score = src.m_score;
        m_exp_bin_sum = src.m_exp_bin_sum;
        m_bin_count = src.m_bin_count;
    }
    return *this;
}

ExpVarBiclust::~ExpVarBiclust() {}

void ExpVarBiclust::reset() {
    m_exps.clear();
    m_vars.clear();
    m_score = 0.0f;
    std::fill(m_exp_bin_sum.begin(), m_exp_bin_sum.end(), 0.0f);
    std::fill(m_bin_count.begin(), m_bin_count.end(), 0);
}

void ExpVarBiclust::add_exp_node(int node) {
    if (m_exps.get_ind(node))
        VESK_FATAL(kSrc, "Trying to multiply add the exp node " << node << " to the nbicluster");
    move_exp(node, 1.0f);
    m_exps.set_ind(node);
}

void ExpVarBiclust::del_exp_node(int node) {
    if (!m_exps.get_ind(node))
        VESK_FATAL(kSrc, "Trying to delete non existing bic exp node " << node << " from the bicluster");
    move_exp(node, -1.0f);
    m_exps.clr_ind(node);
}

void ExpVarBiclust::add_var_node(int node) {
    if (m_vars.get_ind(node))
        VESK_FATAL(kSrc, "Trying to multiply add the node " << node << " to the nbicluster");
    move_var(node, 1.0f);
    m_vars.set_ind(node);
}

void ExpVarBiclust::del_var_node(int node) {
    if (!m_vars.get_ind(node))
        VESK_FATAL(kSrc, "Trying delete non existent node " << node << " from the bic");
    move_var(node, -1.0f);
    m_vars.clr_ind(node);
}

void ExpVarBiclust::add_edge_cnc(float& acc, int node, GraphBaseEdgeIter::Direction dir,
                                 const ds_bitvec& others, float sign) const {
    for (m_edge_iter->restart(node, dir); !m_edge_iter->at_end(); ++*m_edge_iter)
        if (others.get_ind(m_edge_iter->other()))
            acc += sign * m_wgt.get_edge_cnc(m_edge_iter->edge());
}

void ExpVarBiclust::move_exp(int node, float sign) {
    // Without variables no edge leads inside: only the per-bin sums move.
    if (m_vars.on_bits() != 0)
        add_edge_cnc(m_score, node, GraphBaseEdgeIter::Out, m_vars, sign);
    for (int b = 0; b < bins_num(); ++b) {
        const float w = m_wgt.get_non_edge_exp_weight(node, b);
        if (m_bin_count[b] != 0)
            m_score += sign * (w * static_cast<float>(m_bin_count[b]));
        m_exp_bin_sum[b] += sign * w;
    }
}

void ExpVarBiclust::move_var(int node, float sign) {
    add_edge_cnc(m_score, node, GraphBaseEdgeIter::In, m_exps, sign);
    const int bin = m_wgt.get_var_node_bin(node);
    m_score += sign * m_exp_bin_sum[bin];
    m_bin_count[bin] += sign > 0.0f ? 1 : -1;
    m_score += sign * m_wgt.get_var_node_weight(node);
}

void ExpVarBiclust::init(float weight, const std::set<int>& vars, const ds_bitvec& exps) {
    load(weight, vars, exps, false);
}

void ExpVarBiclust::load(float weight, const std::set<int>& vars, const ds_bitvec& exps, bool own) {
    if (own)
        ExpVarBiclust::reset();
    else
        reset();
    for (ds_bitvec_iter it(exps); it; ++it)
        if (own)
            ExpVarBiclust::add_exp_node(it);
        else
            add_exp_node(it);
    float expected = weight;
    for (int v : vars) {
        if (own)
            ExpVarBiclust::add_var_node(v);
        else
            add_var_node(v);
        expected += m_wgt.get_var_node_weight(v);
    }
    verify();
    const float r = expected / m_score;
    if (!(r > 0.99f && r < 1.01f))
        VESK_FATAL(kSrc, "Weight calc mismatch at bic init " << expected << " != " << m_score);
}

void ExpVarBiclust::get_vars_set(ds_bitvec& out) const {
    out.set_size(m_graph.m_var_num);
    out.clear();
    for (ds_bitvec_iter it(m_vars); it; ++it)
        out.set_ind(m_graph.node_var(it));
}

float ExpVarBiclust::get_exp_margin(int node) const {
    float m = 0.0f;
    add_edge_cnc(m, node, GraphBaseEdgeIter::Out, m_vars, 1.0f);
    for (int b = 0; b < bins_num(); ++b)
        if (m_bin_count[b] != 0)
            m += m_wgt.get_non_edge_exp_weight(node, b) * static_cast<float>(m_bin_count[b]);
    return m;
}

float ExpVarBiclust::get_var_margin(int node) const {
    float m = 0.0f;
    add_edge_cnc(m, node, GraphBaseEdgeIter::In, m_exps, 1.0f);
    return m + m_exp_bin_sum[m_wgt.get_var_node_bin(node)];
}

bool ExpVarBiclust::verify() const {
    float test = 0.0f;
    for (ds_bitvec_iter v(m_vars); v; ++v)
        test += m_wgt.get_var_node_weight(v);
    for (ds_bitvec_iter e(m_exps); e; ++e)
        for (ds_bitvec_iter v(m_vars); v; ++v) {
            const int edge = m_graph.get_edge(e, v);
            test += edge != -1 ? m_wgt.get_edge_weight(edge)
                               : m_wgt.get_non_edge_exp_weight(e, m_wgt.get_var_node_bin(v));
        }
    // 0 / 0 (the empty bicluster) compares false both ways and passes.
    const float r = test / m_score;
    if (r < 0.99f || r > 1.01f) {
        std::cerr << "Bad weight verification at bic, test weight = " << test << " != cur weight " << m_score
                  << std::endl;
        return false;
    }
    return true;
}

void ExpVarBiclust::print(std::ostream& out) const {
    out << "Experiments: ";
    for (ds_bitvec_iter e(m_exps); e; ++e)
        out << " " << m_graph.node_exp(e) << "/" << m_graph.node_group(e);
    out << "\nVariables: ";
    for (ds_bitvec_iter v(m_vars); v; ++v)
        out << " " << m_graph.node_var(v) << "/" << m_graph.node_group(v);
    out << "\nTotal weight = " << m_score << "\n";
}

void ExpVarBiclust::log_dump_with_weights(std::ostream& out) const {
    out << "bic score " << m_score << " exps " << m_exps.on_bits() << " vars " << m_vars.on_bits() << "\n";
    for (ds_bitvec_iter e(m_exps); e; ++e)
        out << "  exp node " << static_cast<int>(e) << " cond " << m_graph.node_exp(e) << " group "
            << m_graph.node_group(e) << " margin " << get_exp_margin(e) << "\n";
    for (ds_bitvec_iter v(m_vars); v; ++v)
        out << "  var node " << static_cast<int>(v) << " var " << m_graph.node_var(v) << " group "
            << m_graph.node_group(v) << " bin " << m_wgt.get_var_node_bin(v) << " margin "
            << get_var_margin(v) << " own " << m_wgt.get_var_node_weight(v) << "\n";
}

void ExpVarBiclust::dump_to_tables(int id, std::ostream& bick, std::ostream& bicd) const {
    bick << id << "\t" << m_score << "\n";
    for (ds_bitvec_iter e(m_exps); e; ++e)
        bicd << id << "\t0\t" << m_graph.node_exp(e) << "\t" << m_graph.node_group(e) << "\t"
             << get_exp_margin(e) << "\n";
    for (ds_bitvec_iter v(m_vars); v; ++v)
        bicd << id << "\t1\t" << m_graph.node_var(v) << "\t" << m_graph.node_group(v) << "\t"
             << get_var_margin(v) << "\n";
}

DynBiclust::DynBiclust(const ExpVarGraphBase& graph, WgtSchemeBase& wgt) : DynBiclust(graph, wgt, 7, 3, 0) {}

DynBiclust::DynBiclust(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, int first_code, int stride,
                       int extra)
    : ExpVarBiclust(graph, wgt), m_dispatch(first_code + stride * graph.m_node_count + extra), m_cur_edge(-1),
      m_cur_var_bin(-1), m_cur_var_node(-1), m_cur_exp_node(-1),
      m_event_iter(graph.new_edge_iter(0, GraphBaseEdgeIter::Out)) {
    setup_event_codes(first_code, stride);
}

DynBiclust::DynBiclust(const DynBiclust& src)
    : ExpVarBiclust(src), m_dispatch(7 + 3 * src.m_graph.m_node_count), m_cur_edge(-1), m_cur_var_bin(-1),
      m_cur_var_node(-1), m_cur_exp_node(-1),
      m_event_iter(src.m_graph.new_edge_iter(0, GraphBaseEdgeIter::Out)) {
    setup_event_codes(7, 3);
}

DynBiclust::~DynBiclust() {}

void DynBiclust::setup_event_codes(int first, int stride) {
    const int n = m_graph.m_node_count;
    m_change_me.assign(n, -1);
    m_exp_add_adj.assign(n, -1);
    m_exp_del_adj.assign(n, -1);
    m_var_add_adj.assign(n, -1);
    m_var_del_adj.assign(n, -1);
    for (int k = 0; k < n; ++k) {
        const int own = first + stride * k;
        m_change_me[k] = own;
        if (m_graph.is_exp_node(k)) {
            m_exp_add_adj[k] = own + 1;
            m_exp_del_adj[k] = own + 2;
        } else {
            m_var_add_adj[k] = own + 1;
            m_var_del_adj[k] = own + 2;
        }
    }
}

void DynBiclust::reset() {
    m_dispatch.invoke(0);
    ExpVarBiclust::reset();
}

void DynBiclust::add_var_node(int node) {
    ExpVarBiclust::add_var_node(node);
    announce<VarSide>(node, true, false);
}

void DynBiclust::del_var_node(int node) {
    ExpVarBiclust::del_var_node(node);
    announce<VarSide>(node, false, false);
}

void DynBiclust::add_exp_node(int node) {
    ExpVarBiclust::add_exp_node(node);
    announce<CondSide>(node, true, false);
}

void DynBiclust::del_exp_node(int node) {
    ExpVarBiclust::del_exp_node(node);
    announce<CondSide>(node, false, false);
}

void DynBiclust::announce_var(int node, bool added, bool own_first) {
    announce<VarSide>(node, added, own_first);
}

void DynBiclust::announce_exp(int node, bool added) { announce<CondSide>(node, added, false); }

template <class Side> void DynBiclust::announce(int node, bool added, bool own_first) {
    typedef typename Side::Other Other;
    Side::set_current(*this, node);
    if (own_first)
        m_dispatch.invoke(m_change_me[node]);
    m_dispatch.invoke(added ? Side::kAdded : Side::kDeleted);
    if (!own_first)
        m_dispatch.invoke(m_change_me[node]);
    const std::vector<int>& adj = added ? Other::add_adj(*this) : Other::del_adj(*this);
    for (m_event_iter->restart(node, Side::kToOther); !m_event_iter->at_end(); ++*m_event_iter) {
        m_cur_edge = m_event_iter->edge();
        m_dispatch.invoke(adj[m_event_iter->other()]);
    }
}

void DynBiclust::set_to_bic(const ExpVarBiclust& other) {
    reset();
    for (ds_bitvec_iter e(other.m_exps); e; ++e)
        add_exp_node(e);
    for (ds_bitvec_iter v(other.m_vars); v; ++v)
        add_var_node(v);
}

void DynBiclust::remember(ExpVarBiclust& target) {
    m_dispatch.invoke(5);
    target.ExpVarBiclust::operator=(*this);
}

void DynBiclust::revert(const ExpVarBiclust& source) {
    ExpVarBiclust::operator=(source);
    m_dispatch.invoke(6);
}
