// IndirectSort: orders indices by the values they point at, ascending and stable.
#ifndef VESK_STDALG_INDIRECTSORT_H
#define VESK_STDALG_INDIRECTSORT_H

#include <algorithm>
#include <vector>

// Sorts `order` so that values[order[0]] <= values[order[1]] <= ...; indices with equal
// values keep their relative order.
template <class T> void IndirectSort(std::vector<int>& order, const std::vector<T>& values) {
    std::stable_sort(order.begin(), order.end(), [&values](int a, int b) { return values[a] < values[b]; });
}

#endif
