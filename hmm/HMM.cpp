// HMM: states, edges, state ids and the consistency check of the two edge copies.
#include "HMM.h"

#include "LogSpace.h"
#include "error.h"

#include <cmath>
#include <iostream>

static constexpr char kSrc[] = "HMM";

HMMAdjacency::HMMAdjacency(int from_, int to_, float p_) : from(from_), to(to_), p(0.0f), log_p(kLogZero) {
    set_adj_prob(p_);
}

void HMMAdjacency::set_adj_prob(float p_) {
    p = p_;
    log_p = log_prob(p_);
}

void HMMAdjacency::set_adj_log_prob(float log_p_) {
    log_p = log_p_;
    p = expf(log_p_);
}

HMM::HMM(int alphabet_size) : m_alphabet_size(alphabet_size), m_finish_state(-1) { reset(); }

void HMM::reset() {
    m_free_ids = std::priority_queue<int>();
    m_states.clear();
    m_adj.clear();
    m_back_adj.clear();
    m_finish_state = -1;
    m_states.emplace_back(m_alphabet_size, true);
    m_adj.resize(1);
    m_back_adj.resize(1);
}

int HMM::new_state(bool silent) {
    if (m_free_ids.empty()) {
        m_states.emplace_back(m_alphabet_size, silent);
        m_adj.resize(m_states.size());
        m_back_adj.resize(m_states.size());
        return static_cast<int>(m_states.size()) - 1;
    }
    const int id = -m_free_ids.top();
    m_free_ids.pop();
    m_states[id].m_active = true;
    return id;
}

// Erases the first record of `lst` whose `field` equals `id`.
template <class Field> static void erase_first(std::list<HMMAdjacency>& lst, Field field, int id) {
    for (auto it = lst.begin(); it != lst.end(); ++it) {
        if ((*it).*field == id) {
            lst.erase(it);
            return;
        }
    }
}

void HMM::del_state(int k) {
    std::cerr << "HMM del state " << k << "\n";
    m_free_ids.push(-k);
    std::cerr << "HMM will del forward back\n";
    for (const HMMAdjacency& a : m_adj[k]) {
        std::cerr << "HMM try del " << a.to << " to " << k << "\n";
        erase_first(m_back_adj[a.to], &HMMAdjacency::from, k);
    }
    std::cerr << "HMM will del back forward\n";
    for (const HMMAdjacency& a : m_back_adj[k])
        erase_first(m_adj[a.from], &HMMAdjacency::to, k);
    m_adj[k].clear();
    m_back_adj[k].clear();
    m_states[k].m_active = false;
}

void HMM::add_transition(int from, int to, float p) {
    m_adj[from].emplace_back(from, to, p);
    m_back_adj[to].emplace_back(from, to, p);
}

void HMM::add_finish_state() { m_finish_state = new_state(true); }

void HMM::del_finish_state() {
    del_state(m_finish_state);
    m_finish_state = -1;
}

bool HMM::verify() const {
    const std::size_t n = m_states.size();
    std::vector<float> mat(n * n, 0.0f);
    for (std::size_t k = 0; k < n; ++k) {
        float sum = 0.0f;
        for (const HMMAdjacency& a : m_adj[k]) {
            mat[k * n + a.to] = a.p;
            sum += a.p;
        }
        if (m_states[k].m_active && static_cast<int>(k) != m_finish_state && std::fabs(1.0f - sum) > 0.001f)
            std::cerr << "HMM verif, tot out prob not equal 1, state " << k << " total " << sum << "\n";
    }
    for (std::size_t k = 0; k < n; ++k) {
        for (const HMMAdjacency& a : m_back_adj[k]) {
            const float v = mat[a.from * n + a.to];
            if (v != a.p)
                VESK_FATAL(kSrc, "Incompatible adj/back in states " << a.from << " to " << a.to << " " << v
                                                                    << " " << a.p);
        }
    }
    return true;
}

void HMM::set_state_emission(int state, int symbol, float p) {
    m_states[state].m_emit[symbol] = p;
    m_states[state].m_log_emit[symbol] = log_prob(p);
}

void HMM::print(std::ostream& out) const { out << "Implemented in derived classes!\n"; }
