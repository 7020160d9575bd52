#!/usr/bin/env bash
# With --stderr-log the library's lines reach both the transcript and stderr:
# a plain line and a leveled one, each with the platform's stamp on stderr.
set -u
host=$1 scenarios=$2
out=$(mktemp) err=$(mktemp)
trap 'rm -f "$out" "$err"' EXIT
cd "$scenarios" || exit 1
"$host" --stderr-log run templates_sync.scenario >"$out" 2>"$err" || { echo "the run failed" >&2; exit 1; }
status=0
for line in 'Slide Library: 🟢 Dylib loaded successfully' \
            '[com.velmora.TemplateLibrary:Thumbnail] <error> Thumbnail download failed for tpl-0003'; do
  transcript=${line/\] <error>/ error]}
  grep -qF "log: $transcript" "$out" || { echo "not in the transcript: $transcript" >&2; status=1; }
  grep -qE "VelmoraMac\[[0-9]+:[0-9]+\] .*$(printf '%s' "$line" | sed 's/[][\.*^$]/\\&/g')" "$err" ||
    { echo "not on stderr: $line" >&2; status=1; }
done
exit $status
