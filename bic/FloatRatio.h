// The largest finite float and a division with its IEEE answers for a zero divisor spelled out.
#ifndef VESK_BIC_FLOATRATIO_H
#define VESK_BIC_FLOATRATIO_H

#include <limits>

namespace float_ratio {

constexpr float kMaxFloat = 3.4028235e+38f;

// a / b with the IEEE answers spelled out for b == 0 (a table still all 0 gives +inf for a
// positive a).
inline float ratio(float a, float b) {
    if (b != 0.0f)
        return a / b;
    if (a > 0.0f)
        return std::numeric_limits<float>::infinity();
    if (a < 0.0f)
        return -std::numeric_limits<float>::infinity();
    return std::numeric_limits<float>::quiet_NaN();
}

} // namespace float_ratio

#endif
