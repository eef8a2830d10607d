// SigPssmScore: rates a PSSM by how far the genes it ranks highest stand out, condition by condition,
// in z-scores of the expression data.
#ifndef VESK_SEQPACK_BICSEARCH_SIGPSSMSCORE_H
#define VESK_SEQPACK_BICSEARCH_SIGPSSMSCORE_H

#include "DnaPSSM.h"
#include "ExpSeqDB.h"

#include <ostream>
#include <string>
#include <vector>

class options;

// The promoters with a sequence are ranked by their best site. Walking down the ranking, each gene
// adds its z-score (by the condition's mean and standard deviation over those genes) to each
// condition's sum; at every change of likelihood the genes above make a bin, scored by how far the
// conditions' mean z-scores lie beyond Tc / sqrt(n) of the overall level, in either direction. The
// best bin is the first of the highest score among those of more than MinSize genes.
//
// Keys in `scope`, all required: MinSize (int), Tc, ReportPBinSize (float), Logit (int). The
// condition statistics are taken at construction, from the database's expression data.
class SigPssmScore {
public:
    struct Bin {
        float m_score;
        int m_count;
        float m_ml;
        std::vector<float> m_vals; // per condition: its mean z-score less the overall level
    };

    SigPssmScore(const ExpSeqDB& db, options& opts, const std::string& scope);

    // The best bin's score (0 when no bin is large enough); m_best_thresh its likelihood.
    float score(const DnaPSSM& pssm);
    // The conditions of the best bin by their value, in bins of ReportPBinSize: "bin\tcount\tconditions".
    void report_conds(std::ostream& out) const;

    const ExpSeqDB& m_db;
    int m_min_size;
    float m_tc;
    float m_report_bin;
    bool m_logit;
    std::vector<int> m_genes; // genes with a sequence
    std::vector<float> m_mean, m_sd;
    std::vector<Bin> m_bins;
    int m_best;
    float m_best_thresh;
};

#endif
