#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Every header compiles alone, without a warning: the public ones as C++17, 20 and 23, without any codec's headers; those of
# src with the include directories given as the rest of the arguments.
set -euo pipefail
source_dir=$1 compiler=$4
shift 4

list=$(mktemp)
trap 'rm -f "$list"' EXIT
for header in "$source_dir"/include/Kovanta/*.h; do
  for standard in c++17 c++20 c++2b; do
    printf '%s\0' "-std=$standard -I$source_dir/include" "Kovanta/${header##*/}" >>"$list"
  done
done
(cd "$source_dir/src" && find . -name '*.h' -printf '%P\n') | sort | while read -r header; do
  # Compiled alone, what it defines for its includer stands unused.
  options="-std=c++17 -Wno-unused-function -Wno-unneeded-internal-declaration $*"
  [[ $header != image/kernels/* ]] || options+=" -march=icelake-server"
  printf '%s\0' "$options" "$header" >>"$list"
done
count=$(tr -cd '\0' <"$list" | wc -c)
[ "$count" -gt 100 ] || { echo "FAILED: only $((count / 2)) headers found"; exit 1; }

compile() { # COMPILER OPTIONS HEADER
  local options
  read -ra options <<<"$2"
  echo "#include \"$3\"" | "$1" -Wall -Wextra -Wpedantic -Werror "${options[@]}" -fsyntax-only -x c++ - ||
    { echo "FAILED: $3 with $2"; return 1; }
}
export -f compile
# shellcheck disable=SC2016
xargs -0 -P "$(nproc)" -n 2 bash -c 'compile "$@"' _ "$compiler" <"$list"

if foreign=$(echo "#include <Kovanta/Kovanta.h>" | "$compiler" -std=c++17 -I "$source_dir/include" -M -x c++ - |
  tr ' ' '\n' | grep -E '/(libav[a-z]*|SDL|freetype2|jpeglib|png|opencv2)[/.]'); then
  echo "FAILED: public headers include $foreign"
  exit 1
fi
echo "$((count / 2)) headers"
