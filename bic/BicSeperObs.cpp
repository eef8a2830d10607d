// AllVarSeperTrack, AllCondSeperTrack and the separation observers of conditions and variables.
#include "BicSeperObs.h"
#include "BicSeperObs.tcc"

bool VarTracker::operator<(const VarTracker& o) const {
    return m_track->score(m_node) < o.m_track->score(o.m_node);
}

bool CondTracker::operator<(const CondTracker& o) const {
    return m_track->score(m_node) < o.m_track->score(o.m_node);
}

template class SeperTrack<VarSide>;
template class SeperTrack<CondSide>;
template class SepeObs<BicChangeExpSepeObs, CondSide, AllVarSeperTrack>;
template class SepeObs<BicChangeVarSepeObs, VarSide, AllCondSeperTrack>;

void AllVarSeperTrack::attach(DynBiclust& bic, const ds_bitvec& vars) {
    const ExpVarGraphBase& g = bic.m_graph;
    attach_side(bic, [&](int v) { return g.node_use(v) && !vars.get_ind(g.node_var(v)); });
}

void AllCondSeperTrack::attach(DynBiclust& bic, const ExpClasses& classes, int cls) {
    const ExpVarGraphBase& g = bic.m_graph;
    attach_side(bic, [&](int e) {
        const int c = classes.class_of(g.node_exp(e));
        return g.node_use(e) && c != cls && c != -1;
    });
}

void BicChangeExpSepeObs::attach(DynBiclust& bic, BicHeap& heap, AllVarSeperTrack* track, int node,
                                 int heap_idx, float add_factor, float del_factor, float init_gain,
                                 bool debug) {
    bind(bic, &heap);
    m_heap_idx = heap_idx;
    m_add_factor = add_factor;
    m_del_factor = del_factor;
    attach_side(track, node, init_gain, debug);
}

void BicChangeVarSepeObs::attach(DynBiclust& bic, BicHeap& heap, AllCondSeperTrack* track, int node,
                                 int add_heap, int del_heap, float init_gain, bool debug) {
    bind(bic, &heap);
    m_bin = m_wgt->get_var_node_bin(node);
    m_add_heap = add_heap;
    m_del_heap = del_heap;
    attach_side(track, node, init_gain, debug);
}
