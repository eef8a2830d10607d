// parallel_for: every index once, worker numbers in range, worker 0 on the calling thread, one thread per
// worker number.
#include "ParallelFor.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

TEST(ParallelFor, EveryIndexOnceOnTheWorkersItCounts) {
    struct Case {
        int count, threads, workers; // workers: min(threads, count), at least one
    };
    const Case cases[] = {{0, 3, 1},   {1, 1, 1},    {1, 8, 1},    {5, 2, 2}, {7, 7, 7},
                          {100, 3, 3}, {1000, 4, 4}, {2000, 5, 5}, {6, 0, 1}, {6, -2, 1}};
    for (const Case& c : cases) {
        SCOPED_TRACE("count " + std::to_string(c.count) + " threads " + std::to_string(c.threads));
        EXPECT_EQ(parallel_workers(c.count, c.threads), c.workers);
        std::vector<std::atomic<int>> visits(c.count);
        std::vector<std::thread::id> thread_of(c.workers);
        // Each index writes its own slot through its worker's scratch, as the bootstrap does.
        std::vector<long> scratch(c.workers, 0), out(c.count, -1);
        std::mutex m;
        std::atomic<bool> bad_worker(false), worker0_elsewhere(false);
        const std::thread::id caller = std::this_thread::get_id();
        parallel_for(c.count, c.threads, [&](int worker, int i) {
            if (worker < 0 || worker >= c.workers) {
                bad_worker = true;
                return;
            }
            ++visits[i];
            scratch[worker] = static_cast<long>(i) * i;
            out[i] = scratch[worker] + 1;
            worker0_elsewhere = worker0_elsewhere || (worker == 0 && std::this_thread::get_id() != caller);
            std::lock_guard<std::mutex> lock(m);
            if (thread_of[worker] == std::thread::id())
                thread_of[worker] = std::this_thread::get_id();
            else
                bad_worker = bad_worker || thread_of[worker] != std::this_thread::get_id();
        });
        EXPECT_FALSE(bad_worker);
        EXPECT_FALSE(worker0_elsewhere);
        for (int i = 0; i < c.count; ++i) {
            EXPECT_EQ(visits[i].load(), 1) << "index " << i;
            EXPECT_EQ(out[i], static_cast<long>(i) * i + 1) << "index " << i;
        }
        // Two workers that both ran something ran on different threads.
        for (int a = 0; a < c.workers; ++a)
            for (int b = a + 1; b < c.workers; ++b)
                if (thread_of[a] != std::thread::id() && thread_of[b] != std::thread::id()) {
                    EXPECT_NE(thread_of[a], thread_of[b]) << "workers " << a << " and " << b;
                }
    }
}
