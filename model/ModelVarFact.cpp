// The kind table of the light universe variables.
#include "ModelVarFact.h"

namespace {

template <class State> using ModelVarMake = Factory1Make<ModelVarBase, ModelVar<State>, int>;

const char* const kNames[] = {"protein",
                              "mrna",
                              "complex",
                              "event",
                              "stimu",
                              "gene",
                              "tf",
                              "InternalMetabolite",
                              "ExternalMetabolite",
                              "activeProtein",
                              "notActiveProtein",
                              "mRNA",
                              nullptr};

const Factory1<ModelVarBase, int>::maker_type kMakers[] = {
    ModelVarMake<bpm_prot_state>::func,    ModelVarMake<bpm_mrna_state>::func,
    ModelVarMake<bpm_complex_state>::func, ModelVarMake<bpm_event_state>::func,
    ModelVarMake<bpm_stimu_state>::func,   ModelVarMake<bpm_gene_state>::func,
    ModelVarMake<bpm_tf_state>::func,      ModelVarMake<bpm_mrna_state>::func,
    ModelVarMake<bpm_mrna_state>::func,    ModelVarMake<bpm_mrna_state>::func,
    ModelVarMake<bpm_mrna_state>::func,    ModelVarMake<bpm_mrna_state>::func,
};

static_assert(sizeof(kNames) / sizeof(kNames[0]) == sizeof(kMakers) / sizeof(kMakers[0]) + 1,
              "one maker per kind name");

} // namespace

const Factory1<ModelVarBase, int>& model_var_gen() {
    static const Factory1<ModelVarBase, int> factory(kNames, kMakers, sizeof(kMakers) / sizeof(kMakers[0]),
                                                     nullptr);
    return factory;
}
