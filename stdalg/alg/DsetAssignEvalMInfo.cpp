// DsetAssignEvalMInfo: the mutual information score, with the row total check of the iterator form.
#include "alg/DsetAssignEvalMInfo.h"

#include <iostream>

static constexpr char kSrc[] = "alg/DsetAssignEvalMInfo";

DsetAssignEvalMInfo::DsetAssignEvalMInfo(options& opt, const std::string& scope)
    : DsetAssignEvalBase(opt, scope) {}

float DsetAssignEvalMInfo::eval(DsetAssignIter& iter) {
    int cells = 0;
    const float h = minfo(iter, cells, true, kSrc);
    if (m_logit)
        std::cerr << "fit = " << h << std::endl;
    return h;
}

float DsetAssignEvalMInfo::eval(const std::vector<std::vector<int>>& counts, int) {
    int rows = 0, N = 0;
    std::vector<long long> col_sums;
    const float h = minfo(counts, rows, N, col_sums);
    if (m_logit)
        std::cerr << "fit = " << h << std::endl;
    return h;
}
