// The library's start: the device identifier, the shortcut setting, and
// the key and mouse monitors.

#include "keyboard/KeyEventMonitor.h"

#include <array>
#include <cstring>
#include <optional>
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
#include "support/Text.h"

namespace velmora {

namespace {

constexpr std::uint64_t matchedModifiers =
    ModifierFlags::command | ModifierFlags::control | ModifierFlags::option | ModifierFlags::shift;

// The four matched modifiers as a number from 0 to 15.
std::size_t modifierIndex(std::uint64_t modifiers) {
    return static_cast<std::size_t>((modifiers & matchedModifiers) >> 17);
}
static_assert(matchedModifiers >> 17 == 0xF, "shift, control, option and command are four neighbouring bits");

// A key character of up to eight bytes as one number, with its length.
struct PackedCharacter {
    std::uint64_t bytes = 0;
    std::size_t size = 0;
    bool operator==(const PackedCharacter&) const = default;
};

std::optional<PackedCharacter> packed(std::string_view text) {
    if (text.size() > sizeof(std::uint64_t)) return std::nullopt;
    PackedCharacter out;
    std::memcpy(&out.bytes, text.data(), text.size());
    out.size = text.size();
    return out;
}

// The rows of shortcutMappings grouped by their modifier set, each group in
// table order, with the row's character lower-cased and packed once instead
// of on every key press. A key press looks only at the rows of its own
// modifiers; the first of them whose character or key code matches wins,
// as the first of the whole table does.
struct CompiledRow {
    const ShortcutMapping* row;
    std::optional<PackedCharacter> character;
    std::optional<std::uint16_t> keyCode;
    std::optional<std::string> longCharacter;  // a character of more than eight bytes, as it is
};

struct ShortcutTable {
    std::array<std::vector<CompiledRow>, 16> byModifiers;
};

// Never destroyed, like the table it points into.
const ShortcutTable& shortcutTable() {
    static const auto& table = *[] {
        auto* compiled = new ShortcutTable;
        for (const auto& row : shortcutMappings()) {
            // A row whose modifiers hold anything beyond the four can match no key press.
            if ((row.modifiers.rawValue & ~matchedModifiers) != 0) continue;
            CompiledRow entry{&row, std::nullopt, row.keyCode, std::nullopt};
            if (row.character) {
                std::string lowered = lowercasedCharacters(*row.character);
                entry.character = packed(lowered);
                if (!entry.character) entry.longCharacter = std::move(lowered);
            }
            compiled->byModifiers[modifierIndex(row.modifiers.rawValue)].push_back(std::move(entry));
        }
        return compiled;
    }();
    return table;
}

const ShortcutMapping* matchingRow(std::uint64_t modifiers, std::string_view typed, std::uint16_t keyCode) {
    const std::optional<PackedCharacter> character = packed(typed);
    for (const auto& compiled : shortcutTable().byModifiers[modifierIndex(modifiers)]) {
        if (compiled.keyCode == keyCode || (character && compiled.character == character) ||
            (compiled.longCharacter && *compiled.longCharacter == typed)) {
            return compiled.row;
        }
    }
    return nullptr;
}

// A log line put together on the stack; a longer one than it holds (a key
// with a long text) moves to the heap.
class LineBuffer {
public:
    void put(std::string_view text) {
        if (!spill_.empty() || size_ + text.size() > sizeof stack_) {
            if (spill_.empty()) spill_.assign(stack_, size_);
            spill_.append(text);
            return;
        }
        std::memcpy(stack_ + size_, text.data(), text.size());
        size_ += text.size();
    }
    // What `writer` writes at the pointer it is given (64 bytes at most).
    template <typename Writer>
    void write(Writer writer) {
        char text[64];
        put(std::string_view(text, static_cast<std::size_t>(writer(text) - text)));
    }
    std::string_view view() const { return spill_.empty() ? std::string_view(stack_, size_) : std::string_view(spill_); }

private:
    char stack_[240];
    std::size_t size_ = 0;
    std::string spill_;
};

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

    // This line is written for every key press: put together on the stack.
    LineBuffer line;
    line.put("VL: Detected typedCharacter: ");
    line.put(typedCharacter);
    line.put(", keyCode: ");
    line.write([&](char* at) { return support::writeUnsigned(at, keyCode); });
    line.put(", modifiers: ");
    line.write([&](char* at) { return writeModifierFlagsDescription(at, eventModifiers); });
    platform::nslog(line.view());

    const ShortcutMapping* row = matchingRow(eventModifiers.rawValue, typedCharacter, keyCode);
    if (!row) return event;

    const std::string& macroName = row->macroName;
    LineBuffer matched;
    matched.put("VL: Matched shortcut for macro: ");
    matched.put(macroName);
    platform::nslog(matched.view());
    platform::mainAsync([&macroName] {
        runPowerPointMacro(macroName);
        triggerRecommendationUpdateMacro();
    });
    return std::nullopt;
}

std::optional<platform::Event> handleMouseUp(const platform::Event& event) {
    platform::nslog("VL: Mouse button released");
    platform::mainAsyncAfter(0.3, [] { triggerRecommendationUpdateMacro(); });
    return event;
}

}  // namespace velmora
