// A fixed pool of worker threads that can be waited on until idle.
//
// Provides: ThreadPool.
// Stands in for the platform's global queues on Linux. waitIdle() returns
// once no task is queued or running, which lets a host settle background
// work before it looks at the results; hold() and release() let it choose
// when background work runs at all.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace velmora::hosts {

class ThreadPool {
public:
    explicit ThreadPool(unsigned threads = 4);
    ~ThreadPool();
    ThreadPool(const ThreadPool&) = delete;
    ThreadPool& operator=(const ThreadPool&) = delete;

    void post(std::function<void()> task);
    // Waits until no task is queued or running; call it released.
    void waitIdle();
    // While held, workers finish what they run but start nothing new: a host
    // lets background work run only while its main thread waits for it.
    void hold();
    void release();
    // True when the calling thread is one of this pool's workers.
    bool isWorkerThread() const;

private:
    void work();

    std::mutex mutex_;
    std::condition_variable wake_, idle_;
    std::deque<std::function<void()>> tasks_;
    std::size_t running_ = 0;
    bool stopping_ = false;
    bool held_ = false;
    std::vector<std::thread> workers_;
};

}  // namespace velmora::hosts
