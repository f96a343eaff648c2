#!/usr/bin/env bash
# Every public header compiles alone, as C++17 and as C++20, without a warning, and pulls in no codec's headers.
set -euo pipefail
source_dir=$1 compiler=$4

checked=0
for header in "$source_dir"/include/Kovanta/*.h; do
  name=Kovanta/$(basename "$header")
  for standard in 17 20; do
    echo "#include <$name>" | "$compiler" -std=c++$standard -Wall -Wextra -Wpedantic -Werror -I "$source_dir/include" \
      -fsyntax-only -x c++ - || { echo "FAILED: $name as C++$standard"; exit 1; }
  done
  checked=$((checked + 1))
done
[ "$checked" -gt 5 ] || { echo "FAILED: only $checked headers found"; exit 1; }

if foreign=$(echo "#include <Kovanta/Kovanta.h>" | "$compiler" -std=c++17 -I "$source_dir/include" -M -x c++ - |
    tr ' ' '\n' | grep -E '/(libav[a-z]*|SDL|freetype2|jpeglib|png|opencv2)[/.]'); then
  echo "FAILED: public headers include $foreign"
  exit 1
fi
echo "$checked headers"
