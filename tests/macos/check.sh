#!/usr/bin/env bash
# Compiles every Objective-C++ file of the macOS adapter (src/hosts/macos)
# with clang, syntax only and warnings as errors, against GNUstep's
# Foundation and AppKit headers plus the declaration shims in shims/ for
# what GNUstep lacks. Run from anywhere; exits non-zero on the first file
# that fails, after checking them all.
#
#   tests/macos/check.sh [FILE.mm ...]    default: every .mm of src/hosts/macos
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
root="$(cd "$here/../.." && pwd)"
clang="${VELMORA_CHECK_CLANG:-clang++-14}"
gnustep=/usr/include/GNUstep

command -v "$clang" >/dev/null || { echo "macos-check: $clang not found (scripts/setup.sh installs it)" >&2; exit 2; }
[[ -f $gnustep/AppKit/AppKit.h ]] || { echo "macos-check: no GNUstep headers in $gnustep (scripts/setup.sh installs them)" >&2; exit 2; }

files=("$@")
if ((${#files[@]} == 0)); then
  mapfile -t files < <(find "$root/src/hosts/macos" -name '*.mm' | sort)
fi
((${#files[@]})) || { echo "macos-check: no .mm files" >&2; exit 2; }

flags=(-fsyntax-only -x objective-c++ -std=c++20 -Wall -Wextra -Werror -ferror-limit=0
  # The platform's runtime and memory model: ARC, blocks, weak references.
  -fobjc-runtime=gnustep-2.0 -fobjc-arc -fblocks
  -DGNUSTEP -DGNUSTEP_BASE_LIBRARY=1 -DGNU_GUI_LIBRARY=1 -DGNU_RUNTIME=1
  # Shims first, so they stand in for the runtime and the frameworks GNUstep lacks.
  -isystem "$here/shims" -isystem "$gnustep"
  -include "$here/shims/PlatformAdditions.h"
  -I "$root/src")

failed=0
for file in "${files[@]}"; do
  if ! "$clang" "${flags[@]}" "$file"; then
    echo "macos-check: FAILED $file" >&2
    failed=1
  fi
done
if ((failed == 0)); then
  echo "macos-check: ${#files[@]} files of src/hosts/macos compile (Objective-C++, ARC, -Werror)"
fi
exit "$failed"
