// Log-space arithmetic in single precision.
#include "LogProb.h"

#include <cmath>

float log_sum_log(float a, float b) {
    const float hi = a > b ? a : b;
    const float lo = a > b ? b : a;
    const float e = expf(lo - hi);
    const float one_plus = 1.0f + e;
    return hi + logf(one_plus);
}

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
