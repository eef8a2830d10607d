// Special functions against independent values: std::lgamma in long double, closed forms, exact rationals.
#include "SpecialFunc.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <string>

namespace {

long double ref_binom_ln(int n, int k) {
    return std::lgamma(static_cast<long double>(n) + 1) - std::lgamma(static_cast<long double>(k) + 1) -
           std::lgamma(static_cast<long double>(n - k) + 1);
}

long double ref_log_hg(int N, int K, int n, int k) {
    return ref_binom_ln(n, k) + ref_binom_ln(N - n, K - k) - ref_binom_ln(N, K);
}

double binom_exact(int n, int k) {
    double r = 1;
    for (int i = 1; i <= k; ++i)
        r = r * (n - k + i) / i;
    return r;
}

// P(at least `from` successes in n trials of p).
double binom_tail(int n, double p, int from) {
    double sum = 0;
    for (int j = from; j <= n; ++j)
        sum += binom_exact(n, j) * std::pow(p, j) * std::pow(1.0 - p, n - j);
    return sum;
}

} // namespace

TEST(SpecialFunc, GammaLnAgainstLgamma) {
    for (float x : {0.5f, 1.0f, 1.5f, 2.0f, 3.0f, 7.25f, 10.0f, 50.5f, 101.0f, 1000.0f, 123456.0f}) {
        EXPECT_TRUE(near_rel(gamma_ln(x), std::lgamma(static_cast<long double>(x)), 2e-7, 1e-7)) << x;
        EXPECT_TRUE(near_rel(dbl_gamma_ln(x), std::lgamma(static_cast<long double>(x)), 1e-10, 1e-9)) << x;
    }
    // Result is the double computation rounded once to float.
    EXPECT_EQ(gamma_ln(10.0f), static_cast<float>(dbl_gamma_ln(10.0f)));
}

TEST(SpecialFunc, BinomLnInsideAndOutsideTheTable) {
    BinomFuncTable t(100, 100);
    for (int n : {0, 1, 5, 99, 100, 250, 20000})
        for (int k : {0, n})
            EXPECT_TRUE(t.binom_ln(n, k) == 0.0f && t.dbl_binom_ln(n, k) == 0.0) << n << " " << k;
    const int cases[][2] = {{5, 2}, {10, 3}, {60, 30}, {99, 98}, {150, 7}, {20000, 150}, {1000, 500}};
    for (const auto& c : cases) {
        const float first = t.binom_ln(c[0], c[1]);
        // Three float roundings of log-gamma values as large as ln((n+1)!).
        const double tol = 4e-7 * std::lgamma(c[0] + 1.0) + 2e-6;
        EXPECT_TRUE(near_rel(first, ref_binom_ln(c[0], c[1]), 0, tol)) << c[0] << " " << c[1];
        EXPECT_EQ(t.binom_ln(c[0], c[1]), first); // memoised value equals the computed one
        EXPECT_TRUE(near_rel(t.dbl_binom_ln(c[0], c[1]), ref_binom_ln(c[0], c[1]), 1e-9, 1e-9));
    }
}

TEST(SpecialFunc, LogHgIsOneTermAndZeroBelowExpectation) {
    BinomFuncTable t(100, 100);
    // N=10, K=5, n=4: expectation exactly 2. k = 2 computes the term C(4,2) C(6,3) / C(10,5) = 10/21.
    EXPECT_NEAR(t.log_hg(10, 5, 4, 2), std::log(10.0 / 21.0), 2e-6);
    EXPECT_NEAR(t.dbl_log_hg(10, 5, 4, 2), std::log(10.0 / 21.0), 1e-9);
    EXPECT_EQ(t.log_hg(10, 5, 4, 1), 0.0f);
    EXPECT_EQ(t.dbl_log_hg(10, 5, 4, 1), 0.0);
    // N=7, K=3, n=3: expectation 9/7. k=1 lies below it, k=2 above: C(3,2) C(4,1) / C(7,3) = 12/35.
    EXPECT_EQ(t.log_hg(7, 3, 3, 1), 0.0f);
    EXPECT_NEAR(t.log_hg(7, 3, 3, 2), std::log(12.0 / 35.0), 2e-6);
    // Full overlap: C(n,n) C(N-n,K-n) / C(N,K).
    EXPECT_NEAR(t.log_hg(20, 4, 4, 4), -std::log(4845.0), 4e-6);
    // Large arguments past the table.
    for (auto c : {std::array<int, 4>{5000, 300, 200, 40}, std::array<int, 4>{20000, 150, 60, 12},
                   std::array<int, 4>{120, 110, 101, 100}}) {
        const double tol = 1.2e-6 * std::lgamma(c[0] + 1.0) + 2e-6;
        EXPECT_TRUE(near_rel(t.log_hg(c[0], c[1], c[2], c[3]), ref_log_hg(c[0], c[1], c[2], c[3]), 0, tol));
        EXPECT_TRUE(
            near_rel(t.dbl_log_hg(c[0], c[1], c[2], c[3]), ref_log_hg(c[0], c[1], c[2], c[3]), 1e-9, 1e-8));
    }
    // N of 0: the expectation is not a number and the term is computed (all binomials are 0 here).
    EXPECT_EQ(t.log_hg(0, 0, 0, 0), 0.0f);
}

TEST(SpecialFunc, BinomByFactorialsAndGamma) {
    BinomFuncTable t(100, 100);
    EXPECT_EQ(t.binom(10, 3), 120.0f);
    EXPECT_EQ(t.binom(5, 0), 1.0f);
    EXPECT_TRUE(near_rel(t.binom(20, 10), binom_exact(20, 10), 1e-6, 0));
    EXPECT_TRUE(near_rel(t.binom(30, 12), binom_exact(30, 12), 1e-6, 0));
    // Past the cell range (k * n_max + n beyond the table): through log-gamma in float.
    EXPECT_TRUE(near_rel(t.binom(130, 100), binom_exact(130, 100), 5e-4, 0));
    FactorialFuncTable f(10);
    EXPECT_TRUE(std::isnan(f.factorial(3)));
    EXPECT_TRUE(std::isnan(f.factorial_ln(3)));
}

// For integer a and b, I_x(a, b) is the chance of at least a successes in a + b - 1 trials of x.
// (1, 2) at 0.4 is the switch point (a+1)/(a+b+2) of the complement branch.
TEST(SpecialFunc, IncompleteBetaAgainstBinomialTails) {
    const int ab[][2] = {{3, 1}, {1, 4}, {2, 3}, {1, 2}};
    for (double x : {0.0, 0.05, 0.3, 0.4, 0.5, 0.77, 0.99, 1.0})
        for (const auto& c : ab)
            EXPECT_NEAR(betai(c[0], c[1], x), binom_tail(c[0] + c[1] - 1, x, c[0]), 2e-6)
                << c[0] << "," << c[1] << " at " << x;
    EXPECT_NEAR(cummulative_binom(0.3f, 5, 3), binom_tail(5, 0.3, 3), 2e-6);
}

TEST(SpecialFunc, IncompleteGammaClosedForms) {
    auto p_int = [](int a, double x) {
        double term = 1, sum = 0;
        for (int k = 0; k < a; ++k) {
            if (k > 0)
                term *= x / k;
            sum += term;
        }
        return 1.0 - std::exp(-x) * sum;
    };
    for (int a : {1, 2, 5}) {
        for (float x : {0.1f, 0.5f, 1.0f, 2.5f, 4.0f, 9.0f, 20.0f}) {
            EXPECT_NEAR(gammp(static_cast<float>(a), x), p_int(a, x), 2e-6) << a << " " << x;
            EXPECT_NEAR(gammq(static_cast<float>(a), x), 1.0 - p_int(a, x), 2e-6) << a << " " << x;
        }
    }
    EXPECT_EQ(gammp(2.0f, 0.0f), 0.0f);
    // Two degrees of freedom: exp(-chi2 / 2).
    EXPECT_NEAR(chiq(3.0f, 2.0f), std::exp(-1.5), 2e-6);
    EXPECT_NEAR(chip(3.0f, 2.0f), 1.0 - std::exp(-1.5), 2e-6);
}

// Whole texts, a text at the start, or one anywhere among the others.
TEST(SpecialFunc, Messages) {
    enum { kWhole, kStart, kAnywhere };
    const struct {
        std::function<void()> run;
        const char* text;
        int where;
    } cases[] = {
        {[] { EXPECT_EQ(betai(2.0, 2.0, 1.5), -1.0); }, "Bad x in routine betai\n", kWhole},
        {[] { gammp(1.0f, -1.0f); }, "Invalid arguments in routine gammp\nx less than 0 in routine gser\n",
         kWhole},
        {[] { gammq(-2.0f, 1.0f); }, "Invalid arguments in routine gammq\n", kStart},
        {[] { gammp(1000.0f, 990.0f); }, "a too large, ITMAX too small in routine gser\n",
         kAnywhere}, // slow series
        {[] { gammq(100000.0f, 100001.0f); }, "a too large, ITMAX too small in gcf\n",
         kAnywhere}, // slow fraction
        {[] { betai(100000.0, 100000.0, 0.5); },
         "a 100000 or b 100000 too big, or MAXIT too small in betacf, x = 0.5\n", kAnywhere},
    };
    for (const auto& c : cases) {
        const std::string err = quiet(c.run);
        const std::size_t at = err.find(c.text);
        EXPECT_TRUE(c.where == kAnywhere ? at != std::string::npos
                                         : at == 0 && (c.where == kStart || err == c.text))
            << c.text << " in " << err;
    }
}
