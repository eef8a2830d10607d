// ArrayVarEC construction.
#include "ArrayVarEC.h"

#include "ArraysGeneSets.h"
#include "StateDataSetBase.h"
#include "error.h"

#include <iostream>
#include <map>

static constexpr char kSrc[] = "ArrayVarEC";

ArrayVarEC::ArrayVarEC(StateDataSetBase& dataset)
    : m_dataset(dataset), m_arrays(dataset.m_arrays), m_var_ec(dataset.num_vars(), -1) {
    const int nv = dataset.num_vars();
    const int ne = dataset.m_E;
    if (!m_arrays) {
        std::cerr << "init array var ec to nothing" << std::endl;
        for (int v = 0; v < nv; ++v)
            m_var_ec[v] = 0;
        m_ec_exps.assign(1, ds_bitvec(ne));
        m_ec_exps[0].set(true);
        return;
    }
    const int num_arrays = m_arrays->size();
    if (num_arrays >= 32)
        VESK_FATAL(kSrc,
                   "Calc array ECs with more the 32 arrays is not yet implemented (but is very simple to "
                   "carry out...)");
    std::map<unsigned, int> ec_of_mask;
    for (int v = 0; v < nv; ++v) {
        unsigned mask = 0;
        for (int a = 0; a < num_arrays; ++a)
            if (m_arrays->measures(a, v))
                mask += 1u << a;
        auto found = ec_of_mask.emplace(mask, static_cast<int>(m_ec_mask.size()));
        if (found.second)
            m_ec_mask.push_back(static_cast<int>(mask));
        m_var_ec[v] = found.first->second;
    }
    m_ec_exps.assign(m_ec_mask.size(), ds_bitvec(ne));
    for (int e = 0; e < ne; ++e) {
        const int t = e < static_cast<int>(dataset.m_e_array.size()) ? dataset.m_e_array[e] : -1;
        for (size_t c = 0; c < m_ec_mask.size(); ++c) {
            const unsigned mask = static_cast<unsigned>(m_ec_mask[c]);
            if (t == -1 || (t >= 0 && t < 32 && ((mask >> t) & 1u)))
                m_ec_exps[c].set_ind(e);
        }
    }
}
