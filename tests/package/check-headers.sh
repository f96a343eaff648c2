#!/usr/bin/env bash
# Every public header compiles alone, as C++17 and as C++20, without a warning, and pulls in no codec's headers.
set -euo pipefail
source_dir=$1 compiler=$4

headers=("$source_dir"/include/Kovanta/*.h)
[ ${#headers[@]} -gt 5 ] || { echo "FAILED: only ${#headers[@]} headers found"; exit 1; }
compile() {
  echo "#include <Kovanta/$3>" | "$1" -std=c++"$4" -Wall -Wextra -Wpedantic -Werror -I "$2/include" -fsyntax-only -x c++ - ||
    { echo "FAILED: $3 as C++$4"; return 1; }
}
export -f compile
printf '%s 17\n%s 20\n' $(for h in "${headers[@]##*/}"; do echo "$h $h"; done) |
  xargs -P "$(nproc)" -L 1 bash -c 'compile "$@"' _ "$compiler" "$source_dir"

if foreign=$(echo "#include <Kovanta/Kovanta.h>" | "$compiler" -std=c++17 -I "$source_dir/include" -M -x c++ - |
    tr ' ' '\n' | grep -E '/(libav[a-z]*|SDL|freetype2|jpeglib|png|opencv2)[/.]'); then
  echo "FAILED: public headers include $foreign"
  exit 1
fi
echo "${#headers[@]} headers"
