// DistribWgtSet: running sums and a binary search over them.
#include "DistribWgtSet.h"

#include "Random.h"

#include <algorithm>

void DistribWgtSet::init_weights(const float* weights, int num) {
    m_cumul.resize(num > 0 ? static_cast<size_t>(num) : 0);
    double sum = 0.0;
    for (int i = 0; i < num; ++i) {
        if (weights[i] > 0.0f)
            sum += weights[i];
        m_cumul[i] = sum;
    }
}

int DistribWgtSet::sample() const {
    const double tot = total();
    if (!(tot > 0.0))
        return -1;
    const double u = Random::bits() / 4294967295.0;
    const double point = u * tot;
    auto it = std::upper_bound(m_cumul.begin(), m_cumul.end(), point);
    if (it == m_cumul.end()) {
        // u == 1 lands on the total itself: the last index with a positive weight.
        it = std::lower_bound(m_cumul.begin(), m_cumul.end(), tot);
    }
    return static_cast<int>(it - m_cumul.begin());
}
