// Inference engines: exhaustive enumeration, single-site Gibbs sampling and Gibbs modes.
#include "BNInference.h"

#include "LocalDist.h"
#include "Random.h"
#include "error.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <iterator>

static constexpr char kSrc[] = "BNInference";

template class BNInference<int>;

namespace {
// A uniform number in [0, 1].
double uniform() { return static_cast<double>(Random::bits()) / 4294967295.0; }

std::size_t longest_query(const BNInferQuery<int>& q) {
    std::size_t n = 0;
    for (const std::list<int>& l : q.get_query_list())
        n = std::max(n, l.size());
    return n;
}
} // namespace

BNInferExactNaive::BNInferExactNaive(BNet<int>& net) : BNInference<int>(net), m_log_evidence(kLogZero) {}

void BNInferExactNaive::preproc_query(BNInferQuery<int>& q) {
    m_query = &q;
    m_inds.assign(longest_query(q), 0);
}

void BNInferExactNaive::infer(BNInferQuery<int>& q) {
    m_query = &q;
    m_net.compute_topo_order(m_order);
    float acc = kLogZero;
    dive(acc, 0.0f, m_order.begin());
    m_log_evidence = acc;
    std::cerr << "out of here" << std::endl;
}

void BNInferExactNaive::dive(float& acc, float lp, std::list<int>::const_iterator it) {
    if (it == m_order.end()) {
        log_sum_log(acc, lp);
        collect_stat(lp);
        return;
    }
    const int v = *it;
    const LocalDist<int>* ld = m_net.get_ldist(v);
    std::list<int>::const_iterator next = std::next(it);
    if (!m_query->is_observed(v)) {
        const int card = m_net.get_rvar_card(v);
        for (int x = 0; x < card; ++x) {
            m_state.set_rv_state(v, x);
            dive(acc, lp + ld->logp(), next);
        }
    } else {
        dive(acc, lp + ld->logp(), next);
    }
}

void BNInferExactNaive::collect_stat(float w) {
    const std::vector<std::list<int>>& queries = m_query->get_query_list();
    for (std::size_t i = 0; i < queries.size(); ++i) {
        int k = 0;
        for (int v : queries[i])
            m_inds[k++] = m_state[v];
        m_query->get_posterior(static_cast<int>(i))->count(m_inds, w);
    }
}

BNInferGibbs::BNInferGibbs(BNet<int>& net, options& opts, const std::string& scope)
    : BNInference<int>(net), m_repeats(opts.get_int(scope, "GibbsRepeats", true)),
      m_t(opts.get_int(scope, "GibbsT", true)), m_logit(opts.get_int(scope, "Logit", true) != 0) {
    const int n = net.get_nodes_num();
    m_cum_dist.resize(n);
    for (int v = 0; v < n; ++v)
        m_cum_dist[v].assign(net.get_rvar_card(v), 0.0f);
    m_dist_valid.assign(n, 0);
    m_sample_pos.assign(n, -1);
    net.compute_markov_blankets(m_blankets);
}

void BNInferGibbs::preproc_query(BNInferQuery<int>& q) {
    m_query = &q;
    // A new query may come with new evidence: no cached conditional carries over.
    std::fill(m_dist_valid.begin(), m_dist_valid.end(), 0);
    std::vector<int> work(q.get_observed_vars().begin(), q.get_observed_vars().end());
    work.insert(work.end(), q.get_query_vars().begin(), q.get_query_vars().end());
    m_inds.assign(longest_query(q), 0);
    std::fill(m_sample_pos.begin(), m_sample_pos.end(), -1);
    m_sample_vars.clear();
    int pos = 0;
    while (!work.empty()) {
        const int v = work.back();
        work.pop_back();
        if (m_sample_pos[v] != -1)
            continue;
        if (!q.is_observed(v)) {
            std::cerr << "Add " << v << " to sample " << std::endl;
            m_sample_vars.push_back(v);
        }
        m_sample_pos[v] = pos++;
        for (int c : m_net.get_children(v))
            if (m_sample_pos[c] == -1)
                work.push_back(c);
    }
    std::cerr << "finally, will sample " << m_sample_vars.size() << " vars " << std::endl;
}

void BNInferGibbs::infer(BNInferQuery<int>& q) {
    m_query = &q;
    for (int r = 0; r < m_repeats; ++r) {
        rand_init_state();
        for (int t = 0; t < m_t; ++t)
            rand_next_state();
        update_stats();
    }
    finalize_stats();
}

void BNInferGibbs::rand_init_state() {
    for (int v : m_sample_vars)
        m_state.set_rv_state(v, static_cast<int>(uniform() * m_net.get_rvar_card(v)));
}

void BNInferGibbs::rand_next_state() {
    const int pos = static_cast<int>(uniform() * static_cast<double>(m_sample_vars.size()));
    if (m_logit)
        std::cerr << "Gibbs: iter var " << pos << std::endl;
    const int v = m_sample_vars[pos];
    const int old = m_state[v];
    std::vector<float>& cum = m_cum_dist[v];
    const int card = static_cast<int>(cum.size());
    if (!m_dist_valid[v]) {
        const LocalDist<int>* ld = m_net.get_ldist(v);
        const std::list<int>& children = m_net.get_children(v);
        for (int x = 0; x < card; ++x) {
            m_state.set_rv_state(v, x);
            float w = ld->logp();
            for (int c : children)
                w += m_net.get_ldist(c)->logp();
            if (x == 0)
                cum[0] = w;
            else {
                cum[x] = cum[x - 1];
                log_sum_log(cum[x], w);
            }
        }
        m_dist_valid[v] = 1;
    }
    const float r = static_cast<float>(std::log(uniform()));
    const float t = cum[card - 1];
    int x = 0;
    while (x < card && !(r + t <= cum[x]))
        ++x;
    if (x == card)
        VESK_FATAL(kSrc, "ERROR: could not sample from var " << v << " nax dust was " << t << " rand was "
                                                             << r + t);
    m_state.set_rv_state(v, x);
    if (x != old)
        for (int b : m_blankets[v])
            m_dist_valid[b] = 0;
}

void BNInferGibbs::fill_inds(int id) {
    int k = 0;
    for (int v : m_query->get_query(id))
        m_inds[k++] = m_state[v];
}

void BNInferGibbs::update_stats() {
    if (m_query->is_single_var_query()) {
        int i = 0;
        for (int v : m_query->get_query_vars()) {
            m_inds[0] = m_state[v];
            m_query->get_posterior(i++)->count(m_inds);
        }
        return;
    }
    for (int i = 0; i < m_query->get_max_query_id(); ++i) {
        fill_inds(i);
        m_query->get_posterior(i)->count(m_inds);
    }
}

void BNInferGibbs::finalize_stats() {
    for (JointDist<int>* p : m_query->get_posteriors_list())
        p->normalize();
}

BNInferGibbsModes::BNInferGibbsModes(BNet<int>& net, options& opts, const std::string& scope)
    : BNInferGibbs(net, opts, scope) {}

void BNInferGibbsModes::preproc_query(BNInferQuery<int>& q) {
    BNInferGibbs::preproc_query(q);
    m_visited.clear();
}

void BNInferGibbsModes::update_stats() {
    std::cerr << "update modes stats" << std::endl;
    auto it = m_visited.find(m_state);
    if (it != m_visited.end()) {
        std::cerr << "add to existing" << std::endl;
        ++it->second;
        return;
    }
    float w = 0.0f;
    for (int v = 0; v < m_net.get_nodes_num(); ++v)
        w += m_net.get_ldist(v)->logp();
    std::cerr << "add new one, wgt " << w << std::endl;
    m_visited.insert(std::make_pair(BNState<int>(m_state), 1));
    for (int i = 0; i < m_query->get_max_query_id(); ++i) {
        fill_inds(i);
        m_query->get_posterior(i)->count(m_inds, w);
    }
}
