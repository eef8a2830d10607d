// LocalDist and LocalDistSet: the local distributions of a network's nodes.
#ifndef VESK_EBN_LOCALDIST_H
#define VESK_EBN_LOCALDIST_H

#include "BNState.h"
#include "BNet.h"
#include "LogSpace.h"

#include <ostream>
#include <vector>

// The natural log of the probability of a node's current value given its parents' current
// values, all read from the state the distribution is bound to.
template <class T> class LocalDist {
public:
    LocalDist(const BNet<T>& net, const BNState<T>& state, int rvid);
    virtual ~LocalDist();
    LocalDist(const LocalDist&) = delete;
    LocalDist& operator=(const LocalDist&) = delete;

    // Resizes the distribution to the node's parents as they stand now.
    virtual void reinit() = 0;
    virtual float logp() const = 0;
    virtual void write(std::ostream& /*os*/) const {}

    int get_rvid() const { return m_rvid; }
    int get_out_card() const { return m_out_card; }

protected:
    const BNet<T>& m_net;
    const BNState<T>& m_state;
    int m_rvid;
    int m_out_card;
};

// Owns the local distributions added to it.
template <class T> class LocalDistSet {
public:
    LocalDistSet();
    ~LocalDistSet();
    LocalDistSet(const LocalDistSet&) = delete;
    LocalDistSet& operator=(const LocalDistSet&) = delete;

    // Takes ownership; returns the entry's index.
    int add_ld(LocalDist<T>* ld);
    LocalDist<T>* get_ld(int i) const { return m_lds[i]; }
    int size() const { return static_cast<int>(m_lds.size()); }

private:
    std::vector<LocalDist<T>*> m_lds;
};

extern template class LocalDist<int>;
extern template class LocalDist<float>;
extern template class LocalDistSet<int>;
extern template class LocalDistSet<float>;

#endif
