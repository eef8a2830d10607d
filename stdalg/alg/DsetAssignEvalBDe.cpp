// DsetAssignEvalBDe: the BDe score over the cells of an assignment or over a count matrix.
#include "alg/DsetAssignEvalBDe.h"

#include "SpecialFunc.h"
#include "error.h"
#include "options.h"

#include <cstdlib>
#include <iostream>

static constexpr char kSrc[] = "alg/DsetAssignEvalBDe";

DsetAssignEvalBDe::DsetAssignEvalBDe(options& opt, const std::string& scope)
    : DsetAssignEvalBase(opt, scope), m_equiv_sample_size(opt.get_int(scope, "EquivSampleSize", true)),
      m_max_card(opt.get_int(scope, "MaxCard", true)) {}

float DsetAssignEvalBDe::prior(int n) const {
    float power = 1.0f;
    for (int i = 0; i < std::abs(n); ++i)
        power *= static_cast<float>(m_max_card);
    const float ess = static_cast<float>(m_equiv_sample_size);
    return n >= 0 ? ess / power : ess / (1.0f / power);
}

float DsetAssignEvalBDe::eval(DsetAssignIter& iter) {
    const DsetAssign& assign = iter.assign();
    const float a = prior(assign.m_count - 1);
    const float a3 = a / static_cast<float>(m_max_card);
    if (m_max_card != 3)
        VESK_FATAL(kSrc, "Sorry, this code is optimized for cardinality == 3, can't run it with card == "
                             << m_max_card);
    const float ga = gamma_ln(a);
    const float g3 = gamma_ln(a3);
    const float cell_prior = ga - 3.0f * g3;
    if (m_logit)
        std::cerr << "start iter " << std::endl;
    float score = 0.0f;
    for (bool ok = iter.first(); ok; ok = ++iter) {
        const DsetAssignCell c = cell(iter);
        const int s = c.sum();
        if (s == 0)
            continue;
        score += cell_prior;
        const float gsum = gamma_ln(static_cast<float>(s) + a);
        score -= gsum;
        float g[3];
        for (int k = 0; k < 3; ++k) {
            g[k] = gamma_ln(static_cast<float>(c.c[k]) + a3);
            score += g[k];
        }
        if (m_logit)
            std::cerr << "gamma sum " << gsum << " gamma c1 " << g[0] << " gamma c2 " << g[1] << " gamma c3 "
                      << g[2] << std::endl;
    }
    if (m_logit)
        std::cerr << "bde = " << score << std::endl;
    return score;
}

float DsetAssignEvalBDe::eval(const std::vector<std::vector<int>>& counts, int n) {
    const float a = prior(n);
    const float a3 = a / static_cast<float>(m_max_card);
    const float ga = gamma_ln(a);
    const float g3 = gamma_ln(a3);
    float score = 0.0f;
    for (const std::vector<int>& row : counts) {
        int total = 0;
        for (int k = 0; k < m_max_card; ++k) {
            score += gamma_ln(static_cast<float>(row[k]) + a3);
            total += row[k];
        }
        float t = ga - static_cast<float>(m_max_card) * g3;
        t -= gamma_ln(static_cast<float>(total) + a);
        score += t;
    }
    if (m_logit)
        std::cerr << "bde = " << score << std::endl;
    return score;
}
