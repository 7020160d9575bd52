#!/usr/bin/env bash
# Every test: install what is missing, then build and run
#   1. all tests (unit, threaded, scenarios, the tour) in the default build,
#   2. the unit and scenario tests under AddressSanitizer + UndefinedBehaviorSanitizer
#      (a clang build), then each fuzz target of that build for a few seconds,
#      and fault injection at every port in that build,
#   3. the threaded and scenario tests under ThreadSanitizer,
#   4. the page tests in headless Chromium,
#   5. the benchmarks, once each, briefly, so they keep building and running.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh --pages
jobs=$(nproc)

step() { printf '\n==> %s\n' "$*"; }

# Runs a test command, shows its output, and adds the number it passed to the total.
passed=0
log=$(mktemp)
trap 'rm -f "$log"' EXIT
counted() {
  "$@" 2>&1 | tee "$log"
  local status=${PIPESTATUS[0]}
  ((status == 0)) || exit "$status"
  local n
  n=$(sed -n -e 's/.*tests passed, 0 tests failed out of \([0-9]*\).*/\1/p' -e 's/^# pass \([0-9]*\)$/\1/p' "$log" | tail -n 1)
  passed=$((passed + ${n:-0}))
}

step "default build"
cmake --preset default >/dev/null
cmake --build --preset default -j "$jobs"
counted ctest --preset default -j "$jobs"

step "AddressSanitizer + UndefinedBehaviorSanitizer"
# A folder configured with another compiler starts afresh: on a changed
# compiler CMake drops the cache and with it the preset's other values.
fresh=()
if [[ -f build/asan/CMakeCache.txt ]] && ! grep -q '^CMAKE_CXX_COMPILER:.*clang' build/asan/CMakeCache.txt; then
  fresh=(--fresh)
fi
cmake --preset asan "${fresh[@]}" >/dev/null
cmake --build --preset asan -j "$jobs"
counted ctest --preset asan -j "$jobs" -L 'unit|scenario'
step "fuzz targets (kept findings and seeds replayed, then 3 s each)"
scripts/fuzz.sh --build-dir build/asan --brief 3
step "fault injection at every port (one line per port: faults injected, survived)"
python3 tests/faults/run.py --host build/asan/tools/velmora-host/velmora-host --jobs 2 \
  --report build/asan/faults-report.txt

step "ThreadSanitizer"
cmake --preset tsan >/dev/null
cmake --build --preset tsan -j "$jobs"
counted ctest --preset tsan -j "$jobs" -L 'threaded|scenario'

if [[ -f tests/pages/package.json ]]; then
  step "page tests in headless Chromium"
  (cd tests/pages && npm ci --no-audit --no-fund --silent)
  mkdir -p build/default/pages
  export VELMORA_HOST="$PWD/build/default/tools/velmora-host/velmora-host"
  export VELMORA_ARTIFACTS="$PWD/build/default/pages"
  counted node --test tests/pages/
fi

if [[ -x build/default/bench/velmora_bench ]]; then
  step "benchmarks (smoke run)"
  build/default/bench/velmora_bench --benchmark_min_time=0.01 >/dev/null
fi

step "all tests passed"
echo "$passed passed, 0 failed"
