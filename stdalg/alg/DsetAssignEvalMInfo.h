// DsetAssignEvalMInfo: mutual information of the base variable and its parents, in nats.
#ifndef VESK_STDALG_ALG_DSETASSIGNEVALMINFO_H
#define VESK_STDALG_ALG_DSETASSIGNEVALMINFO_H

#include "alg/DsetAssignEvalBase.h"

class DsetAssignEvalMInfo : public DsetAssignEvalBase {
public:
    DsetAssignEvalMInfo(options& opt, const std::string& scope);

    // Cells that don't hold every data row (missing values) are fatal.
    float eval(DsetAssignIter& iter) override;
    // Shares of the matrix total; `n` is not used.
    float eval(const std::vector<std::vector<int>>& counts, int n) override;
};

#endif
