#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# A font file of any size becomes an array of its bytes: check-embed.sh SOURCE_DIRECTORY COMPILER
set -euo pipefail
source_dir=$1 compiler=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
cat >main.cpp <<'EOF'
#include "Kovanta/Font.h"
#include <cstdio>
int main() { return std::fwrite(luximr_ttf, 1, luximr_ttf_size, stdout) == luximr_ttf_size ? 0 : 1; }
EOF
for size in 0 1 7 8 9 1000; do
  head -c "$size" /dev/urandom >font
  cmake -DINPUT=font -DOUTPUT=font.cpp -P "$source_dir/cmake/EmbedFont.cmake"
  "$compiler" -std=c++17 -Wall -Wextra -Wpedantic -Werror -I "$source_dir/include" main.cpp font.cpp -o embedded
  ./embedded | cmp - font || { echo "FAILED: a font of $size bytes"; exit 1; }
done
