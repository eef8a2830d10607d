// BicMotifEM: hard-assignment EM of a PSSM against the expression score, then a window search.
#include "BicMotifEM.h"

#include "options.h"

#include <iostream>

BicMotifEM::BicMotifEM(BicPssmScore& score, const DnaSeqGenomePromoters<DnaSequence>& genome, options& opts,
                       const std::string& scope)
    : m_score(score), m_genome(genome), m_prior(*opts.get_floats(scope, "PriorMultip", true)),
      m_max_pos_entropy(opts.get_float(scope, "MaxPosEntropy", true)), m_cur_score(-1.0f), m_cur_thresh(0.0f),
      m_prev_thresh(0.0f), m_range_step(opts.get_int(scope, "RangeStep", true)),
      m_max_range(opts.get_int(scope, "MaxRange", true)), m_logit(opts.get_int(scope, "Logit", true) != 0) {
    m_prior.resize(4, 0.0f);
    m_pssm.resize(100);
    m_next_pssm.resize(100);
    m_prev_pssm.resize(100);
}

void BicMotifEM::init(const std::string& seed, int from, int to, int dir) {
    m_pssm.m_min_range = from;
    m_pssm.m_max_range = to;
    m_pssm.m_bidirect = dir != 0;
    m_pssm.resize(static_cast<int>(seed.size()));
    m_pssm.reset_prior(m_prior);
    m_pssm.count(seed.begin(), 1.0f, 1);
    m_pssm.normalize();
}

void BicMotifEM::assess_pssm() {
    m_next_pssm.resize(m_pssm.width());
    m_next_pssm.reset_prior(m_prior);
    for (int gene : m_score.m_best_genes) {
        const std::string& seq = m_genome.get_promoter(gene);
        if (static_cast<int>(seq.size()) < m_pssm.width())
            continue;
        float best = 0.0f;
        int dir = 1;
        const int pos = m_pssm.max_like_match(seq, best, dir);
        m_next_pssm.count(seq.begin() + pos, 1.0f, dir);
    }
    m_next_pssm.normalize();
    for (DnaProbVec& col : m_next_pssm.m_profile)
        if (col.get_entropy() > m_max_pos_entropy)
            col = DnaProbVec();
    m_next_pssm.m_min_range = m_pssm.m_min_range;
    m_next_pssm.m_max_range = m_pssm.m_max_range;
    m_next_pssm.m_bidirect = m_pssm.m_bidirect;
    m_pssm = m_next_pssm;
}

bool BicMotifEM::try_window(int from, int to) {
    const int old_from = m_pssm.m_min_range, old_to = m_pssm.m_max_range;
    m_pssm.m_min_range = from;
    m_pssm.m_max_range = to;
    const float s = m_score.score(m_pssm);
    if (s > m_cur_score) {
        m_cur_score = s;
        m_cur_thresh = m_score.m_best_thresh;
        if (m_logit)
            std::cerr << "BicMEM window " << from << " " << to << " improves, score " << s << std::endl;
        return true;
    }
    m_pssm.m_min_range = old_from;
    m_pssm.m_max_range = old_to;
    return false;
}

float BicMotifEM::optimize(const std::string& seed, int from, int to, int dir) {
    m_cur_score = -1.0f;
    for (bool first = true;; first = false) {
        if (first)
            init(seed, from, to, dir);
        else
            assess_pssm();
        const float s = m_score.score(m_pssm);
        if (s > m_cur_score) {
            if (m_logit)
                std::cerr << "improving, score " << s << std::endl;
            m_cur_score = s;
            m_prev_thresh = m_cur_thresh;
            m_cur_thresh = m_score.m_best_thresh;
            m_prev_pssm = m_pssm;
            continue;
        }
        if (m_logit)
            std::cerr << "BicMEM no improvement : " << m_cur_score << " to " << s << std::endl;
        // Back to the round before, scored again so that the calculator agrees with it.
        m_pssm = m_prev_pssm;
        m_score.score(m_pssm);
        m_cur_thresh = m_score.m_best_thresh;
        m_prev_pssm = m_pssm;
        break;
    }

    int best_to = to;
    while (best_to + m_range_step <= m_max_range && try_window(from, best_to + m_range_step))
        best_to += m_range_step;
    int best_from = from;
    while (best_from - m_range_step >= 0 && try_window(best_from - m_range_step, best_to))
        best_from -= m_range_step;

    m_pssm.m_min_range = best_from;
    m_pssm.m_max_range = best_to;
    m_cur_score = m_score.score(m_pssm);
    m_cur_thresh = m_score.m_best_thresh;
    return m_cur_score;
}
