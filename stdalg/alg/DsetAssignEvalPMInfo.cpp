// DsetAssignEvalPMInfo: the probability of the G statistic under independence.
#include "alg/DsetAssignEvalPMInfo.h"

#include "SpecialFunc.h"

#include <iostream>

static constexpr char kSrc[] = "alg/DsetAssignEvalPMInfo";

namespace {
constexpr float kMinInfo = 0.0001f;
}

DsetAssignEvalPMInfo::DsetAssignEvalPMInfo(options& opt, const std::string& scope)
    : DsetAssignEvalBase(opt, scope) {}

float DsetAssignEvalPMInfo::eval(DsetAssignIter& iter) {
    int cells = 0;
    const float h = minfo(iter, cells, false, kSrc);
    if (m_logit)
        std::cerr << "fit = " << h << std::endl;
    if (h < kMinInfo)
        return 0.0f;
    const float E = static_cast<float>(iter.assign().m_rows);
    const float ps = chip(2.0f * E * h, static_cast<float>(2 * cells - 2));
    if (m_logit)
        std::cerr << "ps " << ps << std::endl;
    return ps;
}

float DsetAssignEvalPMInfo::eval(const std::vector<std::vector<int>>& counts, int) {
    int rows = 0, N = 0;
    std::vector<long long> col_sums;
    const float h = minfo(counts, rows, N, col_sums);
    const int cols = counts.empty() ? 0 : static_cast<int>(counts[0].size());
    if (m_logit)
        std::cerr << "out fit " << h << std::endl;
    if (rows == 1) {
        for (long long s : col_sums) {
            if (s == N)
                return 1.0f;
        }
        return 0.0f;
    }
    if (h < kMinInfo)
        return 0.0f;
    const float ps = chip(2.0f * static_cast<float>(N) * h, static_cast<float>((rows - 1) * (cols - 1)));
    if (m_logit)
        std::cerr << "out ps " << ps << std::endl;
    return ps;
}
