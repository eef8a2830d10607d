// ValSpaceAutoProb: a ValSpaceProb whose three states (down, no change, up) are cut at empirical
// quantiles of a data set.
#ifndef VESK_MODEL_VALSPACEAUTOPROB_H
#define VESK_MODEL_VALSPACEAUTOPROB_H

#include "ValSpaceProb.h"
#include "options.h"

#include <memory>
#include <string>
#include <vector>

class StateDataSetReal;
class scalar_func;

class ValSpaceAutoProb : public ValSpaceProb {
public:
    // Keeps a copy of the store and the scope for reinit_auto; `defer` as for ValSpaceProb.
    ValSpaceAutoProb(options& opts, const std::string& scope, bool defer);
    ~ValSpaceAutoProb() override;

    // Derives the cut points from the histogram of all values of `data` (options Logit, SureFactor,
    // SoSoFactor, Offset, MaxDiscBins) and re-tabulates the three functions. State 1 is the zero state.
    void reinit_auto(StateDataSetReal& data);

    options m_opts;
    std::string m_scope;

private:
    std::vector<std::unique_ptr<scalar_func>> m_funcs; // those of the last reinit_auto
};

#endif
