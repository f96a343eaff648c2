#!/usr/bin/env bash
# The example programs that draw and show do so: gallery, text and play, given as arguments, in an X server.
set -euo pipefail
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

# Pause, one step, quit, in a loop that would not end otherwise. The caption tells the frame.
caption() { xdotool getwindowname "$window"; }
"$play" --loop --rate 20 "$work/clip.avi" &
player=$!
window=$(timeout 20 xdotool search --sync --onlyvisible --name "^clip.avi - frame" | head -n 1)
xdotool windowfocus --sync "$window" key p
paused=
for _ in $(seq 50); do # two captions that agree over the time of ten frames
  before=$(caption)
  sleep 0.5
  [ "$before" != "$(caption)" ] || { paused=$before && break; }
done
[ -n "$paused" ] || fail "play: p does not pause"
xdotool key space
for _ in $(seq 50); do
  [ "$(caption)" = "$paused" ] || break
  sleep 0.1
done
[ "$(caption)" != "$paused" ] || fail "play: space does not step"
stepped=$(caption)
sleep 0.3
[ "$(caption)" = "$stepped" ] || fail "play: space lets more than one frame through"
xdotool key q
wait "$player" || fail "play: exit code after q"

unset DISPLAY TERM
for what in "$work/clip.avi" "$work/none.avi"; do
  code=0
  "$play" "$what" 2>"$work/error" || code=$?
  [ "$code" -eq 1 ] && grep -q '^play: \[' "$work/error" || fail "play without a server: $what"
done
