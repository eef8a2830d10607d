// HgTable, ClassIndex and FastAnnotator.
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

ClassIndex::ClassIndex(const VarClasses& classes, int n_vars, bool size_filtered) {
    const int n = classes.class_count();
    var_classes.resize(n_vars > 0 ? n_vars : 0);
    members.resize(n);
    size.assign(n, 0);
    for (int c = 0; c < n; ++c) {
        const ds_bitvec& bits = classes.m_class_bits[c];
        size[c] = bits.on_bits();
        if (size_filtered && (size[c] < g_min_cls_size || size[c] > g_max_cls_size))
            continue;
        for (ds_bitvec_iter it(bits); it; ++it) {
            const int v = it;
            members[c].push_back(v);
            var_classes[v].push_back(c);
        }
    }
}

FastAnnotator::FastAnnotator(const VarClasses& classes, int n_vars, int max_set)
    : m_classes(classes), m_index(classes, n_vars, false),
      m_hg(std::max(std::max(g_univ_size, n_vars), max_set) + 1), m_stamp(classes.class_count(), 0),
      m_count(classes.class_count(), 0) {}

namespace {

inline bool has_bit(const ds_bitvec& v, int i) { return (v.word(i / 32) >> (i & 31)) & 1u; }

} // namespace

void FastAnnotator::annotate(const ds_bitvec& set, std::vector<Annot>& out, std::vector<int>& order) {
    out.clear();
    order.clear();
    std::vector<float> pvs;
    // Trace lines are gathered and written at once: the error stream is unbuffered.
    std::ostringstream trace;

    // Overlap of every class with the set, through the members' classes.
    ++m_now;
    for (ds_bitvec_iter it(set); it; ++it) {
        const int v = it;
        if (v >= static_cast<int>(m_index.var_classes.size()))
            continue;
        for (int c : m_index.var_classes[v]) {
            if (m_stamp[c] != m_now) {
                m_stamp[c] = m_now;
                m_count[c] = 0;
            }
            ++m_count[c];
        }
    }

    const int m = set.on_bits();
    const int n = m_classes.class_count();
    for (int c = 0; c < n; ++c) {
        const int size = m_index.size[c];
        if (size < g_min_cls_size || size > g_max_cls_size)
            continue;
        const int inter = m_stamp[c] == m_now ? m_count[c] : 0;
        if (inter < g_min_inter)
            continue;
        const float pv = m_hg.log_hg(g_univ_size, size, m, inter);
        annotate_class(c, size, m, inter, pv, trace, out, pvs, order);
    }
    IndirectSort(order, pvs);

    // Redundancy filter, with the counts of dep_hg_pv taken from member lists.
    std::vector<int> set_in_a;
    for (std::size_t ia = 0; ia < order.size(); ++ia) {
        const Annot& better = out[order[ia]];
        if (better.m_filtered)
            continue;
        const int a = better.m_cls;
        const ds_bitvec& A = m_classes.m_class_bits[a];
        const std::vector<int>& a_members = m_index.members[a];
        set_in_a.clear();
        for (int v : a_members)
            if (has_bit(set, v))
                set_in_a.push_back(v);
        const int size_a = m_index.size[a];
        const int s_a = better.m_inter;
        for (std::size_t ib = ia + 1; ib < order.size(); ++ib) {
            Annot& worse = out[order[ib]];
            const int b = worse.m_cls;
            const ds_bitvec& B = m_classes.m_class_bits[b];
            const std::vector<int>& b_members = m_index.members[b];
            int size_ab = 0;
            if (a_members.size() <= b_members.size()) {
                for (int v : a_members)
                    size_ab += has_bit(B, v);
            } else {
                for (int v : b_members)
                    size_ab += has_bit(A, v);
            }
            int s_ab = 0;
            for (int v : set_in_a)
                s_ab += has_bit(B, v);
            const int size_b = m_index.size[b];
            const int s_b = worse.m_inter;
            const float inside = m_hg.log_hg(size_a, size_ab, s_a, s_ab);
            const float outside = m_hg.log_hg(g_univ_size - size_a, size_b - size_ab, m - s_a, s_b - s_ab);
            const float dep = inside + outside;
            if (dep > g_filter_red_pv_thresh) {
                trace << "Filter " << b << " by " << a << " deppv " << dep << std::endl;
                worse.m_filtered = true;
            }
        }
    }
    const std::string text = trace.str();
    if (!text.empty())
        std::cerr << text << std::flush;
}
