// get_best_pval, annotate and dep_hg_pv.
#include "Annot.h"

#include "IndirectSort.h"
#include "VarClasses.h"
#include "ds/BitVecIter.h"

#include <iostream>

int g_min_cls_size = 0;
int g_max_cls_size = 0;
int g_min_inter = 0;
float g_max_pv_to_rep = 0.0f;
float g_filter_red_pv_thresh = 0.0f;
int g_univ_size = 0;
BinomFuncTable g_hg_func(100, 100);

float get_best_pval(const VarClasses& classes, const ds_bitvec& set) {
    const int m = set.on_bits();
    float best = 0.0f;

    ds_bitvec::byte_list bytes;
    for (ds_bitvec_iter it(set); it; ++it) {
        const int b = static_cast<int>(it) / 8;
        if (bytes.empty() || bytes.back().first != b)
            bytes.emplace_back(b, set.byte(b));
    }

    const int n = classes.class_count();
    for (int c = 0; c < n; ++c) {
        const ds_bitvec& cls = classes.m_class_bits[c];
        const int size = cls.on_bits();
        if (size < g_min_cls_size || size > g_max_cls_size)
            continue;
        const int inter = cls.on_bits_and_pointers(bytes);
        if (inter < g_min_inter)
            continue;
        const float pv = g_hg_func.log_hg(g_univ_size, size, m, inter);
        if (pv < best)
            best = pv;
    }
    return best;
}

float dep_hg_pv(const VarClasses& classes, int a, int b, const ds_bitvec& set) {
    const ds_bitvec& A = classes.m_class_bits[a];
    const ds_bitvec& B = classes.m_class_bits[b];
    ds_bitvec AB(A.size());
    AB.copy(A).andeq(B);

    const int size_a = A.on_bits();
    const int size_b = B.on_bits();
    const int size_ab = AB.on_bits();
    const int size_s = set.on_bits();
    const int s_a = set.on_bits_and(A);
    const int s_b = set.on_bits_and(B);
    const int s_ab = set.on_bits_and(AB);

    const float inside = g_hg_func.log_hg(size_a, size_ab, s_a, s_ab);
    const float outside = g_hg_func.log_hg(g_univ_size - size_a, size_b - size_ab, size_s - s_a, s_b - s_ab);
    return inside + outside;
}

void annotate_class(int c, int size, int m, int inter, float pv, std::ostream& trace, std::vector<Annot>& out,
                    std::vector<float>& pvs, std::vector<int>& order) {
    if (pv < -8.0)
        trace << "pv " << pv << " size " << g_univ_size << " fp " << size << " m " << m << " inter " << inter
              << std::endl;
    if (pv < g_max_pv_to_rep) {
        out.push_back(Annot{c, inter, pv, static_cast<float>(inter) / static_cast<float>(m), false});
        pvs.push_back(pv);
        order.push_back(static_cast<int>(out.size()) - 1);
    }
}

void annotate(const VarClasses& classes, const ds_bitvec& set, std::vector<Annot>& out,
              std::vector<int>& order) {
    out.clear();
    order.clear();
    std::vector<float> pvs;

    const int m = set.on_bits();
    const int n = classes.class_count();
    for (int c = 0; c < n; ++c) {
        const ds_bitvec& cls = classes.m_class_bits[c];
        const int size = cls.on_bits();
        if (size < g_min_cls_size || size > g_max_cls_size)
            continue;
        const int inter = cls.on_bits_and(set);
        if (inter < g_min_inter)
            continue;
        const float pv = g_hg_func.log_hg(g_univ_size, size, m, inter);
        annotate_class(c, size, m, inter, pv, std::cerr, out, pvs, order);
    }
    IndirectSort(order, pvs);

    // A class is redundant when, given a better class, its own overlap is no longer surprising.
    for (std::size_t ia = 0; ia < order.size(); ++ia) {
        const Annot& better = out[order[ia]];
        if (better.m_filtered)
            continue;
        for (std::size_t ib = ia + 1; ib < order.size(); ++ib) {
            Annot& worse = out[order[ib]];
            const float dep = dep_hg_pv(classes, better.m_cls, worse.m_cls, set);
            if (dep > g_filter_red_pv_thresh) {
                std::cerr << "Filter " << worse.m_cls << " by " << better.m_cls << " deppv " << dep
                          << std::endl;
                worse.m_filtered = true;
            }
        }
    }
}
