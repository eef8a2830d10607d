// BicPssmScore: prefix scores of a PSSM's gene ranking and the moving average along it.
#include "BicPssmScore.h"

#include "ds/BitVecIter.h"
#include "error.h"
#include "options.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <iostream>

static constexpr char kSrc[] = "BicPssmScore";

BicPssmScore::BicPssmScore(ASAPCalc& asap, const DnaSeqGenomePromoters<DnaSequence>& genome,
                           const ds_bitvec& allowed, options& opts, const std::string& scope)
    : m_genome(genome), m_asap(asap), m_allowed(allowed), m_max_vars(opts.get_int(scope, "MaxVars", true)),
      m_min_vars(opts.get_int(scope, "MinVars", true)), m_score(0.0f), m_best_thresh(0.0f),
      m_use_max_cond_score(opts.get_int(scope, "UseMaxCondScore", true)),
      m_logit(opts.get_int(scope, "Logit", true) != 0) {}

void BicPssmScore::rank(const DnaPSSM& pssm) {
    m_hits.clear();
    for (ds_bitvec_iter it(m_allowed); it; ++it) {
        const int gene = it;
        if (gene >= m_genome.id_space_size())
            continue;
        const std::string& seq = m_genome.get_promoter(gene);
        float best = 0.0f;
        int dir = 1;
        const int pos = pssm.max_like_match(seq, best, dir);
        m_hits.push_back({gene, seq.begin() + pos, best});
    }
    std::stable_sort(m_hits.begin(), m_hits.end(),
                     [](const MlHit& a, const MlHit& b) { return a.m_ml > b.m_ml; });
}

float BicPssmScore::calc_score() {
    m_asap.score(nullptr, -1);
    return m_use_max_cond_score ? m_asap.m_max_node_score : m_asap.m_score;
}

float BicPssmScore::score(const DnaPSSM& pssm) {
    m_score = 0.0f;
    rank(pssm);
    m_ml_vals.clear();
    m_scores.clear();
    m_asap.on_reset();
    float prev = 1000.0f;
    float best = -3.4028235e+38f;
    int best_rank = 0;
    float best_thresh = prev;
    bool found = false;
    int r = 0;
    for (const MlHit& hit : m_hits) {
        if (r > m_max_vars)
            break;
        // A true boundary between different likelihoods: the genes above it form a set.
        if (r > m_min_vars && hit.m_ml < prev) {
            const float s = r > 0 ? calc_score() : 0.0f;
            m_scores.push_back(s);
            m_ml_vals.push_back(prev);
            if (!(s < best)) {
                best = s;
                best_rank = r;
                best_thresh = prev;
                found = true;
            }
        }
        prev = hit.m_ml;
        m_asap.add_gene(hit.m_gene, -1);
        ++r;
    }
    m_asap.on_reset();
    m_best_genes.clear();
    for (int i = 0; i < best_rank; ++i) {
        m_best_genes.push_back(m_hits[i].m_gene);
        m_asap.add_gene(m_hits[i].m_gene, -1);
    }
    m_asap.score(nullptr, -1);
    m_score = found ? best : 0.0f;
    m_best_thresh = best_thresh;
    if (m_logit)
        std::cerr << "BicPssmScore done scoring, have " << m_best_genes.size()
                  << " genes, score = " << m_score << std::endl;
    return m_score;
}

namespace {
// Running sums of each condition over the genes of a window; missing cells are left out of their
// condition's count.
struct WindowSums {
    explicit WindowSums(int conds) : sum(conds, 0.0f), sumsq(conds, 0.0f), n(conds, 0) {}
    void move(const StateDataSetReal& data, int gene, int sign) {
        for (int e = 0; e < static_cast<int>(sum.size()); ++e) {
            const float v =
                gene < data.m_data.rows() && e < data.m_data.cols() ? data.m_data(gene, e) : kMissingVal;
            if (is_missing_val(v))
                continue;
            sum[e] += static_cast<float>(sign) * v;
            sumsq[e] += static_cast<float>(sign) * v * v;
            n[e] += sign;
        }
    }
    std::vector<float> sum, sumsq;
    std::vector<int> n;
};
} // namespace

void BicPssmScore::score_moving_avg(const DnaPSSM& pssm, const StateDataSetReal& data,
                                    std::vector<std::vector<float>>& avg, std::vector<std::vector<float>>& sd,
                                    std::ostream* plot) {
    rank(pssm);
    avg.clear();
    sd.clear();
    m_ml_vals.clear();
    m_scores.clear();
    m_asap.on_reset();
    const int conds = data.m_E;
    WindowSums sums(conds);
    std::deque<int> bins; // sizes of the complete bins in the window, oldest first
    int window = 0;       // genes in the window
    int open_bin = 0;     // genes of the bin being filled (in the window too)
    std::size_t tail = 0; // first hit still in the window
    const int limit = std::min(static_cast<int>(m_hits.size()), m_max_vars + 1);
    for (int r = 0; r < limit; ++r) {
        const MlHit& hit = m_hits[r];
        if (r > 0 && hit.m_ml != m_hits[r - 1].m_ml) {
            bins.push_back(open_bin);
            open_bin = 0;
            while (!bins.empty() && window > m_min_vars + bins.front()) {
                // The oldest bin: the genes at the tail that share its likelihood.
                const int want = bins.front();
                const float ml = m_hits[tail].m_ml;
                int removed = 0;
                while (tail < static_cast<std::size_t>(r) && m_hits[tail].m_ml == ml) {
                    sums.move(data, m_hits[tail].m_gene, -1);
                    m_asap.del_gene(m_hits[tail].m_gene);
                    ++tail;
                    ++removed;
                }
                if (removed != want)
                    VESK_FATAL(kSrc, "Count mismatch in likelihood bins");
                window -= removed;
                bins.pop_front();
            }
            if (static_cast<float>(window) > static_cast<float>(m_min_vars) * 0.5f) {
                std::vector<float> mean(conds, 0.0f), dev(conds, 0.0f);
                for (int e = 0; e < conds; ++e) {
                    if (sums.n[e] <= 0)
                        continue;
                    const float n = static_cast<float>(sums.n[e]);
                    mean[e] = sums.sum[e] / n;
                    float var = sums.sumsq[e] / n - mean[e] * mean[e];
                    if (var <= -0.001f)
                        VESK_FATAL(kSrc, "Negative variance!\n");
                    if (var < 0.0f)
                        var = 0.0f;
                    dev[e] = sqrtf(var);
                }
                avg.push_back(mean);
                sd.push_back(dev);
                m_scores.push_back(calc_score());
                m_ml_vals.push_back(m_hits[r - 1].m_ml);
                if (plot) {
                    *plot << "PLOT\t" << r << "\t" << m_hits[r - 1].m_ml << "\t" << window << "\t"
                          << bins.size();
                    for (int b : bins)
                        *plot << "\t" << b;
                    *plot << "\n";
                }
            }
        }
        sums.move(data, hit.m_gene, 1);
        m_asap.add_gene(hit.m_gene, -1);
        ++window;
        ++open_bin;
    }
}
