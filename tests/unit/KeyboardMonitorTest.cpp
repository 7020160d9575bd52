#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "bridge/Exports.h"
#include "fake/FakePlatform.h"
#include "keyboard/KeyEventMonitor.h"

namespace velmora {
namespace {

using platform::Event;
using platform::EventType;
using Strings = std::vector<std::string>;

constexpr std::uint64_t shift = 0x20000, control = 0x40000, option = 0x80000, command = 0x100000;
constexpr std::uint64_t capsLock = 0x10000, numericPad = 0x200000, function = 0x800000;

Event keyDown(std::optional<std::string> characters, std::uint16_t keyCode, std::uint64_t flags) {
    return {EventType::keyDown, flags, std::move(characters), keyCode};
}

class KeyboardMonitor : public testing::PlatformTest {
protected:
    // Starts the library and installs its monitors, then forgets the start's traces.
    void start() {
        initializeEventMonitor();
        fake.dispatch->runUntilIdle();
        fake.log->clear();
        scriptsBefore = fake.script->scripts().size();
    }
    // Delivers the event as the host would; true when it was consumed.
    bool press(const Event& event) { return !fake.events->dispatch(event).has_value(); }
    Strings macrosSinceStart() {
        auto all = fake.script->macros();
        return Strings(all.begin() + static_cast<long>(scriptsBefore), all.end());
    }
    std::size_t scriptsBefore = 0;
};

TEST_F(KeyboardMonitor, StartsInOrderAndInstallsBothMonitorsInOneLaterBlock) {
    fake.process->set("/usr/sbin/system_profiler", {true, "", "      Hardware UUID: ABC-123\n"});
    std::size_t monitorsWhenSettingRead = 99;
    fake.script->onMacro("GetEnableKeyboardShortcuts", [&] { monitorsWhenSettingRead = fake.events->count(); });

    initializeEventMonitor();
    EXPECT_EQ(fake.log->lines(), (Strings{"VL: initializeEventMonitor function called",
                                          "Hardware UUID retrieved: ABC-123"}));
    EXPECT_EQ(fake.process->runs("/usr/sbin/system_profiler"), 2);
    EXPECT_EQ(monitorsWhenSettingRead, 0u);
    EXPECT_EQ(fake.events->count(), 0u);
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(fake.events->count(), 2u);

    // Key down and the three mouse releases reach the library; nothing else does.
    for (auto type : {EventType::leftMouseUp, EventType::rightMouseUp, EventType::otherMouseUp}) {
        EXPECT_TRUE(fake.events->dispatch({type, 0, std::nullopt, 0}).has_value());
    }
    fake.events->dispatch({EventType::leftMouseDown, 0, std::nullopt, 0});
    fake.events->dispatch({EventType::keyUp, control, "t", 17});
    EXPECT_EQ(fake.log->lines().size(), 2u + 3u);

    // No guard: a second start adds two more.
    initializeEventMonitor();
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(fake.events->count(), 4u);
}

struct Chord {
    const char* what;
    std::optional<std::string> characters;
    std::uint16_t keyCode;
    std::uint64_t flags;
    const char* macro;  // nullptr: the event passes
};

TEST_F(KeyboardMonitor, MatchesOnExactModifiersAndEitherTheCharacterOrThePhysicalKey) {
    const Chord chords[] = {
        {"shift arrives as a capital and is lowered", "E", 14, shift | command, "SameHeight"},
        {"caps lock is masked out", "t", 17, capsLock | control, "ShapeAction"},
        {"caps lock with a capital is lowered too", "T", 17, capsLock | control, "ShapeAction"},
        {"device-dependent bits are masked out", "t", 17, control | 0x1 | 0x100, "ShapeAction"},
        {"option blocks the row", "t", 17, option | control, nullptr},
        {"a superset does not match", "t", 17, control | shift, nullptr},
        {"a subset finds its own row, not a wider one", "t", 17, command, "ShowTablesForm"},
        {"the key code row ignores the printed character", "\xC3\xA8", 26, shift | command, "DisableWordWrap"},
        {"the US character for that key changes nothing", "&", 26, shift | command, "DisableWordWrap"},
        {"a character row follows the layout, not the key", "k", 9, control | command, "ShowStickerForm"},
        {"no characters: key code rows still match", std::nullopt, 18, control, "CopyPosition"},
        {"no characters and no key code row", std::nullopt, 17, control, nullptr},
        {"key code 0 is a key, not the absence of one", std::nullopt, 0, control, nullptr},
        {"arrows carry function and numeric-pad bits", "\xEF\x9C\x81", 125, control | command | function | numericPad,
         "AlignBottom"},
        {"Return", "\r", 36, control | command, "ShowSendSlidesForm"},
        {"the keypad Enter is not Return", "\x03", 76, control | command | numericPad, nullptr},
        {"two characters never equal one", "tt", 17, control, nullptr},
    };
    start();
    for (const auto& chord : chords) {
        SCOPED_TRACE(chord.what);
        const std::size_t before = fake.script->scripts().size();
        const bool consumed = press(keyDown(chord.characters, chord.keyCode, chord.flags));
        EXPECT_EQ(consumed, chord.macro != nullptr);
        // The macro runs later, on the main queue, never inside the handler.
        EXPECT_EQ(fake.script->scripts().size(), before);
        fake.dispatch->runUntilIdle();
        auto all = fake.script->macros();
        Strings ran(all.begin() + static_cast<long>(before), all.end());
        EXPECT_EQ(ran, (chord.macro ? Strings{chord.macro, "CallTriggerAssistant"} : Strings{}));
    }
}

TEST_F(KeyboardMonitor, LogsEveryKeyWithTheLoweredTextAndTheMaskedModifiers) {
    start();
    press(keyDown("T", 17, control | shift | capsLock | 0x100));
    press(keyDown("t", 17, control));
    press(keyDown(std::nullopt, 53, 0x100));
    press(keyDown("\xC3\x89", 14, option | shift));  // É
    press(keyDown("\xD4\xB1", 0, 0));                 // Armenian Ayb, beyond the usual layouts' scripts
    press(keyDown("\xEF\x9C\x80", 126, 0));         // the up arrow's private-use character, without case
    press(keyDown("\xEE\x80\x80Q", 126, 0));        // more than that one character is lowered as text
    // A key's text longer than the line's stack room is logged whole.
    const std::string pasted(300, 'Q');
    press(keyDown(pasted, 9, 0));
    EXPECT_EQ(fake.log->lines(),
              (Strings{"VL: Detected typedCharacter: t, keyCode: 17, modifiers: ModifierFlags(rawValue: 393216)",
                       "VL: Detected typedCharacter: t, keyCode: 17, modifiers: ModifierFlags(rawValue: 262144)",
                       "VL: Matched shortcut for macro: ShapeAction",
                       "VL: Detected typedCharacter: , keyCode: 53, modifiers: ModifierFlags(rawValue: 0)",
                       "VL: Detected typedCharacter: \xC3\xA9, keyCode: 14, modifiers: ModifierFlags(rawValue: 655360)",
                       "VL: Detected typedCharacter: \xD5\xA1, keyCode: 0, modifiers: ModifierFlags(rawValue: 0)",
                       "VL: Detected typedCharacter: \xEF\x9C\x80, keyCode: 126, modifiers: ModifierFlags(rawValue: 0)",
                       "VL: Detected typedCharacter: \xEE\x80\x80q, keyCode: 126, modifiers: ModifierFlags(rawValue: 0)",
                       "VL: Detected typedCharacter: " + std::string(300, 'q') +
                           ", keyCode: 9, modifiers: ModifierFlags(rawValue: 0)"}));
}

TEST_F(KeyboardMonitor, DisabledPassesEveryKeySilentlyWhileMouseReleasesGoOn) {
    fake.script->answer("GetEnableKeyboardShortcuts", "False");
    start();
    ASSERT_TRUE(fake.inspection->inspect("shortcuts").has_value());
    EXPECT_EQ(*fake.inspection->inspect("shortcuts"), Strings{"shortcuts: disabled"});
    EXPECT_FALSE(press(keyDown("t", 17, control)));
    EXPECT_FALSE(press({EventType::leftMouseUp, 0, std::nullopt, 0}));
    fake.dispatch->advance(0.3);
    EXPECT_EQ(fake.log->lines(), (Strings{"VL: Mouse button released", "Assistant: Executing"}));
    EXPECT_EQ(macrosSinceStart(), Strings{"CallTriggerAssistant"});

    // The setting is followed only when it is read again.
    fake.script->answer("GetEnableKeyboardShortcuts", "TRUE");
    EXPECT_FALSE(press(keyDown("t", 17, control)));
    updateShortcutEnabledState();
    EXPECT_EQ(*fake.inspection->inspect("shortcuts"), Strings{"shortcuts: enabled"});
    EXPECT_TRUE(press(keyDown("t", 17, control)));
}

TEST_F(KeyboardMonitor, AFailingMacroStillRefreshesTheAssistantAndTheKeyStaysTaken) {
    fake.script->fail("ShapeAction");
    start();
    EXPECT_TRUE(press(keyDown("t", 17, control)));
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(macrosSinceStart(), (Strings{"ShapeAction", "CallTriggerAssistant"}));
    const auto lines = fake.log->lines();
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                            [](const std::string& line) { return line.rfind("VL: AppleScript Error: ", 0) == 0; }),
              1);
}

TEST_F(KeyboardMonitor, EachMouseReleaseRefreshesOnceAFullThreeTenthsLater) {
    start();
    press({EventType::leftMouseUp, 0, std::nullopt, 0});
    fake.dispatch->advance(0.1);
    press({EventType::rightMouseUp, 0, std::nullopt, 0});
    fake.dispatch->advance(0.19);
    EXPECT_TRUE(macrosSinceStart().empty());
    fake.dispatch->advance(0.01);  // 0.3 after the first
    EXPECT_EQ(macrosSinceStart(), Strings{"CallTriggerAssistant"});
    fake.dispatch->advance(0.1);  // 0.3 after the second: no coalescing
    EXPECT_EQ(macrosSinceStart(), Strings(2, "CallTriggerAssistant"));
}

}  // namespace
}  // namespace velmora
