// TraceMemWrite: a hook with no effect.
#include "stktrace.h"

TraceMemWrite::TraceMemWrite(void*, int) : m_words{0, 0} {}

void TraceMemWrite::operator()(FuncWhere) {}
