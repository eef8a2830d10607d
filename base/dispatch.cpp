// event_dispatch construction and subscription.
#include "dispatch.h"

#include <algorithm>
#include <iostream>

event_dispatch::event_dispatch(int events) : m_events(events > 0 ? events : 0) {
    std::cerr << "in dispatch construction" << std::endl;
}

int event_dispatch::subscribe(int event, const functor_type& f) const {
    const int old = static_cast<int>(m_events.size());
    if (event >= old)
        m_events.resize(std::max(event + 1, static_cast<int>(old * 1.25) + 1));
    std::vector<functor_type>& list = m_events[event];
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (list[i].empty()) {
            list[i] = f;
            return static_cast<int>(i);
        }
    }
    list.push_back(f);
    return static_cast<int>(list.size()) - 1;
}

void event_dispatch::unsubscribe(int event, int slot) const { m_events[event][slot] = functor_type(); }
