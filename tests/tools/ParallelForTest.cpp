// parallel_for: every index once, worker numbers in range, worker 0 on the calling thread.
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
    const Case cases[] = {{0, 3, 1},   {1, 1, 1},    {1, 8, 1}, {5, 2, 2}, {7, 7, 7},
                          {100, 3, 3}, {1000, 4, 4}, {6, 0, 1}, {6, -2, 1}};
    for (const Case& c : cases) {
        SCOPED_TRACE("count " + std::to_string(c.count) + " threads " + std::to_string(c.threads));
        EXPECT_EQ(parallel_workers(c.count, c.threads), c.workers);
        std::vector<std::atomic<int>> visits(c.count);
        std::vector<std::atomic<int>> by_worker(c.workers);
        std::mutex m;
        std::vector<std::thread::id> thread_of(c.workers);
        std::atomic<bool> bad_worker(false), worker0_elsewhere(false);
        const std::thread::id caller = std::this_thread::get_id();
        parallel_for(c.count, c.threads, [&](int worker, int i) {
            if (worker < 0 || worker >= c.workers) {
                bad_worker = true;
                return;
            }
            ++visits[i];
            ++by_worker[worker];
            if (worker == 0 && std::this_thread::get_id() != caller)
                worker0_elsewhere = true;
            std::lock_guard<std::mutex> lock(m);
            thread_of[worker] = std::this_thread::get_id();
        });
        EXPECT_FALSE(bad_worker);
        EXPECT_FALSE(worker0_elsewhere);
        int total = 0;
        for (int i = 0; i < c.count; ++i) {
            EXPECT_EQ(visits[i].load(), 1) << "index " << i;
            total += visits[i];
        }
        EXPECT_EQ(total, c.count);
        // Two workers that both ran something ran on different threads.
        for (int a = 0; a < c.workers; ++a)
            for (int b = a + 1; b < c.workers; ++b)
                if (by_worker[a] > 0 && by_worker[b] > 0) {
                    EXPECT_NE(thread_of[a], thread_of[b]) << "workers " << a << " and " << b;
                }
    }
}

TEST(ParallelFor, PerWorkerScratchGivesTheSerialResult) {
    // Each index writes its own slot through its worker's scratch, as the bootstrap does.
    const int n = 2000;
    for (int threads : {1, 2, 5}) {
        std::vector<long> scratch(parallel_workers(n, threads), 0);
        std::vector<long> out(n, -1);
        parallel_for(n, threads, [&](int worker, int i) {
            scratch[worker] = static_cast<long>(i) * i;
            out[i] = scratch[worker] + 1;
        });
        for (int i = 0; i < n; ++i)
            ASSERT_EQ(out[i], static_cast<long>(i) * i + 1) << "threads " << threads << " index " << i;
    }
}
