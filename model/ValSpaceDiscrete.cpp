// ValSpaceDiscrete construction and lookups.
#include "ValSpaceDiscrete.h"

#include "options.h"

#include <iostream>

ValSpaceDiscrete::ValSpaceDiscrete(options& opts, const std::string& scope) {
    const std::vector<float>* ranges = opts.get_floats(scope, "Ranges", true);
    const float bin_size = opts.get_float(scope, "BinSize", true);
    const int n = ranges ? static_cast<int>(ranges->size()) : 0;
    m_inv_bin = 1.0f / bin_size;
    // An empty Ranges array leaves a table of two entries over a base of 0.
    m_base = n > 0 ? (*ranges)[0] : 0.0f;
    m_states = n + 1;
    m_state_of_bin.push_back(0);
    if (n > 0) {
        // Every bin up to the last range gets state 1: the loop compares with the last range each
        // time, so only i = 1 adds entries.
        const float top = (*ranges)[n - 1];
        float cur = (*ranges)[0] + bin_size;
        for (int i = 1; i < n; ++i) {
            while (top > cur) {
                m_state_of_bin.push_back(i);
                cur += bin_size;
            }
        }
    }
    m_state_of_bin.push_back(n);
    std::cerr << "max range size " << m_state_of_bin.size() << " base " << m_base << " factor " << m_inv_bin
              << " max_state_id " << m_states << std::endl;
}

int ValSpaceDiscrete::bin_of(float v) const {
    // The base is subtracted after scaling, unscaled.
    const float y = m_inv_bin * v - m_base;
    const int last = static_cast<int>(m_state_of_bin.size()) - 1;
    if (!(y >= 0.0f)) // negative, or not a number
        return 0;
    if (y >= static_cast<float>(last))
        return last;
    return static_cast<int>(y);
}

int ValSpaceDiscrete::get_state_of_val(float v) const { return m_state_of_bin[bin_of(v)]; }

float ValSpaceDiscrete::get_val_state_prob(int s, float v) const {
    return m_state_of_bin[bin_of(v)] == s ? 1.0f : 0.0f;
}
