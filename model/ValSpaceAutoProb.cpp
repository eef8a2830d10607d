// ValSpaceAutoProb: cut points from the data.
#include "ValSpaceAutoProb.h"

#include "StateDataSetReal.h"
#include "plinear.h"

#include <algorithm>
#include <iostream>

ValSpaceAutoProb::ValSpaceAutoProb(options& opts, const std::string& scope, bool defer)
    : ValSpaceProb(opts, scope, defer), m_opts(opts), m_scope(scope) {}

ValSpaceAutoProb::~ValSpaceAutoProb() {}

namespace {

// Adds one to the bin of v when that bin lies inside `counts`.
void count_value(std::vector<int>& counts, float v, float offset, float bin) {
    const float pos = (v + offset) / bin;
    if (pos >= 0.0f && pos < static_cast<float>(counts.size()))
        ++counts[static_cast<int>(pos)];
}

template <int N> scalar_func* make_plinear(std::initializer_list<float> xs, std::initializer_list<float> ys) {
    sf_plinear<N>* f = new sf_plinear<N>();
    f->init(std::vector<float>(xs), std::vector<float>(ys));
    return f;
}

} // namespace

void ValSpaceAutoProb::reinit_auto(StateDataSetReal& data) {
    const int logit = m_opts.get_int(m_scope, "Logit", true);
    const float sure = m_opts.get_float(m_scope, "SureFactor", true);
    const float soso = m_opts.get_float(m_scope, "SoSoFactor", true);
    float offset = m_opts.get_float(m_scope, "Offset", true);
    const int max_bins = m_opts.get_int(m_scope, "MaxDiscBins", true);

    const int ng = data.num_vars();
    const int nc = data.m_E;
    const int rows = std::min(ng, data.m_data.rows());
    const int cols = std::min(nc, data.m_data.cols());

    float bin = 2.0f * offset / static_cast<float>(max_bins);
    std::vector<int> counts(max_bins + 2, 0);
    float min_v = -offset;
    float max_v = offset;
    for (int v = 0; v < rows; ++v) {
        for (int e = 0; e < cols; ++e) {
            const float x = data.m_data(v, e);
            if (x < min_v)
                min_v = x;
            if (x > max_v)
                max_v = x;
            if (-offset <= x && x <= offset)
                count_value(counts, x, offset, bin);
        }
    }
    if (logit) {
        std::cerr << "AutoDisc offset = " << offset << std::endl;
        std::cerr << "AutoDisc min_v = " << min_v << std::endl;
        std::cerr << "AutoDisc max_v = " << max_v << std::endl;
    }
    if (min_v < -offset || max_v > offset) {
        // The range is widened to the data; the bins follow the actual span.
        offset = std::max(-min_v, max_v);
        bin = (max_v - min_v) / static_cast<float>(max_bins);
        if (logit) {
            std::cerr << "AutoDisc recount" << std::endl;
            std::cerr << "AutoDisc binsize " << bin << std::endl;
            std::cerr << "AutoDisc offset " << offset << std::endl;
        }
        std::fill(counts.begin(), counts.end(), 0);
        for (int v = 0; v < rows; ++v)
            for (int e = 0; e < cols; ++e)
                count_value(counts, data.m_data(v, e), offset, bin);
    }
    std::cerr << "sure factor " << sure << " soso factor " << soso << std::endl;

    float minus_sure = -1.0f, plus_sure = -1.0f, minus_soso = -1.0f, plus_soso = -1.0f;
    bool have_minus_sure = false, have_plus_sure = false, have_minus_soso = false, have_plus_soso = false;
    const double total = static_cast<double>(ng) * static_cast<double>(nc);
    double sum = 0.0;
    for (int i = 0; i < static_cast<int>(counts.size()); ++i) {
        sum += counts[i] / total;
        if (logit)
            std::cerr << "at i " << i << " sum = " << sum << std::endl;
        if (!have_minus_sure && sum > sure) {
            minus_sure = bin * static_cast<float>(i) - offset;
            have_minus_sure = true;
        }
        if (!have_plus_sure && sum > 1.0 - sure) {
            plus_sure = bin * static_cast<float>(i - 1) - offset;
            have_plus_sure = true;
        }
        if (!have_minus_soso && sum > soso) {
            minus_soso = bin * static_cast<float>(i) - offset;
            have_minus_soso = true;
        }
        if (!have_plus_soso && sum > 1.0 - soso) {
            plus_soso = bin * static_cast<float>(i - 1) - offset;
            have_plus_soso = true;
        }
    }
    if (logit) {
        std::cerr << "AutoDisc minus_sure = " << minus_sure << std::endl;
        std::cerr << "AutoDisc minus_soso = " << minus_soso << std::endl;
        std::cerr << "AutoDisc plus_soso = " << plus_soso << std::endl;
        std::cerr << "AutoDisc plus_sure = " << plus_sure << std::endl;
    }

    m_funcs.clear();
    m_funcs.emplace_back(make_plinear<2>({minus_sure, minus_soso}, {1.0f, 0.0f}));
    m_funcs.emplace_back(make_plinear<3>({minus_soso, 0.0f, plus_soso}, {0.0f, 1.0f, 0.0f}));
    m_funcs.emplace_back(make_plinear<2>({plus_soso, plus_sure}, {0.0f, 1.0f}));
    std::vector<scalar_func*> funcs;
    for (auto& f : m_funcs)
        funcs.push_back(f.get());
    init(funcs, -offset, 1.0f, offset, bin, logit);
}
