// ds_bitvec_iter: walks the set bits of a ds_bitvec in either direction.
#ifndef VESK_STDALG_DS_BITVECITER_H
#define VESK_STDALG_DS_BITVECITER_H

#include "ds/BitVec.h"

class ds_bitvec_iter {
public:
    explicit ds_bitvec_iter(const ds_bitvec& v);
    ds_bitvec_iter(const ds_bitvec& v, int start);

    // First set bit at or after `start`; a start at or past the width makes the iterator invalid.
    int first(int start);
    // Highest set bit.
    int last();
    // Goes to bit `i`, set or not; -1 makes the iterator invalid. No bounds test.
    void seek(int i);

    operator int() const { return m_valid ? m_word * 32 + m_bit : -1; }
    explicit operator bool() const { return m_valid; }

    int operator++();
    int operator--();

private:
    const ds_bitvec* m_vec;
    bool m_valid;
    int m_word;
    int m_bit;
};

#endif
