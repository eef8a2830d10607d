// EventDispatch2Param: numbered events whose observers get a key of their own and two values.
#ifndef VESK_BASE_EVENTDISPATCH2PARAM_H
#define VESK_BASE_EVENTDISPATCH2PARAM_H

#include "callback.h"

#include <cstddef>
#include <utility>
#include <vector>

// Like event_dispatch, but each slot keeps the key given at subscription, and invoke passes two
// values: an observer is called as f(key, a, b). The table grows to exactly event + 1 lists.
// Built for (int, int, int) and (int, float, float).
template <class K, class P1, class P2> class EventDispatch2Param {
public:
    typedef CBFunctor3<K, P1, P2> functor_type;
    typedef std::pair<K, functor_type> entry_type;

    // Makes `events` empty lists and says "in dispatch construction" on the error stream.
    explicit EventDispatch2Param(int events = 0);

    int subscribe(int event, K key, const functor_type& f) const;
    // Empties the slot; neither argument is tested.
    void unsubscribe(int event, int slot) const { m_events[event][slot] = entry_type(K(), functor_type()); }

    void invoke(int event, P1 a, P2 b) const {
        if (event < 0 || static_cast<std::size_t>(event) >= m_events.size())
            return;
        const std::size_t e = static_cast<std::size_t>(event);
        for (std::size_t i = 0; i < m_events[e].size(); ++i) {
            const entry_type& s = m_events[e][i];
            if (!s.second.empty())
                s.second(s.first, a, b);
        }
    }

    int events_num() const { return static_cast<int>(m_events.size()); }
    int slots_num(int event) const { return static_cast<int>(m_events[event].size()); }

private:
    mutable std::vector<std::vector<entry_type>> m_events;
};

extern template class EventDispatch2Param<int, int, int>;
extern template class EventDispatch2Param<int, float, float>;

#endif
