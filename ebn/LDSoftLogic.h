// LDSoftLogic and LDConsistSoftLogic: local distributions that evaluate a logic tree on each call.
#ifndef VESK_EBN_LDSOFTLOGIC_H
#define VESK_EBN_LDSOFTLOGIC_H

#include "BNState.h"
#include "BNet.h"
#include "LocalDist.h"

#include <vector>

class LocalLogicHNode;

// The node's value y given the logic value a of its root: m_prior_table[a * card + y]. The
// logic tree is not owned.
class LDSoftLogic : public LocalDist<int> {
public:
    LDSoftLogic(const BNet<int>& net, const BNState<int>& state, int rvid);

    void reinit() override {}
    virtual void clear() {}
    // Evaluates the root on the bound state; a logic value at or past the card is not checked.
    float logp() const override;

    void set_root(LocalLogicHNode* root) { m_root = root; }
    const LocalLogicHNode* get_root() const { return m_root; }
    const std::vector<float>& get_priors() const { return m_prior_table; }
    // Diagonal log(p), elsewhere log((1 - p) / (1 - card)): for two values or more the quotient
    // is negative and those entries are NaN; set_priors gives real ones. Fatal for p >= 1.
    void set_uniform_prior(float p);
    // Entry (logic value a, output y), a log value.
    void set_prior(int a, int y, float lp) { m_prior_table[a * m_out_card + y] = lp; }
    // The whole card x card table of log values; fatal when the size differs.
    void set_priors(std::vector<float>& table);

private:
    LocalLogicHNode* m_root;
    std::vector<float> m_prior_table;
};

// A binary consistency node: value 1 says that variable m_logic_out_rvid agrees with the logic.
// With p the prior and c the card of the logic's output variable, agreement has log(1 - p) at 1
// and log(p) at 0, disagreement log(p / (c - 1)) at 1 and log(1 - p / (c - 1)) at 0.
class LDConsistSoftLogic : public LocalDist<int> {
public:
    LDConsistSoftLogic(const BNet<int>& net, const BNState<int>& state, int rvid);

    void reinit() override {}
    virtual void clear() {}
    float logp() const override;

    void set_logic(LocalLogicHNode* logic) { m_logic = logic; }
    const LocalLogicHNode* get_logic() const { return m_logic; }
    void set_logic_out_var(int rvid) { m_logic_out_rvid = rvid; }
    int get_logic_out_var() const { return m_logic_out_rvid; }
    // Needs the output variable set first.
    void set_consist_prior(float p);

private:
    LocalLogicHNode* m_logic;
    int m_logic_out_rvid;
    float m_consist_t_lp;
    float m_inconsist_t_lp;
    float m_consist_f_lp;
    float m_inconsist_f_lp;
};

#endif
