// The kind table of pathway variables.
#include "varfact.h"

#include "mrna.h"

namespace {

template <class Var> using BaseVarMake = Factory2Make<bpm_basevar, Var, bpm_system*, int>;

const char* const kNames[] = {
    "mrna",          "mrna", "mrna", "mrna", "mrna", "gene", "tf", "InternalMetabolite", "ExtrenalMetabolite",
    "activeProtein", "mRNA", nullptr};

const Factory2<bpm_basevar, bpm_system*, int>::maker_type kMakers[] = {
    BaseVarMake<bpm_mrna>::func, BaseVarMake<bpm_mrna>::func, BaseVarMake<bpm_mrna>::func,
    BaseVarMake<bpm_mrna>::func, BaseVarMake<bpm_mrna>::func, BaseVarMake<bpm_gene>::func,
    BaseVarMake<bpm_tf>::func,   BaseVarMake<bpm_mrna>::func, BaseVarMake<bpm_mrna>::func,
    BaseVarMake<bpm_mrna>::func, BaseVarMake<bpm_mrna>::func,
};

static_assert(sizeof(kNames) / sizeof(kNames[0]) == sizeof(kMakers) / sizeof(kMakers[0]) + 1,
              "one maker per kind name");

} // namespace

const Factory2<bpm_basevar, bpm_system*, int>& bpm_basevar_gen() {
    static const Factory2<bpm_basevar, bpm_system*, int> factory(
        kNames, kMakers, sizeof(kMakers) / sizeof(kMakers[0]), nullptr);
    return factory;
}
