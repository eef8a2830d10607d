// The bootstrap passes, evaluated class by class for each set.
#include "Bootstrap.h"

#include "Annot.h"
#include "ClassMembers.h"
#include "FastEnrich.h"
#include "ParallelFor.h"
#include "Random.h"
#include "ds/BitVec.h"

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

// The classes a pass can report, by member: those within the size filter, renumbered densely in
// class id order so that a pass's overlap counters stay small enough for the first-level cache.
struct PassIndex {
    std::vector<int> offset, flat; // the classes of variable v: flat[offset[v] .. offset[v + 1])
    std::vector<int> size;         // per dense class, its size
    std::vector<float> ln_univ;    // per dense class, ln C(g_univ_size, size)

    PassIndex(const ClassMembers& classes, int n_vars, const HgTable& hg) {
        std::vector<int> dense_of;
        for (int c = 0; c < classes.class_count(); ++c) {
            const int sz = classes.size(c);
            if (sz < g_min_cls_size || sz > g_max_cls_size)
                continue;
            dense_of.push_back(c);
            size.push_back(sz);
            ln_univ.push_back(hg.binom_ln(g_univ_size, sz));
        }
        offset.assign(static_cast<std::size_t>(std::max(n_vars, 0)) + 1, 0);
        for (int c : dense_of)
            for (int v : classes.m_members[c])
                ++offset[v + 1];
        for (std::size_t v = 1; v < offset.size(); ++v)
            offset[v] += offset[v - 1];
        flat.resize(offset.back());
        std::vector<int> fill(offset.begin(), offset.end() - 1);
        for (int d = 0; d < static_cast<int>(dense_of.size()); ++d)
            for (int v : classes.m_members[dense_of[d]])
                flat[fill[v]++] = d;
    }
    int class_count() const { return static_cast<int>(size.size()); }
};

// Scratch of one evaluating thread. `Count` holds an overlap: 16 bits when no set is larger.
template <class Count> struct Workspace {
    std::vector<std::uint32_t> var_stamp;
    std::vector<Count> count;  // per dense class, all zero between sets
    std::vector<int> listed;   // classes whose overlap reached the smallest one tested
    std::vector<int> distinct; // the set's distinct image bits below n_vars
    std::uint32_t var_now = 0;

    Workspace(int n_bits, int n_classes)
        : var_stamp(n_bits, 0), count(n_classes, 0), listed(static_cast<std::size_t>(n_classes) + 1) {}
};

// Adds one to the count of every class of every variable in bits[0 .. n_bits) and lists each class
// once, when its count reaches `list_at`; returns the number listed. No branch in the loop: a
// listing is written always and kept by advancing the end. Kept out of line: inlined into the pass,
// its loop runs short of registers.
template <class Count>
__attribute__((noinline)) int count_overlaps(const int* offset, const int* flat, const int* bits, int n_bits,
                                             int list_at, Count* count, int* listed) {
    int n_listed = 0;
    const int ahead = 8; // the class lists of later variables are fetched while counting
    for (int j = 0; j < n_bits; ++j) {
        if (j + ahead < n_bits)
            __builtin_prefetch(flat + offset[bits[j + ahead]]);
        const int b = bits[j];
        for (int i = offset[b], end = offset[b + 1]; i < end; ++i) {
            const int c = flat[i];
            const int k = ++count[c];
            listed[n_listed] = c;
            n_listed += k == list_at;
        }
    }
    return n_listed;
}

// Best log probability of one pass, given the images of every set member (`images`, laid out as
// the flat member list).
template <class Count>
float evaluate_pass(const PassIndex& ix, const HgTable& hg, const std::vector<int>& set_begin,
                    const int* images, int n_vars, Workspace<Count>& w) {
    float best = 0.0f;
    const int n_sets = static_cast<int>(set_begin.size()) - 1;
    const int list_at = std::max(g_min_inter, 1);
    const long long univ = g_univ_size;
    const int* flat = ix.flat.data();
    const int* offset = ix.offset.data();
    Count* count = w.count.data();
    int* listed = w.listed.data();
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
        // Overlaps by counting over the members' classes. A class never listed has overlap 0, whose
        // term is 0 and never improves on `best`, or one below the filter.
        const int n_listed = count_overlaps(offset, flat, w.distinct.data(),
                                            static_cast<int>(w.distinct.size()), list_at, count, listed);
        for (int i = 0; i < n_listed; ++i) {
            const int c = listed[i];
            const int k = count[c];
            // log_hg(g_univ_size, size, m, k), with ln C(g_univ_size, size) taken once per class. The
            // expectation test size * m / univ > k in integers: the quotient of doubles rounds to a
            // value above the integer k exactly when the true quotient is above it, since it is then
            // at least 1 / univ above k, far more than the rounding error.
            const int size = ix.size[c];
            if (static_cast<long long>(size) * m > k * univ)
                continue;
            const float s_terms = hg.binom_ln(m, k) + hg.binom_ln(g_univ_size - m, size - k);
            const float pv = s_terms - ix.ln_univ[c];
            if (pv < best)
                best = pv;
        }
        // Back to zero: the whole array when that is cheaper than walking the lists again.
        std::size_t walked = 0;
        for (int b : w.distinct)
            walked += static_cast<std::size_t>(offset[b + 1] - offset[b]);
        if (walked * 16 > w.count.size()) {
            std::fill(w.count.begin(), w.count.end(), Count(0));
        } else {
            for (int b : w.distinct)
                for (int i = offset[b], end = offset[b + 1]; i < end; ++i)
                    count[flat[i]] = 0;
        }
    }
    return best;
}

// The passes of bootstrap_fast with overlap counters of type `Count`.
template <class Count>
void run_passes(const PassIndex& ix, const HgTable& hg, const std::vector<int>& set_begin,
                const std::vector<int>& members, const std::vector<int>& chip_ids, int n_vars, int passes,
                float ceiling, BootstrapState& st, std::vector<float>& kept, int threads) {
    const int n_members = static_cast<int>(members.size());
    const int n_bits = std::max(n_vars, 32);
    // Passes go in batches. The images of a batch are drawn in pass order, with their trace lines,
    // while the batch before is evaluated on the other workers: drawing is task 0 of each round.
    const int batch = 64;
    std::vector<int> images[2];
    for (std::vector<int>& buf : images)
        buf.resize(static_cast<std::size_t>(batch) * n_members);
    std::vector<float> best(batch);
    std::vector<Workspace<Count>> work;
    for (int t = 0; t < parallel_workers(batch + 1, threads); ++t)
        work.emplace_back(n_bits, ix.class_count());

    auto draw = [&](int b0, std::vector<int>& buf) {
        const int nb = std::min(batch, passes - b0);
        for (int i = 0; i < nb; ++i) {
            bootstrap_shuffle(st, chip_ids);
            if ((b0 + i) % 40 == 0)
                std::cerr << "boot " << (b0 + i) << std::endl;
            int* snap = buf.data() + static_cast<std::size_t>(i) * n_members;
            for (int j = 0; j < n_members; ++j)
                snap[j] = st.image[members[j]];
        }
    };

    draw(0, images[0]);
    for (int b0 = 0, cur = 0; b0 < passes; b0 += batch, cur ^= 1) {
        const int nb = std::min(batch, passes - b0);
        const bool more = b0 + batch < passes;
        const std::vector<int>& now = images[cur];
        parallel_for(nb + 1, threads, [&](int worker, int task) {
            if (task == 0) {
                if (more)
                    draw(b0 + batch, images[cur ^ 1]);
                return;
            }
            const int i = task - 1;
            best[i] = evaluate_pass(ix, hg, set_begin, now.data() + static_cast<std::size_t>(i) * n_members,
                                    n_vars, work[worker]);
        });
        for (int i = 0; i < nb; ++i)
            if (best[i] < ceiling)
                kept.push_back(best[i]);
    }
}

} // namespace

void bootstrap_fast(const ClassMembers& classes, const std::vector<std::vector<int>>& sets,
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
    const HgTable hg(std::max(std::max(g_univ_size, max_set), n_vars) + 1);
    const PassIndex ix(classes, n_vars, hg);
    if (max_set < 65535)
        run_passes<std::uint16_t>(ix, hg, set_begin, members, chip_ids, n_vars, passes, ceiling, st, kept,
                                  threads);
    else
        run_passes<std::uint32_t>(ix, hg, set_begin, members, chip_ids, n_vars, passes, ceiling, st, kept,
                                  threads);
}
