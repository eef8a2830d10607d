// NBestHeapSum: a value per key and the sum of the n largest values.
#ifndef VESK_SEQPACK_BICSEARCH_NBESTHEAPSUM_H
#define VESK_SEQPACK_BICSEARCH_NBESTHEAPSUM_H

#include <vector>

// Keys are small integers (a condition index); a key never set holds 0. The sum is taken on demand.
class NBestHeapSum {
public:
    explicit NBestHeapSum(int n = 0) : m_n(n) {}

    void set_value(int key, float value);
    float get_value(int key) const;
    // The sum of the n largest values (all of them when there are fewer keys).
    float get_sum() const;
    void reset() { m_values.clear(); }

    int m_n;
    std::vector<float> m_values;
};

#endif
