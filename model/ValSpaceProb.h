// ValSpaceProb: states with membership functions tabulated over equal bins of the value.
#ifndef VESK_MODEL_VALSPACEPROB_H
#define VESK_MODEL_VALSPACEPROB_H

#include "Matrix.h"
#include "ValSpaceBase.h"

#include <string>
#include <vector>

class options;
class scalar_func;

class ValSpaceProb : public ValSpaceBase {
public:
    // With `defer` nothing is read and the space waits for init(); otherwise the functions come from
    // the scopes of FuncScopes (each with Points of 4, 6 or 8 numbers) and the bins from BinSize,
    // RangeMax, ZeroState and RangeBase.
    ValSpaceProb(options& opts, const std::string& scope, bool defer);

    // Tabulates the functions, one state each, over the bins from range_base to range_max. Each bin
    // belongs to the state whose function is strictly highest there (the lower state on ties, state 0
    // where all are 0). The functions are not kept.
    void init(const std::vector<scalar_func*>& funcs, float range_base, float zero_state, float range_max,
              float bin_size, int trace);

    int get_zero_state() const override { return m_zero_state; }
    // Bin of (v - base) / bin size, rounded up for v >= 0 and truncated below 0.
    int get_state_of_val(float v) const override;
    // Tabulated value of state s in the bin of (v - base) / bin size + 1 truncated for v >= 0, and of
    // the truncated position below 0. A state out of range has probability 0.
    float get_val_state_prob(int s, float v) const override;

    Matrix<float> m_probs; // bin by state
    std::vector<int> m_state_of_bin;
    float m_inv_bin = 0.0f;
    float m_base = 0.0f;
    int m_zero_state = 0;

private:
    int clamp_bin(float pos) const;
};

#endif
