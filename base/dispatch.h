// event_dispatch: numbered events, each with a list of observer slots called on invoke.
#ifndef VESK_BASE_DISPATCH_H
#define VESK_BASE_DISPATCH_H

#include "callback.h"

#include <cstddef>
#include <vector>

// Observers subscribe a functor to an event id and keep the slot number they get back; a slot
// stays theirs until unsubscribe, and an emptied slot is the first one handed out again.
// Subscribing is bookkeeping of the observers, not a change of the announcing object, so it is
// allowed on a const dispatch.
class event_dispatch {
public:
    typedef CBFunctor1<int> functor_type;

    // Makes `events` empty lists and says "in dispatch construction" on the error stream.
    explicit event_dispatch(int events = 0);

    // Stores `f` in the first empty slot of `event`'s list (appending when there is none) and
    // returns the slot. An event past the end grows the table to
    // max(event + 1, trunc(1.25 * old size) + 1) lists.
    int subscribe(int event, const functor_type& f) const;
    // Empties the slot; neither argument is tested.
    void unsubscribe(int event, int slot) const;

    // Calls every observer of `event`, in slot order, with the event id. The list and its end are
    // read again after each call, so an observer subscribed meanwhile is called in the same pass.
    void invoke(int event) const {
        if (event < 0 || static_cast<std::size_t>(event) >= m_events.size())
            return;
        const std::size_t e = static_cast<std::size_t>(event);
        for (std::size_t i = 0; i < m_events[e].size(); ++i) {
            const functor_type& f = m_events[e][i];
            if (!f.empty())
                f(event);
        }
    }

    int events_num() const { return static_cast<int>(m_events.size()); }
    int slots_num(int event) const { return static_cast<int>(m_events[event].size()); }
    bool slot_used(int event, int slot) const { return !m_events[event][slot].empty(); }

private:
    mutable std::vector<std::vector<functor_type>> m_events;
};

#endif
