// bpm_basevar_gen(): the kinds of pathway variables, selected by name.
#ifndef VESK_MODEL_VARFACT_H
#define VESK_MODEL_VARFACT_H

#include "factory.h"
#include "var.h"

// Names in table order: "mrna" five times (only the first row is live, the next four are obsolete),
// "gene", "tf", "InternalMetabolite", "ExtrenalMetabolite" (spelled so), "activeProtein", "mRNA".
// The arguments are the system the variable belongs to and its id.
const Factory2<bpm_basevar, bpm_system*, int>& bpm_basevar_gen();

#endif
