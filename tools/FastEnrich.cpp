// HgTable and FastAnnotator.
#include "FastEnrich.h"

#include "IndirectSort.h"
#include "ds/BitVecIter.h"

#include <algorithm>
#include <iostream>
#include <sstream>

HgTable::HgTable(int top) : m_gamma(std::max(top, 0) + 2) {
    for (std::size_t i = 0; i < m_gamma.size(); ++i)
        m_gamma[i] = gamma_ln(static_cast<float>(i));
}

namespace {

inline bool has_bit(const ds_bitvec& v, int i) { return (v.word(i / 32) >> (i & 31)) & 1u; }

} // namespace

FastAnnotator::FastAnnotator(const ClassMembers& classes, int n_vars, int max_set)
    : m_classes(classes), m_offset(static_cast<std::size_t>(std::max(n_vars, 0)) + 1, 0),
      m_hg(std::max(std::max(g_univ_size, n_vars), max_set) + 1), m_dense(n_vars > 0 ? n_vars : 0, -1),
      m_dense_members(classes.class_count()) {
    const int n = classes.class_count();
    for (int c = 0; c < n; ++c)
        for (int v : classes.m_members[c])
            ++m_offset[v + 1];
    for (std::size_t v = 1; v < m_offset.size(); ++v)
        m_offset[v] += m_offset[v - 1];
    m_flat.resize(m_offset.back());
    std::vector<int> fill(m_offset.begin(), m_offset.end() - 1);
    for (int c = 0; c < n; ++c)
        for (int v : classes.m_members[c])
            m_flat[fill[v]++] = c;
    int next = 0;
    for (int v = 0; v < n_vars; ++v)
        if (m_offset[v + 1] > m_offset[v])
            m_dense[v] = next++;
    for (int c = 0; c < n; ++c) {
        m_dense_members[c].reserve(classes.m_members[c].size());
        for (int v : classes.m_members[c])
            m_dense_members[c].push_back(m_dense[v]);
    }
}

FastAnnotator::Workspace FastAnnotator::make_workspace() const {
    Workspace w;
    w.stamp.assign(m_classes.class_count(), 0);
    w.count.assign(m_classes.class_count(), 0);
    int n_dense = 0;
    for (int d : m_dense)
        n_dense = std::max(n_dense, d + 1);
    w.mark.assign(n_dense, 0);
    return w;
}

void FastAnnotator::annotate(const ds_bitvec& set, std::vector<Annot>& out, std::vector<int>& order,
                             std::string& trace_text, Workspace& w) const {
    out.clear();
    order.clear();
    std::vector<float> pvs;
    std::ostringstream trace;

    // Overlap of every class with the set, through the members' classes.
    ++w.now;
    const int n_vars = static_cast<int>(m_offset.size()) - 1;
    for (ds_bitvec_iter it(set); it; ++it) {
        const int v = it;
        if (v >= n_vars)
            continue;
        for (int i = m_offset[v]; i < m_offset[v + 1]; ++i) {
            const int c = m_flat[i];
            if (w.stamp[c] != w.now) {
                w.stamp[c] = w.now;
                w.count[c] = 0;
            }
            ++w.count[c];
        }
    }

    const int m = set.on_bits();
    const int n = m_classes.class_count();
    for (int c = 0; c < n; ++c) {
        const int size = m_classes.size(c);
        if (size < g_min_cls_size || size > g_max_cls_size)
            continue;
        const int inter = w.stamp[c] == w.now ? w.count[c] : 0;
        if (inter < g_min_inter)
            continue;
        const float pv = m_hg.log_hg(g_univ_size, size, m, inter);
        annotate_class(c, size, m, inter, pv, trace, out, pvs, order);
    }
    IndirectSort(order, pvs);

    // Redundancy filter: the counts of dep_hg_pv from the members of b, looked up in a mark of a.
    for (std::size_t ia = 0; ia < order.size(); ++ia) {
        const Annot& better = out[order[ia]];
        if (better.m_filtered)
            continue;
        const int a = better.m_cls;
        const std::vector<int>& a_members = m_classes.m_members[a];
        const std::vector<int>& a_dense = m_dense_members[a];
        for (std::size_t i = 0; i < a_members.size(); ++i)
            w.mark[a_dense[i]] = static_cast<unsigned char>(1 | (has_bit(set, a_members[i]) ? 2 : 0));
        const int size_a = m_classes.size(a);
        const int s_a = better.m_inter;
        for (std::size_t ib = ia + 1; ib < order.size(); ++ib) {
            Annot& worse = out[order[ib]];
            const int b = worse.m_cls;
            int size_ab = 0, s_ab = 0;
            for (int d : m_dense_members[b]) {
                const unsigned x = w.mark[d];
                size_ab += x & 1u;
                s_ab += x >> 1;
            }
            const int size_b = m_classes.size(b);
            const int s_b = worse.m_inter;
            const float inside = m_hg.log_hg(size_a, size_ab, s_a, s_ab);
            const float outside = m_hg.log_hg(g_univ_size - size_a, size_b - size_ab, m - s_a, s_b - s_ab);
            const float dep = inside + outside;
            if (dep > g_filter_red_pv_thresh) {
                trace << "Filter " << b << " by " << a << " deppv " << dep << std::endl;
                worse.m_filtered = true;
            }
        }
        for (int d : a_dense)
            w.mark[d] = 0;
    }
    trace_text = trace.str();
}
