// ValSpaceK: the value itself, truncated to a state between 0 and k.
#ifndef VESK_MODEL_VALSPACEK_H
#define VESK_MODEL_VALSPACEK_H

#include "ValSpaceBase.h"

#include <string>

class options;

class ValSpaceK : public ValSpaceBase {
public:
    // Reads no option; m_states is left as it is.
    ValSpaceK(options& opts, const std::string& scope, int k);

    // k above k, 0 below 0, else the value truncated.
    int get_state_of_val(float v) const override;
    // The value clamped to 0 ... k, whatever the state; not a probability.
    float get_val_state_prob(int s, float v) const override;

    int m_k;
};

#endif
