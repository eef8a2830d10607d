// DsetAssignEvalPConsist: error placement over the cells and the binomial tail sum.
#include "alg/DsetAssignEvalPConsist.h"

#include "error.h"
#include "options.h"

#include <cmath>
#include <iostream>

static constexpr char kSrc[] = "alg/DsetAssignEvalPConsist";

DsetAssignEvalPConsist::DsetAssignEvalPConsist(options& opt, const std::string& scope)
    : DsetAssignEvalBase(opt, scope), m_err_counts(32, 0), m_binom(32, 32),
      m_max_k(opt.get_int(scope, "MaxKToCalc", true)) {}

float DsetAssignEvalPConsist::eval(DsetAssignIter& iter) {
    const DsetAssign& assign = iter.assign();
    if (m_logit) {
        std::cerr << "start iter " << std::endl;
        trace_vars(assign);
    }
    int inp_n = 0;
    int consist = 0;
    for (bool ok = iter.first(); ok; ok = ++iter) {
        const DsetAssignCell c = cell(iter);
        const int mx = c.max();
        if (mx == 0)
            continue;
        ++inp_n;
        if (static_cast<int>(m_cell_sizes.size()) < inp_n)
            m_cell_sizes.resize(inp_n);
        m_cell_sizes[inp_n - 1] = c.sum();
        consist += mx;
    }
    const int errors = assign.m_rows - consist;
    m_err_counts.assign(inp_n, 1);
    if (m_logit)
        std::cerr << "inp_n " << inp_n << " consist " << consist << std::endl;

    // Each error goes to the cell with the most rows per error so far; a tie keeps the lower index.
    // When no cell has a quotient above 1 no cell takes the error.
    for (int e = 0; e < errors; ++e) {
        int best = 1;
        int chosen = -1;
        for (int i = 0; i < inp_n; ++i) {
            const int q = (m_cell_sizes[i] - m_err_counts[i]) / m_err_counts[i];
            if (q > best) {
                best = q;
                chosen = i;
            }
        }
        if (chosen >= 0)
            ++m_err_counts[chosen];
    }

    const float p0 = static_cast<float>(assign.count_of(1)) / static_cast<float>(assign.m_rows);
    if (m_logit)
        std::cerr << "p_0 " << p0 << std::endl;
    double tot = 0.0;
    for (int i = 0; i < inp_n; ++i) {
        const int n = m_cell_sizes[i];
        const int k = m_err_counts[i];
        const double r = cummulative_binom(p0, n, n - k + 1);
        if (r == 0.0)
            tot -= 1000.0 * (n - k);
        else
            tot += std::log(r);
        if (m_logit)
            std::cerr << "tot log p " << tot << " k_i " << k << " cb " << r << std::endl;
    }
    return static_cast<float>(-tot);
}

float DsetAssignEvalPConsist::eval(const std::vector<std::vector<int>>&, int) {
    VESK_FATAL(kSrc, "Overload of assign eval pconsist NYI");
    return 0.0f;
}
