// GraphBaseNodeIter: out-of-line destructor.
#include "ds/GraphBaseNodeIter.h"

GraphBaseNodeIter::~GraphBaseNodeIter() {}
