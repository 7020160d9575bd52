#!/usr/bin/env bash
# The main job: install what is missing, build, and run the host simulator's tour.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake --preset default >/dev/null
cmake --build --preset default --target velmora-host
# Snapshots the tour writes land in the build folder.
cd build/default
exec tools/velmora-host/velmora-host "$@"
