// DsetAssignEvalConsist: the number of rows that the best function of the parents gets right.
#ifndef VESK_STDALG_ALG_DSETASSIGNEVALCONSIST_H
#define VESK_STDALG_ALG_DSETASSIGNEVALCONSIST_H

#include "alg/DsetAssignEvalBase.h"

// The sum over parent combinations of the largest count, as a float (units are lost above 2^24).
class DsetAssignEvalConsist : public DsetAssignEvalBase {
public:
    DsetAssignEvalConsist(options& opt, const std::string& scope);

    float eval(DsetAssignIter& iter) override;
    // The row width is that of the first row; `n` is not used.
    float eval(const std::vector<std::vector<int>>& counts, int n) override;
};

#endif
