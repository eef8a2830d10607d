// NBestHeapSum: the sum of the n largest values by partial selection.
#include "NBestHeapSum.h"

#include <algorithm>
#include <functional>

void NBestHeapSum::set_value(int key, float value) {
    if (key >= static_cast<int>(m_values.size()))
        m_values.resize(static_cast<std::size_t>(key) + 1, 0.0f);
    m_values[static_cast<std::size_t>(key)] = value;
}

float NBestHeapSum::get_value(int key) const {
    return key < static_cast<int>(m_values.size()) ? m_values[static_cast<std::size_t>(key)] : 0.0f;
}

float NBestHeapSum::get_sum() const {
    std::vector<float> v(m_values);
    const std::size_t n = std::min(v.size(), static_cast<std::size_t>(m_n < 0 ? 0 : m_n));
    std::nth_element(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(n), v.end(), std::greater<float>());
    float sum = 0.0f;
    std::vector<float> top(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(n));
    std::sort(top.begin(), top.end(), std::greater<float>());
    for (float x : top)
        sum += x;
    return sum;
}
