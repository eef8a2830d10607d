// ValSpace3: three fixed states, up above 1, down below -1, no change between.
#ifndef VESK_MODEL_VALSPACE3_H
#define VESK_MODEL_VALSPACE3_H

#include "ValSpaceBase.h"

#include <string>

class options;

class ValSpace3 : public ValSpaceBase {
public:
    // The store and the scope are taken for uniformity; no option is read.
    ValSpace3(options& opts, const std::string& scope);

    // 1 if v > 1.0, 2 if v < -1.0, else 0.
    int get_state_of_val(float v) const override;
    // 1.0 if `s` is the state of v, else 0.0.
    float get_val_state_prob(int s, float v) const override;

    int m_k = 3;
};

#endif
