#!/usr/bin/env bash
# Runs every libFuzzer target (tests/fuzz) for SECONDS each, one after
# another in one process each, and prints a line per target with its
# executions and coverage (libFuzzer's cov: and ft: at the end of the run).
# Before fuzzing, each target replays its kept findings (tests/fuzz/
# regressions/NAME) and its seeds (tests/fuzz/seeds/NAME). Exits non-zero on
# a finding: libFuzzer keeps the input in the build folder's fuzz-findings/.
#
#   scripts/fuzz.sh [SECONDS]           the fuzz preset's optimised build (built first), 60 s a target;
#                                       new inputs gather in build/fuzz/fuzz-corpus/NAME between runs
#   scripts/fuzz.sh --fresh [SECONDS]   the same from the seeds alone (the corpus is emptied first)
#   scripts/fuzz.sh --build-dir DIR --brief SECONDS
#                                       targets already built in DIR, a short run each from the
#                                       seeds with a bound on runs too (what scripts/test.sh does)
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=60
build=""
brief=false
fresh=false
while (($#)); do
  case "$1" in
    --build-dir) build="$2"; shift 2 ;;
    --brief) brief=true; shift ;;
    --fresh) fresh=true; shift ;;
    [0-9]*) seconds="$1"; shift ;;
    *) echo "usage: scripts/fuzz.sh [--fresh] [SECONDS] | --build-dir DIR --brief SECONDS" >&2; exit 2 ;;
  esac
done

if [[ -z "$build" ]]; then
  build=build/fuzz
  cmake --preset fuzz >/dev/null
  flock /tmp/velmora-build-fuzz.lock cmake --build --preset fuzz -j "$(nproc)"
fi
list="$build/fuzz-targets.txt"
if [[ ! -f "$list" ]]; then
  echo "fuzz: no $list; configure with VELMORA_FUZZ=ON (the asan and fuzz presets do)" >&2
  exit 2
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
findings="$build/fuzz-findings"
logs="$build/fuzz-logs"
mkdir -p "$findings" "$logs"
# Sanitizer reports with their stacks; a report ends the run.
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
export ASAN_OPTIONS="${ASAN_OPTIONS:-abort_on_error=1}"

failed=()
printf '%-18s %12s %9s %7s %7s %8s\n' target executions exec/s cov ft corpus
while read -r name program dictionary; do
  [[ -n "$name" ]] || continue
  log="$logs/$name.log"
  options=(-timeout=25 -rss_limit_mb=2048 -print_final_stats=1 "-artifact_prefix=$findings/$name-")
  [[ "$dictionary" != "-" ]] && options+=("-dict=$dictionary")

  # The kept findings and the seeds, each run once.
  replay=()
  for folder in "tests/fuzz/regressions/$name" "tests/fuzz/seeds/$name"; do
    [[ -d "$folder" ]] && while IFS= read -r -d '' file; do replay+=("$file"); done < <(find "$folder" -type f -print0 | sort -z)
  done
  if ((${#replay[@]})) && ! "$program" "${options[@]}" "${replay[@]}" >"$log" 2>&1; then
    echo "$name: a kept input fails again (see $log)"
    tail -n 30 "$log"
    failed+=("$name")
    continue
  fi

  if $brief; then
    corpus="$work/$name"
    bound=(-runs=200000)
  else
    corpus="$build/fuzz-corpus/$name"
    $fresh && rm -rf "$corpus"
    bound=()
  fi
  mkdir -p "$corpus"
  seeds=()
  [[ -d "tests/fuzz/seeds/$name" ]] && seeds=("tests/fuzz/seeds/$name")
  if ! "$program" "${options[@]}" "${bound[@]}" "-max_total_time=$seconds" "$corpus" "${seeds[@]}" >"$log" 2>&1; then
    echo "$name: FINDING (see $log; the input is in $findings/)"
    grep -E '^(==[0-9]+==ERROR|SUMMARY|fuzz finding|.*runtime error)' "$log" | head -n 5 || true
    failed+=("$name")
    continue
  fi
  done_line=$(grep -E '^#[0-9]+[[:space:]]+DONE' "$log" | tail -n 1)
  field() { sed -n -e "s|.* $1: \([^ ]*\).*|\1|p" <<<"$done_line"; }
  executions=$(sed -n -e 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
  printf '%-18s %12s %9s %7s %7s %8s\n' "$name" "${executions:-?}" "$(field exec/s)" "$(field cov)" "$(field ft)" \
    "$(field corp | cut -d/ -f1)"
done <"$list"

if ((${#failed[@]})); then
  echo "fuzz: findings or failing kept inputs in: ${failed[*]}" >&2
  exit 1
fi
echo "fuzz: no findings"
