// ValSpaceK lookups.
#include "ValSpaceK.h"

ValSpaceK::ValSpaceK(options&, const std::string&, int k) : m_k(k) {}

int ValSpaceK::get_state_of_val(float v) const {
    if (v > static_cast<float>(m_k))
        return m_k;
    if (v < 0.0f)
        return 0;
    if (v != v) // not a number: no state is better than another
        return 0;
    return static_cast<int>(v);
}

float ValSpaceK::get_val_state_prob(int, float v) const {
    if (v < 0.0f)
        return 0.0f;
    if (v > static_cast<float>(m_k))
        return static_cast<float>(m_k);
    return v;
}
