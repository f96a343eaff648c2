#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Makes the pictures of docs/images with the library itself: what can be drawn, the window with a tracked video, and
# frames of the demo.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh

cmake --preset release -DKOVANTA_BUILD_TESTS=OFF -DKOVANTA_BUILD_EXAMPLES=ON -B build/pictures >/dev/null
cmake --build build/pictures -j "$(nproc)" --target gallery play track >/dev/null
examples=$PWD/build/pictures/examples
images=$PWD/docs/images
mkdir -p "$images"
"$examples/gallery" --force "$images"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
ffmpeg -v error -f lavfi -i "gradients=size=480x272:rate=25:duration=4:c0=0x203040:c1=0x607080:seed=3,format=yuv420p[bg];
  color=0xe0c060:size=56x40:rate=25:duration=4[box];
  [bg][box]overlay=x='200+170*sin(t*1.3)':y='110+90*cos(t*0.9)'" -t 4 -pix_fmt yuv420p "$work/clip.mp4"
"$examples/track" "$work/clip.mp4" "$work/tracked.mp4" >/dev/null 2>&1

# The last frame stays in the window, so the screenshot does not depend on its moment.
export examples work images
# shellcheck disable=SC2016
xvfb-run -a -s "-screen 0 800x600x24" bash -euc '
  "$examples/play" --hold --rate 200 "$work/tracked.mp4" &
  player=$!
  window=$(xdotool search --sync --onlyvisible --name "frame 100," | head -n 1)
  sleep 0.5
  import -window "$window" "$images/window.png"
  xdotool windowfocus "$window" key q
  wait "$player"'

# The real clip of the demo.
scripts/demo.sh >/dev/null
build/demo/examples/contact build/demo/out/tracked.mp4 "$work/sheet.png" --width 300
convert "$work/sheet.png" -quality 88 "$images/tracked.jpg"
ls -l "$images"
