// MultiDimIdSpace: digit masks, the partial-id set and the id printer; DValueSet's packing.
#include "ds/MultiDimIdSpace.h"

#include <iostream>

MultiDimIdSpace::MultiDimIdSpace(unsigned int bits, int dims)
    : m_bits(bits), m_size(1 << (dims * static_cast<int>(bits))), m_partial(0) {
    const unsigned int low = (1u << bits) - 1u;
    for (int i = 0; i < dims; ++i) {
        m_masks.push_back(low << (static_cast<unsigned int>(i) * bits));
        m_anti_masks.push_back(~m_masks.back());
    }
    m_partial.set_size(m_size);
    m_partial.set(false);
    for (int id = 0; id < m_size; ++id) {
        for (int i = 0; i < dims; ++i) {
            if ((static_cast<unsigned int>(id) & m_masks[i]) == 0) {
                m_partial.set_ind(id);
                break;
            }
        }
    }
    std::cerr << "id space is " << m_size << std::endl;
}

void MultiDimIdSpace::print_multiid(std::ostream& out, int id) const {
    for (int i = 0; i < dims(); ++i)
        out << digit(id, i) << ' ';
}

int DValueSet::get_multi_id() const {
    int id = 0;
    for (int i = 0; i < 5; ++i)
        id += m_digits[i] << (i * static_cast<int>(m_space->m_bits));
    return id;
}
