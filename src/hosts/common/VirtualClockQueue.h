// A main queue on a virtual clock.
//
// Provides: VirtualClockQueue.
// Blocks run in order of deadline, ties in order of posting; time moves only
// when the owner advances it. Posting is safe from any thread; running
// happens on the owner's thread.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <queue>
#include <vector>

namespace velmora::hosts {

class VirtualClockQueue {
public:
    using Task = std::function<void()>;

    void post(double delaySeconds, Task task);
    double now() const;
    std::size_t pending() const;

    // Runs every block due now, including those that due blocks post with
    // no delay. Gives how many ran.
    std::size_t runDue();
    // Moves the clock forward by `seconds`, running each block at its own
    // deadline on the way, then the ones due at the end.
    std::size_t advance(double seconds);
    // Runs until nothing is left, moving the clock to each next deadline.
    std::size_t runUntilIdle();

private:
    struct Entry {
        double deadline;
        std::uint64_t sequence;
        Task task;
    };
    struct Later {
        bool operator()(const Entry& a, const Entry& b) const {
            return a.deadline != b.deadline ? a.deadline > b.deadline : a.sequence > b.sequence;
        }
    };
    // Takes the earliest block if it is due by `limit`.
    bool popDue(double limit, Task& task);

    mutable std::mutex mutex_;
    std::priority_queue<Entry, std::vector<Entry>, Later> queue_;
    double now_ = 0;
    std::uint64_t sequence_ = 0;
};

}  // namespace velmora::hosts
