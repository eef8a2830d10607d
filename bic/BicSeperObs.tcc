// Template bodies of SeperTrack<Side> and SepeObs<Obs, Side, Track>.
#ifndef VESK_BIC_BICSEPEROBS_TCC
#define VESK_BIC_BICSEPEROBS_TCC

#include "BicSeperObs.h"
#include "FloatRatio.h"
#include "error.h"

#include <algorithm>
#include <iostream>

inline constexpr char kBicSeperObsSrc[] = "BicSeperObs";

// ---- SeperTrack

template <class Side>
template <class Admit>
void SeperTrack<Side>::attach_side(DynBiclust& bic, Admit admit) {
    bind(bic, nullptr);
    const ExpVarGraphBase& g = bic.m_graph;
    this->size_scores(g);
    m_in.clear();
    m_out.clear();
    for (int n = Side::begin(g); n < Side::end(g); ++n)
        if (admit(n))
            m_out.push_back(Tracker(this, n, Side::wkey(*m_wgt, n)));
    m_iter.reset(g.new_edge_iter(0, Side::Other::kToOther));
    subscribe(0, *this, &SeperTrack::on_reset);
    for (int code = 1; code <= 4; ++code)
        if (code == Side::kAdded || code == Side::kDeleted)
            subscribe(code, *this, &SeperTrack::on_own_change);
        else
            subscribe(code, *this, &SeperTrack::on_other_change);
}

template <class Side> void SeperTrack<Side>::sort_lists() {
    std::stable_sort(m_in.begin(), m_in.end());
    std::stable_sort(m_out.begin(), m_out.end());
}

template <class Side> void SeperTrack<Side>::print_lists(const char* title) const {
    std::cerr << title << "\n in:";
    for (const Tracker& t : m_in)
        std::cerr << " " << t.m_node << ":" << this->score(t.m_node);
    std::cerr << "\n out:";
    for (const Tracker& t : m_out)
        std::cerr << " " << t.m_node << ":" << this->score(t.m_node);
    std::cerr << std::endl;
}

template <class Side> void SeperTrack<Side>::update_seper() {
    if (m_debug && this->kTraceSizes)
        std::cerr << this->kName << " sizes " << m_in.size() << " non " << m_out.size() << std::endl;
    if (m_in.empty() || m_out.empty())
        return;
    const float lo = this->score(m_in.front().m_node);
    const float hi = this->score(m_out.back().m_node);
    if (m_debug)
        std::cerr << this->kName << " upd sep " << lo << " vs " << hi << std::endl;
    m_seper = lo - hi;
}

template <class Side> void SeperTrack<Side>::on_reset(int) {
    if (m_debug)
        std::cerr << this->kName << " reset" << std::endl;
    m_in.clear();
    std::fill(this->scores().begin(), this->scores().end(), 0.0f);
}

template <class Side> void SeperTrack<Side>::on_own_change(int code) {
    const int node = Side::cur_node(*m_bic);
    const bool added = code == Side::kAdded;
    if (added) {
        m_in.push_back(Tracker(this, node, Side::cur_wkey(*m_bic)));
        std::stable_sort(m_in.begin(), m_in.end());
    } else {
        for (auto it = m_in.begin(); it != m_in.end(); ++it)
            if (it->m_node == node) {
                m_in.erase(it);
                break;
            }
    }
    update_seper();
    if (m_debug && this->kOwnTrace[added])
        std::cerr << this->kOwnTrace[added] << node << " " << m_seper << std::endl;
}

// A node of the other side joined or left: every score of this side gains or loses what that node
// gives it, edge by edge and then through the non-edge weights.
template <class Side> void SeperTrack<Side>::on_other_change(int code) {
    using float_ratio::kMaxFloat;
    typedef typename Side::Other Other;
    const bool added = code == Other::kAdded;
    const float sign = added ? 1.0f : -1.0f;
    const bool check = added && this->kCheckSums;
    for (m_iter->restart(Other::cur_node(*m_bic), Other::kToOther); !m_iter->at_end(); ++*m_iter) {
        float& s = this->score_at(m_iter->other());
        s += sign * m_wgt->get_edge_cnc(m_iter->edge());
        if (check && s >= kMaxFloat)
            VESK_FATAL(kBicSeperObsSrc, "Bad weight " << s << " at all var add exp");
    }
    const ExpVarGraphBase& g = m_bic->m_graph;
    const int theirs = Other::cur_wkey(*m_bic);
    for (int n = Side::begin(g); n < Side::end(g); ++n) {
        if (!g.node_use(n))
            continue;
        float& s = this->score_at(n);
        s += sign * Side::non_edge(*m_wgt, Side::wkey(*m_wgt, n), theirs);
        if (check && s <= -kMaxFloat)
            VESK_FATAL(kBicSeperObsSrc, "Bad non weight " << s << " at all var add exp");
    }
    sort_lists();
    if (m_debug && this->kOtherTrace[added])
        print_lists(this->kOtherTrace[added]);
    update_seper();
}

// ---- SepeObs

template <class Obs, class Side, class Track>
void SepeObs<Obs, Side, Track>::attach_side(Track* track, int node, float init_gain, bool debug) {
    using float_ratio::kMaxFloat;
    typedef typename Side::Other Other;
    attach_node<Side>(node, init_gain, *this, &SepeObs::on_change_me, &SepeObs::on_adj);
    m_track = track;
    m_init_gain = init_gain;
    m_debug = debug;
    m_delta = 0.0f;
    const ExpVarGraphBase& g = m_bic->m_graph;
    const int mine = self().wkey();
    m_min_contrib = kMaxFloat;
    m_max_contrib = -kMaxFloat;
    for (int n = Other::begin(g); n < Other::end(g); ++n) {
        if (!g.node_use(n))
            continue;
        const int theirs = Other::wkey(*m_wgt, n);
        m_min_contrib = std::min(m_min_contrib, Side::non_edge(*m_wgt, mine, theirs));
        m_max_contrib = std::max(m_max_contrib, Side::edge_weight(*m_wgt, mine, theirs));
    }
    if (m_debug)
        std::cerr << "SepObs min contrib " << m_min_contrib << "\nSepObs max contrib " << m_max_contrib
                  << std::endl;
    subscribe(0, *this, &SepeObs::on_reset);
    for (int code = 1; code <= 4; ++code)
        if (code == Side::kAdded || code == Side::kDeleted)
            subscribe(code, *this, &SepeObs::on_own_change);
        else
            subscribe(code, *this, &SepeObs::on_other_change);
}

template <class Obs, class Side, class Track> float SepeObs<Obs, Side, Track>::contrib(int other) const {
    const int edge = Side::edge(m_bic->m_graph, m_node, other);
    if (edge != -1)
        return m_wgt->get_edge_weight(edge);
    const float c =
        Side::non_edge(*m_wgt, static_cast<const Obs&>(*this).wkey(), Side::Other::wkey(*m_wgt, other));
    if (m_debug)
        std::cerr << " 0 contrib " << c << std::endl;
    return c;
}

// The separation with the node moved in, minus the one the track has. A member's score gains what
// the node gives it: the non-edge weight when no edge joins them, else the edge's weight (looked up
// against the direction of the edges, so the non-edge value is the one taken); a non-member's gains
// contrib. The bounds end the scans of the sorted lists early.
template <class Obs, class Side, class Track> void SepeObs<Obs, Side, Track>::recalc_outside() {
    using float_ratio::kMaxFloat;
    const Track& t = *m_track;
    const int mine = self().wkey();
    if (m_debug)
        std::cerr << "SepObs oobic recalc" << std::endl;
    float best_min = kMaxFloat;
    for (const auto& member : t.m_in) {
        const float s = t.score(member.m_node);
        if (best_min < m_min_contrib + s)
            break;
        const float c = Side::non_edge(*m_wgt, mine, member.wkey());
        if (c + s < best_min) {
            const int edge = Side::edge_against(m_bic->m_graph, m_node, member.m_node);
            if (edge == -1) {
                best_min = c + s;
            } else {
                const float w = m_wgt->get_edge_weight(edge) + s;
                if (w < best_min)
                    best_min = w;
            }
            if (m_debug)
                std::cerr << "new min " << best_min << " contrib " << c << std::endl;
        }
    }
    float best_max = -kMaxFloat;
    for (auto it = t.m_out.rbegin(); it != t.m_out.rend(); ++it) {
        const float s = t.score(it->m_node);
        if (m_max_contrib + s < best_max)
            break;
        const float val = contrib(it->m_node) + s;
        if (val > best_max) {
            best_max = val;
            if (m_debug)
                std::cerr << "SepObs new max node " << it->m_node << " " << best_max << std::endl;
        }
    }
    m_delta = (best_min - best_max) - t.m_seper;
    if (m_debug)
        std::cerr << "SepObs " << m_node << " cur_seper " << t.m_seper << " delta " << m_delta << std::endl;
    place(self().add_heap(), m_node, self().add_key(m_delta));
}

// The same with the node moved out: every score loses what the node gives it.
template <class Obs, class Side, class Track> void SepeObs<Obs, Side, Track>::recalc_inside() {
    using float_ratio::kMaxFloat;
    const Track& t = *m_track;
    float best_min = kMaxFloat;
    for (const auto& member : t.m_in) {
        const float s = t.score(member.m_node);
        if (best_min < s - m_max_contrib)
            break;
        const float val = s - contrib(member.m_node);
        if (val < best_min) {
            best_min = val;
            if (m_debug)
                std::cerr << "new min " << best_min << std::endl;
        }
    }
    float best_max = -kMaxFloat;
    for (auto it = t.m_out.rbegin(); it != t.m_out.rend(); ++it) {
        const float s = t.score(it->m_node);
        if (s - m_min_contrib <= best_max)
            break;
        const float val = s - contrib(it->m_node);
        if (val > best_max) {
            best_max = val;
            if (m_debug)
                std::cerr << "SepObs 2 new max node " << it->m_node << " " << best_max << std::endl;
        }
    }
    m_delta = (best_min - best_max) - t.m_seper;
    if (m_debug)
        std::cerr << "SepObs " << m_node << " cur_seper " << t.m_seper << " delta " << m_delta << std::endl;
    place(self().del_heap(), m_node, self().del_key(m_delta));
}

template <class Obs, class Side, class Track> void SepeObs<Obs, Side, Track>::on_reset(int) {
    m_gain = m_init_gain;
    m_outside = true;
}

template <class Obs, class Side, class Track> void SepeObs<Obs, Side, Track>::on_own_change(int) {
    if (!m_outside)
        recalc_inside();
    else if (m_gain > 0.0f)
        recalc_outside();
}

template <class Obs, class Side, class Track> void SepeObs<Obs, Side, Track>::after_gain(float old) {
    if (!m_outside) {
        recalc_inside();
    } else if (m_gain > 0.0f) {
        recalc_outside();
    } else if (old > 0.0f) {
        take_out(self().add_heap(), m_node);
    }
}

template <class Obs, class Side, class Track> void SepeObs<Obs, Side, Track>::on_other_change(int code) {
    const float old = m_gain;
    m_gain += other_step<Side>(self().wkey(), code);
    after_gain(old);
}

template <class Obs, class Side, class Track> void SepeObs<Obs, Side, Track>::on_adj(int code) {
    const float old = m_gain;
    m_gain += adj_step<Side>(m_node, code);
    after_gain(old);
}

template <class Obs, class Side, class Track> void SepeObs<Obs, Side, Track>::on_change_me(int) {
    const bool inside = Side::members(*m_bic).get_ind(m_node);
    take_out(inside ? self().add_heap() : self().del_heap(), m_node);
    m_outside = !inside;
    if (inside)
        recalc_inside();
    else if (m_gain > 0.0f)
        recalc_outside();
}

#endif
