// DsetAssignEvalPMInfo: the G statistic of the mutual information as a lower-tail chi-square probability.
#ifndef VESK_STDALG_ALG_DSETASSIGNEVALPMINFO_H
#define VESK_STDALG_ALG_DSETASSIGNEVALPMINFO_H

#include "alg/DsetAssignEvalBase.h"

// A mutual information below 0.0001 gives 0 without computing the probability.
class DsetAssignEvalPMInfo : public DsetAssignEvalBase {
public:
    DsetAssignEvalPMInfo(options& opt, const std::string& scope);

    // chip(2 E h, 2 cells - 2), with every visited cell counted, empty or not. Cells that miss rows
    // (missing values) are not checked here.
    float eval(DsetAssignIter& iter) override;
    // chip(2 N h, (rows - 1)(cols - 1)) over the non-empty rows; a single non-empty row gives 1 when
    // one column holds every row and 0 otherwise.
    float eval(const std::vector<std::vector<int>>& counts, int n) override;
};

#endif
