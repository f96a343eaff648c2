#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# What no test program sees: formatting, licences, shell scripts, documentation, clang-tidy. lint.sh [CHECK...] with the
# checks format, licence, shell, docs and tidy; all of them by default. tidy reads the commands of a release build.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh test clang-format clang-tidy doxygen git shellcheck

# judges PROGRAM: whether this clang program is of the version whose opinion holds. They differ from one to the next.
judges() {
  [[ $("$1" --version) == *"version 14."* ]] || { echo "lint: LEFT OUT, since $1 is not Debian 12's (14)"; return 1; }
}

format() {
  judges clang-format || return 0
  git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run --Werror
}

shell() {
  git ls-files '*.sh' .ci/run | xargs shellcheck
}

# A line that names the licence stands in every source. Data (media, corpora, tables) and pages have none.
licence() {
  local lost
  lost=$(git ls-files '*.cpp' '*.h' '*.sh' '*.py' '*.cmake' '*CMakeLists.txt' .ci/run docs/Doxyfile |
    xargs grep -L 'SPDX-License-Identifier: BSD-2-Clause' || true)
  [ -z "$lost" ] || { echo "lint: no licence in $lost"; return 1; }
}

# Every warning is an error; every picture that a page shows is there, every link between pages leads somewhere, every
# function, enumeration and piece of data of the interface has its place in an area, and every header that stands for
# itself is named where a reader looks for it.
docs() {
  local html=build/docs/html lost=0 picture name areas page
  rm -rf build/docs
  mkdir -p build/docs
  { cat docs/Doxyfile && echo "WARN_AS_ERROR = FAIL_ON_WARNINGS"; } | doxygen - || return 1
  while read -r picture; do
    [ -s "$html/$picture" ] || { echo "lint: no picture $picture"; lost=1; }
  done < <({
    git ls-files '*.md' | grep -E '^(README|docs/)' | xargs grep -ohE '!\[[^]]*\]\([^)]*\)' | sed -E 's/.*\((.*)\)/\1/; s|.*/||'
    grep -ohE '(src|data)="[^"]*\.(png|svg)"' "$html"/*.html | sed -E 's/.*="(.*)"/\1/'
  } | sort -u)
  ! grep -oE 'href="[^":]*\.md[^"]*"' "$html"/*.html || { echo "lint: links that lead nowhere"; lost=1; }
  areas=$(awk '/<compound kind="group">/ { inside = 1 } /<\/compound>/ { inside = 0 } inside' build/docs/kovanta.tag)
  while read -r name; do
    # Newer versions of doxygen name the namespace as well.
    grep -qE "<name>(Ko::)?$name</name>" <<<"$areas" || { echo "lint: $name is in no area"; lost=1; }
  done < <({
    echo convertIm
    sed -E 's/[[(].*//; s/^Ko:://' tests/package/exports.txt | grep -vE '::| '
    grep -ohE '^enum [A-Za-z_]+' include/Kovanta/*.h | cut -c6-
  } | sort -u)
  while read -r name; do
    for page in README.md docs/site/front.md; do
      grep -qE "\`(Kovanta/)?$name\`" "$page" || { echo "lint: $page does not name $name"; lost=1; }
    done
  done < <(sed -nE 's|^#include "Kovanta/(.*)"$|\1|p' include/Kovanta/Kovanta.h)
  return $lost
}

tidy() {
  judges clang-tidy || return 0
  [ -f build/release/compile_commands.json ] || cmake --preset release >/dev/null
  git ls-files 'src/*.cpp' | xargs -P "$(nproc)" -n 1 clang-tidy --quiet --warnings-as-errors='*' -p build/release \
    --extra-arg=-Wno-unknown-warning-option \
    2> >(grep -v 'warnings generated' >&2)
}

[ $# -gt 0 ] || set -- format licence shell docs tidy
failed=()
for check in "$@"; do
  echo "lint: $check"
  "$check" || failed+=("$check")
done
[ ${#failed[@]} -eq 0 ] || { echo "lint: failed: ${failed[*]}" >&2; exit 1; }
