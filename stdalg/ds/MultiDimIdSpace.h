// MultiDimIdSpace: partial assignments of a few small variables packed into one integer id; DValueSet.
#ifndef VESK_STDALG_DS_MULTIDIMIDSPACE_H
#define VESK_STDALG_DS_MULTIDIMIDSPACE_H

#include "ds/BitVec.h"

#include <ostream>
#include <vector>

// An id holds `dims` digits of `bits` bits each, digit 0 lowest. A digit of 0 leaves the variable of
// its slot unfixed; a digit d above 0 fixes it to the value d - 1.
class MultiDimIdSpace {
public:
    // Prints "id space is " and the size of the space on the error stream.
    MultiDimIdSpace(unsigned int bits, int dims);

    int dims() const { return static_cast<int>(m_masks.size()); }
    // Digit `i` of `id`, 0 for a slot outside the space.
    int digit(int id, int i) const {
        if (i < 0 || i >= dims())
            return 0;
        return static_cast<int>((static_cast<unsigned int>(id) & m_masks[i]) >> (i * m_bits));
    }
    // Mask of slot `i`; 0 for a slot outside the space.
    unsigned int mask(int i) const { return (i < 0 || i >= dims()) ? 0u : m_masks[i]; }

    // The digits from the lowest, each followed by a space.
    void print_multiid(std::ostream& out, int id) const;

    unsigned int m_bits;
    int m_size;
    std::vector<unsigned int> m_masks;
    std::vector<unsigned int> m_anti_masks;
    // Bit `id` is set when at least one digit of `id` is 0.
    ds_bitvec m_partial;
};

// One assignment in digit form (0 unfixed, d > 0 the value d - 1), up to five slots.
class DValueSet {
public:
    explicit DValueSet(const MultiDimIdSpace* space) : m_space(space), m_digits{0, 0, 0, 0, 0} {}

    int get_multi_id() const;

    const MultiDimIdSpace* m_space;
    int m_digits[5];
};

#endif
