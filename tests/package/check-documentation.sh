#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# The C++ of README and of every page below docs compiles as it stands there, without a warning. A block with a main() is
# a program and runs: its first line says how it is called, "// name ARGUMENTS", where a file that does not exist yet is
# one that the program makes; "<!-- needs: MODULE -->" before it names another library, by its pkg-config file, and
# where that is not installed the program is left out. Any other block becomes a function's body; what it takes for granted is declared by a
# comment before it, "<!-- given: DECLARATIONS -->".
set -euo pipefail
source_dir=$1 library=$3 compiler=$4
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
compile=("$compiler" -std=c++17 -Wall -Wextra -Werror -I "$source_dir/include")

printf '#include <%s>\n' Kovanta/Kovanta.h iostream string vector >fragments.cpp
(cd "$source_dir" && ls README.md docs/*.md) | while read -r page; do
  name=$(basename "$page" .md)
  awk -v page="$page" -v name="${name//-/_}" -f "$here/blocks.awk" "$source_dir/$page"
done

fragments=$(grep -c '^namespace block_' fragments.cpp)
"${compile[@]}" -Wno-unused -fsyntax-only fragments.cpp || { echo "FAILED: a block does not compile"; exit 1; }

programs=(*-[0-9]*.cpp)
if [ ! -f "${programs[0]}" ] || [ "$fragments" -lt 4 ]; then
  echo "FAILED: blocks were not found"
  exit 1
fi
ffmpeg -v error -f lavfi -i "testsrc2=size=320x240:rate=25:duration=1" -pix_fmt yuv420p in.mp4
ffmpeg -v error -i in.mp4 -frames:v 1 photo.jpg
for program in "${programs[@]}"; do
  read -r comment _ arguments <"$program"
  [ "$comment" = // ] || { echo "FAILED: $program does not say how it is called"; exit 1; }
  foreign=()
  if [ -f "${program%.cpp}.needs" ]; then
    read -r module <"${program%.cpp}.needs"
    pkg-config --exists "$module" || { echo "$program: left out, there is no $module"; continue; }
    # Its headers are the system's: warnings in them are not ours.
    read -ra foreign <<<"$(pkg-config --cflags --libs "$module" | sed 's/-I */-isystem /g') -fPIC"
  fi
  "${compile[@]}" "$program" -o program "$library" "${foreign[@]}" -lboost_thread -pthread \
    -Wl,-rpath,"$(dirname "$library")" || { echo "FAILED: $program does not compile"; exit 1; }
  # shellcheck disable=SC2086
  ./program $arguments >output.log 2>&1 || { cat output.log; echo "FAILED: $program $arguments"; exit 1; }
  for argument in $arguments; do
    [[ $argument != *.* ]] || [ -s "$argument" ] || { echo "FAILED: $program made no $argument"; exit 1; }
  done
  echo "$program: $(wc -l <"$program") lines, ran with: $arguments"
done
echo "$fragments other blocks"

# Every message that a page explains is one that the library has, word for word: in one statement of the sources, whose
# literals end where the page puts a name for what differs. Reasons are added by src/util/Errors.h; what SDL calls fail
# with, by one function for all.
find "$source_dir/src" \( -name '*.h' -o -name '*.cpp' \) -exec sed 's|//.*||' {} + | tr '\n' ' ' |
  sed -E 's/" +"//g; s/;/\n/g' >statements
while read -r text; do
  pattern=$(sed -E 's/(Permission denied|Device or resource busy)\.$/REASON./; s|/dev/videoN|NAME|; s/[].()[*+?]/\\&/g
    s/ \\\(REASON\\\)$//; s/NAME: REASON\\\.$//; s/^(SDL_\w+) failed: REASON\\\.$/\1/; s/: REASON\\\.$/(: ".*"\\.|")/
    s/\b(NAME|[ABN])\b/".*"/g; s/^/(: |")/; s/$/(\\\\n)?"/; s/\|"\)\(\\\\n\)\?"$/|")/' <<<"$text")
  grep -qE -- "$pattern" statements || { echo "FAILED: no message says \"$text\" ($pattern)"; exit 1; }
  messages=$((${messages:-0} + 1))
done < <(sed -nE 's/^\| (`.*) \| .* \|$/\1/p' "$source_dir/docs/messages.md" | tr '`' '\n' | grep -E '^[A-Zaglupw].{6}' |
  grep -vE 'std::|readImage')
[ "${messages:-0}" -gt 50 ] || { echo "FAILED: messages were not found"; exit 1; }
