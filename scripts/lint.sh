#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# What no test program sees: formatting, shell scripts, documentation, clang-tidy. lint.sh [CHECK...] with the checks
# format, shell, docs and tidy; all of them by default. tidy reads the commands of a release build.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh clang-format clang-tidy doxygen git shellcheck

format() {
  git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run --Werror
}

shell() {
  git ls-files '*.sh' .ci/run | xargs shellcheck
}

# Every warning is an error, and every picture that a page shows is there.
docs() {
  local html=build/docs/html lost=0 picture
  rm -rf build/docs
  mkdir -p build/docs
  { cat docs/Doxyfile && echo "WARN_AS_ERROR = FAIL_ON_WARNINGS"; } | doxygen - || return 1
  while read -r picture; do
    [ -s "$html/$picture" ] || { echo "lint: no picture $picture"; lost=1; }
  done < <({
    git ls-files '*.md' | grep -E '^(README|docs/)' | xargs grep -ohE '!\[[^]]*\]\([^)]*\)' | sed -E 's/.*\((.*)\)/\1/; s|.*/||'
    grep -ohE '(src|data)="[^"]*\.(png|svg)"' "$html"/*.html | sed -E 's/.*="(.*)"/\1/'
  } | sort -u)
  return $lost
}

tidy() {
  [ -f build/release/compile_commands.json ] || cmake --preset release >/dev/null
  git ls-files 'src/*.cpp' | xargs -P "$(nproc)" -n 1 clang-tidy --quiet --warnings-as-errors='*' -p build/release \
    --extra-arg=-Wno-unknown-warning-option \
    2> >(grep -v 'warnings generated' >&2)
}

[ $# -gt 0 ] || set -- format shell docs tidy
failed=()
for check in "$@"; do
  echo "lint: $check"
  "$check" || failed+=("$check")
done
[ ${#failed[@]} -eq 0 ] || { echo "lint: failed: ${failed[*]}" >&2; exit 1; }
