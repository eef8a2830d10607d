// model_var_gen(): the kinds of the light universe variables, selected by name.
#ifndef VESK_MODEL_MODELVARFACT_H
#define VESK_MODEL_MODELVARFACT_H

#include "factory.h"
#include "var.h"

// Names in table order: "protein", "mrna", "complex", "event", "stimu", "gene", "tf", "InternalMetabolite",
// "ExternalMetabolite", "activeProtein", "notActiveProtein", "mRNA". The argument is the variable's id.
const Factory1<ModelVarBase, int>& model_var_gen();

#endif
