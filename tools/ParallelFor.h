// parallel_for: runs a loop body over [0, count) on several threads, each with a worker number.
#ifndef VESK_TOOLS_PARALLELFOR_H
#define VESK_TOOLS_PARALLELFOR_H

#include <functional>

// Calls body(worker, i) once for every i in [0, count), on min(threads, count) workers (at least
// one); worker 0 is the calling thread. Indices are handed out one at a time in ascending order to
// whichever worker is free, so the body must not depend on which worker runs an index: a worker
// number only selects that worker's scratch space. Returns when every call has returned.
void parallel_for(int count, int threads, const std::function<void(int worker, int i)>& body);

// The number of workers parallel_for uses for `count` indices on `threads` threads.
int parallel_workers(int count, int threads);

#endif
