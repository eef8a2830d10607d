// BNState and BNStateDispatch: bodies and the int and float instantiations.
#include "BNState.h"

#include <algorithm>

template <class T> BNState<T>::BNState(const Net& net) : m_net(&net) { reset(); }

template <class T> BNState<T>::~BNState() = default;

template <class T> void BNState<T>::reset() { m_values.resize(m_net->get_nodes_num(), T(0)); }

template <class T> void BNState<T>::reset_all(T value) { std::fill(m_values.begin(), m_values.end(), value); }

template <class T> void BNState<T>::print(std::ostream& os) const {
    for (std::size_t i = 0; i < m_values.size(); ++i)
        os << i << " : " << m_values[i] << "\n";
}

template <class T> bool operator<(const BNState<T>& a, const BNState<T>& b) {
    const std::vector<T>& x = a.get_values();
    const std::vector<T>& y = b.get_values();
    for (std::size_t i = 0; i < x.size() && i < y.size(); ++i) {
        if (x[i] < y[i])
            return true;
        if (y[i] < x[i])
            return false;
    }
    return false;
}

template <class T> BNStateDispatch<T>::BNStateDispatch(const Net& net) : BNState<T>(net), m_dispatch(0) {}

template <class T> void BNStateDispatch<T>::set_rv_state(int rvid, T value) {
    const T old = this->m_values[rvid];
    if (old == value)
        return;
    m_dispatch.invoke(rvid, old, value);
    this->m_values[rvid] = value;
}

template class BNState<int>;
template class BNState<float>;
template class BNStateDispatch<int>;
template class BNStateDispatch<float>;
template bool operator<(const BNState<int>&, const BNState<int>&);
template bool operator<(const BNState<float>&, const BNState<float>&);
