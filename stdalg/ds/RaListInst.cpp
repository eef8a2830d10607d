// The construction trace of RaList, and the two lists in use: of ints (edge and cell ids) and of roots.
#include "ds/RaList.h"
#include "ds/Web.h"

#include <iostream>

void ralist_trace_new(int size) { std::cerr << "RaList with " << size << std::endl; }

template class RaList<int>;
template class RaList<RootNode>;
