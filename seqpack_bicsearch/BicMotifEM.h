// BicMotifEM: refines one PSSM so as to maximise the expression score of the genes it ranks highest.
#ifndef VESK_SEQPACK_BICSEARCH_BICMOTIFEM_H
#define VESK_SEQPACK_BICSEARCH_BICMOTIFEM_H

#include "BicPssmScore.h"
#include "DnaPSSM.h"
#include "DnaSeqGenomePromoters.h"

#include <string>
#include <vector>

class options;

// Hard-assignment EM: the E step ranks the promoters by their best site (BicPssmScore) and keeps the
// best-scoring prefix; the M step counts the best site of each of those genes on top of the prior
// pseudo-counts. Rounds go on while the score strictly improves; a round without gain restores the
// PSSM, score and threshold of the round before. Then the window's end is moved up and its start down
// by RangeStep while that strictly improves the score.
//
// Keys in `scope`, all required: PriorMultip (four floats, A C G T), MaxPosEntropy (float),
// RangeStep, MaxRange, Logit (int).
class BicMotifEM {
public:
    BicMotifEM(BicPssmScore& score, const DnaSeqGenomePromoters<DnaSequence>& genome, options& opts,
               const std::string& scope);

    // Refines the PSSM grown from `seed` in the window [from, to) on one strand (dir 0) or both.
    // Returns the final score; the PSSM is m_pssm, its threshold m_cur_thresh.
    float optimize(const std::string& seed, int from, int to, int dir);
    // One site of the seed on top of the prior, in the given window.
    void init(const std::string& seed, int from, int to, int dir);
    // The M step on the genes of the last scoring.
    void assess_pssm();

    BicPssmScore& m_score;
    const DnaSeqGenomePromoters<DnaSequence>& m_genome;
    std::vector<float> m_prior;
    float m_max_pos_entropy;
    DnaPSSM m_pssm;
    DnaPSSM m_next_pssm;
    DnaPSSM m_prev_pssm;
    float m_cur_score;
    float m_cur_thresh;
    float m_prev_thresh;
    int m_range_step;
    int m_max_range;
    bool m_logit;

private:
    // Scores m_pssm with the window [from, to); keeps the window if the score strictly improves.
    bool try_window(int from, int to);
};

#endif
