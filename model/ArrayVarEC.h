// ArrayVarEC: variables grouped into classes by the set of array types that measure them, with the
// experiments in which each class has values.
#ifndef VESK_MODEL_ARRAYVAREC_H
#define VESK_MODEL_ARRAYVAREC_H

#include "ds/BitVec.h"

#include <vector>

class ArraysGeneSets;
class StateDataSetBase;

class ArrayVarEC {
public:
    explicit ArrayVarEC(StateDataSetBase& dataset);

    int ec_of_var(int v) const { return m_var_ec[v]; }
    const ds_bitvec& ec_exps(int ec) const { return m_ec_exps[ec]; }
    int num_ecs() const { return static_cast<int>(m_ec_exps.size()); }

    StateDataSetBase& m_dataset;
    ArraysGeneSets* m_arrays;
    std::vector<int> m_var_ec;  // variable to class
    std::vector<int> m_ec_mask; // class to its bit mask of array types
    std::vector<ds_bitvec> m_ec_exps;
};

#endif
