#!/usr/bin/env bash
# Instruction counts of every benchmark pair under callgrind: the measured
# path and its lower bound on the same input (bench/Pairs.h), per call, and
# their ratio. Unlike wall times these do not swing with the machine's load.
#
#   scripts/bench-ratios.sh [PAIR ...]     default: every pair of velmora_bench --list-pairs
#
# Builds the default preset's benchmark binary first. Each side runs in its
# own process: the set-up and one warm-up call uninstrumented or not
# counted, then REPS calls counted (REPS per pair, from --list-pairs).
set -euo pipefail
cd "$(dirname "$0")/.."
command -v valgrind >/dev/null || { echo "bench-ratios: needs valgrind (scripts/setup.sh installs it)" >&2; exit 2; }

cmake --preset default >/dev/null
flock /tmp/velmora-build-default.lock cmake --build --preset default -j "$(nproc)" --target velmora_bench >/dev/null
bench=build/default/bench/velmora_bench
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

declare -A reps=()
order=()
while read -r name count; do
  reps[$name]=$count
  order+=("$name")
done < <("$bench" --list-pairs)
if (($#)); then order=("$@"); fi

# Instructions counted in one side's run, per call.
count() {
  local pair=$1 side=$2 n=$3 out="$work/callgrind.out"
  rm -f "$out"
  valgrind --tool=callgrind --instr-atstart=no --collect-atstart=no --callgrind-out-file="$out" \
    "$bench" --pair="$pair" --side="$side" --reps="$n" >/dev/null 2>"$work/valgrind.log" ||
    { echo "bench-ratios: $pair $side failed:" >&2; tail -5 "$work/valgrind.log" >&2; return 1; }
  local total
  total=$(awk '/^totals:/ { print $2; exit }' "$out")
  echo $((total / n))
}

printf '%-34s %6s %14s %14s %7s\n' pair calls "measured Ir" "bound Ir" ratio
for pair in "${order[@]}"; do
  n=${reps[$pair]:-}
  [[ -n "$n" ]] || { echo "bench-ratios: no pair $pair" >&2; exit 2; }
  measured=$(count "$pair" measured "$n")
  bound=$(count "$pair" bound "$n")
  ratio=$(awk -v a="$measured" -v b="$bound" 'BEGIN { printf "%.2f", b ? a / b : 0 }')
  printf '%-34s %6d %14d %14d %6sx\n' "$pair" "$n" "$measured" "$bound" "$ratio"
done
