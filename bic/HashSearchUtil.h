// What the condition and the property hash searches share: recording a subset in a bounded table, and
// thinning a result list of overlapping biclusters.
#ifndef VESK_BIC_HASHSEARCHUTIL_H
#define VESK_BIC_HASHSEARCHUTIL_H

#include "DynBiclust.h"
#include "ExpVarGraphBase.h"

#include <list>

// The entry of `key` to which a variable adds `wgt`, or null when it adds nothing: an absent key is
// opened only while the table has fewer than `limit` entries and `wgt` is above 0. Prints "hash size "
// with the size at every multiple of 10000 below the limit.
template <class Table, class Key>
typename Table::mapped_type* hash_table_entry(Table& table, const Key& key, unsigned int limit, float wgt);

// For each bicluster b1 of `bics`, in order, and each b2 after it: e is the number of condition nodes
// of b2 whose id (`exp_id(node)`, in [0, exp_ids)) occurs among b1's, v the same for variable ids, and
// the overlap e*v / (|b1| + |b2| - e*v) with |b| its conditions times its variables. Above
// `max_overlap` the lower scoring one is erased, b1 on a tie ("remove b1 ", "remove b2 "), and once b1
// goes the scan goes on with the element after it.
template <class Bic, class ExpId>
void reduce_overlapping_bics(std::list<Bic>& bics, const ExpVarGraphBase& graph, int exp_ids, ExpId exp_id,
                             float max_overlap);

#include "HashSearchUtil.tcc"

#endif
