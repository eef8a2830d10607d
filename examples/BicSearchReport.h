// The statistics and settings of bicluster_search's report: empirical p-values against null runs,
// Benjamini-Hochberg q-values, degree quantiles and the rules behind the `auto` hash settings.
#ifndef VESK_EXAMPLES_BICSEARCHREPORT_H
#define VESK_EXAMPLES_BICSEARCHREPORT_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <string>
#include <vector>

// One bicluster as the significance test sees it: its score and its number of conditions.
struct BicSizeScore {
    float score;
    int conds;
    int genes;
};

// The value two biclusters are compared by. "score" is the raw score; "percond" divides it by the
// number of conditions, so that a wide bicluster is not favoured by its width alone.
inline double null_stat(const BicSizeScore& b, bool per_cond) {
    return per_cond ? static_cast<double>(b.score) / std::max(1, b.conds) : static_cast<double>(b.score);
}

// Empirical p-value of `real` against the pooled null biclusters: (1 + the null biclusters with at
// least as many conditions whose statistic is at least as high) / (1 + all null biclusters).
inline double empirical_p(const BicSizeScore& real, const std::vector<BicSizeScore>& nulls, bool per_cond) {
    const double s = null_stat(real, per_cond);
    std::size_t hits = 0;
    for (const BicSizeScore& n : nulls)
        if (n.conds >= real.conds && null_stat(n, per_cond) >= s)
            ++hits;
    return (1.0 + static_cast<double>(hits)) / (1.0 + static_cast<double>(nulls.size()));
}

// Benjamini-Hochberg q-values of `p`, in the order given: q(i) = min over the ranks r at or after
// p(i)'s rank of p(r) * n / r, capped at 1. Ties share the value of the last of them.
inline std::vector<double> bh_q_values(const std::vector<double>& p) {
    const std::size_t n = p.size();
    std::vector<std::size_t> order(n);
    std::iota(order.begin(), order.end(), std::size_t(0));
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return p[a] < p[b]; });
    std::vector<double> q(n);
    double running = 1.0;
    for (std::size_t k = n; k-- > 0;) {
        const double v = p[order[k]] * static_cast<double>(n) / static_cast<double>(k + 1);
        running = std::min(running, v);
        q[order[k]] = running;
    }
    return q;
}

// The order in which the summary lists biclusters: by q ascending, then score descending, then the
// position in which the search returned them.
inline std::vector<int> report_order(const std::vector<double>& q, const std::vector<float>& score) {
    std::vector<int> order(q.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
        if (q[a] != q[b])
            return q[a] < q[b];
        return score[a] > score[b];
    });
    return order;
}

// Quantile `f` (0..1) of sorted values by the nearest rank below: element floor(f * (n - 1)).
inline int sorted_quantile(const std::vector<int>& sorted, double f) {
    if (sorted.empty())
        return 0;
    const std::size_t i = static_cast<std::size_t>(std::floor(f * static_cast<double>(sorted.size() - 1)));
    return sorted[std::min(i, sorted.size() - 1)];
}

// Number of degrees inside [lo, hi], both inclusive.
inline int count_in_range(const std::vector<int>& degrees, int lo, int hi) {
    return static_cast<int>(
        std::count_if(degrees.begin(), degrees.end(), [&](int d) { return d >= lo && d <= hi; }));
}

// Expected number of genes whose (thinned) neighbourhood holds one given key of `key_size`
// condition nodes, when each of `cond_nodes` condition nodes is equally likely: a gene of degree d
// keeps m = min(d, max_neig, cond_nodes) of them, and holds the key with probability
// m (m-1) ... (m-k+1) / (N (N-1) ... (N-k+1)).
inline double chance_key_count(const std::vector<int>& degrees, int max_neig, int cond_nodes, int key_size) {
    double total = 0.0;
    for (int d : degrees) {
        const int m = std::min(std::min(d, max_neig), cond_nodes);
        double p = 1.0;
        for (int j = 0; j < key_size; ++j)
            p *= (m - j <= 0 || cond_nodes - j <= 0) ? 0.0 : static_cast<double>(m - j) / (cond_nodes - j);
        total += p;
    }
    return total;
}

// The `auto` value of MinVarSetSize: a kernel needs clearly more genes than chance puts under one
// key, the expected count plus five of its Poisson standard deviations, and never fewer than 3.
inline int auto_min_var_set_size(double chance) {
    return std::max(3, static_cast<int>(std::ceil(chance + 5.0 * std::sqrt(chance))));
}

#endif
