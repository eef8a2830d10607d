// LocalDist and LocalDistSet.
#include "LocalDist.h"

#include <cmath>

template <class T>
LocalDist<T>::LocalDist(const BNet<T>& net, const BNState<T>& state, int rvid)
    : m_net(net), m_state(state), m_rvid(rvid), m_out_card(net.get_rvar_card(rvid)) {}

template <class T> LocalDist<T>::~LocalDist() = default;

template <class T> LocalDistSet<T>::LocalDistSet() = default;

template <class T> LocalDistSet<T>::~LocalDistSet() {
    for (LocalDist<T>* ld : m_lds)
        delete ld;
}

template <class T> int LocalDistSet<T>::add_ld(LocalDist<T>* ld) {
    m_lds.push_back(ld);
    return static_cast<int>(m_lds.size()) - 1;
}

template class LocalDist<int>;
template class LocalDist<float>;
template class LocalDistSet<int>;
template class LocalDistSet<float>;
