// Log-space arithmetic in single precision: the log of zero and the log-sum of two log values.
#ifndef VESK_HMM_LOGPROB_H
#define VESK_HMM_LOGPROB_H

#include <cmath>

// The logarithm of zero: the lowest finite float.
constexpr float kLogZero = -3.4028235e38f;

// log(exp(a) + exp(b)) as the larger plus log(1 + exp(smaller - larger)), rounded to float at each step.
// When the smaller is 17 or more below the larger, exp of the difference is under half an ulp of 1,
// so 1 + exp rounds to 1 and its log is 0: the larger plus 0 is returned at once, the same float the
// full formula gives, without an exp that underflows (slow in the maths library).
inline float log_sum_log(float a, float b) {
    const float hi = a > b ? a : b;
    const float lo = a > b ? b : a;
    const float d = lo - hi;
    if (d <= -17.0f)
        return hi + 0.0f;
    const float one_plus = 1.0f + expf(d);
    return hi + logf(one_plus);
}
// log(1 - p) of a probability p.
float log_one_minus(float p);
// log(1 - exp(a)) of a log probability a; kLogZero when a is 0 or above.
float log_one_minus_exp(float a);
// logf(p), with kLogZero for p = 0.
float log_prob(float p);

#endif
