#!/usr/bin/env bash
# The check must fail on a type error in an adapter file: a copy of one file
# with a wrong assignment added is checked and must be refused, naming it.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
cp "$here/../../src/hosts/macos/MacFiles.mm" "$work/Broken.mm"
printf '\nstatic int brokenOnPurpose = @"a text, not a number";\n' >> "$work/Broken.mm"
if "$here/check.sh" "$work/Broken.mm" > "$work/out.txt" 2>&1; then
  echo "check_test: a type error passed the check" >&2
  cat "$work/out.txt" >&2
  exit 1
fi
if ! grep -q "Broken.mm:.*error: cannot initialize a variable of type 'int'" "$work/out.txt"; then
  echo "check_test: the check failed, but not on the type error" >&2
  cat "$work/out.txt" >&2
  exit 1
fi
echo "check_test: the type error was refused"
