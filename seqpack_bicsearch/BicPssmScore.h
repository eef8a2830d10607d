// BicPssmScore: rates a PSSM by the expression score of the genes it ranks highest, and gives the
// moving-average curve of the data along that ranking.
#ifndef VESK_SEQPACK_BICSEARCH_BICPSSMSCORE_H
#define VESK_SEQPACK_BICSEARCH_BICPSSMSCORE_H

#include "ASAPCalc.h"
#include "DnaPSSM.h"
#include "DnaSeqGenomePromoters.h"
#include "StateDataSetReal.h"
#include "ds/BitVec.h"

#include <ostream>
#include <string>
#include <vector>

class options;

// The promoters of the allowed genes are ranked by their best site's log likelihood, and the gene set
// of every prefix of that ranking is scored in one walk by adding the genes one by one to the
// calculator. A prefix may end only where the likelihood changes, so genes that tie are never
// separated; between MinVars and MaxVars genes the best prefix wins, a later one on ties.
//
// Keys in `scope`, all required: MaxVars, MinVars, UseMaxCondScore, Logit (int).
class BicPssmScore {
public:
    struct MlHit {
        int m_gene;
        std::string::const_iterator m_pos;
        float m_ml;
    };

    BicPssmScore(ASAPCalc& asap, const DnaSeqGenomePromoters<DnaSequence>& genome, const ds_bitvec& allowed,
                 options& opts, const std::string& scope);

    // Scores the PSSM; afterwards the calculator holds m_best_genes, and m_scores / m_ml_vals the
    // curve: one point per boundary looked at, the score of the genes above it and the likelihood
    // of the last of them.
    float score(const DnaPSSM& pssm);
    // The same ranking with a window of about MinVars genes sliding down it: at each boundary where
    // the window is more than half full, the mean and standard deviation of every condition of
    // `data` over the window's genes go to `avg` and `sd` (one row per point), the calculator's
    // score of the window to m_scores and the boundary's likelihood to m_ml_vals. Bin counts are
    // written to `plot` as PLOT lines when it is given.
    void score_moving_avg(const DnaPSSM& pssm, const StateDataSetReal& data,
                          std::vector<std::vector<float>>& avg, std::vector<std::vector<float>>& sd,
                          std::ostream* plot);

    const DnaSeqGenomePromoters<DnaSequence>& m_genome;
    ASAPCalc& m_asap;
    ds_bitvec m_allowed;
    std::vector<float> m_ml_vals;
    std::vector<float> m_scores;
    std::vector<MlHit> m_hits;
    int m_max_vars;
    int m_min_vars;
    float m_score;
    std::vector<int> m_best_genes;
    float m_best_thresh;
    int m_use_max_cond_score;
    bool m_logit;

private:
    // Best site of every allowed gene, sorted by descending likelihood (gene order among ties).
    void rank(const DnaPSSM& pssm);
    float calc_score();
};

#endif
