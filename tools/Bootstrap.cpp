// The bootstrap passes, evaluated class by class for each set.
#include "Bootstrap.h"

#include "Annot.h"
#include "Random.h"

#include <iostream>
#include <utility>

void bootstrap_init(BootstrapState& st, int chip_lines, int n_vars) {
    st.slots.resize(chip_lines);
    for (int i = 0; i < chip_lines; ++i)
        st.slots[i] = i;
    st.image.assign(n_vars, -1);
}

void bootstrap_shuffle(BootstrapState& st, const std::vector<int>& chip_ids) {
    std::vector<int>& slots = st.slots;
    const int n = static_cast<int>(slots.size());
    for (int i = n - 1; i >= 1; --i) {
        const float u = static_cast<float>(static_cast<double>(Random::bits()) / 4294967295.0);
        int j = static_cast<int>(static_cast<double>(u) * i);
        if (j == i)
            j = i - 1;
        st.image[chip_ids[slots[j]]] = chip_ids[slots[i]];
        std::swap(slots[i], slots[j]);
    }
}

void bootstrap_reference(const VarClasses& classes, const std::vector<std::vector<int>>& sets,
                         const std::vector<int>& chip_ids, int n_vars, int passes, float ceiling,
                         BootstrapState& st, std::vector<float>& kept) {
    ds_bitvec scratch(n_vars);
    for (int b = 0; b < passes; ++b) {
        bootstrap_shuffle(st, chip_ids);
        if (b % 40 == 0)
            std::cerr << "boot " << b << std::endl;
        float best = 0.0f;
        for (const std::vector<int>& set : sets) {
            if (set.empty())
                continue;
            scratch.clear();
            // An image of -1 is set as it is: it lands on bit 31 of word 0.
            for (int g : set)
                scratch.set_ind(st.image[g]);
            const float pv = get_best_pval(classes, scratch);
            if (pv < best)
                best = pv;
        }
        if (best < ceiling)
            kept.push_back(best);
    }
}
