// The one instance of CompHeap: over binomial heaps.
#include "ds/CompHeap.h"

template class CompHeap<HeapBin>;
