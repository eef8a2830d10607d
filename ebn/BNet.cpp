// BNet: bodies and the int and float instantiations.
#include "BNet.h"

#include "error.h"

static constexpr char kSrc[] = "../ebn/BNet";

template <class T> BNet<T>::BNet() : m_state(nullptr) {}

template <class T> BNet<T>::BNet(BNState<T>& state) : m_state(&state) {}

template <class T> int BNet<T>::add_rand_var(int vid, int card) {
    const int rvid = Net::add_rand_var(vid, card);
    if (static_cast<int>(m_ldists.size()) <= rvid)
        m_ldists.resize(rvid + 1, nullptr);
    return rvid;
}

template <class T> void BNet<T>::set_ldist(int rvid, LocalDist<T>* ld) {
    if (rvid >= get_nodes_num())
        VESK_FATAL(kSrc, "Cannot set ldist for rvid " << rvid << " which is larger than the max id "
                                                      << get_nodes_num());
    m_ldists[rvid] = ld;
}

template class BNet<int>;
template class BNet<float>;
