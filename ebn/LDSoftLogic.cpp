// LDSoftLogic and LDConsistSoftLogic: prior tables and evaluation.
#include "LDSoftLogic.h"

#include "LocalLogic.h"
#include "error.h"

#include <cmath>

static constexpr char kSrc[] = "LDSoftLogic";

LDSoftLogic::LDSoftLogic(const BNet<int>& net, const BNState<int>& state, int rvid)
    : LocalDist<int>(net, state, rvid), m_root(nullptr),
      m_prior_table(static_cast<std::size_t>(m_out_card) * m_out_card, 0.0f) {}

float LDSoftLogic::logp() const {
    const int a = m_root->eval(m_state);
    return m_prior_table[a * m_out_card + m_state[m_rvid]];
}

void LDSoftLogic::set_uniform_prior(float p) {
    if (p >= 1.0f)
        VESK_FATAL(kSrc, "Cannot set a prior " << p << " larger than 1  in set unif prior, rvid " << m_rvid);
    const float off = logf((1.0f - p) / static_cast<float>(1 - m_out_card));
    const float diag = logf(p);
    for (int a = 0; a < m_out_card; ++a)
        for (int y = 0; y < m_out_card; ++y)
            m_prior_table[a * m_out_card + y] = a == y ? diag : off;
}

void LDSoftLogic::set_priors(std::vector<float>& table) {
    if (table.size() != m_prior_table.size())
        VESK_FATAL(kSrc, "Tried to set priors for soft logic of rvid "
                             << m_rvid << " with table of size " << table.size() << " for card " << m_out_card
                             << " needed size " << m_prior_table.size());
    m_prior_table = table;
}

LDConsistSoftLogic::LDConsistSoftLogic(const BNet<int>& net, const BNState<int>& state, int rvid)
    : LocalDist<int>(net, state, rvid), m_logic(nullptr), m_logic_out_rvid(-1), m_consist_t_lp(0.0f),
      m_inconsist_t_lp(0.0f), m_consist_f_lp(0.0f), m_inconsist_f_lp(0.0f) {}

void LDConsistSoftLogic::set_consist_prior(float p) {
    const float q = p / static_cast<float>(m_net.get_rvar_card(m_logic_out_rvid) - 1);
    m_consist_t_lp = log_one_minus(p);
    m_consist_f_lp = logf(p);
    m_inconsist_t_lp = logf(q);
    m_inconsist_f_lp = log_one_minus(q);
}

float LDConsistSoftLogic::logp() const {
    const bool agree = m_state[m_logic_out_rvid] == m_logic->eval(m_state);
    const bool t = m_state[m_rvid] == 1;
    if (agree)
        return t ? m_consist_t_lp : m_consist_f_lp;
    return t ? m_inconsist_t_lp : m_inconsist_f_lp;
}
