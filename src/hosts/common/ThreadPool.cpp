#include "hosts/common/ThreadPool.h"

#include <algorithm>

namespace velmora::hosts {

ThreadPool::ThreadPool(unsigned threads) {
    for (unsigned i = 0; i < std::max(1u, threads); ++i) workers_.emplace_back([this] { work(); });
}

ThreadPool::~ThreadPool() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
        held_ = false;
    }
    wake_.notify_all();
    for (auto& worker : workers_) worker.join();
}

void ThreadPool::post(std::function<void()> task) {
    {
        std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
    }
    wake_.notify_one();
}

void ThreadPool::waitIdle() {
    std::unique_lock lock(mutex_);
    idle_.wait(lock, [this] { return tasks_.empty() && running_ == 0; });
}

void ThreadPool::hold() {
    std::lock_guard lock(mutex_);
    held_ = true;
}

void ThreadPool::release() {
    {
        std::lock_guard lock(mutex_);
        held_ = false;
    }
    wake_.notify_all();
}

bool ThreadPool::isWorkerThread() const {
    const auto self = std::this_thread::get_id();
    return std::any_of(workers_.begin(), workers_.end(), [self](const std::thread& t) { return t.get_id() == self; });
}

void ThreadPool::work() {
    std::unique_lock lock(mutex_);
    for (;;) {
        wake_.wait(lock, [this] { return stopping_ || (!held_ && !tasks_.empty()); });
        if (tasks_.empty()) return;  // stopping, nothing left
        auto task = std::move(tasks_.front());
        tasks_.pop_front();
        ++running_;
        lock.unlock();
        task();
        task = nullptr;  // destroy captures outside the lock
        lock.lock();
        --running_;
        if (tasks_.empty() && running_ == 0) idle_.notify_all();
    }
}

}  // namespace velmora::hosts
