// DistribWgtSet: draws an index of a weight array with probability proportional to its weight.
#ifndef VESK_BIC_DISTRIBWGTSET_H
#define VESK_BIC_DISTRIBWGTSET_H

#include <vector>

// init_weights takes a snapshot of the weights as running sums in double precision; a later change
// of the array has no effect until init_weights is called again. A draw takes one uniform
// u = Random::bits() / 4294967295.0, scales it by the total and returns the first index whose
// running sum is strictly above that point (a binary search), so an index of weight 0 (or below)
// is never returned. With no positive weight at all a draw returns -1.
class DistribWgtSet {
public:
    DistribWgtSet() {}
    DistribWgtSet(const float* weights, int num) { init_weights(weights, num); }
    explicit DistribWgtSet(const std::vector<float>& weights) { init_weights(weights); }

    // Weights below 0 count as 0.
    void init_weights(const float* weights, int num);
    void init_weights(const std::vector<float>& weights) {
        init_weights(weights.data(), static_cast<int>(weights.size()));
    }

    int sample() const;
    int size() const { return static_cast<int>(m_cumul.size()); }
    double total() const { return m_cumul.empty() ? 0.0 : m_cumul.back(); }

private:
    std::vector<double> m_cumul;
};

#endif
