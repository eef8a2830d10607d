// ValSpace3 lookups.
#include "ValSpace3.h"

ValSpace3::ValSpace3(options&, const std::string&) {}

int ValSpace3::get_state_of_val(float v) const {
    if (v > 1.0f)
        return 1;
    if (v < -1.0f)
        return 2;
    return 0;
}

float ValSpace3::get_val_state_prob(int s, float v) const { return s == get_state_of_val(v) ? 1.0f : 0.0f; }
