// Bodies of the hash search helpers.
#ifndef VESK_BIC_HASHSEARCHUTIL_TCC
#define VESK_BIC_HASHSEARCHUTIL_TCC

#include "ds/BitVec.h"
#include "ds/BitVecIter.h"

#include <iostream>
#include <iterator>
#include <vector>

template <class Table, class Key>
typename Table::mapped_type* hash_table_entry(Table& table, const Key& key, unsigned int limit, float wgt) {
    typename Table::iterator found = table.find(key);
    const bool room = table.size() < limit;
    if (found == table.end() && !(room && wgt > 0.0f))
        return nullptr;
    if (room && table.size() % 10000 == 0)
        std::cerr << "hash size " << table.size() << "\n";
    if (found == table.end())
        found = table.emplace(key, typename Table::mapped_type()).first;
    return &found->second;
}

namespace hash_search_detail {
// The condition ids and variable ids of a bicluster's nodes, with multiplicity: layer k holds the ids
// met more than k times (a condition or a variable may stand in the bicluster in both orientations).
struct IdLayers {
    std::vector<ds_bitvec> exps, vars;
    int cells;
};

inline void add_id(std::vector<ds_bitvec>& layers, int size, int id) {
    if (id < 0 || id >= size)
        return;
    std::size_t k = 0;
    while (k < layers.size() && layers[k].get_ind(id))
        ++k;
    if (k == layers.size()) {
        layers.emplace_back(size);
        layers.back().clear();
    }
    layers[k].set_ind(id);
}

// Nodes of the bicluster of `two` whose id is in `one` (a set of ids).
inline int shared_ids(const ds_bitvec& one, const std::vector<ds_bitvec>& two) {
    int n = 0;
    for (const ds_bitvec& layer : two)
        n += one.on_bits_and(layer);
    return n;
}
} // namespace hash_search_detail

template <class Bic, class ExpId>
void reduce_overlapping_bics(std::list<Bic>& bics, const ExpVarGraphBase& graph, int exp_ids, ExpId exp_id,
                             float max_overlap) {
    using hash_search_detail::IdLayers;
    using hash_search_detail::shared_ids;
    // The ids of every result are gathered once, beside the list, so that a pair costs a few word
    // operations; an empty layer list stands for no ids.
    std::list<IdLayers> ids;
    for (const Bic& b : bics) {
        IdLayers l;
        for (ds_bitvec_iter e(b.m_exps); e; ++e)
            hash_search_detail::add_id(l.exps, exp_ids, exp_id(static_cast<int>(e)));
        for (ds_bitvec_iter v(b.m_vars); v; ++v)
            hash_search_detail::add_id(l.vars, graph.m_var_num, graph.node_var(v));
        l.cells = b.m_exps.on_bits() * b.m_vars.on_bits();
        ids.push_back(l);
    }
    ds_bitvec none_exps(exp_ids), none_vars(graph.m_var_num);
    none_exps.clear();
    none_vars.clear();
    typename std::list<IdLayers>::iterator i1 = ids.begin();
    for (typename std::list<Bic>::iterator b1 = bics.begin(); b1 != bics.end();) {
        const ds_bitvec& exps1 = i1->exps.empty() ? none_exps : i1->exps[0];
        const ds_bitvec& vars1 = i1->vars.empty() ? none_vars : i1->vars[0];
        const int size1 = i1->cells;
        bool b1_gone = false;
        typename std::list<IdLayers>::iterator i2 = std::next(i1);
        for (typename std::list<Bic>::iterator b2 = std::next(b1); b2 != bics.end();) {
            const int e = shared_ids(exps1, i2->exps);
            const int v = shared_ids(vars1, i2->vars);
            const int inter = e * v;
            const int size2 = i2->cells;
            const float overlap = static_cast<float>(inter) / static_cast<float>(size1 + size2 - inter);
            if (overlap > max_overlap) {
                if (b2->m_score < b1->m_score) {
                    std::cerr << "remove b2 " << b2->m_score << "\n";
                    b2 = bics.erase(b2);
                    i2 = ids.erase(i2);
                    continue;
                }
                std::cerr << "remove b1 " << b1->m_score << "\n";
                b1 = bics.erase(b1);
                i1 = ids.erase(i1);
                b1_gone = true;
                break;
            }
            ++b2;
            ++i2;
        }
        if (!b1_gone) {
            ++b1;
            ++i1;
        }
    }
}

#endif
