#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "hosts/common/ThreadPool.h"

namespace velmora::hosts {
namespace {

TEST(ThreadPool, WaitIdleCoversTasksPostedByRunningTasks) {
    ThreadPool pool(3);
    std::atomic<int> done{0};
    for (int i = 0; i < 20; ++i) {
        pool.post([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            pool.post([&] { ++done; });  // posted before this task counts as finished
            ++done;
        });
    }
    pool.waitIdle();
    EXPECT_EQ(done.load(), 40);
}

TEST(ThreadPool, KnowsItsWorkers) {
    ThreadPool pool(2);
    std::atomic<bool> onWorker{false};
    pool.post([&] { onWorker = pool.isWorkerThread(); });
    pool.waitIdle();
    EXPECT_TRUE(onWorker.load());
    EXPECT_FALSE(pool.isWorkerThread());
}

}  // namespace
}  // namespace velmora::hosts
