#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# demo.sh [VIDEO]: tracks what moves in a video; without an argument, in a real clip of a coin that a pen pushes about (242 pictures).
set -euo pipefail
start=$PWD
cd "$(dirname "$0")/.."
scripts/setup.sh demo

echo "demo: building"
cmake --preset release -DKOVANTA_BUILD_TESTS=OFF -DKOVANTA_BUILD_EXAMPLES=ON -B build/demo >/dev/null
cmake --build build/demo -j "$(nproc)" --target track contact >/dev/null

work=build/demo/out
mkdir -p "$work"

# The clip is part of a documentation package; the package is unpacked here, not installed.
real_clip() {
  local clip=$work/package/usr/share/doc/node-opencv/examples/files/motion.mov
  if [ ! -f "$clip" ]; then
    rm -rf "$work/package" && mkdir -p "$work/package"
    (cd "$work/package" && { apt-get download node-opencv ||
      { [ "$(id -u)" -eq 0 ] && apt-get update && apt-get download node-opencv; }; } &&
      dpkg -x node-opencv_*.deb .) >"$work/download.log" 2>&1 || return 1
    [ -f "$clip" ] || return 1
  fi
  echo "$clip"
}

if [ $# -gt 0 ]; then
  video=$(cd "$start" && realpath -e -- "$1")
elif ! video=$(real_clip); then
  echo "The real clip (Debian package node-opencv) cannot be had here; a generated one stands in for it."
  video=$work/generated.mp4
  scripts/setup.sh demo ffmpeg
  ffmpeg -v error -y -f lavfi -i "color=gray:size=568x320:rate=30:duration=8[bg];color=white:size=60x60:rate=30[box];
    [bg][box]overlay=x='254+200*sin(t*1.3)':y='130+100*cos(t*0.9)':shortest=1" -pix_fmt yuv420p "$video"
fi

build/demo/examples/track --force "$video" "$work/tracked.mp4"
build/demo/examples/contact --force "$work/tracked.mp4" "$work/contact-sheet.png" --width 600

echo "Annotated video: $(realpath "$work/tracked.mp4")"
echo "Contact sheet:   $(realpath "$work/contact-sheet.png") (the green box holds what moves, the red arrow says where to, the yellow line where it was)"
