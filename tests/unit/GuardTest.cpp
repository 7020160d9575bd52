#include <gtest/gtest.h>

#include <stdexcept>

#include "fake/FakePlatform.h"

namespace velmora {
namespace {

using Lines = std::vector<std::string>;

class GuardTest : public testing::PlatformTest {};

// Nothing above a queued block or an event handler can handle an exception:
// it is logged, and the host goes on.
TEST_F(GuardTest, ThrowingBlocksAndHandlersAreLoggedAndSwallowed) {
    int ran = 0;
    platform::mainAsync([] { throw std::runtime_error("boom"); });
    platform::mainAsync([&] { ++ran; });
    platform::globalAsync(platform::QualityOfService::background, [] { throw 42; });
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(ran, 1);

    platform::addLocalMonitor(platform::maskFor(platform::EventType::keyDown),
                              [](const platform::Event&) -> std::optional<platform::Event> {
                                  throw std::logic_error("bad key");
                              });
    platform::Event key;
    key.keyCode = 7;
    auto passed = fake.events->dispatch(key);
    ASSERT_TRUE(passed);
    EXPECT_EQ(passed->keyCode, 7);

    // The fake runs global blocks before main-queue ones.
    EXPECT_EQ(fake.log->lines(), (Lines{"VL: queued block failed", "VL: queued block failed: boom",
                                        "VL: event monitor failed: bad key"}));
}

}  // namespace
}  // namespace velmora
