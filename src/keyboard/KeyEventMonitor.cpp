// The library's start: the device identifier, the shortcut setting, and
// the key and mouse monitors.

#include "keyboard/KeyEventMonitor.h"

#include <fmt/format.h>

#include <charconv>
#include <string>
#include <string_view>
#include <vector>

#include "bridge/Exports.h"
#include "bridge/HardwareUUID.h"
#include "bridge/MacroRunner.h"
#include "keyboard/KeyText.h"
#include "keyboard/ShortcutMappings.h"
#include "keyboard/ShortcutState.h"
#include "platform/Platform.h"

namespace velmora {

namespace {

constexpr std::uint64_t matchedModifiers =
    ModifierFlags::command | ModifierFlags::control | ModifierFlags::option | ModifierFlags::shift;

// One row of shortcutMappings in the form the handler compares, with the
// row's character lower-cased once instead of on every key press.
struct CompiledRow {
    const ShortcutMapping* row;
    std::uint64_t modifiers;
    bool hasCharacter;
    std::string character;
};

// Never destroyed, like the table it points into.
const std::vector<CompiledRow>& compiledRows() {
    static const auto& rows = *[] {
        auto* compiled = new std::vector<CompiledRow>;
        for (const auto& row : shortcutMappings()) {
            compiled->push_back({&row, row.modifiers.rawValue, row.character.has_value(),
                                 row.character ? lowercasedCharacters(*row.character) : std::string()});
        }
        return compiled;
    }();
    return rows;
}

void append(fmt::memory_buffer& out, std::string_view text) { out.append(text.data(), text.data() + text.size()); }

// The enabled state is inspectable from the moment it is first written.
// Registering again on each write is harmless and follows a replaced platform.
void registerShortcutStateInspector() {
    platform::registerInspector("shortcuts", [] {
        return std::vector<std::string>{ShortcutState::isEnabled.load() ? "shortcuts: enabled" : "shortcuts: disabled"};
    });
}

}  // namespace

void initializeEventMonitor() {
    platform::nslog("VL: initializeEventMonitor function called");
    // The global's first use runs the report tool and logs; the value stored
    // is a second run, without the log line.
    (void)globalHardwareUUID();
    setGlobalHardwareUUID(getHardwareUUID().value_or("UnknownUUID"));
    updateShortcutEnabledState();
    // Each call adds two more monitors; their tokens are not kept, so they
    // live as long as the process.
    platform::mainAsync([] {
        (void)platform::addLocalMonitor(keyDownMonitorMask.rawValue, handleKeyDown);
        (void)platform::addLocalMonitor(mouseUpMonitorMask.rawValue, handleMouseUp);
    });
}

void updateShortcutEnabledState() {
    registerShortcutStateInspector();
    ShortcutState::isEnabled = getEnableKeyboardShortcuts();
}

std::optional<platform::Event> handleKeyDown(const platform::Event& event) {
    if (!ShortcutState::isEnabled.load()) return event;

    const std::string typedCharacter =
        event.charactersIgnoringModifiers ? lowercasedCharacters(*event.charactersIgnoringModifiers) : std::string();
    const ModifierFlags eventModifiers = ModifierFlags{event.modifierFlags}.intersection(matchedModifiers);
    const std::uint16_t keyCode = event.keyCode;

    // Put together on the stack: this line is written for every key press.
    fmt::memory_buffer line;
    append(line, "VL: Detected typedCharacter: ");
    append(line, typedCharacter);
    append(line, ", keyCode: ");
    char digits[8];
    line.append(digits, std::to_chars(digits, digits + sizeof digits, keyCode).ptr);
    append(line, ", modifiers: ");
    appendModifierFlagsDescription(line, eventModifiers);
    platform::nslog(std::string_view(line.data(), line.size()));

    for (const auto& compiled : compiledRows()) {
        if (compiled.modifiers != eventModifiers.rawValue) continue;
        const bool characterMatches = compiled.hasCharacter && typedCharacter == compiled.character;
        const bool keyCodeMatches = compiled.row->keyCode && *compiled.row->keyCode == keyCode;
        if (!characterMatches && !keyCodeMatches) continue;

        const std::string& macroName = compiled.row->macroName;
        platform::nslog("VL: Matched shortcut for macro: " + macroName);
        platform::mainAsync([&macroName] {
            runPowerPointMacro(macroName);
            triggerRecommendationUpdateMacro();
        });
        return std::nullopt;
    }
    return event;
}

std::optional<platform::Event> handleMouseUp(const platform::Event& event) {
    platform::nslog("VL: Mouse button released");
    platform::mainAsyncAfter(0.3, [] { triggerRecommendationUpdateMacro(); });
    return event;
}

}  // namespace velmora
