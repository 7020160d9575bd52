#include <gtest/gtest.h>

#include "bridge/Exports.h"
#include "bridge/HardwareUUID.h"
#include "fake/FakePlatform.h"
#include "keyboard/ShortcutState.h"

namespace velmora {
namespace {

using Lines = std::vector<std::string>;
constexpr const char* tool = "/usr/sbin/system_profiler";

platform::ProcessResult report(const std::string& output) {
    platform::ProcessResult result;
    result.started = true;
    result.output = output;
    return result;
}

class HardwareUUIDTest : public testing::PlatformTest {};

TEST_F(HardwareUUIDTest, ReadsTheTrimmedValueBehindTheLabel) {
    fake.process->set(tool, report("Hardware:\n    Model Name: Mac\n      Hardware UUID:   AB-CD \t\n  Serial: 1\n"));
    EXPECT_EQ(getHardwareUUID(), "AB-CD");
    fake.process->set(tool, report("Hardware:\n    Model Name: Mac\n"));
    EXPECT_EQ(getHardwareUUID(), "UnknownUUID");
    EXPECT_TRUE(fake.log->lines().empty());
}

TEST_F(HardwareUUIDTest, AToolThatCannotStartGivesNothingAndLogs) {
    platform::ProcessResult failed;
    failed.error = "no such tool";
    fake.process->set(tool, failed);
    EXPECT_EQ(getHardwareUUID(), std::nullopt);
    EXPECT_EQ(fake.log->lines(), Lines{"Error running system_profiler: no such tool"});
    // The global falls back to the unknown value.
    EXPECT_EQ(globalHardwareUUID(), "UnknownUUID");
}

TEST_F(HardwareUUIDTest, StartRunsTheToolTwiceAndLogsTheValueOnce) {
    fake.process->set(tool, report("Hardware UUID: FIRST\n"));
    int expectedRuns = 2;
    fake.script->onMacro("GetEnableKeyboardShortcuts", [&] {
        // The setting is read after the identifier is stored.
        EXPECT_EQ(fake.process->runs(tool), expectedRuns);
    });
    fake.script->answer("GetEnableKeyboardShortcuts", "no");
    initializeEventMonitor();
    EXPECT_EQ(fake.process->runs(tool), 2);
    EXPECT_EQ(fake.log->lines(),
              (Lines{"VL: initializeEventMonitor function called", "Hardware UUID retrieved: FIRST"}));
    EXPECT_FALSE(ShortcutState::isEnabled.load());

    fake.process->set(tool, report("Hardware UUID: SECOND\n"));
    expectedRuns = 3;
    initializeEventMonitor();
    EXPECT_EQ(globalHardwareUUID(), "SECOND");
    EXPECT_EQ(fake.log->lines().size(), 3u) << "the global logs only at its first use";
}

}  // namespace
}  // namespace velmora
