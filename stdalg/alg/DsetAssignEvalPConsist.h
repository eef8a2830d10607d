// DsetAssignEvalPConsist: how probable the errors of the best function of the parents are.
#ifndef VESK_STDALG_ALG_DSETASSIGNEVALPCONSIST_H
#define VESK_STDALG_ALG_DSETASSIGNEVALPCONSIST_H

#include "alg/DsetAssignEvalBase.h"

#include "SpecialFunc.h"

// Reads the int `MaxKToCalc` (required) besides `Logit`; it and the binomial table are kept for
// callers, the score reads neither. The errors of the best function are spread over the cells as
// evenly as they can go, and the score is minus the log of the product, over cells, of the binomial
// tail probabilities of the rows that the function gets right.
class DsetAssignEvalPConsist : public DsetAssignEvalBase {
public:
    DsetAssignEvalPConsist(options& opt, const std::string& scope);

    float eval(DsetAssignIter& iter) override;
    // Not built: fatal.
    float eval(const std::vector<std::vector<int>>& counts, int n) override;

    std::vector<int> m_err_counts;
    std::vector<int> m_cell_sizes;
    BinomFuncTable m_binom;
    int m_max_k;
};

#endif
