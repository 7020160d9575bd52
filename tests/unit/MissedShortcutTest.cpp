// Missed shortcuts: the modifier test and the newest-first list of three.

#include <gtest/gtest.h>

#include "assistant/AssistantViewModel.h"
#include "assistant/MissedAssistant.h"
#include "bridge/Exports.h"
#include "fake/FakePlatform.h"

namespace velmora {
namespace {

class MissedShortcutTest : public testing::PlatformTest {
protected:
    void hold(std::uint64_t flags) { globalModifierKeyState().modifierFlags.set({flags}); }
    std::vector<std::string> missedNames() {
        std::vector<std::string> out;
        for (const auto& row : AssistantViewModel::shared().missed.get()) out.push_back(row.Name);
        return out;
    }
};

TEST_F(MissedShortcutTest, ExactlyTheRowsModifiersHeldMeansTheKeyboardWasUsed) {
    const auto keys = missedRecommendation("AlignLeft").Keys;
    hold(ModifierFlags::command | ModifierFlags::control | ModifierFlags::capsLock | ModifierFlags::function);
    EXPECT_TRUE(isModifierRelevant(keys, globalModifierKeyState()));
    hold(ModifierFlags::command);
    EXPECT_FALSE(isModifierRelevant(keys, globalModifierKeyState()));
    hold(ModifierFlags::command | ModifierFlags::control | ModifierFlags::shift);
    EXPECT_FALSE(isModifierRelevant(keys, globalModifierKeyState()));
    hold(0);
    EXPECT_TRUE(isModifierRelevant({}, globalModifierKeyState())) << "no keys and no modifiers are equal sets";
}

TEST_F(MissedShortcutTest, TheTableKeepsItsOwnKeysAndUnknownNamesTakeTheLastRow) {
    auto front = missedRecommendation("BringToFrontMenu");
    EXPECT_EQ(front.Keys, (std::vector<std::string>{"Cmd", "Opt", "Shift", "F"}));
    EXPECT_EQ(missedRecommendation("AlignCenter").Keys, (std::vector<std::string>{"Cmd", "Ctrl", "C"}));
    auto unknown = missedRecommendation("alignleft");
    EXPECT_EQ(unknown.Name, "alignleft");
    EXPECT_TRUE(unknown.Keys.empty());
    EXPECT_EQ(unknown.ImagePath, "Default.png");
    EXPECT_EQ(unknown.TimeSaved, "");
}

TEST_F(MissedShortcutTest, KeepsThreeNewestFirstWithoutDuplicateNames) {
    int writes = 0;
    AssistantViewModel::shared().missed.observe([&](const auto&) { ++writes; });
    triggerMissedAssistant("Group");
    EXPECT_TRUE(missedNames().empty()) << "the list changes on the main queue";
    triggerMissedAssistant("Group");  // both blocks test for the duplicate when they run
    triggerMissedAssistant("BringToFrontMenu");
    triggerMissedAssistant("BringToFront");
    triggerMissedAssistant("NewSlide");
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(missedNames(), (std::vector<std::string>{"New Slide", "Bring to Front", "Group Shapes"}));
    EXPECT_TRUE(fake.log->contains("Missed recommendation already exists: Group Shapes"));
    EXPECT_TRUE(fake.log->contains("Missed recommendation already exists: Bring to Front"));
    EXPECT_EQ(writes, 3);

    triggerMissedAssistant("AlignLeft");
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(missedNames(), (std::vector<std::string>{"Align Left", "New Slide", "Bring to Front"}));
    EXPECT_EQ(writes, 5) << "the insert and the trim each notify";
    EXPECT_TRUE(fake.log->contains("Added missed recommendation: Align Left"));
}

TEST_F(MissedShortcutTest, SkipsWhenTheShortcutsModifiersAreHeld) {
    hold(ModifierFlags::control);
    triggerMissedAssistant("NewSlide");
    hold(0);
    triggerMissedAssistant("Bold");
    fake.dispatch->runUntilIdle();
    EXPECT_TRUE(missedNames().empty());
    EXPECT_EQ(fake.log->lines(), (std::vector<std::string>{"Modifiers active for New Slide; skipping missed recommendation.",
                                                           "Modifiers active for Bold; skipping missed recommendation."}));
}

}  // namespace
}  // namespace velmora
