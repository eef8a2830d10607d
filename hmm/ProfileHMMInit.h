// Starting models for the profilers: the store an initialiser reads from, and the random star start.
#ifndef VESK_HMM_PROFILEHMMINIT_H
#define VESK_HMM_PROFILEHMMINIT_H

#include "ProfileHMM.h"
#include "SeqAlign.h"
#include "SymbolSequence.h"

#include <memory>
#include <vector>

// What a profiler offers its initialiser: the sequences and the profile to fill.
class ProfilerStoreBase {
public:
    virtual ~ProfilerStoreBase() = default;
    virtual const SymbolSequenceSet& get_seq_family() = 0;
    virtual ProfileHMM& get_target_profile() = 0;
};

class ProfileHMMInitBase {
public:
    virtual ~ProfileHMMInitBase() = default;
    virtual void attach_profiler(ProfilerStoreBase* store) = 0;
    // Gives the target profile fresh parameters.
    virtual void reinit() = 0;
    // Counts a pass; false once the passes are used up.
    virtual bool carry_on() = 0;
};

// A profile from the star alignment around a randomly drawn centre: a column is a match column when
// the centre has a residue there and gaps times the match factor are fewer than residues; transitions
// and emissions are counts (with one pseudo count each) over their totals.
class ProfileHMMInitRandStar : public ProfileHMMInitBase {
public:
    ProfileHMMInitRandStar(const SymbSubstMat& mat, int gap, int max_iter, float match_factor, bool logit);

    void attach_profiler(ProfilerStoreBase* store) override;
    void reinit() override;
    bool carry_on() override;
    // Marks the match columns of the current alignment; returns their count.
    int calc_new_length();

    const SymbolSequenceSet* m_seqs;
    std::unique_ptr<SeqMultiAlign> m_msa;
    ProfileHMM* m_profile;
    // Star alignment by DynProgAlign.
    StarMultiAlign m_star;
    std::vector<bool> m_match_col;
    int m_iter;
    int m_max_iter;
    float m_match_factor;
    bool m_logit;
    // The centre drawn by the last reinit.
    int m_centre;
};

#endif
