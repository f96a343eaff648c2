#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Builds and runs every test: release, lint, address and undefined-behaviour sanitizers, thread sanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh

jobs=$(nproc)
options=(-DKOVANTA_BUILD_TESTS=ON -DKOVANTA_BUILD_EXAMPLES=ON)
[ "${CI:-}" = true ] && options+=(-DKOVANTA_WERROR=ON)

# quiet COMMAND...: its output only when it fails.
quiet() {
  local log
  log=$(mktemp)
  if ! "$@" >"$log" 2>&1; then
    cat "$log"
    rm -f "$log"
    return 1
  fi
  rm -f "$log"
}

stage() { printf '\n== %s (%d s)\n' "$1" "$SECONDS"; }

stage "release: build"
quiet cmake --preset release "${options[@]}"
quiet cmake --build --preset release -j "$jobs"
stage "release: tests"
ctest --preset release -j "$jobs"

stage "lint"
scripts/lint.sh

stage "address and undefined-behaviour sanitizers: build"
quiet cmake --preset asan+ubsan "${options[@]}"
quiet cmake --build --preset asan+ubsan -j "$jobs"
stage "address and undefined-behaviour sanitizers: tests"
ctest --preset asan+ubsan -j "$jobs" -LE release-only

stage "thread sanitizer: build"
quiet cmake --preset tsan "${options[@]}" -DKOVANTA_BUILD_EXAMPLES=OFF
quiet cmake --build --preset tsan -j "$jobs" --target threaded_tests
stage "thread sanitizer: tests"
# The sanitizer's memory map needs less address randomisation than some kernels have.
setarch=()
setarch "$(uname -m)" -R true 2>/dev/null && setarch=(setarch "$(uname -m)" -R)
"${setarch[@]}" ctest --preset tsan -j "$jobs" -L threaded

printf '\nAll tests passed in %d s.\n' "$SECONDS"
