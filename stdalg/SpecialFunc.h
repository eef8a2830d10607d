// Log-gamma, memoised log-binomials and the hypergeometric term, incomplete beta and gamma functions.
#ifndef VESK_STDALG_SPECIALFUNC_H
#define VESK_STDALG_SPECIALFUNC_H

#include <vector>

// Lanczos log-gamma with six terms, computed in double; gamma_ln rounds to float.
float gamma_ln(float x);
double dbl_gamma_ln(float x);

// ln C(n, k) from three log-gamma values, rounded to float after each subtraction; 0 when k is 0
// or n equals k. This is the value that BinomFuncTable memoises.
float binom_ln_value(int n, int k);

// True when the overlap k lies below its expectation K n / N (taken from the exact product, in
// double); such a hypergeometric term counts as 0. A non-number quotient (N of 0) is not below.
inline bool hg_below_expectation(int N, int K, int n, int k) {
    const double expect = static_cast<double>(static_cast<long long>(K) * n) / static_cast<double>(N);
    return expect > k;
}

// Memoised logarithms of binomial coefficients over n < n_max, k < k_max.
class BinomFuncTable {
public:
    BinomFuncTable(int n_max, int k_max);

    float binom_ln(int n, int k);
    double dbl_binom_ln(int n, int k);
    // Log of one hypergeometric term binom(n,k) binom(N-n,K-k) / binom(N,K); 0 when the
    // overlap k is below its expectation K n / N.
    float log_hg(int N, int K, int n, int k);
    double dbl_log_hg(int N, int K, int n, int k);
    float binom(int n, int k);

    int n_max() const { return m_n_max; }
    int k_max() const { return m_k_max; }

private:
    // Cell of (n, k), or -1 when (n, k) falls outside the table.
    int cell(int n, int k) const {
        return (n >= 0 && k >= 0 && n < m_n_max && k < m_k_max) ? k * m_n_max + n : -1;
    }
    float factorial(int i) const;

    std::vector<float> m_factorial;
    std::vector<float> m_binom;
    std::vector<float> m_binom_ln;
    std::vector<double> m_dbl_binom_ln;
    int m_n_max;
    int m_k_max;
};

// A placeholder table: both operations return not-a-number.
class FactorialFuncTable {
public:
    explicit FactorialFuncTable(int n);
    float factorial(int n) const;
    float factorial_ln(int n) const;

private:
    std::vector<float> m_table;
};

double betai(double a, double b, double x);
double betacf(double a, double b, double x);
// Probability of at least k successes in n trials of probability p.
float cummulative_binom(float p, int n, int k);
float gammp(float a, float x);
float gammq(float a, float x);
void gser(float& result, float a, float x, float& gln);
void gcf(float& result, float a, float x, float& gln);
float chip(float chi2, float df);
float chiq(float chi2, float df);

#endif
