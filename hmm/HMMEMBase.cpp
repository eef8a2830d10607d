// HMMEMBase: expectation from the forward and backward tables, maximisation with pseudo counts.
#include "HMMEMBase.h"

#include "LogSpace.h"

#include <algorithm>
#include <cmath>
#include <iostream>

HMMEMBase::HMMEMBase(HMM& hmm, float eps, bool logit)
    : m_hmm(hmm), m_num_states(0), m_forward(hmm), m_backward(hmm), m_eps(eps), m_worst_seq_p(0.0f),
      m_logit(logit) {}

void HMMEMBase::resize_tabs() {
    m_num_states = m_hmm.num_states();
    const std::size_t S = static_cast<std::size_t>(m_num_states);
    m_akl.assign(S * S, kLogZero);
    m_ak.assign(S, kLogZero);
    m_ek.assign(static_cast<std::size_t>(m_hmm.m_alphabet_size) * S, kLogZero);
    m_ek_sum.assign(S, kLogZero);
}

void HMMEMBase::clear_tabs() {
    std::fill(m_akl.begin(), m_akl.end(), kLogZero);
    std::fill(m_ak.begin(), m_ak.end(), kLogZero);
    std::fill(m_ek.begin(), m_ek.end(), kLogZero);
    std::fill(m_ek_sum.begin(), m_ek_sum.end(), kLogZero);
}

float HMMEMBase::local_opt(const SymbolSequenceSet& seqs) {
    if (m_logit)
        std::cerr << "EM: start, eps is " << m_eps << "\n";
    m_hmm.verify();
    resize_tabs();
    if (m_eps >= 3.4028235e38f) {
        // Nothing to train: report how well the model explains the sequences as it stands.
        return expectation(seqs);
    }
    float prev = 0.0f;
    float ll = 0.0f;
    // Any start value above the bound lets the first round go on.
    float improve = 3.4028235e38f;
    for (int iter = 0;; ++iter) {
        clear_tabs();
        ll = expectation(seqs);
        if (iter > 0)
            improve = ll - prev;
        std::cerr << "EM : iter " << iter << " LL = " << ll << " Improve = " << improve << "\n";
        maximization();
        std::cerr << "new HMM (iter " << iter << ")\n";
        m_hmm.print(std::cerr);
        m_hmm.verify();
        prev = ll;
        if (!(m_eps < improve))
            break;
    }
    return ll;
}

float HMMEMBase::expectation(const SymbolSequenceSet& seqs) {
    m_worst_seq_p = 0.0f;
    float total = 0.0f;
    const int S = m_num_states;
    const std::vector<HMMState>& states = m_hmm.m_states;
    for (std::size_t n = 0; n < seqs.size(); ++n) {
        const SymbolSequence& seq = seqs[n];
        const int L = static_cast<int>(seq.size());
        const float full = m_forward.decode(seq);
        // An empty sequence has no per-symbol value.
        if (L > 0)
            m_worst_seq_p = std::min(m_worst_seq_p, full / static_cast<float>(L));
        total += full;
        const float bfull = m_backward.decode(seq);
        std::cerr << "EM full_p = " << full << " b full_p = " << bfull << "\n";
        if (m_logit)
            std::cerr << "EM: seq " << n << " full_p = " << full << "\n";
        for (int i = 0; i <= L; ++i) {
            // The symbol after position i; none after the last one, where only silent targets count.
            const int next = i < L ? seq.code_at(i) : -1;
            for (int k = 0; k < S; ++k) {
                if (!states[k].m_active)
                    continue;
                const float f = m_forward.get_cell(i, k);
                for (const HMMAdjacency& a : m_hmm.m_adj[k]) {
                    const HMMState& to = states[a.to];
                    float t;
                    if (to.m_silent) {
                        t = f + a.log_p;
                        t = t + m_backward.get_cell(i, a.to);
                    } else {
                        if (next < 0)
                            continue;
                        t = f + a.log_p;
                        t = t + to.m_log_emit[next];
                        t = t + m_backward.get_cell(i + 1, a.to);
                    }
                    t = t - full;
                    float& akl = m_akl[static_cast<std::size_t>(k) * S + a.to];
                    akl = log_sum(akl, t);
                    m_ak[k] = log_sum(m_ak[k], t);
                }
                if (i > 0 && !states[k].m_silent) {
                    const float t = f + m_backward.get_cell(i, k) - full;
                    float& ek = m_ek[static_cast<std::size_t>(seq.code_at(i - 1)) * S + k];
                    ek = log_sum(ek, t);
                    m_ek_sum[k] = log_sum(m_ek_sum[k], t);
                }
            }
        }
    }
    return total;
}

float HMMEMBase::edge_log_prob(int from, int to, int out_degree) const {
    const float pseudo = -logf(static_cast<float>(out_degree));
    const float num = log_sum(m_akl[static_cast<std::size_t>(from) * m_num_states + to], pseudo);
    const float den = log_sum(m_ak[from], 0.0f);
    return num - den;
}

void HMMEMBase::maximization() {
    const int S = m_num_states;
    const int A = m_hmm.m_alphabet_size;
    const float emit_pseudo = -logf(static_cast<float>(A));
    for (int k = 0; k < S; ++k) {
        HMMState& st = m_hmm.m_states[k];
        if (!st.m_active)
            continue;
        if (m_logit)
            std::cerr << "EM max state " << k << "\n";
        const int d = static_cast<int>(m_hmm.m_adj[k].size());
        for (HMMAdjacency& a : m_hmm.m_adj[k]) {
            if (m_logit)
                std::cerr << "EM max to " << a.to
                          << " akl = " << m_akl[static_cast<std::size_t>(k) * S + a.to]
                          << " sum ak = " << m_ak[k] << "\n";
            a.set_adj_log_prob(edge_log_prob(k, a.to, d));
        }
        for (HMMAdjacency& a : m_hmm.m_back_adj[k])
            a.set_adj_log_prob(edge_log_prob(a.from, k, static_cast<int>(m_hmm.m_adj[a.from].size())));
        if (st.m_silent)
            continue;
        const float den = log_sum(m_ek_sum[k], 0.0f);
        for (int b = 0; b < A; ++b) {
            const float v = m_ek[static_cast<std::size_t>(b) * S + k];
            if (m_logit)
                std::cerr << "EM max ek " << b << " " << v << " sum ek = " << m_ek_sum[k] << "\n";
            const float num = log_sum(v, emit_pseudo);
            st.m_log_emit[b] = num - den;
            st.m_emit[b] = expf(st.m_log_emit[b]);
        }
    }
    m_hmm.verify();
}
