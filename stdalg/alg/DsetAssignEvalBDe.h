// DsetAssignEvalBDe: the BDe (BDeu) log marginal likelihood of the base variable given its parents.
#ifndef VESK_STDALG_ALG_DSETASSIGNEVALBDE_H
#define VESK_STDALG_ALG_DSETASSIGNEVALBDE_H

#include "alg/DsetAssignEvalBase.h"

// Reads the ints `EquivSampleSize` and `MaxCard` (both required) besides `Logit`. The prior spreads
// the equivalent sample size evenly over MaxCard^parents combinations and MaxCard values.
class DsetAssignEvalBDe : public DsetAssignEvalBase {
public:
    DsetAssignEvalBDe(options& opt, const std::string& scope);

    // Sums over the combinations seen in the data only; MaxCard other than 3 is fatal.
    float eval(DsetAssignIter& iter) override;
    // Every row counts, empty ones too; a negative n divides by the power of -n.
    float eval(const std::vector<std::vector<int>>& counts, int n) override;

    int m_equiv_sample_size;
    int m_max_card;

private:
    // The equivalent sample size over MaxCard^n, in float.
    float prior(int n) const;
};

#endif
