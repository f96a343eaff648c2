#!/usr/bin/env bash
# The programs in the README compile and run as they stand there. A program's first line says how it is called:
# "// name ARGUMENTS"; an argument that is a file's name and does not exist yet is made by the program.
set -euo pipefail
source_dir=$1 library=$3 compiler=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

awk '/^```cpp$/ { n++; on = 1; next } /^```$/ { on = 0 } on { print > ("program" n ".cpp") }' "$source_dir/README.md"
programs=(program*.cpp)
[ -f "${programs[0]}" ] || { echo "FAILED: no program in the README"; exit 1; }
ffmpeg -v error -f lavfi -i "testsrc2=size=320x240:rate=25:duration=1" -pix_fmt yuv420p in.mp4
ffmpeg -v error -i in.mp4 -frames:v 1 photo.jpg

for program in "${programs[@]}"; do
  read -r comment _ arguments <"$program"
  [ "$comment" = // ] || { echo "FAILED: $program does not say how it is called"; exit 1; }
  "$compiler" -std=c++17 -Wall -Wextra -Werror -I "$source_dir/include" "$program" -o program \
    "$library" -lboost_thread -lboost_system -pthread -Wl,-rpath,"$(dirname "$library")"
  # shellcheck disable=SC2086
  ./program $arguments >output.log 2>&1 || { cat output.log; echo "FAILED: $program $arguments"; exit 1; }
  for argument in $arguments; do
    [[ $argument != *.* ]] || [ -s "$argument" ] || { echo "FAILED: $program made no $argument"; exit 1; }
  done
  echo "$program: $(wc -l <"$program") lines, ran with: $arguments"
done
