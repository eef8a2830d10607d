// DsetAssignEvalBase: option reading, cell counts and the mutual information shared by two measures.
#include "alg/DsetAssignEvalBase.h"

#include "options.h"

#include "error.h"

#include <cmath>
#include <iostream>

int DsetAssignCell::max() const {
    int m = c[0];
    if (c[1] > m)
        m = c[1];
    if (c[2] > m)
        m = c[2];
    return m;
}

DsetAssignEvalBase::DsetAssignEvalBase(options& opt, const std::string& scope)
    : m_logit(opt.get_int(scope, "Logit", true) != 0) {}

DsetAssignEvalBase::~DsetAssignEvalBase() = default;

DsetAssignCell DsetAssignEvalBase::cell(const DsetAssignIter& iter) const {
    const DsetAssign& a = iter.assign();
    const int c = iter.cur();
    DsetAssignCell out{{a.count_of(c + 1), a.count_of(c + 2), a.count_of(c + 3)}};
    if (m_logit)
        std::cerr << "index " << c << " c1,2,3 " << out.c[0] << " " << out.c[1] << " " << out.c[2]
                  << std::endl;
    return out;
}

DsetAssignCell DsetAssignEvalBase::margins(const DsetAssign& assign) {
    return DsetAssignCell{{assign.count_of(1), assign.count_of(2), assign.count_of(3)}};
}

void DsetAssignEvalBase::trace_vars(const DsetAssign& assign) {
    std::cerr << "Vars = ";
    for (int v : assign.m_vars)
        std::cerr << v << " ";
    std::cerr << std::endl;
}

namespace {
// -p log p of one share, in float.
inline float plogp(float p) { return -p * logf(p); }
} // namespace

float DsetAssignEvalBase::minfo(DsetAssignIter& iter, int& cells, bool check_total, const char* src) const {
    const DsetAssign& a = iter.assign();
    const float E = static_cast<float>(a.m_rows);
    float h = 0.0f;
    for (int v = 1; v <= 3; ++v) {
        const float p = static_cast<float>(a.count_of(v)) / E;
        if (p != 0.0f)
            h -= p * logf(p);
    }
    int total = 0;
    cells = 0;
    for (bool ok = iter.first(); ok; ok = ++iter) {
        ++cells;
        const DsetAssignCell cs = cell(iter);
        const int s = cs.sum();
        if (s == 0)
            continue;
        total += s;
        h += plogp(static_cast<float>(s) / E);
        for (int x : cs.c) {
            if (x != 0)
                h -= plogp(static_cast<float>(x) / E);
        }
    }
    if (check_total && total != a.m_rows)
        VESK_FATAL(src, "Total sum = " << total << " while E is " << a.m_rows);
    return h;
}

float DsetAssignEvalBase::minfo(const std::vector<std::vector<int>>& counts, int& rows, int& N,
                                std::vector<long long>& col_sums) {
    col_sums.clear();
    long long n = 0;
    for (const std::vector<int>& row : counts) {
        if (row.size() > col_sums.size())
            col_sums.resize(row.size(), 0);
        for (std::size_t k = 0; k < row.size(); ++k) {
            col_sums[k] += row[k];
            n += row[k];
        }
    }
    N = static_cast<int>(n);
    const float fN = static_cast<float>(N);
    float h = 0.0f;
    for (long long s : col_sums) {
        if (s != 0) {
            const float p = static_cast<float>(s) / fN;
            h -= p * logf(p);
        }
    }
    rows = 0;
    for (const std::vector<int>& row : counts) {
        long long sum = 0;
        for (int x : row) {
            sum += x;
            if (x != 0)
                h -= plogp(static_cast<float>(x) / fN);
        }
        if (sum != 0)
            ++rows;
        const float r = static_cast<float>(sum) / fN;
        if (r > 0.0f)
            h += plogp(r);
    }
    return h;
}
