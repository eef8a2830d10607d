// Log-space arithmetic in single precision.
#include "LogProb.h"

#include <cmath>

float log_one_minus(float p) {
    const float q = 1.0f - p;
    return q > 0.0f ? logf(q) : kLogZero;
}

float log_one_minus_exp(float a) {
    if (a >= 0.0f)
        return kLogZero;
    const float q = 1.0f - expf(a);
    return q > 0.0f ? logf(q) : kLogZero;
}

float log_prob(float p) { return p == 0.0f ? kLogZero : logf(p); }
