// The ceilings of ids and counts read from input files. They are functions, not constants, so that a
// fuzzing build can lower them at link time and keep each input cheap.
#include "idbound.h"

long long input_id_ceiling() { return 1LL << 22; }

long long input_cell_ceiling() { return 1LL << 27; }
