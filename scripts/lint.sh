#!/usr/bin/env bash
# Checks the formatting of all C++ sources and, with --tidy, runs clang-tidy over the library (needs a release build).
set -euo pipefail
cd "$(dirname "$0")/.."
command -v clang-format >/dev/null || { echo "lint: clang-format is not installed" >&2; exit 1; }
git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run --Werror
if [ "${1:-}" = --tidy ]; then
  git ls-files 'src/*.cpp' | xargs -P "$(nproc)" -n 1 clang-tidy --quiet -p build/release
fi
