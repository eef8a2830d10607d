// ValSpaceDiscrete: a table of states over equal bins, built from the option Ranges.
#ifndef VESK_MODEL_VALSPACEDISCRETE_H
#define VESK_MODEL_VALSPACEDISCRETE_H

#include "ValSpaceBase.h"

#include <string>
#include <vector>

class options;

class ValSpaceDiscrete : public ValSpaceBase {
public:
    // Options Ranges (float array) and BinSize (float), both required.
    ValSpaceDiscrete(options& opts, const std::string& scope);

    int get_state_of_val(float v) const override;
    // 1.0 if the value's table entry is `s`, else 0.0.
    float get_val_state_prob(int s, float v) const override;

    std::vector<int> m_state_of_bin;
    float m_inv_bin;
    float m_base;

private:
    // Table index of v: trunc(m_inv_bin * v - m_base), clamped to the table.
    int bin_of(float v) const;
};

#endif
