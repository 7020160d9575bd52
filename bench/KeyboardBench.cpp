// The key-down handler per event beside its bound: one hash lookup of (key
// code, modifier flags) in a table of the shortcut rows, plus the line
// logged for every key built into a reused buffer (from the event's
// characters as they come) and handed to the same log. The log discards and the main queue drops what is posted, so
// only the handler's own work is measured. "allocs" counts heap
// allocations per event on the measured thread.

#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdlib>
#include <memory>
#include <new>
#include <unordered_map>

#include <fmt/format.h>

#include "Pairs.h"
#include "fake/FakePlatform.h"
#include "keyboard/KeyEventMonitor.h"
#include "keyboard/KeyText.h"
#include "keyboard/ModifierFlags.h"
#include "keyboard/ShortcutMappings.h"
#include "keyboard/ShortcutState.h"

namespace {

thread_local std::size_t allocations = 0;

}  // namespace

// Counting replacements; weak, so another benchmark file's own replacement wins.
__attribute__((weak)) void* operator new(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size ? size : 1)) return memory;
    throw std::bad_alloc();
}
__attribute__((weak)) void operator delete(void* memory) noexcept { std::free(memory); }
__attribute__((weak)) void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace velmora {
namespace {

class DiscardingLog : public platform::LogPort {
public:
    void nslog(std::string_view text) override { benchmark::DoNotOptimize(text.data()); }
    void print(std::string_view) override {}
    void logger(std::string_view, std::string_view, platform::LogLevel, std::string_view) override {}
};

class DroppingDispatch : public platform::DispatchPort {
public:
    void mainAsync(platform::Task) override {}
    void mainAsyncAfter(double, platform::Task) override {}
    void globalAsync(platform::QualityOfService, platform::Task) override {}
    bool isMainThread() const override { return true; }
};

void installKeyboardPlatform() {
    static const auto* ports = [] {
        auto* fake = new testing::FakePlatform();  // lives for the process
        auto* made = new std::shared_ptr<platform::Platform>(fake->ports());
        (*made)->log = std::make_shared<DiscardingLog>();
        (*made)->dispatch = std::make_shared<DroppingDispatch>();
        return made;
    }();
    platform::install(*ports);
}

constexpr std::uint64_t control = 0x40000, command = 0x100000, function = 0x800000, numericPad = 0x200000;
constexpr std::uint64_t matchedModifiers =
    ModifierFlags::shift | ModifierFlags::control | ModifierFlags::option | ModifierFlags::command;

std::uint64_t keyOf(std::uint16_t keyCode, std::uint64_t modifiers) {
    return (static_cast<std::uint64_t>(keyCode) << 32) | (modifiers & matchedModifiers);
}

bench::PairSides keyDown(platform::Event event, bool enabled) {
    installKeyboardPlatform();
    struct State {
        platform::Event event;
        bool enabled;
        std::size_t allocated = 0, calls = 0;
        std::unordered_map<std::uint64_t, const ShortcutMapping*> table;
        fmt::memory_buffer line;
    };
    auto state = std::make_shared<State>();
    state->event = std::move(event);
    state->enabled = enabled;
    for (const auto& row : shortcutMappings()) {
        if (row.keyCode) state->table.emplace(keyOf(*row.keyCode, row.modifiers.rawValue), &row);
    }
    bench::PairSides sides;
    sides.enter = [state] {
        installKeyboardPlatform();
        ShortcutState::isEnabled = state->enabled;
    };
    sides.measured = [state] {
        const std::size_t before = allocations;
        auto result = handleKeyDown(state->event);
        benchmark::DoNotOptimize(result);
        state->allocated += allocations - before;
        ++state->calls;
    };
    sides.bound = [state] {
        const auto& event = state->event;
        auto hit = state->table.find(keyOf(event.keyCode, event.modifierFlags));
        benchmark::DoNotOptimize(hit);
        // The line as the handler writes it, from fixed parts and digits.
        auto& line = state->line;
        line.clear();
        constexpr std::string_view detected = "VL: Detected typedCharacter: ", code = ", keyCode: ",
                                   modifiers = ", modifiers: ";
        const std::string_view typed =
            event.charactersIgnoringModifiers ? std::string_view(*event.charactersIgnoringModifiers) : std::string_view();
        line.append(detected.data(), detected.data() + detected.size());
        line.append(typed.data(), typed.data() + typed.size());
        line.append(code.data(), code.data() + code.size());
        char digits[8];
        line.append(digits, std::to_chars(digits, digits + sizeof digits, event.keyCode).ptr);
        line.append(modifiers.data(), modifiers.data() + modifiers.size());
        char modifiersText[maxModifierFlagsDescriptionLength];
        const char* modifiersEnd =
            writeModifierFlagsDescription(modifiersText, ModifierFlags{event.modifierFlags & matchedModifiers});
        line.append(modifiersText, modifiersEnd);
        platform::nslog(std::string_view(state->line.data(), state->line.size()));
    };
    sides.counters = [state](benchmark::State& run) {
        run.counters["allocs"] = state->calls ? static_cast<double>(state->allocated) / state->calls : 0;
        state->allocated = state->calls = 0;
        ShortcutState::isEnabled = true;
    };
    return sides;
}

const bench::PairOptions perEvent{benchmark::kNanosecond, 20000};
const bool keyPairs =
    bench::registerPair("key_down/no_match_plain_letter",
                        [] { return keyDown({platform::EventType::keyDown, 0x100, "a", 0}, true); }, perEvent) &&
    bench::registerPair("key_down/no_match_command_s",
                        [] { return keyDown({platform::EventType::keyDown, command | 0x108, "s", 1}, true); }, perEvent) &&
    bench::registerPair("key_down/match_first_row",
                        [] {
                            return keyDown({platform::EventType::keyDown,
                                            control | command | function | numericPad | 0x109, "\uF701", 125},
                                           true);
                        },
                        perEvent) &&
    bench::registerPair("key_down/match_last_row",
                        [] { return keyDown({platform::EventType::keyDown, control | 0x101, "m", 46}, true); }, perEvent);

// With shortcuts off the handler returns at once; no bound to speak of.
void BM_KeyDown_Disabled(benchmark::State& state) {
    auto sides = keyDown({platform::EventType::keyDown, control | 0x101, "m", 46}, false);
    sides.enter();
    for (auto _ : state) sides.measured();
    ShortcutState::isEnabled = true;
}
BENCHMARK(BM_KeyDown_Disabled);

}  // namespace
}  // namespace velmora
