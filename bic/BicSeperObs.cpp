// AllVarSeperTrack, AllCondSeperTrack and the separation observers of conditions and variables.
#include "BicSeperObs.h"

#include "FloatRatio.h"
#include "error.h"

#include <algorithm>
#include <iostream>

static constexpr char kSrc[] = "BicSeperObs";
using float_ratio::kMaxFloat;

bool VarTracker::operator<(const VarTracker& o) const {
    return m_track->score(m_node) < o.m_track->score(o.m_node);
}

bool CondTracker::operator<(const CondTracker& o) const {
    return m_track->score(m_node) < o.m_track->score(o.m_node);
}

// ---- AllVarSeperTrack

void AllVarSeperTrack::attach(DynBiclust& bic, const ds_bitvec& vars) {
    bind(bic, nullptr);
    const ExpVarGraphBase& g = bic.m_graph;
    m_first_var = g.m_max_exp_node;
    m_var_score.assign(std::max(0, g.m_node_count - m_first_var), 0.0f);
    m_in.clear();
    m_out.clear();
    for (int v = m_first_var; v < g.m_node_count; ++v)
        if (g.node_use(v) && !vars.get_ind(g.node_var(v)))
            m_out.push_back(VarTracker(this, v, m_wgt->get_var_node_bin(v)));
    m_iter.reset(g.new_edge_iter(0, GraphBaseEdgeIter::Out));
    subscribe(0, *this, &AllVarSeperTrack::on_reset);
    subscribe(1, *this, &AllVarSeperTrack::on_add_var);
    subscribe(2, *this, &AllVarSeperTrack::on_add_exp);
    subscribe(3, *this, &AllVarSeperTrack::on_del_var);
    subscribe(4, *this, &AllVarSeperTrack::on_del_exp);
}

void AllVarSeperTrack::sort_lists() {
    std::stable_sort(m_in.begin(), m_in.end());
    std::stable_sort(m_out.begin(), m_out.end());
}

void AllVarSeperTrack::print_lists(const char* title) const {
    std::cerr << title << "\n in:";
    for (const VarTracker& t : m_in)
        std::cerr << " " << t.m_node << ":" << score(t.m_node);
    std::cerr << "\n out:";
    for (const VarTracker& t : m_out)
        std::cerr << " " << t.m_node << ":" << score(t.m_node);
    std::cerr << std::endl;
}

void AllVarSeperTrack::update_seper() {
    if (m_debug)
        std::cerr << "ALLVar sizes " << m_in.size() << " non " << m_out.size() << std::endl;
    if (m_in.empty() || m_out.empty())
        return;
    const float lo = score(m_in.front().m_node);
    const float hi = score(m_out.back().m_node);
    if (m_debug)
        std::cerr << "ALLVar upd sep " << lo << " vs " << hi << std::endl;
    m_seper = lo - hi;
}

void AllVarSeperTrack::on_reset(int) {
    if (m_debug)
        std::cerr << "ALLVar reset" << std::endl;
    m_in.clear();
    std::fill(m_var_score.begin(), m_var_score.end(), 0.0f);
}

void AllVarSeperTrack::on_add_var(int) {
    const int v = m_bic->m_cur_var_node;
    m_in.push_back(VarTracker(this, v, m_bic->m_cur_var_bin));
    std::stable_sort(m_in.begin(), m_in.end());
    update_seper();
    if (m_debug)
        std::cerr << "ALL new seper add var " << v << " " << m_seper << std::endl;
}

void AllVarSeperTrack::on_del_var(int) {
    const int v = m_bic->m_cur_var_node;
    for (auto it = m_in.begin(); it != m_in.end(); ++it)
        if (it->m_node == v) {
            m_in.erase(it);
            break;
        }
    update_seper();
    if (m_debug)
        std::cerr << "ALL new seper del var " << v << " " << m_seper << std::endl;
}

void AllVarSeperTrack::on_add_exp(int) {
    const int e = m_bic->m_cur_exp_node;
    for (m_iter->restart(e, GraphBaseEdgeIter::Out); !m_iter->at_end(); ++*m_iter) {
        float& s = m_var_score[m_iter->other() - m_first_var];
        s += m_wgt->get_edge_cnc(m_iter->edge());
        if (s >= kMaxFloat)
            VESK_FATAL(kSrc, "Bad weight " << s << " at all var add exp");
    }
    const ExpVarGraphBase& g = m_bic->m_graph;
    for (int v = m_first_var; v < g.m_node_count; ++v) {
        if (!g.node_use(v))
            continue;
        float& s = m_var_score[v - m_first_var];
        s += m_wgt->get_non_edge_exp_weight(e, m_wgt->get_var_node_bin(v));
        if (s <= -kMaxFloat)
            VESK_FATAL(kSrc, "Bad non weight " << s << " at all var add exp");
    }
    sort_lists();
    if (m_debug)
        print_lists("ALL aft add, sorted class");
    update_seper();
}

void AllVarSeperTrack::on_del_exp(int) {
    const int e = m_bic->m_cur_exp_node;
    for (m_iter->restart(e, GraphBaseEdgeIter::Out); !m_iter->at_end(); ++*m_iter)
        m_var_score[m_iter->other() - m_first_var] -= m_wgt->get_edge_cnc(m_iter->edge());
    const ExpVarGraphBase& g = m_bic->m_graph;
    for (int v = m_first_var; v < g.m_node_count; ++v)
        if (g.node_use(v))
            m_var_score[v - m_first_var] -= m_wgt->get_non_edge_exp_weight(e, m_wgt->get_var_node_bin(v));
    sort_lists();
    if (m_debug)
        print_lists("ALL aft del exp, sorted class");
    update_seper();
}

// ---- AllCondSeperTrack

void AllCondSeperTrack::attach(DynBiclust& bic, const ExpClasses& classes, int cls) {
    bind(bic, nullptr);
    const ExpVarGraphBase& g = bic.m_graph;
    m_exp_score.assign(g.m_max_exp_node, 0.0f);
    m_in.clear();
    m_out.clear();
    for (int e = 0; e < g.m_max_exp_node; ++e) {
        const int c = classes.class_of(g.node_exp(e));
        if (g.node_use(e) && c != cls && c != -1)
            m_out.push_back(CondTracker(this, e));
    }
    m_iter.reset(g.new_edge_iter(0, GraphBaseEdgeIter::In));
    subscribe(0, *this, &AllCondSeperTrack::on_reset);
    subscribe(1, *this, &AllCondSeperTrack::on_var_change);
    subscribe(2, *this, &AllCondSeperTrack::on_add_exp);
    subscribe(3, *this, &AllCondSeperTrack::on_var_change);
    subscribe(4, *this, &AllCondSeperTrack::on_del_exp);
}

void AllCondSeperTrack::sort_lists() {
    std::stable_sort(m_in.begin(), m_in.end());
    std::stable_sort(m_out.begin(), m_out.end());
}

void AllCondSeperTrack::update_seper() {
    if (m_in.empty() || m_out.empty())
        return;
    const float lo = score(m_in.front().m_node);
    const float hi = score(m_out.back().m_node);
    if (m_debug)
        std::cerr << "ALLCond upd sep " << lo << " vs " << hi << std::endl;
    m_seper = lo - hi;
}

void AllCondSeperTrack::on_reset(int) {
    if (m_debug)
        std::cerr << "ALLCond reset" << std::endl;
    m_in.clear();
    std::fill(m_exp_score.begin(), m_exp_score.end(), 0.0f);
}

void AllCondSeperTrack::on_var_change(int code) {
    const int v = m_bic->m_cur_var_node;
    const int bin = m_bic->m_cur_var_bin;
    const float sign = code == 1 ? 1.0f : -1.0f;
    for (m_iter->restart(v, GraphBaseEdgeIter::In); !m_iter->at_end(); ++*m_iter) {
        if (sign > 0)
            m_exp_score[m_iter->other()] += m_wgt->get_edge_cnc(m_iter->edge());
        else
            m_exp_score[m_iter->other()] -= m_wgt->get_edge_cnc(m_iter->edge());
    }
    const ExpVarGraphBase& g = m_bic->m_graph;
    for (int e = 0; e < g.m_max_exp_node; ++e) {
        if (!g.node_use(e))
            continue;
        if (sign > 0)
            m_exp_score[e] += m_wgt->get_non_edge_exp_weight(e, bin);
        else
            m_exp_score[e] -= m_wgt->get_non_edge_exp_weight(e, bin);
    }
    sort_lists();
    update_seper();
}

void AllCondSeperTrack::on_add_exp(int) {
    m_in.push_back(CondTracker(this, m_bic->m_cur_exp_node));
    std::stable_sort(m_in.begin(), m_in.end());
    update_seper();
}

void AllCondSeperTrack::on_del_exp(int) {
    const int e = m_bic->m_cur_exp_node;
    for (auto it = m_in.begin(); it != m_in.end(); ++it)
        if (it->m_node == e) {
            m_in.erase(it);
            break;
        }
    update_seper();
}

// ---- The scans shared by the two separation observers

namespace {

// The separation (best_min - best_max) minus the track's one, `seper`.
float delta_of(float seper, int node, float best_min, float best_max, bool debug) {
    const float delta = (best_min - best_max) - seper;
    if (debug)
        std::cerr << "SepObs " << node << " cur_seper " << seper << " delta " << delta << std::endl;
    return delta;
}

// The separation the track `t` would have with the observer's node `node` moved in, minus the one it
// has. A member's score gains what the node gives it: non_edge(member) when no edge joins them,
// else the weight of edge_to(member) (looked up from the variable to the condition, against the
// direction of the edges, so the non-edge value is the one taken); a non-member's gains
// contrib(member node). The bounds end the scans of the sorted lists early.
template <class Track, class NonEdge, class EdgeTo, class Contrib>
float delta_moved_in(const Track& t, const WgtSchemeBase& wgt, int node, float min_contrib, float max_contrib,
                     bool debug, NonEdge non_edge, EdgeTo edge_to, Contrib contrib) {
    if (debug)
        std::cerr << "SepObs oobic recalc" << std::endl;
    float best_min = kMaxFloat;
    for (const auto& member : t.m_in) {
        const float s = t.score(member.m_node);
        if (best_min < min_contrib + s)
            break;
        const float c = non_edge(member);
        if (c + s < best_min) {
            const int edge = edge_to(member);
            if (edge == -1) {
                best_min = c + s;
            } else {
                const float w = wgt.get_edge_weight(edge) + s;
                if (w < best_min)
                    best_min = w;
            }
            if (debug)
                std::cerr << "new min " << best_min << " contrib " << c << std::endl;
        }
    }
    float best_max = -kMaxFloat;
    for (auto it = t.m_out.rbegin(); it != t.m_out.rend(); ++it) {
        const float s = t.score(it->m_node);
        if (max_contrib + s < best_max)
            break;
        const float val = contrib(it->m_node) + s;
        if (val > best_max) {
            best_max = val;
            if (debug)
                std::cerr << "SepObs new max node " << it->m_node << " " << best_max << std::endl;
        }
    }
    return delta_of(t.m_seper, node, best_min, best_max, debug);
}

// The same with the node moved out: every score loses contrib(node of the list).
template <class Track, class Contrib>
float delta_moved_out(const Track& t, int node, float min_contrib, float max_contrib, bool debug,
                      Contrib contrib) {
    float best_min = kMaxFloat;
    for (const auto& member : t.m_in) {
        const float s = t.score(member.m_node);
        if (best_min < s - max_contrib)
            break;
        const float val = s - contrib(member.m_node);
        if (val < best_min) {
            best_min = val;
            if (debug)
                std::cerr << "new min " << best_min << std::endl;
        }
    }
    float best_max = -kMaxFloat;
    for (auto it = t.m_out.rbegin(); it != t.m_out.rend(); ++it) {
        const float s = t.score(it->m_node);
        if (s - min_contrib <= best_max)
            break;
        const float val = s - contrib(it->m_node);
        if (val > best_max) {
            best_max = val;
            if (debug)
                std::cerr << "SepObs 2 new max node " << it->m_node << " " << best_max << std::endl;
        }
    }
    return delta_of(t.m_seper, node, best_min, best_max, debug);
}

} // namespace

// ---- BicChangeExpSepeObs

void BicChangeExpSepeObs::attach(DynBiclust& bic, BicHeap& heap, AllVarSeperTrack* track, int node,
                                 int heap_idx, float add_factor, float del_factor, float init_gain,
                                 bool debug) {
    bind(bic, &heap);
    m_track = track;
    m_node = node;
    m_heap_idx = heap_idx;
    m_add_factor = add_factor;
    m_del_factor = del_factor;
    m_init_gain = init_gain;
    m_gain = init_gain;
    m_outside = true;
    m_debug = debug;
    m_delta = 0.0f;
    const ExpVarGraphBase& g = bic.m_graph;
    m_min_contrib = kMaxFloat;
    m_max_contrib = -kMaxFloat;
    for (int v = g.m_max_exp_node; v < g.m_node_count; ++v) {
        if (!g.node_use(v))
            continue;
        const int b = m_wgt->get_var_node_bin(v);
        m_min_contrib = std::min(m_min_contrib, m_wgt->get_non_edge_exp_weight(node, b));
        m_max_contrib = std::max(m_max_contrib, m_wgt->get_edge_exp_weight(node, b));
    }
    if (m_debug)
        std::cerr << "SepObs min contrib " << m_min_contrib << "\nSepObs max contrib " << m_max_contrib
                  << std::endl;
    subscribe(0, *this, &BicChangeExpSepeObs::on_reset);
    subscribe(1, *this, &BicChangeExpSepeObs::on_var_change);
    subscribe(2, *this, &BicChangeExpSepeObs::on_change_exps);
    subscribe(3, *this, &BicChangeExpSepeObs::on_var_change);
    subscribe(4, *this, &BicChangeExpSepeObs::on_change_exps);
    subscribe(bic.m_change_me[node], *this, &BicChangeExpSepeObs::on_change_me);
    subscribe(bic.m_exp_add_adj[node], *this, &BicChangeExpSepeObs::on_adj);
    subscribe(bic.m_exp_del_adj[node], *this, &BicChangeExpSepeObs::on_adj);
}

float BicChangeExpSepeObs::contrib(int var_node) const {
    const int edge = m_bic->m_graph.get_edge(m_node, var_node);
    if (edge != -1)
        return m_wgt->get_edge_weight(edge);
    const float c = m_wgt->get_non_edge_exp_weight(m_node, m_wgt->get_var_node_bin(var_node));
    if (m_debug)
        std::cerr << " 0 contrib " << c << std::endl;
    return c;
}

void BicChangeExpSepeObs::recalc_outside() {
    const auto non_edge = [this](const VarTracker& vt) {
        return m_wgt->get_non_edge_exp_weight(m_node, vt.m_bin);
    };
    const auto edge_to = [this](const VarTracker& vt) { return m_bic->m_graph.get_edge(vt.m_node, m_node); };
    const auto own = [this](int var_node) { return contrib(var_node); };
    m_delta = delta_moved_in(*m_track, *m_wgt, m_node, m_min_contrib, m_max_contrib, m_debug, non_edge,
                             edge_to, own);
    place(m_heap_idx, m_node, -m_add_factor * m_delta);
}

void BicChangeExpSepeObs::recalc_inside() {
    m_delta = delta_moved_out(*m_track, m_node, m_min_contrib, m_max_contrib, m_debug,
                              [this](int var_node) { return contrib(var_node); });
    place(m_heap_idx, m_node, -m_del_factor * m_delta);
}

void BicChangeExpSepeObs::on_reset(int) {
    m_gain = m_init_gain;
    m_outside = true;
}

void BicChangeExpSepeObs::on_change_exps(int) {
    if (!m_outside)
        recalc_inside();
    else if (m_gain > 0.0f)
        recalc_outside();
}

void BicChangeExpSepeObs::after_gain(float old) {
    if (!m_outside) {
        recalc_inside();
    } else if (m_gain > 0.0f) {
        recalc_outside();
    } else if (old > 0.0f) {
        take_out(m_heap_idx, m_node);
    }
}

void BicChangeExpSepeObs::on_var_change(int code) {
    const float old = m_gain;
    const float w = m_wgt->get_non_edge_exp_weight(m_node, m_bic->m_cur_var_bin);
    if (code == 1)
        m_gain += w;
    else
        m_gain -= w;
    after_gain(old);
}

void BicChangeExpSepeObs::on_adj(int code) {
    const float old = m_gain;
    const float w = m_wgt->get_edge_cnc(m_bic->m_cur_edge);
    if (code == m_bic->m_exp_add_adj[m_node])
        m_gain += w;
    else
        m_gain -= w;
    after_gain(old);
}

void BicChangeExpSepeObs::on_change_me(int) {
    take_out(m_heap_idx, m_node);
    if (m_bic->m_exps.get_ind(m_node)) {
        m_outside = false;
        recalc_inside();
    } else {
        m_outside = true;
        if (m_gain > 0.0f)
            recalc_outside();
    }
}

// ---- BicChangeVarSepeObs

void BicChangeVarSepeObs::attach(DynBiclust& bic, BicHeap& heap, AllCondSeperTrack* track, int node,
                                 int add_heap, int del_heap, float init_gain, bool debug) {
    bind(bic, &heap);
    m_track = track;
    m_node = node;
    m_bin = m_wgt->get_var_node_bin(node);
    m_add_heap = add_heap;
    m_del_heap = del_heap;
    m_init_gain = init_gain;
    m_gain = init_gain;
    m_outside = true;
    m_debug = debug;
    m_delta = 0.0f;
    const ExpVarGraphBase& g = bic.m_graph;
    m_min_contrib = kMaxFloat;
    m_max_contrib = -kMaxFloat;
    for (int e = 0; e < g.m_max_exp_node; ++e) {
        if (!g.node_use(e))
            continue;
        m_min_contrib = std::min(m_min_contrib, m_wgt->get_non_edge_exp_weight(e, m_bin));
        m_max_contrib = std::max(m_max_contrib, m_wgt->get_edge_exp_weight(e, m_bin));
    }
    if (m_debug)
        std::cerr << "SepObs min contrib " << m_min_contrib << "\nSepObs max contrib " << m_max_contrib
                  << std::endl;
    subscribe(0, *this, &BicChangeVarSepeObs::on_reset);
    subscribe(1, *this, &BicChangeVarSepeObs::on_change_vars);
    subscribe(2, *this, &BicChangeVarSepeObs::on_exp_change);
    subscribe(3, *this, &BicChangeVarSepeObs::on_change_vars);
    subscribe(4, *this, &BicChangeVarSepeObs::on_exp_change);
    subscribe(bic.m_change_me[node], *this, &BicChangeVarSepeObs::on_change_me);
    subscribe(bic.m_var_add_adj[node], *this, &BicChangeVarSepeObs::on_adj);
    subscribe(bic.m_var_del_adj[node], *this, &BicChangeVarSepeObs::on_adj);
}

float BicChangeVarSepeObs::contrib(int exp_node) const {
    const int edge = m_bic->m_graph.get_edge(exp_node, m_node);
    if (edge != -1)
        return m_wgt->get_edge_weight(edge);
    const float c = m_wgt->get_non_edge_exp_weight(exp_node, m_bin);
    if (m_debug)
        std::cerr << " 0 contrib " << c << std::endl;
    return c;
}

void BicChangeVarSepeObs::recalc_outside() {
    const auto non_edge = [this](const CondTracker& ct) {
        return m_wgt->get_non_edge_exp_weight(ct.m_node, m_bin);
    };
    const auto edge_to = [this](const CondTracker& ct) { return m_bic->m_graph.get_edge(m_node, ct.m_node); };
    const auto own = [this](int exp_node) { return contrib(exp_node); };
    m_delta = delta_moved_in(*m_track, *m_wgt, m_node, m_min_contrib, m_max_contrib, m_debug, non_edge,
                             edge_to, own);
    place(m_add_heap, m_node, -m_delta);
}

void BicChangeVarSepeObs::recalc_inside() {
    m_delta = delta_moved_out(*m_track, m_node, m_min_contrib, m_max_contrib, m_debug,
                              [this](int exp_node) { return contrib(exp_node); });
    place(m_del_heap, m_node, -m_delta);
}

void BicChangeVarSepeObs::on_reset(int) {
    m_gain = m_init_gain;
    m_outside = true;
}

void BicChangeVarSepeObs::on_change_vars(int) {
    if (!m_outside)
        recalc_inside();
    else if (m_gain > 0.0f)
        recalc_outside();
}

void BicChangeVarSepeObs::after_gain(float old) {
    if (!m_outside) {
        recalc_inside();
    } else if (m_gain > 0.0f) {
        recalc_outside();
    } else if (old > 0.0f) {
        take_out(m_add_heap, m_node);
    }
}

void BicChangeVarSepeObs::on_exp_change(int code) {
    const float old = m_gain;
    const float w = m_wgt->get_non_edge_exp_weight(m_bic->m_cur_exp_node, m_bin);
    if (code == 2)
        m_gain += w;
    else
        m_gain -= w;
    after_gain(old);
}

void BicChangeVarSepeObs::on_adj(int code) {
    const float old = m_gain;
    const float w = m_wgt->get_edge_cnc(m_bic->m_cur_edge);
    if (code == m_bic->m_var_add_adj[m_node])
        m_gain += w;
    else
        m_gain -= w;
    after_gain(old);
}

void BicChangeVarSepeObs::on_change_me(int) {
    if (m_bic->m_vars.get_ind(m_node)) {
        take_out(m_add_heap, m_node);
        m_outside = false;
        recalc_inside();
    } else {
        take_out(m_del_heap, m_node);
        m_outside = true;
        if (m_gain > 0.0f)
            recalc_outside();
    }
}
