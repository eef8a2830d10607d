// parallel_for over std::thread, with indices handed out through one atomic counter.
#include "ParallelFor.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

int parallel_workers(int count, int threads) { return std::max(1, std::min(threads, count)); }

void parallel_for(int count, int threads, const std::function<void(int worker, int i)>& body) {
    if (count <= 0)
        return;
    const int workers = parallel_workers(count, threads);
    std::atomic<int> next(0);
    auto work = [&](int worker) {
        for (int i = next++; i < count; i = next++)
            body(worker, i);
    };
    std::vector<std::thread> pool;
    for (int w = 1; w < workers; ++w)
        pool.emplace_back(work, w);
    work(0);
    for (std::thread& th : pool)
        th.join();
}
