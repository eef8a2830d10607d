// BicGreedyOpt, BicSeperGreedy, BicVarSeperGreedy: the greedy walk over single-node moves.
#include "BicGreedyOpt.h"

#include "ds/BitVecIter.h"
#include "error.h"
#include "options.h"

#include <algorithm>
#include <iostream>

static constexpr char kSrc[] = "BicGreedyOpt";

BicGreedyOpt::BicGreedyOpt(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, options& opts,
                           const std::string& scope, bool attach)
    : BicGreedyOpt(graph, wgt, static_cast<const ds_bitvec*>(nullptr), opts, scope, attach) {}

BicGreedyOpt::BicGreedyOpt(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, const ds_bitvec* vars,
                           options& opts, const std::string& scope, bool attach)
    : m_graph(graph), m_wgt(wgt), m_bic(graph, wgt), m_check_score(true),
      m_edge_iter(graph.new_edge_iter(0, GraphBaseEdgeIter::Out)), m_verify_gain(true), m_moves(0),
      m_drops(0) {
    read_flags(opts, scope);
    if (attach)
        init_observ(opts, scope, vars);
}

BicGreedyOpt::BicGreedyOpt(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, const ExpClasses& classes,
                           int cls, options& opts, const std::string& scope, bool attach)
    : BicGreedyOpt(graph, wgt, static_cast<const ds_bitvec*>(nullptr), opts, scope, false) {
    if (attach)
        init_observ(opts, scope, nullptr, &classes, cls);
}

BicGreedyOpt::~BicGreedyOpt() {}

void BicGreedyOpt::read_flags(options& opts, const std::string& scope) {
    m_can_del_init_exp = opts.get_int(scope, "CanDelInitExp", true) != 0;
    m_can_add_exp = opts.get_int(scope, "CanAddExp", true) != 0;
    m_can_del_exp = opts.get_int(scope, "CanDelExp", true) != 0;
    m_can_del_init_var = opts.get_int(scope, "CanDelInitVar", true) != 0;
    m_debug = opts.get_int(scope, "Logit", true) != 0;
}

void BicGreedyOpt::init_observ(options& opts, const std::string& scope, const ds_bitvec* vars,
                               const ExpClasses* classes, int cls) {
    const float add_factor = opts.get_float(scope, "AddExpCostFactor", true);
    const float del_factor = opts.get_float(scope, "DelExpCostFactor", true);
    attach_exp_obs(2 * bins_num(), add_factor, del_factor, classes, cls);
    attach_var_bin_obs(vars, classes != nullptr);
    m_edge_iter.reset(m_graph.new_edge_iter(0, GraphBaseEdgeIter::Out));
}

void BicGreedyOpt::attach_exp_obs(int heap_idx, float add_factor, float del_factor, const ExpClasses* classes,
                                  int cls) {
    m_exp_obs.resize(m_graph.m_node_count);
    for (int e = 0; e < m_graph.m_max_exp_node; ++e) {
        const int c = classes ? classes->class_of(m_graph.node_exp(e)) : -1;
        if (m_graph.node_use(e) && (c == cls || c == -1))
            m_exp_obs[e].attach(m_bic, m_heap, e, heap_idx, add_factor, del_factor);
    }
}

void BicGreedyOpt::attach_var_bin_obs(const ds_bitvec* vars, bool own_weight) {
    const int nodes = m_graph.m_node_count;
    const int B = bins_num();
    m_var_obs.resize(nodes);
    m_bin_obs.resize(B);
    for (int v = m_graph.m_max_exp_node; v < nodes; ++v) {
        if (!m_graph.node_use(v) || (vars && !vars->get_ind(m_graph.node_var(v))))
            continue;
        const int b = m_wgt.get_var_node_bin(v);
        m_var_obs[v].attach(m_bic, m_heap, v, 2 * b, 2 * b + 1,
                            own_weight ? m_wgt.get_var_node_weight(v) : 0.0f);
    }
    for (int b = 0; b < B; ++b)
        m_bin_obs[b].attach(m_bic, m_heap, b, 2 * b, 2 * b + 1);
}

float BicGreedyOpt::get_cur_score() const { return m_bic.m_score; }

void BicGreedyOpt::score(ExpVarBiclust& bic, std::vector<float>& out) {
    m_heap.reset(-1);
    m_bic.set_to_bic(bic);
    out.assign(m_graph.m_max_exp_node, 0.0f);
    for (int e = 0; e < m_graph.m_max_exp_node && e < static_cast<int>(m_exp_obs.size()); ++e)
        out[e] = m_exp_obs[e].m_gain;
}

bool BicGreedyOpt::var_will_turn_foc_exp_bad(int node, bool in) {
    ds_bitvec focus(m_init_exps);
    m_edge_iter->restart(node, GraphBaseEdgeIter::In);
    if (edge_turns_focus_bad(*m_edge_iter, m_wgt, focus, in, [this](int c) { return m_exp_obs[c].m_gain; }))
        return true;
    if (!in) {
        const int bin = m_wgt.get_var_node_bin(node);
        for (ds_bitvec_iter c(focus); c; ++c)
            if (m_exp_obs[c].m_gain + m_wgt.get_non_edge_exp_weight(c, bin) < 0.0f) {
                if (m_debug)
                    std::cerr << "will turn " << static_cast<int>(c) << " bad " << std::endl;
                return true;
            }
    }
    return false;
}

bool BicGreedyOpt::exp_will_turn_foc_var_bad(int node, bool in) {
    ds_bitvec focus(m_init_vars);
    m_edge_iter->restart(node, GraphBaseEdgeIter::Out);
    const auto margin = [this](int v) {
        const int b = m_wgt.get_var_node_bin(v);
        return static_cast<float>(m_heap.value(2 * b + 1, v));
    };
    if (edge_turns_focus_bad(*m_edge_iter, m_wgt, focus, in, margin))
        return true;
    if (!in) {
        for (ds_bitvec_iter v(focus); v; ++v) {
            const int b = m_wgt.get_var_node_bin(v);
            const float m = static_cast<float>(m_heap.value(2 * b + 1, v));
            if (m + m_wgt.get_non_edge_exp_weight(node, b) < 0.0f) {
                if (m_debug)
                    std::cerr << "will turn " << static_cast<int>(v) << " bad!" << std::endl;
                return true;
            }
        }
    }
    return false;
}

void BicGreedyOpt::grow(ExpVarBiclust& bic) {
    if (m_debug) {
        std::cerr << "will greedy bic:" << std::endl;
        bic.print(std::cerr);
    }
    m_moves = 0;
    m_drops = 0;
    // Sized to cover every id that has a node, also in graphs built by hand.
    ds_bitvec used_exp(std::max(m_graph.m_exp_num, m_graph.m_exp_group_nodes.cols()));
    ds_bitvec used_var(std::max(m_graph.m_var_num, m_graph.m_var_group_nodes.cols()));
    take_kernel(bic, used_exp, used_var);
    walk(used_exp, used_var);
    bic.ExpVarBiclust::operator=(m_bic);
    std::cerr << "done greedy weight = " << m_bic.m_score << " v size " << m_bic.m_vars.on_bits()
              << std::endl;
}

void BicGreedyOpt::take_kernel(ExpVarBiclust& bic, ds_bitvec& used_exp, ds_bitvec& used_var) {
    m_init_exps = bic.m_exps;
    m_init_vars = bic.m_vars;
    // One condition or variable stands in one orientation only.
    for (ds_bitvec_iter e(m_init_exps); e; ++e)
        used_exp.set_ind(m_graph.node_exp(e));
    keep_one_node_per_var(m_graph, bic, used_var);
    m_init_exps = bic.m_exps;
    m_init_vars = bic.m_vars;
    m_heap.reset(-1);
    m_bic.set_to_bic(bic);
}

void BicGreedyOpt::walk(ds_bitvec& used_exp, ds_bitvec& used_var) {
    float prev = get_cur_score();
    for (;;) {
        if (m_debug && !m_bic.verify())
            VESK_FATAL(kSrc, "ERROR");
        float key = 3.4e+37f;
        const int node = m_heap.extract_min(key);
        if (node == -1 || -key <= 0.00001f)
            break;
        if (m_debug)
            std::cerr << "greedy node " << node << " gain " << -key;
        const bool is_exp = m_graph.is_exp_node(node);
        if (!(is_exp ? try_move<CondSide>(node, used_exp, " exp used")
                     : try_move<VarSide>(node, used_var, " var used")))
            continue;
        ++m_moves;
        if (m_debug)
            std::cerr << " moved, score " << m_bic.m_score << std::endl;
        const float cur = get_cur_score();
        if (m_verify_gain && is_exp) {
            const float r = prev / cur;
            if (r >= 0.0f && (r >= 1.001f || prev <= 0.0f) && (r <= 0.999f || prev >= 0.0f))
                VESK_FATAL(kSrc, "Greedy made things worse" << prev << " " << cur);
        }
        prev = cur;
    }
}

bool BicGreedyOpt::refuse(const char* why) {
    if (m_debug && why)
        std::cerr << why << std::endl;
    ++m_drops;
    return false;
}

template <class Side> bool BicGreedyOpt::try_move(int node, ds_bitvec& used, const char* used_text) {
    const bool in = Side::members(m_bic).get_ind(node);
    const int id = Side::id_of(m_graph, node);
    if (used.get_ind(id) && !in)
        return refuse(used_text);
    if (!move_allowed(Side(), node, in))
        return false;
    if (in) {
        Side::del(m_bic, node);
        used.clr_ind(id);
    } else {
        Side::add(m_bic, node);
        used.set_ind(id);
    }
    return true;
}

bool BicGreedyOpt::move_allowed(VarSide, int node, bool in) {
    if (!m_can_del_init_exp && m_check_score && var_will_turn_foc_exp_bad(node, in))
        return refuse(" will turn bad");
    if (in && !m_can_del_init_var && m_init_vars.get_ind(node))
        VESK_FATAL(kSrc, "Trying to delete freezed init var node " << node);
    return true;
}

bool BicGreedyOpt::move_allowed(CondSide, int node, bool in) {
    if (in && !m_can_del_exp)
        return refuse(" shouln't del exp");
    if (!in && !m_can_add_exp)
        return refuse(" shouln't add exp");
    if (!m_can_del_init_var && exp_will_turn_foc_var_bad(node, in))
        return refuse(" will turn bad");
    if (in && !m_can_del_init_exp && m_init_exps.get_ind(node)) {
        if (m_check_score)
            VESK_FATAL(kSrc, "Trying to delete freezed init exp node " << node);
        return refuse(nullptr);
    }
    return true;
}

// ---- BicSeperGreedy

BicSeperGreedy::BicSeperGreedy(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, const ExpClasses& classes,
                               int cls, options& opts, const std::string& scope)
    : BicGreedyOpt(graph, wgt, classes, cls, opts, scope, false) {
    m_verify_gain = false;
    m_check_score = false;
    if (!m_can_del_init_var)
        VESK_FATAL(kSrc, "Seper Greedy can work only with can_del_init_var == true");
    m_track.attach(m_bic, classes, cls);
    const float add_factor = opts.get_float(scope, "AddExpCostFactor", true);
    const float del_factor = opts.get_float(scope, "DelExpCostFactor", true);
    const int nodes = graph.m_node_count;
    attach_exp_obs(0, add_factor, del_factor, &classes, cls);
    m_sepe_obs.resize(nodes);
    for (int v = graph.m_max_exp_node; v < nodes; ++v)
        if (graph.node_use(v) && graph.node_edges_num(v) > 0)
            m_sepe_obs[v].attach(m_bic, m_heap, &m_track, v, 1, 1, 0.0f, false);
}

BicSeperGreedy::~BicSeperGreedy() {}

float BicSeperGreedy::get_cur_score() const {
    std::cerr << "cur seper " << m_track.m_seper << std::endl;
    return m_track.m_seper;
}

// ---- BicVarSeperGreedy

BicVarSeperGreedy::BicVarSeperGreedy(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, const ds_bitvec& vars,
                                     options& opts, const std::string& scope)
    : BicGreedyOpt(graph, wgt, opts, scope, false) {
    m_verify_gain = false;
    m_check_score = false;
    m_track.attach(m_bic, vars);
    m_track.m_debug = opts.get_int(scope, "VarTrackLogit", false) != 0;
    const float add_factor = opts.get_float(scope, "AddExpCostFactor", true);
    const float del_factor = opts.get_float(scope, "DelExpCostFactor", true);
    const int nodes = graph.m_node_count;
    const int B = bins_num();
    attach_var_bin_obs(&vars, false);
    m_sepe_obs.resize(nodes);
    for (int e = 0; e < graph.m_max_exp_node; ++e)
        if (graph.node_use(e))
            m_sepe_obs[e].attach(m_bic, m_heap, &m_track, e, 2 * B, add_factor, del_factor, 0.0f, false);
}

BicVarSeperGreedy::~BicVarSeperGreedy() {}

float BicVarSeperGreedy::get_cur_score() const {
    std::cerr << "cur seper " << m_track.m_seper << std::endl;
    return m_track.m_seper;
}

void keep_one_node_per_var(const ExpVarGraphBase& graph, ExpVarBiclust& bic, ds_bitvec& used_var) {
    const ds_bitvec seed(bic.m_vars);
    std::vector<int> last_group(used_var.size(), -1), last_node(used_var.size(), -1);
    for (ds_bitvec_iter it(seed); it; ++it) {
        const int node = it;
        const int v = graph.node_var(node);
        const int group = graph.node_group(node);
        if (used_var.get_ind(v)) {
            std::cerr << "Double var " << v << " in bic kernel" << std::endl;
            if (last_group[v] == 0 || group < last_group[v])
                bic.del_var_node(last_node[v]);
            else
                bic.del_var_node(node);
        }
        last_group[v] = group;
        last_node[v] = node;
        used_var.set_ind(v);
    }
}
