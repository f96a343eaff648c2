#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# The example programs that draw and show do so: gallery, text and play, given as arguments, in an X server.
set -euo pipefail
exec </dev/null # nobody answers questions
gallery=$1 text=$2 play=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() {
  echo "FAILED: $1"
  exit 1
}
size() { identify -format '%wx%h' "$1"; }

"$gallery" "$work/stills"
for picture in boxes lines text vectors glyphs; do
  [ -s "$work/stills/$picture.png" ] || fail "gallery: $picture"
done
"$text" "$work/stills/text.png" "$work/annotated.png" --text "7-bit"
[ "$(size "$work/annotated.png")" = "$(size "$work/stills/text.png")" ] || fail "text: size"
! cmp -s "$work/annotated.png" "$work/stills/text.png" || fail "text: nothing drawn"

# Stills of different and of odd sizes, and a file, to their ends.
convert "$work/stills/boxes.png" -crop 301x201+0+0 +repage "$work/stills/aa.ppm"
"$play" --rate 200 --overlay "$work/stills" || fail "play: directory"
ffmpeg -v error -f lavfi -i testsrc2=size=161x121:rate=50:duration=0.4 -pix_fmt yuv420p -c:v mpeg4 "$work/clip.avi"
"$play" --width 400 "$work/clip.avi" || fail "play: file"

# Pause, one step at a time, quit, in a loop that would not end otherwise. The caption tells frame and pause.
pausedAfter() { # CAPTION: another caption that says so
  for _ in $(seq 600); do
    caption=$(xdotool getwindowname "$window")
    [[ $caption != *", paused" || $caption = "$1" ]] || return 0
    sleep 0.1
  done
  fail "play: '$caption' instead of a pause after '$1'"
}
frame() { sed -E 's/.* frame ([0-9]+),.*/\1/' <<<"$caption"; }
"$play" --loop --rate 20 "$work/clip.avi" &
player=$!
window=$(timeout 60 xdotool search --sync --onlyvisible --name "^clip.avi - frame" | head -n 1)
xdotool windowfocus --sync "$window" key p
pausedAfter ""
for _ in 1 2 3; do # the clip has 20 frames
  before=$(frame)
  xdotool key space
  pausedAfter "$caption"
  [ "$(frame)" -eq $((before % 20 + 1)) ] || fail "play: a step from $before to $(frame)"
done
xdotool key q
wait "$player" || fail "play: exit code after q"

unset DISPLAY TERM
for what in "$work/clip.avi" "$work/none.avi"; do
  code=0
  "$play" "$what" 2>"$work/error" || code=$?
  [ "$code" -eq 1 ] || fail "play without a server: $code for $what"
  grep -q '^play: \[' "$work/error" || fail "play without a server: no message for $what"
done
