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

# Stills of all sizes and a file to their ends, one after the other.
mixed=$work/mixed
mkdir "$mixed"
for still in a=301x201 b=1x1 c=1x40 d=30x1 e=640x480; do
  convert -size "${still#*=}" xc:orange -depth 8 "$mixed/${still%=*}.ppm"
done
ffmpeg -v error -f lavfi -i testsrc2=size=161x121:rate=50:duration=0.4 -pix_fmt yuv420p -c:v mpeg4 "$work/clip.avi"
"$play" --rate 200 --overlay "$mixed" "$work/clip.avi" "$mixed/b.ppm" || fail "play: to the end"
"$play" --width 400 "$work/clip.avi" || fail "play: file"

# What is much higher than wide, in the middle and first, is fitted whatever width is wished.
mkdir "$work/high"
for still in a=64x48 b=1x300 c=48x64; do
  convert -size "${still#*=}" xc:orange -depth 8 "$work/high/${still%=*}.ppm"
done
"$play" --rate 200 --width 400 "$work/high" "$work/high/b.ppm" || fail "play: 1x300 in the middle"
"$play" --rate 200 --width 400 "$work/high/b.ppm" "$work/high" || fail "play: 1x300 first"
# A video without a picture is said to be that, in a loop too.
ffmpeg -v error -i "$work/clip.avi" -c:v rawvideo "$work/raw.avi"
head -c $(($(grep -abo movi "$work/raw.avi" | head -n 1 | cut -d : -f 1) + 4)) "$work/raw.avi" >"$work/empty.avi"
for option in --hold --loop; do
  code=0
  timeout 60 "$play" $option "$work/empty.avi" 2>"$work/error" || code=$?
  [ "$code" -eq 1 ] || fail "play $option: exit code $code for no picture"
  grep -qx "play: $work/empty.avi holds no frame." "$work/error" || fail "play $option: $(cat "$work/error")"
done

start() { # NAME ARGUMENTS...: the player in the background, its window, whose caption begins with the name, in front
  "$play" "${@:2}" &
  player=$!
  window=$(timeout 60 xdotool search --sync --onlyvisible --name "^$1 - frame" | head -n 1)
  xdotool windowfocus --sync "$window"
}
shows() { # PATTERN: waits for a caption that matches
  for _ in $(seq 1200); do
    caption=$(xdotool getwindowname "$window")
    [[ ! $caption =~ $1 ]] || return 0
    sleep 0.05
  done
  fail "play: '$caption' instead of '$1'"
}
ends() { # EXIT CODE: ends soon, that is long before the next frame of a slow show
  local code=0
  timeout 20 tail --pid "$player" -f /dev/null || fail "play: goes on after ${2:-q}"
  wait "$player" || code=$?
  [ "$code" -eq "$1" ] || fail "play: exit code $code after ${2:-q}"
}
frame() { sed -E 's/.* frame ([0-9]+),.*/\1/' <<<"$caption"; }
geometry() { xdotool getwindowgeometry --shell "$window" | sed -nE 's/(WIDTH|HEIGHT)=//p' | paste -sd x; }

# Pause, one step at a time, seeking, another pace, in a loop that would not end otherwise. The caption tells.
start clip.avi --loop --rate 5 "$work/clip.avi"
xdotool key plus
shows "6.25 frames/s$"
xdotool key minus minus
shows ", 4 frames/s$"
xdotool key p
shows paused$
for _ in 1 2 3; do # the clip has 20 frames
  before=$(frame)
  xdotool key space
  shows "frame $((before % 20 + 1)), .*paused"
done
xdotool key Down
shows "frame 1, .*paused"
xdotool key Right # five seconds, more than there are
shows "frame 20, .*paused"
xdotool key q
ends 0

# Beyond the end is the last frame, also where the ticks are finer than frames and the sound is longer; further on than
# that is the next input, as behind a still.
for still in one two; do convert -size 160x120 xc:orange -depth 8 "$work/$still.ppm"; done
for clip in c.mp4 c.mkv c.ts; do
  ffmpeg -v error -f lavfi -i color=black:size=160x120:rate=24:duration=2 -f lavfi -i sine=duration=5 \
    -vf "drawbox=t=fill:c=white:enable='eq(n,47)'" -pix_fmt yuv420p -g 12 "$work/$clip"
  start $clip --rate 1 "$work/$clip" "$work/one.ppm" "$work/two.ppm"
  xdotool key Up
  shows "frame 48, "
  xdotool key p
  shows paused$
  for _ in $(seq 100); do # the caption comes before the picture
    import -window "$window" -depth 8 rgb:"$work/shot"
    white=$(od -An -tu1 -j 28800 -N 1 "$work/shot")
    [ "$white" -lt 200 ] || break
    sleep 0.05
  done
  [ "$white" -ge 200 ] || fail "play: another picture of $clip than the last"
  xdotool key Right
  shows "^one.ppm - frame 1, .*paused"
  xdotool key Right
  shows "^two.ppm - frame 1, .*paused"
  xdotool key q
  ends 0
done

# What the user has chosen outlives a change of size, and so does the wish to end.
start mixed --loop --rate 20 "$mixed/"
xdotool key f p
shows paused$
for _ in 1 2 3 4 5; do
  before=$(frame)
  xdotool key space
  shows "frame $((before % 5 + 1)), .*paused"
  [ "$(geometry)" = 1024x768 ] || fail "play: $(geometry) is not the full screen"
done
xdotool key q
ends 0
for signal in TERM HUP INT; do
  start mixed --loop --rate 20 "$mixed"
  shows "frame 5"
  kill "-$signal" "$player"
  ends $((128 + $(kill -l $signal))) "$signal"
done

# A slow show hears the user at once; one still stays; what is larger than the screen is fitted to it.
start mixed --rate 0.01 "$mixed"
xdotool key p
shows "frame 1, .*paused"
xdotool key space
shows "frame 2, .*paused"
xdotool key p Right
shows "frame 3, .*frames/s"
xdotool key q
ends 0
convert -size 3000x1500 gradient: -depth 8 "$work/large.png"
start large.png "$work/large.png"
[ "$(geometry)" = 960x480 ] || fail "play: $(geometry) for 3000x1500"
xdotool key q
ends 0

convert -size 500x350 gradient: "$work/flat.jpg"
held=$work/held
mkdir "$held"
{
  head -c 2 "$work/flat.jpg"
  printf '\377\341\0\042Exif\0\0II*\0\10\0\0\0\1\0\22\1\3\0\1\0\0\0\10\0\0\0\0\0\0\0'
  tail -c +3 "$work/flat.jpg"
} >"$held/a.jpg"
start held "$held"
[ "$(geometry)" = 350x500 ] || fail "play: $(geometry) for a picture that is to be turned"
xdotool key q
ends 0

unset DISPLAY TERM
for what in "$work/clip.avi" "$work/none.avi"; do
  code=0
  "$play" "$what" 2>"$work/error" || code=$?
  [ "$code" -eq 1 ] || fail "play without a server: $code for $what"
  grep -q '^play: \[' "$work/error" || fail "play without a server: no message for $what"
done
