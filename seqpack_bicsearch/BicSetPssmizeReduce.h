// BicSetPssmizeReduce: turns the patterns of a bicluster set into PSSMs by EM and reduces the set to the
// PSSMs that still score on the genes left by the better ones.
#ifndef VESK_SEQPACK_BICSEARCH_BICSETPSSMIZEREDUCE_H
#define VESK_SEQPACK_BICSEARCH_BICSETPSSMIZEREDUCE_H

#include "ASAPCalc.h"
#include "BicMotifEM.h"
#include "BicPssmScore.h"
#include "DnaPSSM.h"
#include "ExpSeqDB.h"
#include "ds/BitVec.h"

#include <memory>
#include <ostream>
#include <string>
#include <vector>

class options;

// Keys in `scope`: ASAP, EM (scopes of the gene set calculator, with the PSSM scorer's keys beside
// its own, and of the EM), PaddingString (string), MinPForMatch, MinAvgPForMatch, IsSamePssmFrac,
// MinScore, MinReduceScore, MaxGeneOverlap, MaxReduceFactor, MinCondReduceScore (float), VarGroup
// (int), all required; the calculator's chance tables from Tables::score_tab (Tables::glob_score_tab
// is opened and not read). The database's graph, weights, promoters and bicluster set must be loaded.
class BicSetPssmizeReduce {
public:
    struct Entry {
        int m_bic;
        DnaPSSM m_pssm;
        float m_score;
        ds_bitvec m_genes;
        std::vector<int> m_conds;
        bool m_erased;
        bool m_reported;
    };

    BicSetPssmizeReduce(ExpSeqDB& db, options& opts, const std::string& scope);

    // Makes a PSSM of every bicluster scoring above MinScore whose pattern no earlier PSSM matches,
    // then reports them best first, each followed by the rescoring of the ones left: PSSM key lines
    // to `key`, columns to `data` and a bicluster line to `bics`.
    void reduce_bic_set(std::ostream& key, std::ostream& data, std::ostream& bics);
    // Whether the pattern fits a PSSM made so far at some offset from 0 to width - length - 1.
    bool is_match_pssms(const std::string& pattern) const;
    void dump_bic(int id, const Entry& e, std::ostream& key, std::ostream& data, std::ostream& bics) const;

    ExpSeqDB& m_db;
    ds_bitvec m_allowed; // genes with a promoter
    std::unique_ptr<ASAPCalc> m_asap;
    std::unique_ptr<BicPssmScore> m_score;
    std::unique_ptr<BicMotifEM> m_em;
    std::string m_padding;
    float m_min_p_for_match;
    float m_min_avg_p_for_match;
    float m_is_same_pssm_frac;
    float m_min_score;
    float m_min_reduce_score;
    float m_max_gene_overlap;
    float m_max_reduce_factor;
    float m_min_cond_reduce_score;
    int m_var_group;
    std::vector<Entry> m_entries;
};

#endif
