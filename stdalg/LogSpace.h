// Log-space arithmetic in single precision, shared by the sequence, HMM and network code.
#ifndef VESK_STDALG_LOGSPACE_H
#define VESK_STDALG_LOGSPACE_H

#include <cmath>

// The log of zero: the lowest finite float.
constexpr float kLogZero = -3.4028235e38f;

// log(exp(a) + exp(b)) as the larger plus log(1 + exp(smaller - larger)), rounded to float at each
// step. An infinite smaller operand leaves the larger. Two shortcuts return the larger at once, the
// same float the full formula gives, without the exp and log:
//  - the smaller is 17 or more below the larger: exp of the difference is under half an ulp of 1, so
//    1 + exp rounds to 1 and its log is 0 (and an exp that underflows is slow in the maths library);
//  - the larger is 2^25 or more in magnitude (the log of zero and sums of it): the log term lies in
//    [0, log 2], below half the float spacing around such a value (2 or more), so adding it rounds
//    back to the larger. Decoders meet this in every row through unreachable cells.
// Hot in the decoders, hence inline.
inline float log_sum(float a, float b) {
    const float hi = a > b ? a : b;
    const float lo = a > b ? b : a;
    const float d = lo - hi;
    if (std::isinf(lo) || d <= -17.0f || (std::fabs(hi) >= 33554432.0f && d <= 0.0f))
        return hi + 0.0f;
    return hi + logf(1.0f + expf(d));
}

// a becomes log(exp(a) + exp(b)), as log_sum; returns the new a.
inline float log_sum_log(float& a, float b) {
    a = log_sum(a, b);
    return a;
}

// log(1 - p); below the double 0.001 the first-order form -p.
float log_one_minus(float p);
// log(1 - exp(l)).
float log_one_minus_exp(float l);
// logf(p), with kLogZero for p = 0.
inline float log_prob(float p) { return p == 0.0f ? kLogZero : logf(p); }

#endif
