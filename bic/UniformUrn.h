// UniformUrn: draws the items of a list one at a time, without replacement, from the random source.
#ifndef VESK_BIC_UNIFORMURN_H
#define VESK_BIC_UNIFORMURN_H

#include <vector>

// How it draws: the items not yet drawn stand in the first m_left slots of m_items. A draw takes
// one number u = Random::bits() / 4294967295.0 and the slot j = floor(u * m_left) (slot m_left - 1
// for u = 1), swaps that slot with the last one not yet drawn, shrinks m_left by one and returns the
// item. Each draw costs one 32-bit number of Random and nothing else, so a fixed seed gives a fixed
// order. reset() puts every item back (in the order the draws left them).
class UniformUrn {
public:
    UniformUrn() : m_left(0) {}
    explicit UniformUrn(const std::vector<int>& items) { init(items); }

    // Fills the urn with `items`.
    void init(const std::vector<int>& items);
    // All items back in the urn.
    void reset() { m_left = static_cast<int>(m_items.size()); }
    // The next item, or -1 once the urn is empty.
    int draw();
    int left() const { return m_left; }
    int size() const { return static_cast<int>(m_items.size()); }

    std::vector<int> m_items;
    int m_left;
};

#endif
