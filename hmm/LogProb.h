// Log-space arithmetic in single precision: the log of zero and the log-sum of two log values.
#ifndef VESK_HMM_LOGPROB_H
#define VESK_HMM_LOGPROB_H

// The logarithm of zero: the lowest finite float.
constexpr float kLogZero = -3.4028235e38f;

// log(exp(a) + exp(b)) as the larger plus log(1 + exp(smaller - larger)), rounded to float at each step.
float log_sum_log(float a, float b);
// log(1 - p) of a probability p.
float log_one_minus(float p);
// log(1 - exp(a)) of a log probability a; kLogZero when a is 0 or above.
float log_one_minus_exp(float a);
// logf(p), with kLogZero for p = 0.
float log_prob(float p);

#endif
