// Profilers: the best single profile of a family by random restarts (FamHMMProfiler), and subfamilies
// as parallel profile copies under an annealed search (SubFamHMMProfiler).
#ifndef VESK_HMM_HMMPROFILER_H
#define VESK_HMM_HMMPROFILER_H

#include "HMMDecode.h"
#include "HMMEMBase.h"
#include "ProfileHMM.h"
#include "ProfileHMMInit.h"
#include "SeqAlign.h"
#include "SymbolSequence.h"
#include "options.h"

#include <memory>
#include <ostream>
#include <string>
#include <vector>

// Reads "EMLogit" and "Logit" in its scope; the star initialiser is made from the matrix, the gap, the
// number of passes and the match factor; `em_eps` bounds each EM run.
class FamHMMProfiler : public ProfilerStoreBase {
public:
    FamHMMProfiler(ProteinSequenceSet& seqs, options& opts, const std::string& scope, const SymbSubstMat& mat,
                   int gap, int max_iter, float match_factor, float em_eps);

    const SymbolSequenceSet& get_seq_family() override { return m_seqs; }
    ProfileHMM& get_target_profile() override { return m_profile; }
    // Restarts while the initialiser allows; the best model ends in m_best_profile.
    void profile();

    ProteinSequenceSet& m_seqs;
    ProfileHMM m_profile;
    ProfileHMM m_best_profile;
    std::unique_ptr<ProfileHMMInitBase> m_init;
    HMMEMBase m_em;
    int m_iter;
    float m_best_ll;
    float m_best_worst_seq_p;
    bool m_logit;
};

// Reads "EMLogit", "Logit", "TargetNumOfClasses", "EMEpsilon", "RandomCopyFactor" and "CoolingFactor".
// The constructor runs the initialiser once, so that the first copies are real profiles.
class SubFamHMMProfiler : public ProfilerStoreBase {
public:
    SubFamHMMProfiler(ProteinSequenceSet& seqs, options& opts, const std::string& scope,
                      const SymbSubstMat& mat, int gap, int max_iter, float match_factor);

    const SymbolSequenceSet& get_seq_family() override { return m_seqs; }
    ProfileHMM& get_target_profile() override { return m_target; }
    void profile();
    // The copy with the least start mass, the lowest id on a tie.
    int find_worst_class() const;
    // Every edge out of the start state set to 1/n.
    void force_start_prior();
    // Classifies each sequence by the copy its Viterbi path enters.
    void calc_classif();
    void dump_m_align(std::ostream& os);

    int m_num_classes;
    ProteinSequenceSet& m_seqs;
    KProfileHMM m_model;
    KProfileHMM m_best_model;
    ProfileHMM m_target;
    std::unique_ptr<ProfileHMMInitBase> m_init;
    HMMEMBase m_em;
    ViterbiDecode m_viterbi;
    std::vector<int> m_class_of_seq;
    std::vector<int> m_class_count;
    float m_random_copy_factor;
    float m_cooling_factor;
    bool m_logit;
    float m_best_ll;
};

#endif
