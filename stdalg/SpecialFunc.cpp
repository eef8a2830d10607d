// Special functions in the precision each caller relies on: float results rounded at each step.
#include "SpecialFunc.h"

#include <cmath>
#include <iostream>
#include <limits>

namespace {

const double kLanczos[6] = {76.18009172947146,  -86.50532032941678,   24.01409824083091,
                            -1.231739572450155, 0.001208650973866179, -5.395239384953e-06};

double lanczos_gamma_ln(float xf) {
    const double x = xf;
    double tmp = x + 5.5;
    tmp = tmp - (x + 0.5) * std::log(tmp);
    double ser = 1.000000000190015;
    double y = x;
    for (double c : kLanczos) {
        y += 1;
        ser += c / y;
    }
    return std::log(2.5066282746310007 * ser / x) - tmp;
}

constexpr int kMaxIt = 100;
constexpr double kEps = 3e-07;
constexpr double kFpMin = 1e-30;

} // namespace

float gamma_ln(float x) { return static_cast<float>(lanczos_gamma_ln(x)); }

float binom_ln_value(int n, int k) {
    if (n == k || k == 0)
        return 0.0f;
    const float t = gamma_ln(static_cast<float>(n + 1)) - gamma_ln(static_cast<float>(k + 1));
    return t - gamma_ln(static_cast<float>(n - k + 1));
}

double dbl_gamma_ln(float x) { return lanczos_gamma_ln(x); }

BinomFuncTable::BinomFuncTable(int n_max, int k_max)
    : m_factorial(n_max > 3 ? n_max : 3, -1.0f), m_binom(static_cast<std::size_t>(n_max) * k_max, -1.0f),
      m_binom_ln(static_cast<std::size_t>(n_max) * k_max, -1.0f),
      m_dbl_binom_ln(static_cast<std::size_t>(n_max) * k_max, -1.0), m_n_max(n_max), m_k_max(k_max) {
    m_factorial[0] = 1.0f;
    m_factorial[1] = 1.0f;
    m_factorial[2] = 2.0f;
    for (int i = 2; i < n_max - 1; ++i)
        m_factorial[i + 1] = m_factorial[i] * static_cast<float>(i + 1);
}

// Past the table the product goes on in single precision (it is infinite above 34!).
float BinomFuncTable::factorial(int i) const {
    if (i < 0)
        return std::numeric_limits<float>::quiet_NaN();
    if (i < static_cast<int>(m_factorial.size()))
        return m_factorial[i];
    float f = m_factorial.back();
    for (int j = static_cast<int>(m_factorial.size()); j <= i; ++j)
        f *= static_cast<float>(j);
    return f;
}

float BinomFuncTable::binom_ln(int n, int k) {
    const int c = cell(n, k);
    if (c >= 0 && m_binom_ln[c] != -1.0f)
        return m_binom_ln[c];
    const float v = binom_ln_value(n, k);
    if (c >= 0)
        m_binom_ln[c] = v;
    return v;
}

double BinomFuncTable::dbl_binom_ln(int n, int k) {
    const int c = cell(n, k);
    if (c >= 0 && m_dbl_binom_ln[c] != -1.0)
        return m_dbl_binom_ln[c];
    double v;
    if (n == k || k == 0) {
        v = 0.0;
    } else {
        v = dbl_gamma_ln(static_cast<float>(n + 1)) - dbl_gamma_ln(static_cast<float>(k + 1)) -
            dbl_gamma_ln(static_cast<float>(n - k + 1));
    }
    if (c >= 0)
        m_dbl_binom_ln[c] = v;
    return v;
}

float BinomFuncTable::log_hg(int N, int K, int n, int k) {
    if (hg_below_expectation(N, K, n, k))
        return 0.0f;
    const float s = binom_ln(n, k) + binom_ln(N - n, K - k);
    return s - binom_ln(N, K);
}

double BinomFuncTable::dbl_log_hg(int N, int K, int n, int k) {
    if (hg_below_expectation(N, K, n, k))
        return 0.0;
    return dbl_binom_ln(n, k) + dbl_binom_ln(N - n, K - k) - dbl_binom_ln(N, K);
}

float BinomFuncTable::binom(int n, int k) {
    // A single test of the cell index: n is not tested on its own, so (n, k) past n_max
    // shares the cell of (n - n_max, k + 1).
    const long long idx = static_cast<long long>(k) * m_n_max + n;
    if (idx >= 0 && idx < static_cast<long long>(m_binom.size())) {
        float& v = m_binom[static_cast<std::size_t>(idx)];
        if (v == -1.0f)
            v = factorial(n) / (factorial(n - k) * factorial(k));
        return v;
    }
    return std::exp(gamma_ln(static_cast<float>(n + 1)) - gamma_ln(static_cast<float>(k + 1)) -
                    gamma_ln(static_cast<float>(n - k + 1)));
}

FactorialFuncTable::FactorialFuncTable(int n) : m_table(n > 0 ? n : 0, 0.0f) {}

float FactorialFuncTable::factorial(int) const { return std::numeric_limits<float>::quiet_NaN(); }

float FactorialFuncTable::factorial_ln(int) const { return std::numeric_limits<float>::quiet_NaN(); }

double betacf(double a, double b, double x) {
    const double qab = a + b, qap = a + 1.0, qam = a - 1.0;
    double c = 1.0;
    double d = 1.0 - qab * x / qap;
    if (std::fabs(d) < kFpMin)
        d = kFpMin;
    d = 1.0 / d;
    double h = d;
    int m;
    for (m = 1; m <= kMaxIt; ++m) {
        const int m2 = 2 * m;
        double aa = m * (b - m) * x / ((qam + m2) * (a + m2));
        d = 1.0 + aa * d;
        if (std::fabs(d) < kFpMin)
            d = kFpMin;
        c = 1.0 + aa / c;
        if (std::fabs(c) < kFpMin)
            c = kFpMin;
        d = 1.0 / d;
        h *= d * c;
        aa = -(a + m) * (qab + m) * x / ((a + m2) * (qap + m2));
        d = 1.0 + aa * d;
        if (std::fabs(d) < kFpMin)
            d = kFpMin;
        c = 1.0 + aa / c;
        if (std::fabs(c) < kFpMin)
            c = kFpMin;
        d = 1.0 / d;
        const double del = d * c;
        h *= del;
        if (std::fabs(del - 1.0) < kEps)
            break;
    }
    if (m > kMaxIt)
        std::cerr << "a " << a << " or b " << b << " too big, or MAXIT too small in betacf, x = " << x
                  << std::endl;
    return h;
}

double betai(double a, double b, double x) {
    if (x < 0.0 || x > 1.0) {
        std::cerr << "Bad x in routine betai" << std::endl;
        return -1.0;
    }
    double bt;
    if (x == 0.0 || x == 1.0) {
        bt = 0.0;
    } else {
        const float g1 = static_cast<float>(dbl_gamma_ln(static_cast<float>(a + b)));
        const float g2 = static_cast<float>(dbl_gamma_ln(static_cast<float>(a)));
        const float g3 = static_cast<float>(dbl_gamma_ln(static_cast<float>(b)));
        const float g = g1 - g2 - g3;
        bt = std::exp(g + a * std::log(x) + b * std::log(1.0 - x));
    }
    if ((a + 1.0) / (a + b + 2.0) <= x)
        return 1.0 - bt * betacf(b, a, 1.0 - x) / b;
    return bt * betacf(a, b, x) / a;
}

float cummulative_binom(float p, int n, int k) { return static_cast<float>(betai(k, n - k + 1, p)); }

void gser(float& result, float a, float x, float& gln) {
    gln = gamma_ln(a);
    if (x <= 0.0f) {
        if (x < 0.0f)
            std::cerr << "x less than 0 in routine gser" << std::endl;
        result = 0.0f;
        return;
    }
    float ap = a;
    float sum = 1.0f / a;
    float del = sum;
    for (int n = 1; n <= kMaxIt; ++n) {
        ap += 1.0f;
        del *= x / ap;
        sum += del;
        if (std::fabs(del) < std::fabs(sum) * static_cast<float>(kEps)) {
            result = sum * expf(-x + a * logf(x) - gln);
            return;
        }
    }
    // The result is left as the caller had it.
    std::cerr << "a too large, ITMAX too small in routine gser" << std::endl;
}

void gcf(float& result, float a, float x, float& gln) {
    const float fpmin = static_cast<float>(kFpMin);
    gln = gamma_ln(a);
    float b = x + 1.0f - a;
    float c = 1.0f / fpmin;
    float d = 1.0f / b;
    float h = d;
    int i;
    for (i = 1; i <= kMaxIt; ++i) {
        const float an = -i * (i - a);
        b += 2.0f;
        d = an * d + b;
        if (std::fabs(d) < fpmin)
            d = fpmin;
        c = b + an / c;
        if (std::fabs(c) < fpmin)
            c = fpmin;
        d = 1.0f / d;
        const float del = d * c;
        h *= del;
        if (std::fabs(del - 1.0f) < static_cast<float>(kEps))
            break;
    }
    if (i > kMaxIt)
        std::cerr << "a too large, ITMAX too small in gcf" << std::endl;
    result = expf(-x + a * logf(x) - gln) * h;
}

namespace {

float gamma_p_or_q(float a, float x, bool upper, const char* invalid) {
    if (x < 0.0f || a <= 0.0f)
        std::cerr << invalid << std::endl;
    float gln = 0.0f;
    float r = 0.0f; // stays 0 if the series runs out of iterations
    if (x >= a + 1.0f) {
        gcf(r, a, x, gln);
        return upper ? r : 1.0f - r;
    }
    gser(r, a, x, gln);
    return upper ? 1.0f - r : r;
}

} // namespace

float gammp(float a, float x) { return gamma_p_or_q(a, x, false, "Invalid arguments in routine gammp"); }

float gammq(float a, float x) { return gamma_p_or_q(a, x, true, "Invalid arguments in routine gammq"); }

float chip(float chi2, float df) { return gammp(df / 2.0f, chi2 / 2.0f); }

float chiq(float chi2, float df) { return gammq(df / 2.0f, chi2 / 2.0f); }
