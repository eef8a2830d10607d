// dset_assign_eval_gen(): the assignment evaluators, selected by name.
#ifndef VESK_STDALG_ALG_DSETASSIGNEVALFACT_H
#define VESK_STDALG_ALG_DSETASSIGNEVALFACT_H

#include "alg/DsetAssignEvalBase.h"

#include "factory.h"

#include <string>

// Names in table order: "MInfo", "Consist", "PConsist", "BDe", "PMInfo". The arguments are the
// option store and the evaluator's scope. The caller owns the product.
const Factory2<DsetAssignEvalBase, options&, const std::string&>& dset_assign_eval_gen();

#endif
