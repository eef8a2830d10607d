// BNInferQuery: bookkeeping of observations, queries and posteriors.
#include "BNInferQuery.h"

#include <algorithm>

template <class T> BNInferQuery<T>::BNInferQuery(const BNet<T>& net) : m_net(net), m_single_var(false) {
    reset();
}

template <class T> BNInferQuery<T>::~BNInferQuery() { clear_posteriors(); }

template <class T> void BNInferQuery<T>::clear_posteriors() {
    for (JointDist<T>* p : m_posteriors)
        delete p;
    m_posteriors.clear();
}

template <class T> void BNInferQuery<T>::reset() {
    const int n = m_net.get_nodes_num();
    m_observed.assign(n, 0);
    m_in_query.assign(n, 0);
    m_observed_vars.clear();
    m_hidden_vars.clear();
    m_query_vars.clear();
    m_queries.clear();
    clear_posteriors();
    for (int v = 0; v < n; ++v)
        m_hidden_vars.push_back(v);
    m_single_var = false;
}

template <class T>
void BNInferQuery<T>::reset_to_single_var_queries(const std::list<int>& vars, const JointDist<T>& prototype) {
    reset();
    m_single_var = true;
    for (int v : vars)
        add_query(std::list<int>(1, v), prototype);
}

template <class T> void BNInferQuery<T>::set_var_observed(int rvid) {
    if (m_observed[rvid])
        return;
    m_hidden_vars.remove(rvid);
    m_observed_vars.push_back(rvid);
    m_observed[rvid] = 1;
}

template <class T> void BNInferQuery<T>::set_var_hidden(int rvid) {
    if (!m_observed[rvid])
        return;
    m_observed_vars.remove(rvid);
    m_hidden_vars.push_back(rvid);
    m_observed[rvid] = 0;
}

template <class T> int BNInferQuery<T>::add_query(const std::list<int>& vars, const JointDist<T>& prototype) {
    int id = 0;
    while (id < static_cast<int>(m_queries.size()) && !m_queries[id].empty())
        ++id;
    if (id == static_cast<int>(m_queries.size())) {
        m_queries.emplace_back();
        m_posteriors.push_back(nullptr);
    }
    m_queries[id] = vars;
    // A reused slot's earlier posterior belongs to no one else: free it rather than leak it.
    delete m_posteriors[id];
    m_posteriors[id] = prototype.clone();
    for (int v : vars) {
        if (!m_in_query[v]) {
            m_in_query[v] = 1;
            m_query_vars.push_back(v);
        }
    }
    return id;
}

template class BNInferQuery<int>;
template class BNInferQuery<float>;
