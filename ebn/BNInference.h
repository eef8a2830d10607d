// Inference engines over a BNet<int>: exhaustive enumeration, single-site Gibbs sampling, and Gibbs
// modes that weight each distinct visited state by its joint probability.
#ifndef VESK_EBN_BNINFERENCE_H
#define VESK_EBN_BNINFERENCE_H

#include "BNInferQuery.h"
#include "BNState.h"
#include "BNet.h"
#include "options.h"

#include <list>
#include <map>
#include <string>
#include <vector>

// An engine is made once per network and used for any number of queries; preproc_query must
// precede infer. The network's state holds the evidence, and the engine overwrites the values of
// the variables it does not treat as observed.
template <class T> class BNInference {
public:
    explicit BNInference(BNet<T>& net) : m_query(nullptr), m_net(net), m_state(net.get_state()) {}
    virtual ~BNInference() = default;
    BNInference(const BNInference&) = delete;
    BNInference& operator=(const BNInference&) = delete;

    virtual void preproc_query(BNInferQuery<T>& q) = 0;
    virtual void infer(BNInferQuery<T>& q) = 0;

protected:
    BNInferQuery<T>* m_query;
    BNet<T>& m_net;
    BNState<T>& m_state;
};

// Sums the joint over every value of every hidden variable, in topological order. The
// posteriors receive log-weighted counts and are left unnormalised (density normalizes them).
class BNInferExactNaive : public BNInference<int> {
public:
    explicit BNInferExactNaive(BNet<int>& net);

    void preproc_query(BNInferQuery<int>& q) override;
    void infer(BNInferQuery<int>& q) override;
    // The log of the total weight summed by the last infer: the log probability of the evidence.
    float get_log_evidence() const { return m_log_evidence; }

private:
    void dive(float& acc, float lp, std::list<int>::const_iterator it);
    void collect_stat(float w);

    std::vector<int> m_inds;
    std::list<int> m_order;
    float m_log_evidence;
};

// Single-site Gibbs sampling. Sampled are the unobserved query variables and the descendants of
// the observed and the queried variables; any other variable keeps the value it has. Each of
// "GibbsRepeats" runs starts from a random state, makes "GibbsT" single-site updates and counts
// one sample, its last state. The conditional of a variable is cached as a cumulative log
// distribution and kept until a member of its Markov blanket changes, also across runs.
class BNInferGibbs : public BNInference<int> {
public:
    BNInferGibbs(BNet<int>& net, options& opts, const std::string& scope);

    void preproc_query(BNInferQuery<int>& q) override;
    void infer(BNInferQuery<int>& q) override;

    const std::vector<int>& get_sample_vars() const { return m_sample_vars; }
    int get_sample_pos(int rvid) const { return m_sample_pos[rvid]; }

protected:
    virtual void update_stats();
    virtual void finalize_stats();
    void rand_init_state();
    void rand_next_state();
    // Fills m_inds with the values of query `id`'s variables.
    void fill_inds(int id);

    std::vector<int> m_sample_vars;
    std::vector<int> m_sample_pos;
    int m_repeats;
    int m_t;
    std::vector<std::vector<float>> m_cum_dist;
    std::vector<int> m_dist_valid;
    std::vector<int> m_inds;
    std::vector<std::list<int>> m_blankets;
    bool m_logit;
};

// Gibbs walks whose distinct visited states each count once, with the log of their joint
// probability as weight; posteriors are meant to be log-space counters.
class BNInferGibbsModes : public BNInferGibbs {
public:
    BNInferGibbsModes(BNet<int>& net, options& opts, const std::string& scope);

    void preproc_query(BNInferQuery<int>& q) override;
    const std::map<BNState<int>, int>& get_visited() const { return m_visited; }

protected:
    void update_stats() override;

private:
    std::map<BNState<int>, int> m_visited;
};

extern template class BNInference<int>;

#endif
