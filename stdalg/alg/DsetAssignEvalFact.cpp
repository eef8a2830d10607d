// The name table of the assignment evaluators.
#include "alg/DsetAssignEvalFact.h"

#include "alg/DsetAssignEvalBDe.h"
#include "alg/DsetAssignEvalConsist.h"
#include "alg/DsetAssignEvalMInfo.h"
#include "alg/DsetAssignEvalPConsist.h"
#include "alg/DsetAssignEvalPMInfo.h"

namespace {

template <class Derived>
using EvalMake = Factory2Make<DsetAssignEvalBase, Derived, options&, const std::string&>;

const char* const kNames[] = {"MInfo", "Consist", "PConsist", "BDe", "PMInfo", nullptr};

const Factory2<DsetAssignEvalBase, options&, const std::string&>::maker_type kMakers[] = {
    EvalMake<DsetAssignEvalMInfo>::func,    EvalMake<DsetAssignEvalConsist>::func,
    EvalMake<DsetAssignEvalPConsist>::func, EvalMake<DsetAssignEvalBDe>::func,
    EvalMake<DsetAssignEvalPMInfo>::func,
};

static_assert(sizeof(kNames) / sizeof(kNames[0]) == sizeof(kMakers) / sizeof(kMakers[0]) + 1,
              "one maker per evaluator name");

} // namespace

const Factory2<DsetAssignEvalBase, options&, const std::string&>& dset_assign_eval_gen() {
    static const Factory2<DsetAssignEvalBase, options&, const std::string&> factory(
        kNames, kMakers, sizeof(kMakers) / sizeof(kMakers[0]), nullptr);
    return factory;
}
