#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# track and contact: as many frames out as in, something drawn into them, one line and exit code 1 for bad input, a proper file after
# Ctrl-C.
set -euo pipefail
exec </dev/null # nobody answers questions
track=$(realpath "$1") contact=$(realpath "$2")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

fail() { echo "FAILED: $*"; cat ./*.log; exit 1; }
frames() { ffprobe -v error -select_streams v -count_frames -show_entries stream=nb_read_frames -of csv=p=0 "$1" | head -n 1; }

ffmpeg -v error -f lavfi -i "color=gray:size=160x120:rate=25:duration=2[bg];color=white:size=24x24:rate=25[box];
  [bg][box]overlay=x='20+50*t':y='30+20*t':shortest=1" -f lavfi -i "sine=duration=2" \
  -c:v libx264 -bf 2 -g 20 -pix_fmt yuv420p in.mp4

for output in out.mp4 out.avi out.mkv; do
  "$track" in.mp4 $output >run.log 2>err.log || fail "$output"
  ! grep -q $'\r' err.log || fail "$output: a progress line in a file"
  grep -q '^50 frames in ' run.log || fail "$output: no totals"
  [ "$(frames $output)" = 50 ] || fail "$output: $(frames $output) frames"
  complaints=$(ffmpeg -v warning -i $output -f null - 2>&1)
  [ -z "$complaints" ] || fail "$output: $complaints"
done
"$track" in.mp4 out.webm --encoder libvpx --bitrate 300000 >run.log 2>err.log || fail "--encoder"
[ "$(frames out.webm)" = 50 ] || fail "webm: $(frames out.webm) frames"

# The box is green: somewhere its chroma must be far from the grey and white of the scene.
green=$(ffmpeg -v error -i out.mp4 -vf "select='eq(n,30)',extractplanes=v" -frames:v 1 -f rawvideo - | od -An -v -tu1 -w1 |
  awk '$1 < 80 { n++ } END { print n + 0 }')
[ "$green" -gt 40 ] || fail "no box was drawn ($green samples)"

# Three frames of two seconds, side by side: the white square moves from sheet to sheet. A stream that nothing tells the
# length of, and one without time stamps, give the same.
ffmpeg -v error -i in.mp4 -an -c copy -f matroska - | cat >piped.mkv
ffmpeg -v error -i in.mp4 -an -c copy -bsf h264_mp4toannexb bare.h264
for video in in.mp4 piped.mkv bare.h264; do
  "$contact" $video sheet.png --force --columns 3 --rows 1 --width 160 2>err.log || fail "contact $video"
  [ "$(identify -format '%wx%h' sheet.png)" = 488x120 ] || fail "contact sheet is $(identify -format '%wx%h' sheet.png)"
  for spot in 45,45 "$((164 + 75)),60" "$((328 + 111)),75"; do
    [ "$(convert sheet.png -format "%[fx:p{$spot}.g > 0.9]" info:)" = 1 ] || fail "$video: nothing white at $spot of the sheet"
  done
done
# A phone held upright: the file says that its pictures are to be turned by a quarter.
cp in.mp4 turned.mp4
printf '\0\0\0\0\0\1\0\0\0\0\0\0\377\377\0\0\0\0\0\0' |
  dd of=turned.mp4 bs=1 seek=$(($(grep -abom1 tkhd in.mp4 | cut -d: -f1) + 44)) conv=notrunc status=none
"$track" turned.mp4 upright.mp4 >run.log 2>err.log || fail "track turned.mp4"
for video in turned.mp4 upright.mp4; do
  "$contact" $video sheet.png --force --columns 3 --rows 1 --width 120 2>err.log || fail "contact $video"
  [ "$(identify -format '%wx%h' sheet.png)" = 368x160 ] || fail "$video: the sheet is $(identify -format '%wx%h' sheet.png)"
  for spot in 74,45 "$((124 + 59)),75"; do # what track draws follows the square
    [ "$(convert sheet.png -format "%[fx:p{$spot}.g > 0.9]" info:)" = 1 ] || fail "$video: nothing white at $spot of the sheet"
  done
done
# Red by the matrix that a file names comes out as red, and a tracked copy names it too.
ffmpeg -v error -f lavfi -i "color=red:size=161x120:duration=0.4,format=rgb24,scale=out_color_matrix=bt709,format=yuv444p" -c:v libx264 \
  -colorspace bt709 red.mp4
"$track" red.mp4 tracked.mp4 >run.log 2>err.log || fail "track red.mp4"
[ "$(ffprobe -v error -show_entries stream=width,color_space -of csv=p=0 tracked.mp4)" = 161,bt709 ] || fail "the matrix of a copy"
"$contact" red.mp4 sheet.png --force --columns 1 --rows 1 2>err.log || fail "contact red.mp4"
[ "$(convert sheet.png -format '%[fx:p{80,100}.r > 0.99 && p{80,100}.g < 0.02]' info:)" = 1 ] || fail "red became another colour"
"$contact" red.mp4 sheet.jpg --columns 1 --rows 1 2>err.log || fail "contact red.mp4 sheet.jpg"
[ "$(convert sheet.jpg -format '%[fx:p{80,100}.r > 0.97 && p{80,100}.g < 0.04]' info:)" = 1 ] || fail "red became another colour in the JPEG"
"$contact" missing.mp4 sheet.png 2>err.log && fail "contact took a missing file"

# expect_error TEXT ARGUMENTS...
expect_error() {
  local text=$1 code=0
  shift
  timeout 60 "$track" "$@" >run.log 2>err.log || code=$?
  [ $code -eq 1 ] || fail "exit code $code for: $*"
  [ "$(grep -vc '^Thread ' err.log)" -eq 1 ] || fail "not one line for: $*"
  grep -qF -- "$text" err.log || fail "no '$text' for: $*"
}
expect_error "Failed to open missing.mp4." missing.mp4 new.mp4
head -c 3000 /dev/urandom >garbage.mp4
expect_error "track: [VideoInputVideoFile::VideoInputVideoFile]: " garbage.mp4 new.mp4
expect_error "track: No container goes by the extension of out.nonsense." in.mp4 out.nonsense
ffmpeg -v error -f lavfi -i testsrc2=rate=25:duration=0.2 -vf scale=161:121 -pix_fmt yuv420p -c:v mpeg4 odd.avi
expect_error "track: The encoder for odd.3gp does not take frames of 161x121, 25 a second." odd.avi odd.3gp
for output in odd.mp4 odd.mkv; do
  "$track" odd.avi $output >run.log 2>err.log || fail "161x121 into $output"
  [ "$(frames $output) $(ffprobe -v error -show_entries stream=width,height -of csv=p=0 $output)" = "5 161,121" ] || fail "$output"
done
expect_error "url_fopen failed to open no/such/place.mp4." in.mp4 no/such/place.mp4
expect_error "the same file." in.mp4 ./in.mp4
expect_error "avcodec_find_encoder_by_name failed." in.mp4 new.mp4 --encoder nonsense
expect_error "out.mp4 exists." in.mp4 out.mp4

# A long file: a full disk ends it although the queue is full, and an interrupt leaves what was written readable.
ffmpeg -v error -f lavfi -i "testsrc2=size=640x480:rate=25:duration=80" -c:v mpeg4 -q:v 8 long.avi
ln -s /dev/full full.mkv
expect_error "track: [VideoOutputVideoFile::frameWrite]: av_write_frame failed." long.avi full.mkv
stopped() { # SIGNAL NUMBER COMMAND...: what was written until the signal is a whole file
  local signal=$1 number=$2 pid code=0 written
  shift 2
  rm -f cut.mp4
  "$@" >run.log 2>err.log &
  pid=$!
  # Frames in the file are the sign that it is well under way.
  until [ "$(stat -c %s cut.mp4 2>/dev/null || echo 0)" -gt 50000 ]; do
    kill -0 $pid || fail "ended by itself"
    sleep 0.05
  done
  kill "-$signal" "$(cat pid 2>/dev/null || echo $pid)"
  wait $pid || code=$?
  [ $code -eq $((128 + number)) ] || fail "exit code $code after $signal"
  written=$(sed -n 's/^\([0-9]*\) frames in .*/\1/p' run.log)
  ((written > 0 && written < 2000)) || fail "$signal after '$written' frames"
  [ "$(frames cut.mp4)" = "$written" ] || fail "$signal: $(frames cut.mp4) of $written frames kept"
}
stopped INT 2 "$track" long.avi cut.mp4
stopped TERM 15 "$track" long.avi cut.mp4
# On a terminal: what the writer's thread says stands on a line of its own.
stopped HUP 1 script -qec "echo \$\$ >pid; exec '$track' long.avi cut.mp4" terminal.log
grep -qP '\d+ frames, \d+ %\x1b\[K\r' terminal.log || fail "no progress line"
tr '\r' '\n' <terminal.log | grep -qP '^(\x1b\[K)?Thread [0-9a-f]+: Interrupted\.' || fail "glued to the progress line"
