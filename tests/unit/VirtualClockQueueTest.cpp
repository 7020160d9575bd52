#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "hosts/common/VirtualClockQueue.h"

namespace velmora::hosts {
namespace {

TEST(VirtualClockQueue, RunsByDeadlineThenPostingOrderAsTheClockMoves) {
    VirtualClockQueue queue;
    std::vector<std::string> ran;
    queue.post(0.3, [&] { ran.push_back("b@0.3"); });
    queue.post(0.1, [&] { ran.push_back("a@0.1"); });
    queue.post(0.3, [&] { ran.push_back("c@0.3"); });
    queue.post(0, [&] {
        ran.push_back("now");
        // Posted while running: due at once, so runDue takes it too.
        queue.post(0, [&] { ran.push_back("now, nested"); });
        // Relative to the clock when posted, not when the queue started.
        queue.post(0.2, [&] { ran.push_back("d@0.2"); });
    });
    EXPECT_EQ(queue.runDue(), 2u);
    EXPECT_EQ(queue.advance(0.25), 2u);
    EXPECT_DOUBLE_EQ(queue.now(), 0.25);
    EXPECT_EQ(queue.advance(0.05), 2u);
    EXPECT_EQ(ran, (std::vector<std::string>{"now", "now, nested", "a@0.1", "d@0.2", "b@0.3", "c@0.3"}));
    EXPECT_EQ(queue.pending(), 0u);
}

TEST(VirtualClockQueue, ABlockSeesTheClockAtItsOwnDeadline) {
    VirtualClockQueue queue;
    std::vector<double> seen;
    queue.post(1.0, [&] {
        seen.push_back(queue.now());
        queue.post(0.3, [&] { seen.push_back(queue.now()); });
    });
    queue.advance(2);
    EXPECT_EQ(seen, (std::vector<double>{1.0, 1.3}));
    EXPECT_DOUBLE_EQ(queue.now(), 2.0);
}

}  // namespace
}  // namespace velmora::hosts
