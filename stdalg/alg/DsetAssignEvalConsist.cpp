// DsetAssignEvalConsist: sums of the largest count per parent combination.
#include "alg/DsetAssignEvalConsist.h"

#include <iostream>

DsetAssignEvalConsist::DsetAssignEvalConsist(options& opt, const std::string& scope)
    : DsetAssignEvalBase(opt, scope) {}

float DsetAssignEvalConsist::eval(DsetAssignIter& iter) {
    if (m_logit) {
        std::cerr << "start iter " << std::endl;
        trace_vars(iter.assign());
    }
    float sum = 0.0f;
    for (bool ok = iter.first(); ok; ok = ++iter)
        sum += static_cast<float>(cell(iter).max());
    return sum;
}

float DsetAssignEvalConsist::eval(const std::vector<std::vector<int>>& counts, int) {
    if (counts.empty())
        return 0.0f;
    const std::size_t width = counts[0].size();
    float sum = 0.0f;
    for (const std::vector<int>& row : counts) {
        if (width == 0)
            break;
        int m = row[0];
        for (std::size_t k = 1; k < width; ++k) {
            if (row[k] > m)
                m = row[k];
        }
        sum += static_cast<float>(m);
    }
    return sum;
}
