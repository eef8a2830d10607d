// The bootstrap passes, evaluated class by class for each set.
#include "Bootstrap.h"

#include "Annot.h"
#include "FastEnrich.h"
#include "ParallelFor.h"
#include "Random.h"
#include "ds/BitVecIter.h"

#include <algorithm>
#include <cstdint>
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

namespace {

// Scratch of one evaluating thread.
struct Workspace {
    struct Tally {
        std::uint32_t stamp; // pass-and-set number of the last touch
        int count;           // overlap since then
    };
    std::vector<std::uint32_t> var_stamp;
    std::vector<Tally> tally;
    std::vector<int> touched, distinct;
    std::uint32_t var_now = 0, cls_now = 0;

    Workspace(int n_bits, int n_classes) : var_stamp(n_bits, 0), tally(n_classes, Tally{0, 0}) {}
};

// Best log probability of one pass, given the images of every set member (`images`, laid out as
// the flat member list).
float evaluate_pass(const ClassIndex& ix, const HgTable& hg, const std::vector<float>& ln_binom_univ,
                    const std::vector<int>& set_begin, const int* images, int n_vars, Workspace& w) {
    float best = 0.0f;
    const int n_sets = static_cast<int>(set_begin.size()) - 1;
    for (int s = 0; s < n_sets; ++s) {
        // Distinct bits of the scratch set: an image of -1 is bit 31, as set_ind(-1) places it.
        ++w.var_now;
        w.distinct.clear();
        int m = 0;
        for (int j = set_begin[s]; j < set_begin[s + 1]; ++j) {
            const int b = images[j] < 0 ? 31 : images[j];
            if (w.var_stamp[b] == w.var_now)
                continue;
            w.var_stamp[b] = w.var_now;
            ++m;
            if (b < n_vars)
                w.distinct.push_back(b);
        }
        ++w.cls_now;
        w.touched.clear();
        const int* flat = ix.flat.data();
        for (int b : w.distinct) {
            for (int i = ix.offset[b], end = ix.offset[b + 1]; i < end; ++i) {
                Workspace::Tally& t = w.tally[flat[i]];
                if (t.stamp != w.cls_now) {
                    t.stamp = w.cls_now;
                    t.count = 1;
                    w.touched.push_back(flat[i]);
                } else {
                    ++t.count;
                }
            }
        }
        // Classes not touched have overlap 0, whose term is 0 and never improves on `best`.
        for (int c : w.touched) {
            const int k = w.tally[c].count;
            if (k < g_min_inter)
                continue;
            // log_hg(g_univ_size, size, m, k), with ln C(g_univ_size, size) taken once per class.
            const int size = ix.size[c];
            if (hg_below_expectation(g_univ_size, size, m, k))
                continue;
            const float s_terms = hg.binom_ln(m, k) + hg.binom_ln(g_univ_size - m, size - k);
            const float pv = s_terms - ln_binom_univ[c];
            if (pv < best)
                best = pv;
        }
    }
    return best;
}

} // namespace

void bootstrap_fast(const VarClasses& classes, const std::vector<std::vector<int>>& sets,
                    const std::vector<int>& chip_ids, int n_vars, int passes, float ceiling,
                    BootstrapState& st, std::vector<float>& kept, int threads) {
    if (passes <= 0)
        return;
    // Flat member list of the non-empty sets, in set id order.
    std::vector<int> set_begin{0}, members;
    int max_set = 0;
    for (const std::vector<int>& set : sets) {
        if (set.empty())
            continue;
        members.insert(members.end(), set.begin(), set.end());
        set_begin.push_back(static_cast<int>(members.size()));
        max_set = std::max(max_set, static_cast<int>(set.size()));
    }
    const ClassIndex ix(classes, n_vars, true);
    const HgTable hg(std::max(std::max(g_univ_size, max_set), n_vars) + 1);
    std::vector<float> ln_binom_univ(classes.class_count(), 0.0f);
    for (int c = 0; c < classes.class_count(); ++c)
        ln_binom_univ[c] = hg.binom_ln(g_univ_size, ix.size[c]);
    const int n_members = static_cast<int>(members.size());
    const int n_bits = std::max(n_vars, 32);

    const int batch = 64;
    std::vector<int> images(static_cast<std::size_t>(batch) * n_members);
    std::vector<float> best(batch);
    std::vector<Workspace> work;
    for (int t = 0; t < parallel_workers(batch, threads); ++t)
        work.emplace_back(n_bits, classes.class_count());

    for (int b0 = 0; b0 < passes; b0 += batch) {
        const int nb = std::min(batch, passes - b0);
        // Draws stay sequential, in pass order, with their trace lines.
        for (int i = 0; i < nb; ++i) {
            bootstrap_shuffle(st, chip_ids);
            if ((b0 + i) % 40 == 0)
                std::cerr << "boot " << (b0 + i) << std::endl;
            int* snap = images.data() + static_cast<std::size_t>(i) * n_members;
            for (int j = 0; j < n_members; ++j)
                snap[j] = st.image[members[j]];
        }
        parallel_for(nb, threads, [&](int worker, int i) {
            best[i] =
                evaluate_pass(ix, hg, ln_binom_univ, set_begin,
                              images.data() + static_cast<std::size_t>(i) * n_members, n_vars, work[worker]);
        });
        for (int i = 0; i < nb; ++i)
            if (best[i] < ceiling)
                kept.push_back(best[i]);
    }
}
