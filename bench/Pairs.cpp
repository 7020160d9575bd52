#include "Pairs.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string_view>

#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#else
#define CALLGRIND_START_INSTRUMENTATION
#define CALLGRIND_STOP_INSTRUMENTATION
#define CALLGRIND_TOGGLE_COLLECT
#endif

namespace velmora::bench {

namespace {

struct Pair {
    std::function<PairSides()> setUp;
    PairOptions options;
    std::unique_ptr<PairSides> sides;  // made at first use

    PairSides& get() {
        if (!sides) sides = std::make_unique<PairSides>(setUp());
        return *sides;
    }
};

std::map<std::string, Pair>& pairs() {
    static auto* table = new std::map<std::string, Pair>;
    return *table;
}

using Clock = std::chrono::steady_clock;

// The fastest of a few timed batches of the bound, per call, in seconds.
double boundSeconds(const std::function<void()>& bound) {
    // One call to learn its size, then batches of about 20 ms.
    auto start = Clock::now();
    bound();
    const double once = std::chrono::duration<double>(Clock::now() - start).count();
    const int batch = std::clamp(static_cast<int>(0.02 / std::max(once, 1e-9)), 1, 1000000);
    double best = 1e9;
    for (int run = 0; run < 5; ++run) {
        start = Clock::now();
        for (int i = 0; i < batch; ++i) bound();
        best = std::min(best, std::chrono::duration<double>(Clock::now() - start).count() / batch);
    }
    return best;
}

bool startsWith(std::string_view text, std::string_view prefix) { return text.substr(0, prefix.size()) == prefix; }

}  // namespace

bool registerPair(const std::string& name, std::function<PairSides()> setUp, PairOptions options) {
    pairs()[name] = Pair{std::move(setUp), options, nullptr};
    benchmark::RegisterBenchmark(name.c_str(), [name](benchmark::State& state) {
        PairSides& sides = pairs().at(name).get();
        if (sides.enter) sides.enter();
        const double bound = boundSeconds(sides.bound);
        const auto start = Clock::now();
        for (auto _ : state) sides.measured();
        const double loop = std::chrono::duration<double>(Clock::now() - start).count();
        const double each = loop / static_cast<double>(std::max<benchmark::IterationCount>(1, state.iterations()));
        state.counters["x bound"] = each / bound;
        state.counters["bound us"] = bound * 1e6;
        if (sides.counters) sides.counters(state);
    })->Unit(options.unit)->UseRealTime();
    benchmark::RegisterBenchmark((name + "/bound").c_str(), [name](benchmark::State& state) {
        PairSides& sides = pairs().at(name).get();
        if (sides.enter) sides.enter();
        for (auto _ : state) sides.bound();
    })->Unit(options.unit)->UseRealTime();
    return true;
}

int pairMain(int argc, char** argv) {
    std::string pair, side;
    int reps = 0;
    bool list = false;
    for (int i = 1; i < argc; ++i) {
        const std::string_view arg = argv[i];
        if (startsWith(arg, "--pair=")) pair = arg.substr(7);
        else if (startsWith(arg, "--side=")) side = arg.substr(7);
        else if (startsWith(arg, "--reps=")) reps = std::atoi(argv[i] + 7);
        else if (arg == "--list-pairs") list = true;
    }
    if (list) {
        for (const auto& [name, entry] : pairs()) std::printf("%s %d\n", name.c_str(), entry.options.callgrindReps);
        return 0;
    }
    if (pair.empty()) {
        benchmark::Initialize(&argc, argv);
        if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
        benchmark::RunSpecifiedBenchmarks();
        benchmark::Shutdown();
        return 0;
    }
    auto found = pairs().find(pair);
    if (found == pairs().end() || (side != "measured" && side != "bound")) {
        std::fprintf(stderr, "usage: velmora_bench --pair=NAME --side=measured|bound [--reps=N] (--list-pairs)\n");
        return 2;
    }
    PairSides& sides = found->second.get();
    if (sides.enter) sides.enter();
    const std::function<void()>& run = side == "measured" ? sides.measured : sides.bound;
    if (reps <= 0) reps = found->second.options.callgrindReps;
    // The set-up ran uninstrumented (--instr-atstart=no); the warm-up call
    // fills lazy tables, thread-local parsers and caches and is not counted.
    CALLGRIND_START_INSTRUMENTATION;
    run();
    CALLGRIND_TOGGLE_COLLECT;
    for (int i = 0; i < reps; ++i) run();
    CALLGRIND_TOGGLE_COLLECT;
    CALLGRIND_STOP_INSTRUMENTATION;
    std::printf("%s %s %d\n", pair.c_str(), side.c_str(), reps);
    return 0;
}

}  // namespace velmora::bench

int main(int argc, char** argv) { return velmora::bench::pairMain(argc, argv); }
