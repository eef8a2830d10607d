// The enrichment test of the vesk tool: per-class hypergeometric terms, annotation and redundancy filter.
#ifndef VESK_TOOLS_ANNOT_H
#define VESK_TOOLS_ANNOT_H

#include "SpecialFunc.h"

#include <ostream>
#include <vector>

class VarClasses;
class ds_bitvec;

// One reported class of one gene set.
struct Annot {
    int m_cls;
    int m_inter;
    float m_log_pv;
    float m_frac;
    bool m_filtered;
};

// Run-wide settings, set once before the bootstrap starts.
extern int g_min_cls_size;
extern int g_max_cls_size;
extern int g_min_inter;
extern float g_max_pv_to_rep;        // natural log of the option's probability
extern float g_filter_red_pv_thresh; // natural log of the option's probability
extern int g_univ_size;              // on-bit count of the chip mask
extern BinomFuncTable g_hg_func;     // tables of 100 x 100

// Smallest log_hg over the classes that pass the size and overlap filters, 0 if none is
// smaller. The set is reduced to its non-zero bytes and each class visits only those.
float get_best_pval(const VarClasses& classes, const ds_bitvec& set);

// Fills `out` with the classes whose log probability is below g_max_pv_to_rep and `order`
// with their indices, best first (ties in class id order), then marks redundant classes.
void annotate(const VarClasses& classes, const ds_bitvec& set, std::vector<Annot>& out,
              std::vector<int>& order);

// One tested class of a set of `m` members: a trace line for a rare overlap, and an Annot (with its
// log probability in `pvs` and its index in `order`) when the probability is below g_max_pv_to_rep.
void annotate_class(int c, int size, int m, int inter, float pv, std::ostream& trace, std::vector<Annot>& out,
                    std::vector<float>& pvs, std::vector<int>& order);

// Log probability of class b's overlap with the set once class a is known: the sum of the
// terms inside a and outside a.
float dep_hg_pv(const VarClasses& classes, int a, int b, const ds_bitvec& set);

#endif
