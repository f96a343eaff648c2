#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Library, examples and tests by other compilers than Debian 12's own, with warnings as errors; then the tests run, but for
# the camera's virtual machine. compilers.sh [COMPILER...]: clang++-14 and clang++-19 by default.
set -euo pipefail
cd "$(dirname "$0")/.."
[ $# -gt 0 ] || set -- clang++-14 clang++-19
scripts/setup.sh test "${@/++/}"

jobs=$(nproc)
for compiler; do
  echo "== $compiler: build ($SECONDS s)"
  build=build/compilers/$compiler
  cmake --preset release -B "$build" -DCMAKE_CXX_COMPILER="$compiler" -DKOVANTA_WERROR=ON \
    -DKOVANTA_BUILD_TESTS=ON -DKOVANTA_BUILD_EXAMPLES=ON >/dev/null
  cmake --build "$build" -j "$jobs" -- --quiet
  echo "== $compiler: tests ($SECONDS s)"
  ctest --test-dir "$build" -j "$jobs" -LE camera --output-on-failure
done
