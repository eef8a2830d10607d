// HMMEMBase: Baum-Welch training of the edges and emissions of an HMM, in log space.
#ifndef VESK_HMM_HMMEMBASE_H
#define VESK_HMM_HMMEMBASE_H

#include "HMM.h"
#include "HMMDecode.h"
#include "SymbolSequence.h"

#include <vector>

// Each state gets a pseudo count of one, spread evenly over its out-edges and over the symbols, so a
// state that no path uses ends up with uniform parameters and no existing edge falls to zero.
// Expected counts come from the forward and backward tables, so the asymmetries of the decoders
// (see HMMDecode.h) carry over to training.
class HMMEMBase {
public:
    HMMEMBase(HMM& hmm, float eps, bool logit);
    virtual ~HMMEMBase() = default;

    // Re-estimates until the gain in total log likelihood is no longer above the stop bound (the
    // first round always goes on) and returns the total of the last expectation, that is of the
    // model as it stood before the last re-estimation. A bound of 3.4028235e38 or more trains
    // nothing and returns the total of one expectation pass on the model as it is.
    virtual float local_opt(const SymbolSequenceSet& seqs);
    // Fills the expected counts from all sequences; returns the total log likelihood.
    float expectation(const SymbolSequenceSet& seqs);
    // New edge and emission probabilities from the expected counts.
    void maximization();
    // Sizes the count tables to the model's state count.
    void resize_tabs();

    HMM& m_hmm;
    int m_num_states;
    ForwardDecode m_forward;
    BackwardDecode m_backward;
    // Expected edge counts (row = source state) and their row sums.
    std::vector<float> m_akl;
    std::vector<float> m_ak;
    // Expected emission counts (row = symbol) and their sums by state.
    std::vector<float> m_ek;
    std::vector<float> m_ek_sum;
    float m_eps;
    // The worst per-symbol log likelihood of the last expectation.
    float m_worst_seq_p;
    bool m_logit;

private:
    void clear_tabs();
    // The re-estimated log probability of an edge from `from` to `to` of a state with `out_degree`
    // edges.
    float edge_log_prob(int from, int to, int out_degree) const;
};

#endif
