// BNet: a Net whose nodes carry local distributions and share one state.
#ifndef VESK_EBN_BNET_H
#define VESK_EBN_BNET_H

#include "BNState.h"
#include "Net.h"

#include <vector>

template <class T> class LocalDist;

// The network neither owns its state nor its local distributions (a LocalDistSet does). Build
// order: nodes, edges, set_state_ref, then the local distributions through set_ldist.
template <class T> class BNet : public Net {
public:
    BNet();
    explicit BNet(BNState<T>& state);

    // Net's node plus an empty local-distribution slot.
    int add_rand_var(int vid, int card) override;

    BNState<T>& get_state() { return *m_state; }
    const BNState<T>& get_state() const { return *m_state; }
    void set_state_ref(BNState<T>& state) { m_state = &state; }

    LocalDist<T>* get_ldist(int rvid) const { return m_ldists[rvid]; }
    // Stores the pointer (the earlier one is not freed); fatal for an rvid past the nodes.
    void set_ldist(int rvid, LocalDist<T>* ld);

protected:
    BNState<T>* m_state;
    std::vector<LocalDist<T>*> m_ldists;
};

extern template class BNet<int>;
extern template class BNet<float>;

#endif
