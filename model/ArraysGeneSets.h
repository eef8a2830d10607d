// ArraysGeneSets: for each array type, the variables it measures.
#ifndef VESK_MODEL_ARRAYSGENESETS_H
#define VESK_MODEL_ARRAYSGENESETS_H

#include "ds/BitVec.h"

#include <istream>
#include <vector>

class VarUniverse;

class ArraysGeneSets {
public:
    explicit ArraysGeneSets(VarUniverse& universe) : m_universe(universe) {}

    // arrk: array type id, a name, rest of the line ignored; read to its end first.
    // arrd: pairs of array type id and variable id.
    void read(std::istream& arrk, std::istream& arrd);

    int size() const { return static_cast<int>(m_array_vars.size()); }
    // Appends an empty array type sized to the universe and returns its index.
    int add_array();
    ds_bitvec& operator[](int a) { return m_array_vars[a]; }
    const ds_bitvec& operator[](int a) const { return m_array_vars[a]; }
    // Whether array type `a` measures variable `v`; false for an array type or variable out of range.
    bool measures(int a, int v) const;

    VarUniverse& m_universe;
    std::vector<ds_bitvec> m_array_vars;
};

#endif
