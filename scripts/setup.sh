#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need, only those that
# are missing, and the German locale the number-formatting test switches to.
# Usage: scripts/setup.sh [--pages]   (--pages adds Chromium and Node for page tests)
set -euo pipefail

packages=(cmake ninja-build g++ pkg-config locales python3
  libfmt-dev nlohmann-json3-dev libsimdjson-dev libexpat1-dev libcurl4-openssl-dev
  libcpp-httplib-dev libcairo2-dev libicu-dev libgtest-dev libgmock-dev libbenchmark-dev
  clang-14 libclang-rt-14-dev lld-14 libgnustep-base-dev libgnustep-gui-dev valgrind)
if [[ "${1:-}" == "--pages" ]]; then
  packages+=(chromium nodejs npm)
fi

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
    # npm ships with some Node builds; do not ask for it when it is there.
    if [[ "$package" == npm ]] && command -v npm >/dev/null; then continue; fi
    missing+=("$package")
  fi
done

sudo=""
if [[ $(id -u) -ne 0 ]]; then sudo="sudo"; fi
if ((${#missing[@]})); then
  echo "Installing: ${missing[*]}"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

if ! locale -a 2>/dev/null | grep -qi '^de_DE\.utf-\?8$'; then
  $sudo localedef -i de_DE -f UTF-8 de_DE.UTF-8 || echo "warning: could not make the de_DE.UTF-8 locale" >&2
fi
