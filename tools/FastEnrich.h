// Indexed forms of the enrichment test: classes by member, log-binomials from a log-gamma table.
// They give the very values of get_best_pval, annotate and dep_hg_pv with far less work.
#ifndef VESK_TOOLS_FASTENRICH_H
#define VESK_TOOLS_FASTENRICH_H

#include "Annot.h"
#include "ClassMembers.h"
#include "SpecialFunc.h"
#include "ds/BitVec.h"

#include <cstdint>
#include <string>
#include <vector>

// log_hg through a table of gamma_ln(i): the same float operations as BinomFuncTable, so the same
// values; arguments outside the table fall back to the direct formula. Read-only once built, so
// threads may share it.
class HgTable {
public:
    // Covers binomials with n up to `top`.
    explicit HgTable(int top);

    float binom_ln(int n, int k) const {
        if (n == k || k == 0)
            return 0.0f;
        if (n < 0 || k < 0 || n < k || n + 1 >= static_cast<int>(m_gamma.size()))
            return binom_ln_value(n, k);
        const float t = m_gamma[n + 1] - m_gamma[k + 1];
        return t - m_gamma[n - k + 1];
    }

    float log_hg(int N, int K, int n, int k) const {
        if (hg_below_expectation(N, K, n, k))
            return 0.0f;
        const float s = binom_ln(n, k) + binom_ln(N - n, K - k);
        return s - binom_ln(N, K);
    }

private:
    std::vector<float> m_gamma;
};

// annotate() for real sets, by walking the set members' classes and, in the redundancy filter,
// intersecting member lists in a dense numbering of the classes' genes instead of whole bit
// vectors. Same output, order and trace lines. The index is built once and shared: annotate() is
// const and takes its scratch from a Workspace, one per thread.
class FastAnnotator {
public:
    FastAnnotator(const ClassMembers& classes, int n_vars, int max_set);

    struct Workspace {
        std::vector<std::uint32_t> stamp;
        std::vector<int> count;
        std::vector<unsigned char> mark; // by dense gene: bit 0 in class a, bit 1 also in the set
        std::uint32_t now = 0;
    };
    Workspace make_workspace() const;

    // Fills `out` and `order` as annotate() does; the trace lines go to `trace` in their order.
    void annotate(const ds_bitvec& set, std::vector<Annot>& out, std::vector<int>& order, std::string& trace,
                  Workspace& w) const;

private:
    const ClassMembers& m_classes;
    // The classes of variable v, ascending: m_flat[m_offset[v] .. m_offset[v + 1]).
    std::vector<int> m_offset, m_flat;
    HgTable m_hg;
    std::vector<int> m_dense;                      // per variable, its dense number or -1
    std::vector<std::vector<int>> m_dense_members; // per class, its members' dense numbers
};

#endif
