// The key-down handler per event, with a log that discards and a main queue
// that drops what is posted, so only the handler's own work is measured.
// "allocs" counts heap allocations per event on the measured thread.

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "fake/FakePlatform.h"
#include "keyboard/KeyEventMonitor.h"
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
    static const bool installed = [] {
        auto* fake = new testing::FakePlatform();  // lives for the process
        fake->install();
        auto ports = std::make_shared<platform::Platform>(platform::get());
        ports->log = std::make_shared<DiscardingLog>();
        ports->dispatch = std::make_shared<DroppingDispatch>();
        platform::install(ports);
        return true;
    }();
    (void)installed;
}

constexpr std::uint64_t control = 0x40000, command = 0x100000, function = 0x800000, numericPad = 0x200000;

void runHandler(benchmark::State& state, const platform::Event& event, bool enabled) {
    installKeyboardPlatform();
    ShortcutState::isEnabled = enabled;
    benchmark::DoNotOptimize(handleKeyDown(event));  // builds the table outside the timing
    const std::size_t before = allocations;
    for (auto _ : state) {
        auto result = handleKeyDown(event);
        benchmark::DoNotOptimize(result);
    }
    state.counters["allocs"] =
        benchmark::Counter(static_cast<double>(allocations - before), benchmark::Counter::kAvgIterations);
    ShortcutState::isEnabled = true;
}

void BM_KeyDown_NoMatch_PlainLetter(benchmark::State& state) {
    runHandler(state, {platform::EventType::keyDown, 0x100, "a", 0}, true);
}
void BM_KeyDown_NoMatch_CommandS(benchmark::State& state) {
    runHandler(state, {platform::EventType::keyDown, command | 0x108, "s", 1}, true);
}
void BM_KeyDown_Match_FirstRow(benchmark::State& state) {
    runHandler(state, {platform::EventType::keyDown, control | command | function | numericPad | 0x109, "\uF701", 125},
               true);
}
void BM_KeyDown_Match_LastRow(benchmark::State& state) {
    runHandler(state, {platform::EventType::keyDown, control | 0x101, "m", 46}, true);
}
void BM_KeyDown_Disabled(benchmark::State& state) {
    runHandler(state, {platform::EventType::keyDown, control | 0x101, "m", 46}, false);
}

BENCHMARK(BM_KeyDown_NoMatch_PlainLetter);
BENCHMARK(BM_KeyDown_NoMatch_CommandS);
BENCHMARK(BM_KeyDown_Match_FirstRow);
BENCHMARK(BM_KeyDown_Match_LastRow);
BENCHMARK(BM_KeyDown_Disabled);

}  // namespace
}  // namespace velmora
