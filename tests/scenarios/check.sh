#!/usr/bin/env bash
# Runs one scenario through the simulator and compares the transcript (and,
# for a scenario that must fail, the exit code and message) with what the
# .expected file beside it holds.
set -u
host=$1 scenario=$2
expected=${scenario%.scenario}.expected
actual=$(mktemp)
trap 'rm -f "$actual"' EXIT
cd "$(dirname "$scenario")" || exit 1
"$host" run "$(basename "$scenario")" >"$actual" 2>&1
echo "exit: $?" >>"$actual"
if ! diff -u "$expected" "$actual"; then
  echo "transcript differs from $expected" >&2
  exit 1
fi
