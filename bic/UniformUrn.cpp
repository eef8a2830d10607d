// UniformUrn: draws without replacement.
#include "UniformUrn.h"

#include "Random.h"

#include <utility>

void UniformUrn::init(const std::vector<int>& items) {
    m_items = items;
    m_left = static_cast<int>(m_items.size());
}

int UniformUrn::draw() {
    if (m_left <= 0)
        return -1;
    const double u = Random::bits() / 4294967295.0;
    int j = static_cast<int>(u * m_left);
    if (j >= m_left)
        j = m_left - 1;
    --m_left;
    std::swap(m_items[j], m_items[m_left]);
    return m_items[m_left];
}
