// EventDispatch2Param construction and subscription, built for (int,int,int) and (int,float,float).
#include "EventDispatch2Param.h"

#include <iostream>

template <class K, class P1, class P2>
EventDispatch2Param<K, P1, P2>::EventDispatch2Param(int events) : m_events(events > 0 ? events : 0) {
    std::cerr << "in dispatch construction" << std::endl;
}

template <class K, class P1, class P2>
int EventDispatch2Param<K, P1, P2>::subscribe(int event, K key, const functor_type& f) const {
    if (event >= static_cast<int>(m_events.size()))
        m_events.resize(event + 1);
    std::vector<entry_type>& list = m_events[event];
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (list[i].second.empty()) {
            list[i] = entry_type(key, f);
            return static_cast<int>(i);
        }
    }
    list.push_back(entry_type(key, f));
    return static_cast<int>(list.size()) - 1;
}

template class EventDispatch2Param<int, int, int>;
template class EventDispatch2Param<int, float, float>;
