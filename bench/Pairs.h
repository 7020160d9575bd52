// Benchmarks beside their lower bounds.
//
// Provides: PairSides, PairOptions, registerPair(), pairMain().
// A pair is a measured path and its lower bound on the same input, both made
// by one set-up that runs once, at the pair's first use. Each pair becomes
// two Google Benchmark runs: NAME, with the counter "x bound" (its wall time
// per iteration over the bound's, the bound timed in the same process just
// before the loop), and NAME/bound. The same pairs run under callgrind
// through `velmora_bench --pair=NAME --side=measured|bound [--reps=N]`
// (scripts/bench-ratios.sh): the set-up and one warm-up call of the side run
// first, and instructions are collected only around the N calls after them.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace velmora::bench {

struct PairSides {
    // Run before each benchmark of the pair and before a callgrind run:
    // puts back the platform the sides were made on (each file has its own).
    std::function<void()> enter;
    std::function<void()> measured;
    std::function<void()> bound;
    // Extra counters for the measured run (shapes/s, allocs, ...), given the
    // run's state after its loop.
    std::function<void(benchmark::State&)> counters;
};

struct PairOptions {
    benchmark::TimeUnit unit = benchmark::kMicrosecond;
    // Repetitions under callgrind: enough to drown one-off costs, few enough
    // to finish in seconds at callgrind's speed.
    int callgrindReps = 100;
};

// Registers the pair; call from a static initialiser of a benchmark file.
bool registerPair(const std::string& name, std::function<PairSides()> setUp, PairOptions options = {});

// The benchmark binary's main: the pair mode when asked for it, else Google
// Benchmark's own command line. `--list-pairs` prints "NAME REPS" lines.
int pairMain(int argc, char** argv);

}  // namespace velmora::bench
