#!/usr/bin/env bash
# The library's resident cost in the host: the simulator's peak resident
# set with every pane and window open, less a run that only loads the
# library, each the median of five runs; then what loading the library
# alone adds to a process (its own pages and the libraries it pulls in).
#
#   scripts/rss.sh      (uses build/default; builds it first)
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset default >/dev/null
flock /tmp/velmora-build-default.lock cmake --build --preset default -j "$(nproc)" --target velmora-host >/dev/null
host=build/default/tools/velmora-host/velmora-host
library=$(ls build/default/src/libVelmoraMac_*.so)
work=$(mktemp -d)
host=$(realpath "$host")
library=$(realpath "$library")
trap 'rm -rf "$work"' EXIT

printf '# loads the library and nothing else\n' > "$work/none.scenario"
cat > "$work/all.scenario" <<'SCENARIO'
call initializeEventMonitor
open assistant
open shortcuts
open icons
open images
open color
open slidelibrary
open templates
call initializeTablesOverlay 3 4 true false true false false
call initializeLinesOverlay
call initializeTaggingOverlay Slides.pptx
call initializeFreeTrialOverlay
SCENARIO

# Median peak resident set, in KB, of five runs of a command.
peak() {
  for _ in 1 2 3 4 5; do
    /usr/bin/time -f '%M' "$@" 2>&1 >/dev/null | tail -1
  done | sort -n | sed -n 3p
}

# The simulator leaves its snapshots in the folder it runs in.
cd "$work"
none=$(peak "$host" run "$work/none.scenario")
all=$(peak "$host" run "$work/all.scenario")
echo "simulator, library loaded only:        ${none} KB"
echo "simulator, every pane and window open:  ${all} KB"
echo "the library's cost with everything open: $((all - none)) KB"

if command -v python3 >/dev/null; then
  bare=$(peak python3 -c 'import ctypes')
  loaded=$(peak python3 -c "import ctypes; ctypes.CDLL('$library')")
  curl=$(peak python3 -c "import ctypes; ctypes.CDLL('libcurl.so.4')")
  echo "loading the library into a process:      $((loaded - bare)) KB (libcurl and its stack alone: $((curl - bare)) KB)"
fi
