#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Drives the example programs as a person does, and says what happens: try-programs.sh [--programs DIR] [PART...] with the
# parts window (Xvfb and a window manager), terminal, and camera (in the virtual machine); all by default. DIR holds other
# builds of the programs, to compare. Screenshots go to build/try-programs. tests/examples checks what has one right answer;
# this is for the eye.
set -euo pipefail
cd "$(dirname "$0")/.."
self=$PWD/scripts/try-programs.sh
out=$PWD/build/try-programs
programs=$PWD/build/release/examples
inside=""
while [[ ${1:-} = --* ]]; do
  case $1 in
    --programs) programs=$(realpath "$2") ;;
    --inside) inside=$2 ;;
    *) sed -n '3,6s/^# //p' "$self" >&2 && exit 2 ;;
  esac
  shift 2
done
export LD_LIBRARY_PATH=$programs:${LD_LIBRARY_PATH:-}
mkdir -p "$out"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

say() { printf '%-58s %s\n' "$1" "$2"; }
shot() { import -window root "$out/$1.png"; }
seconds() { awk "BEGIN { printf \"%.1f s\", $(date +%s.%N) - $1 }"; }
code() { # the exit code of the command, which gets no terminal
  local code=0
  timeout 60 "$@" >"$work/stdout" 2>"$work/stderr" </dev/null || code=$?
  echo "$code: $({ tail -n 1 "$work/stdout"; head -n 1 "$work/stderr"; } | tr '\n\r' '  ' | cut -c 1-150)"
}

# ---- window --------------------------------------------------------------------------------------------------------

start() { # ARGUMENTS...: play in the background; other builds open one window after another
  "$programs/play" "$@" 2>"$work/stderr" &
  player=$!
  window=""
  for _ in $(seq 50); do
    window=$(xdotool search --onlyvisible --name ' - frame' 2>/dev/null | tail -n 1) || true
    [ -z "$window" ] || break
    sleep 0.1
  done
  sleep 1
}
caption() { xdotool getwindowname "$(xdotool search --onlyvisible --name ' - frame' 2>/dev/null | tail -n 1)" 2>/dev/null || echo 'no window'; }
gone() { kill -KILL "$player" 2>/dev/null || true; wait "$player" 2>/dev/null || true; }
ended() { # WHAT: how long it takes until the player has ended
  local begin code=0
  begin=$(date +%s.%N)
  if timeout 12 tail --pid "$player" -f /dev/null; then
    wait "$player" || code=$?
    say "$1" "exit code $code after $(seconds "$begin")"
  else
    say "$1" "goes on after 12 s"
    kill -KILL "$player"
    wait "$player" 2>/dev/null || true
  fi
}

window_inside() {
  command -v openbox >/dev/null && { openbox & }
  mkdir "$work/mixed" "$work/stills"
  for still in a=640x480 b=300x400 c=801x601 d=320x240; do
    convert -size "${still#*=}" plasma:teal-gold -depth 8 "$work/mixed/${still%=*}.ppm"
  done
  convert -size 1x1 xc:red -depth 8 "$work/stills/a.ppm"
  convert -size 200x1 xc:green -depth 8 "$work/stills/b.ppm"
  convert "$work/mixed/a.ppm" "$work/stills/c.ppm"
  convert -size 4000x3000 plasma:navy-white -depth 8 "$work/large.png"
  ffmpeg -v error -f lavfi -i testsrc2=size=640x360:rate=25:duration=20 -c:v libx264 -pix_fmt yuv420p "$work/clip.mp4"

  for how in q close TERM INT HUP; do
    start --loop --rate 10 "$work/mixed"
    case $how in
      q) xdotool key q ;;
      close) wmctrl -c " - frame" || true ;;
      *) kill "-$how" "$player" || true ;;
    esac
    ended "play, sizes change ten times a second: $how"
  done
  start --rate 0.125 "$work/mixed"
  xdotool key q
  ended "play, a still in eight seconds: q"
  start --loop --rate 2 "$work/mixed"
  xdotool key p
  sleep 1
  xdotool key f
  sleep 1
  say "play: p and f, then space over a change of size" "before: $(caption)"
  shot fullscreen-before
  xdotool key space
  sleep 1
  say "" "after: $(caption), $(xdotool getactivewindow getwindowgeometry 2>/dev/null | sed -n 's/ *Geometry: //p')"
  shot fullscreen-after
  gone
  start --hold "$work/large.png"
  say "play: a still of 4000x3000 on a screen of 1280x800" "$(caption), $(xdotool getwindowgeometry "$window" 2>/dev/null | sed -n 's/ *Geometry: //p') $(cat "$work/stderr")"
  shot large
  gone
  cd "$work"
  start --hold --rate 4 stills/
  say "play stills/ with 1-pixel stills" "$(caption) $(cat "$work/stderr")"
  shot stills
  gone
  mkdir "$work/high"
  convert -size 64x48 plasma:red-white "$work/high/a.png"
  convert -size 1x300 gradient: "$work/high/b.png"
  convert -size 48x64 plasma:blue-white "$work/high/c.png"
  start --rate 1 --hold --width 400 "$work/high"
  sleep 3
  say "play --width 400: 1x300 between others" "$(caption) $(head -n 1 "$work/stderr")"
  shot high
  gone
  start "$work/high/a.png" "$work/high/c.png"
  xdotool key Right
  sleep 1
  say "play a.png c.png: right arrow" "$(caption)"
  gone
  ffmpeg -v error -i "$work/clip.mp4" -f lavfi -i sine=duration=40 -t 40 -c:v copy "$work/sound.mkv"
  start --loop "$work/sound.mkv"
  xdotool key Up
  sleep 1
  say "play: up in a video of 20 s whose sound is longer" "$(caption)"
  gone
  ffmpeg -v error -i "$work/clip.mp4" -t 0.1 -c:v rawvideo "$work/raw.avi"
  head -c $(($(grep -abo movi "$work/raw.avi" | head -n 1 | cut -d : -f 1) + 4)) "$work/raw.avi" >"$work/empty.avi"
  say "play --loop of a video without a picture" "$(code "$programs/play" --loop "$work/empty.avi")"
  start --overlay "$work/clip.mp4"
  xdotool key Right
  sleep 1
  say "play: right arrow a second after the start" "$(caption)"
  xdotool key plus plus plus
  sleep 1
  say "play: + three times" "$(caption)"
  shot clip
  gone
}

# ---- terminal ------------------------------------------------------------------------------------------------------

terminal() {
  local video=$work/long.avi
  ffmpeg -v error -f lavfi -i testsrc2=size=640x480:rate=25:duration=60 -c:v mpeg4 -q:v 8 "$video"
  for signal in INT TERM HUP; do
    rm -f "$work/cut.mp4"
    "$programs/track" "$video" "$work/cut.mp4" >/dev/null 2>&1 &
    until [ "$(stat -c %s "$work/cut.mp4" 2>/dev/null || echo 0)" -gt 50000 ]; do sleep 0.05; done
    kill "-$signal" $!
    local code=0
    wait $! 2>/dev/null || code=$?
    say "track: $signal" "exit code $code, file: $(ffprobe -v error -count_frames -show_entries stream=nb_read_frames -of csv=p=0 "$work/cut.mp4" 2>&1 | tail -n 1)"
  done
  ffmpeg -v error -i "$video" -t 2 -c copy "$work/short.avi"
  script -qec "'$programs/track' '$work/short.avi' '$work/new.mp4'" "$work/terminal" >/dev/null
  say "track at a terminal" "$(grep -a Thread "$work/terminal" | cat -v)"
  say "track again, without a terminal" "$(code "$programs/track" "$work/short.avi" "$work/new.mp4")"
  say "track into a name without extension" "$(code "$programs/track" "$work/short.avi" "$work/new")"
  say "track into an unknown container" "$(code "$programs/track" "$work/short.avi" "$work/new.nonsense")"
  ffmpeg -v error -i "$work/short.avi" -vf scale=161:121 -c:v mpeg4 "$work/odd.avi"
  say "track 161x121 into mp4" "$(code "$programs/track" "$work/odd.avi" "$work/odd.mp4")"
  say "track 161x121 into 3gp" "$(code "$programs/track" "$work/odd.avi" "$work/odd.3gp")"
  say "track --bitrate 0" "$(code "$programs/track" "$work/short.avi" "$work/newer.mp4" --bitrate 0)"
  say "track --version" "$(code "$programs/track" --version)"
  convert -size 4x2 gradient:gray20-gray80 -depth 8 -define png:color-type=0 "$work/grey.png"
  say "convert a grey PNG to PPM" "$(code "$programs/convert" "$work/grey.png" "$work/grey.ppm"), $(compare -metric AE "$work/grey.png" "$work/grey.ppm" null: 2>&1) samples differ"
  convert -size 4x2 gradient:red-blue -alpha set -channel A -evaluate set 50% +channel -define png:bit-depth=16 "$work/deep.png"
  say "convert 16-bit colours with alpha to PGM" "$(code "$programs/convert" "$work/deep.png" "$work/deep.pgm")"
  convert "$work/grey.png" -alpha set -define png:color-type=4 "$work/opaque.png"
  say "convert opaque grey with alpha to PGM" "$(code "$programs/convert" "$work/opaque.png" "$work/opaque.pgm")"
  say "convert into .pgm" "$(cd "$work" && code "$programs/convert" grey.png .pgm)"
  ffmpeg -v error -i "$work/short.avi" -c copy -f matroska - | cat >"$work/piped.mkv"
  rm -f "$out/sheet.png"
  say "contact of a stream of unknown length" "$(code "$programs/contact" "$work/piped.mkv" "$out/sheet.png")"
  mkdir "$work/numbers"
  for i in 1 2 10; do convert -size 64x48 xc:gray -depth 8 "$work/numbers/$i.ppm"; done
  cp -r "$work/numbers" "$work/greys"
  convert -size 32x48 xc:gray -depth 8 "$work/numbers/3.ppm"
  say "sequence with a still of another size" "$(code "$programs/sequence" "$work/numbers" "$work/numbers.avi")"
  say "sequence --rate 30000/1001" "$(code "$programs/sequence" "$work/greys" "$work/rate.avi" --rate 30000/1001)"
}

# ---- camera --------------------------------------------------------------------------------------------------------

camera_inside() {
  local capture=$programs/capture video=$work/out.avi pid code
  say "capture" "$(code "$capture")"
  say "capture, without permission" "$(code setpriv --reuid 65534 --clear-groups "$capture")"
  say "capture 0 --formats" "$("$capture" 0 --formats 2>&1 | head -n 4 | paste -sd '|')"
  say "capture 0 320x180 -n 60" "$(code "$capture" 0 320x180 -n 60 "$video"), $(head -n 1 "$work/stdout")"
  say "" "$(ffprobe -v error -count_frames -show_entries stream=nb_read_frames,r_frame_rate -of csv=p=0 "$video" 2>&1)"
  say "capture /dev/video0 320x180 -n 5" "$(code "$capture" /dev/video0 320x180 -n 5 "$work/dev.avi")"
  say "capture 0 -n -1 --show" "$(code "$capture" 0 -n -1 --show)"
  say "capture 0 640x360 into no such folder" "$(code "$capture" 0 640x360 /nowhere/out.avi)"
  for signal in INT TERM HUP; do
    rm -f "$video"
    "$capture" 0 320x180 "$video" >"$work/stdout" 2>/dev/null &
    pid=$!
    until [ "$(stat -c %s "$video" 2>/dev/null || echo 0)" -gt 30000 ]; do sleep 0.1; done
    kill "-$signal" $pid
    code=0
    wait $pid 2>/dev/null || code=$?
    say "capture: $signal" "exit code $code, $(head -n 1 "$work/stdout"), file: $(ffprobe -v error -count_frames -show_entries stream=nb_read_frames -of csv=p=0 "$video" 2>&1 | tail -n 1)"
  done
  rm -f "$video"
  xvfb-run -a -s "-screen 0 640x480x24 -noreset" bash -c "
    '$capture' 0 320x180 -n 30 --camera-rate 5 --show '$video' >'$work/stdout' 2>&1 & sleep 6; import -window root '$out/camera.png'; wait" || true
  say "capture 0 320x180 --show and a file at once" "$(grep dropped "$work/stdout"), file: $(ffprobe -v error -count_frames -show_entries stream=nb_read_frames -of csv=p=0 "$video" 2>&1 | tail -n 1)"
  camera_compressed
}

camera_compressed() { # a camera that sends Motion JPEG only
  local capture=$programs/capture feeder
  # shellcheck disable=SC2016
  perl -e 'local $/; open F, "<", shift; binmode F; $m = <F>; syscall(175, $m, length $m, shift) == 0 or die $!' \
    /run/modules/v4l2loopback.ko "devices=1 video_nr=9 card_label=Fed" # there is no insmod in the guest
  ffmpeg -v error -re -f lavfi -i testsrc2=size=640x480:rate=5:d=60 -c:v mjpeg -pix_fmt yuvj420p -f v4l2 /dev/video9 2>/dev/null &
  feeder=$!
  until "$capture" 9 --formats 2>/dev/null | grep -q JPEG; do sleep 0.2; done
  say "capture 9 (Motion JPEG only)" "$(code "$capture" 9 640x480 -n 5 "$work/refused.avi")"
  say "" "$(tail -n 1 "$work/stderr")"
  say "capture 9 --emulated -n 20" "$(code "$capture" 9 640x480 --emulated -n 20 "$work/decoded.avi"), $(head -n 1 "$work/stdout")"
  ffmpeg -v error -i "$work/decoded.avi" -vf "select=eq(n\\,10)" -frames:v 1 -y "$out/decoded.png"
  kill $feeder
}

[ $# -gt 0 ] || set -- window terminal camera
if [ -n "$inside" ]; then
  "${inside}_inside"
  exit
fi
scripts/setup.sh ffmpeg imagemagick openbox wmctrl xdotool xvfb >/dev/null
for part in "$@"; do
  echo "---- $part"
  case $part in
    window) xvfb-run -a -s "-screen 0 1280x800x24 -noreset" "$self" --programs "$programs" --inside window ;;
    terminal) terminal ;;
    camera) scripts/camera-vm.sh --timeout 600 --writable "$out" "$self" --programs "$programs" --inside camera ;;
  esac
done
