// The two lists in use: of ints (edge and cell ids) and of roots.
#include "ds/RaList.h"
#include "ds/Web.h"

template class RaList<int>;
template class RaList<RootNode>;
