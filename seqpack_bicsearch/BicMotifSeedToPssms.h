// BicMotifSeedToPssms: turns the seeds of a bicluster into PSSMs by the hypergeometric enrichment of its
// genes among the promoters ranked by each PSSM; masks the sites it has explained and reports.
#ifndef VESK_SEQPACK_BICSEARCH_BICMOTIFSEEDTOPSSMS_H
#define VESK_SEQPACK_BICSEARCH_BICMOTIFSEEDTOPSSMS_H

#include "DnaPSSM.h"
#include "DnaSeqGenomePromoters.h"
#include "SpecialFunc.h"
#include "ds/BitVec.h"

#include <fstream>
#include <string>
#include <vector>

class options;

// A seed is padded with N up to MaxPatLength (at most MaxPad on each side) and grown into a PSSM by
// hard-assignment EM on the focus genes above the best rank. The best rank is where the focus genes
// are most enriched (the lowest log hypergeometric term), looked at only where the likelihood
// changes, within MaxVars ranks, and with more than MinMotifBicFrac of the focus genes above it. A
// PSSM is kept when its score (minus that log) exceeds ThreshScore; its sites in the focus genes are
// then masked, so that the next seed can find a second motif. Single strand is tried first, then
// both strands.
//
// Keys in `scope`: PriorMultip (four floats), MaxPosEntropy, ThreshScore, MinMotifBicFrac,
// FpThreshScore (float), MaxVars, MaxPatLength, MaxPad, Logit (int), out_motfps, out_pssmk,
// out_pssmd (paths), all required; GenPosRpt and GenFlank (int, 0 when absent); pos_rpt with
// GenPosRpt, FlankReportBP and FlankRptDir with GenFlank. An output that can't be opened loses its
// lines silently.
class BicMotifSeedToPssms {
public:
    struct MlHit {
        int m_gene;
        int m_pos;
        float m_ml;
        int m_dir;
    };
    // A masked site: its start, likelihood, strand, whether it was reported, and its text.
    struct MotHit {
        int m_pos;
        float m_ml;
        int m_dir;
        bool m_flag;
        std::string m_text;
    };

    BicMotifSeedToPssms(const DnaSeqGenomePromoters<DnaSequence>& genome, const ds_bitvec& allowed,
                        options& opts, const std::string& scope);

    // Clears results and masks, takes `genes` as the focus and tries each seed in order.
    void optimize(int id, const ds_bitvec& genes, const std::vector<std::string>& seeds);
    // Starts from a given PSSM (its window and strand flag kept, every column informative). With `dry`
    // only the threshold is found and `score` set; otherwise the PSSM is refined, reported when its
    // score reaches FpThreshScore, and returned in `pssm`.
    void optimize_pssm(int id, const ds_bitvec& genes, DnaPSSM& pssm, float& score, bool dry);
    // The likelihood threshold of the best rank of `pssm` for `genes`; `score` gets the score.
    float get_best_threshold(DnaPSSM& pssm, const ds_bitvec& genes, float& score);

    // The steps, public for their callers' tests.
    void init(const std::string& seed);
    // Best site of a gene in the window, skipping masked starts; -3.4028235e+36 when there is none.
    int max_like_match(int gene, float& best, int& dir) const;
    void find_best_threshold(bool final);
    void assess_pssm();
    void attempt_add(const std::string& seed, bool first);
    bool is_already_covered(const std::string& seed) const;
    void mask_match(int gene, float thresh, int id, bool report);
    void report_pssm(int id);
    // Every gene's mask cleared, sized to its promoter.
    void clear_masks();

    const DnaSeqGenomePromoters<DnaSequence>& m_genome;
    ds_bitvec m_allowed;
    std::vector<float> m_prior;
    float m_max_pos_entropy;
    int m_from;
    int m_to;
    int m_dir;
    int m_focus_count;
    DnaPSSM m_pssm;
    DnaPSSM m_next_pssm;
    DnaPSSM m_prev_pssm;
    int m_motif_from;
    int m_motif_to;
    std::vector<std::vector<int>> m_mask; // by gene, by position
    float m_score;
    float m_thresh_score;
    float m_fp_thresh;
    int m_max_vars;
    int m_max_pat_length;
    int m_max_pad;
    float m_min_bic_frac;
    float m_fp_thresh_score;
    BinomFuncTable m_binom;
    std::vector<MlHit> m_hits;
    int m_best_hit; // end of the accepted prefix of m_hits
    std::vector<DnaPSSM> m_pssms;
    std::vector<float> m_fp_threshs;
    ds_bitvec m_focus;
    bool m_logit;
    int m_pssm_id;
    std::ofstream m_motfps_out;
    std::ofstream m_pssmk_out;
    std::ofstream m_pssmd_out;
    std::ofstream m_pos_out;
    bool m_gen_pos_rpt;
    bool m_gen_flank;
    int m_flank_bp;
    std::string m_flank_dir;
    std::vector<std::vector<MotHit>> m_mot_hits; // by gene

private:
    bool masked(int gene, int start) const;
    // The site text with FlankReportBP bases on each side, read on the hit's strand.
    std::string flank_text(const MlHit& hit) const;
};

#endif
