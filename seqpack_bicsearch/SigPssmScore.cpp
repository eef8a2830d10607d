// SigPssmScore: z-score bins along a PSSM's ranking and the best of them.
#include "SigPssmScore.h"

#include "options.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <map>

SigPssmScore::SigPssmScore(const ExpSeqDB& db, options& opts, const std::string& scope)
    : m_db(db), m_min_size(opts.get_int(scope, "MinSize", true)), m_tc(opts.get_float(scope, "Tc", true)),
      m_report_bin(opts.get_float(scope, "ReportPBinSize", true)),
      m_logit(opts.get_int(scope, "Logit", true) != 0), m_best(-1), m_best_thresh(0.0f) {
    const StateDataSetReal& data = db.m_expset;
    for (int g = 0; g < db.m_genome.id_space_size() && g < data.m_data.rows(); ++g)
        if (!db.m_genome.get_promoter(g).is_empty())
            m_genes.push_back(g);
    const int conds = data.m_data.cols();
    m_mean.assign(conds, 0.0f);
    m_sd.assign(conds, 0.0f);
    for (int c = 0; c < conds; ++c) {
        double s = 0.0, sq = 0.0;
        int n = 0;
        for (int g : m_genes) {
            const float v = data.m_data(g, c);
            if (is_missing_val(v))
                continue;
            s += v;
            sq += static_cast<double>(v) * v;
            ++n;
        }
        if (n == 0)
            continue;
        const double mean = s / n;
        m_mean[c] = static_cast<float>(mean);
        m_sd[c] = static_cast<float>(std::sqrt(std::max(0.0, sq / n - mean * mean)));
    }
}

float SigPssmScore::score(const DnaPSSM& pssm) {
    struct Hit {
        int gene;
        float ml;
    };
    std::vector<Hit> hits;
    for (int g : m_genes) {
        float best = 0.0f;
        int dir = 1;
        pssm.max_like_match(m_db.m_genome.get_promoter(g), best, dir);
        hits.push_back({g, best});
    }
    std::stable_sort(hits.begin(), hits.end(), [](const Hit& a, const Hit& b) { return a.ml > b.ml; });

    const StateDataSetReal& data = m_db.m_expset;
    const int conds = static_cast<int>(m_mean.size());
    std::vector<float> sum(conds, 0.0f);
    m_bins.clear();
    int n = 0;
    auto close_bin = [&](float ml) {
        float esc = 0.0f;
        for (int c = 0; c < conds; ++c)
            esc += sum[c];
        // The overall level is the summed z-scores over the conditions, not divided by n.
        esc /= static_cast<float>(conds > 0 ? conds : 1);
        const float sigma = 1.0f / sqrtf(static_cast<float>(n));
        float plus = 0.0f, minus = 0.0f;
        Bin bin{0.0f, n, ml, std::vector<float>(conds, 0.0f)};
        for (int c = 0; c < conds; ++c) {
            const float d = sum[c] / static_cast<float>(n) - esc;
            bin.m_vals[c] = d;
            if (d >= m_tc * sigma)
                plus += d - m_tc * sigma;
            if (d <= -m_tc * sigma)
                minus += -d + m_tc * sigma;
        }
        bin.m_score = std::max(plus, minus);
        m_bins.push_back(bin);
    };
    for (std::size_t i = 0; i < hits.size(); ++i) {
        if (i > 0 && hits[i].ml != hits[i - 1].ml)
            close_bin(hits[i - 1].ml);
        for (int c = 0; c < conds; ++c) {
            const float v = data.m_data(hits[i].gene, c);
            if (m_sd[c] > 0.001f && !is_missing_val(v))
                sum[c] += (v - m_mean[c]) / m_sd[c];
        }
        ++n;
    }
    if (n > 0)
        close_bin(hits.back().ml);

    m_best = -1;
    for (std::size_t b = 0; b < m_bins.size(); ++b)
        if (m_bins[b].m_count > m_min_size && (m_best < 0 || m_bins[b].m_score > m_bins[m_best].m_score))
            m_best = static_cast<int>(b);
    m_best_thresh = m_best >= 0 ? m_bins[m_best].m_ml : 0.0f;
    if (m_logit)
        std::cerr << "final best thresh " << m_best_thresh << std::endl;
    return m_best >= 0 ? m_bins[m_best].m_score : 0.0f;
}

void SigPssmScore::report_conds(std::ostream& out) const {
    if (m_best < 0 || !(m_report_bin > 0.0f))
        return;
    std::map<int, std::vector<int>> by_bin;
    const std::vector<float>& vals = m_bins[m_best].m_vals;
    for (int c = 0; c < static_cast<int>(vals.size()); ++c)
        by_bin[static_cast<int>(std::floor(vals[c] / m_report_bin))].push_back(c);
    for (const auto& b : by_bin) {
        out << b.first * m_report_bin << "\t" << b.second.size() << "\t";
        for (std::size_t i = 0; i < b.second.size(); ++i)
            out << (i ? "," : "") << b.second[i];
        out << "\n";
    }
}
