#include "hosts/common/VirtualClockQueue.h"

#include <algorithm>
#include <limits>

namespace velmora::hosts {

void VirtualClockQueue::post(double delaySeconds, Task task) {
    std::lock_guard lock(mutex_);
    queue_.push({now_ + std::max(0.0, delaySeconds), sequence_++, std::move(task)});
}

double VirtualClockQueue::now() const {
    std::lock_guard lock(mutex_);
    return now_;
}

std::size_t VirtualClockQueue::pending() const {
    std::lock_guard lock(mutex_);
    return queue_.size();
}

bool VirtualClockQueue::popDue(double limit, Task& task) {
    std::lock_guard lock(mutex_);
    if (queue_.empty() || queue_.top().deadline > limit) return false;
    // priority_queue::top is const; the entry is discarded right after.
    task = std::move(const_cast<Entry&>(queue_.top()).task);
    now_ = std::max(now_, queue_.top().deadline);
    queue_.pop();
    return true;
}

std::size_t VirtualClockQueue::runDue() {
    std::size_t ran = 0;
    Task task;
    while (popDue(now(), task)) {
        task();
        ++ran;
    }
    return ran;
}

std::size_t VirtualClockQueue::advance(double seconds) {
    const double target = now() + std::max(0.0, seconds);
    std::size_t ran = 0;
    Task task;
    while (popDue(target, task)) {
        task();
        ++ran;
    }
    std::lock_guard lock(mutex_);
    now_ = std::max(now_, target);
    return ran;
}

std::size_t VirtualClockQueue::runUntilIdle() {
    std::size_t ran = 0;
    Task task;
    while (popDue(std::numeric_limits<double>::infinity(), task)) {
        task();
        ++ran;
    }
    return ran;
}

}  // namespace velmora::hosts
