// BNInferQuery: which variables are observed, which are queried, and the posterior of each query.
#ifndef VESK_EBN_BNINFERQUERY_H
#define VESK_EBN_BNINFERQUERY_H

#include "BNet.h"
#include "JointDist.h"

#include <list>
#include <vector>

// Calling order: mark observations, add queries, set the observed values in the network's
// state, then preproc_query and infer on an engine, and read get_posterior. The posteriors are
// clones of the prototypes handed to add_query, owned by the query.
template <class T> class BNInferQuery {
public:
    explicit BNInferQuery(const BNet<T>& net);
    ~BNInferQuery();
    BNInferQuery(const BNInferQuery&) = delete;
    BNInferQuery& operator=(const BNInferQuery&) = delete;

    bool is_single_var_query() const { return m_single_var; }
    bool is_observed(int rvid) const { return m_observed[rvid] != 0; }
    bool is_query(int rvid) const { return m_in_query[rvid] != 0; }
    const std::list<int>& get_observed_vars() const { return m_observed_vars; }
    const std::list<int>& get_hidden_vars() const { return m_hidden_vars; }
    const std::list<int>& get_query_vars() const { return m_query_vars; }

    // Everything hidden (rvids rising), no queries, no posteriors.
    void reset();
    // reset, then one query per variable, each with a clone of `prototype`.
    void reset_to_single_var_queries(const std::list<int>& vars, const JointDist<T>& prototype);
    void set_var_observed(int rvid);
    void set_var_hidden(int rvid);
    // Stores the list in the first slot whose list is empty, else in a new slot, with a clone of
    // `prototype` as its posterior; returns the slot, the query id.
    int add_query(const std::list<int>& vars, const JointDist<T>& prototype);
    const std::list<int>& get_query(int id) const { return m_queries[id]; }
    // One past the largest query id.
    int get_max_query_id() const { return static_cast<int>(m_queries.size()); }
    const std::vector<std::list<int>>& get_query_list() const { return m_queries; }
    JointDist<T>* get_posterior(int id) const { return m_posteriors[id]; }
    const std::vector<JointDist<T>*>& get_posteriors_list() const { return m_posteriors; }
    const BNet<T>& get_net() const { return m_net; }

private:
    void clear_posteriors();

    const BNet<T>& m_net;
    std::vector<int> m_observed;
    std::vector<int> m_in_query;
    std::list<int> m_observed_vars;
    std::list<int> m_hidden_vars;
    std::list<int> m_query_vars;
    std::vector<std::list<int>> m_queries;
    std::vector<JointDist<T>*> m_posteriors;
    bool m_single_var;
};

extern template class BNInferQuery<int>;
extern template class BNInferQuery<float>;

#endif
