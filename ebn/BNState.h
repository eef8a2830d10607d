// BNState and BNStateDispatch: one value per node of a network, the second announcing each change.
#ifndef VESK_EBN_BNSTATE_H
#define VESK_EBN_BNSTATE_H

#include "EventDispatch2Param.h"
#include "Net.h"

#include <ostream>
#include <vector>

// A full assignment, indexed by rvid. Built for int and float.
template <class T> class BNState {
public:
    explicit BNState(const Net& net);
    virtual ~BNState();
    BNState(const BNState&) = default;
    BNState& operator=(const BNState&) = default;

    // Resizes to the network's current node count; held values stay, new ones are 0.
    void reset();
    void reset_all(T value);
    T operator[](int rvid) const { return m_values[rvid]; }
    T get_rv_state(int rvid) const { return m_values[rvid]; }
    virtual void set_rv_state(int rvid, T value) { m_values[rvid] = value; }
    // One line "<rvid> : <value>" per node.
    void print(std::ostream& os) const;

    const std::vector<T>& get_values() const { return m_values; }
    int size() const { return static_cast<int>(m_values.size()); }
    const Net& get_net() const { return *m_net; }

protected:
    const Net* m_net;
    std::vector<T> m_values;
};

// Lexicographic over the left operand's length from rvid 0; an empty left state is never less.
template <class T> bool operator<(const BNState<T>& a, const BNState<T>& b);

// A state whose set_rv_state first sends event `rvid` with (old value, new value) and only then
// stores; setting the value already held sends nothing. Observers therefore still read the old
// value in the state.
template <class T> class BNStateDispatch : public BNState<T> {
public:
    explicit BNStateDispatch(const Net& net);

    void set_rv_state(int rvid, T value) override;
    const EventDispatch2Param<int, T, T>& get_dispatch() const { return m_dispatch; }

private:
    EventDispatch2Param<int, T, T> m_dispatch;
};

extern template class BNState<int>;
extern template class BNState<float>;
extern template class BNStateDispatch<int>;
extern template class BNStateDispatch<float>;
extern template bool operator<(const BNState<int>&, const BNState<int>&);
extern template bool operator<(const BNState<float>&, const BNState<float>&);

#endif
