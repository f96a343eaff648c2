#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# The example programs on stills: check-examples.sh CONVERT SEQUENCE
set -euo pipefail
exec </dev/null # nobody answers questions
convert=$(realpath "$1")
sequence=$(realpath "$2")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
fail() { echo "FAILED: $*"; exit 1; }

# What can keep its samples does: grey as grey and as grey colours, through every format and back.
printf 'P5 4 2 255\n\000\020\100\177\200\300\361\377' > grey.pgm
"$convert" grey.pgm a.ppm | grep -q '4 x 2, PF_Y (Grayscale) to PF_RGB .*, as it is' || fail "the way from grey to RGB"
head -c 11 a.ppm | grep -q "^P6 4 2 255$" || fail "header"
tail -c 8 grey.pgm | od -An -v -t u1 -w1 | awk '{ print $1, $1, $1 }' > grey.txt
od -An -v -t u1 -w3 -j 11 a.ppm | awk '{ print $1, $2, $3 }' | cmp - grey.txt || fail "grey became other colours"
magick() { command convert "$@"; }
magick grey.pgm -define png:color-type=0 grey.png # a PNG of greys
for way in "a.ppm b.png" "b.png c.pgm" "grey.png d.ppm" "grey.png e.pgm"; do
  read -r from to <<< "$way"
  "$convert" "$from" "$to" > out.log
  ! grep lost out.log || fail "$way loses something"
done
for pair in "c.pgm grey.pgm" "e.pgm grey.pgm" "a.ppm d.ppm"; do
  read -r one other <<< "$pair"
  cmp "$one" "$other" || fail "samples changed"
done

# What cannot be kept is said.
loses() { # WHAT FROM TO: what the program says to have lost
  "$convert" --force "$2" "$3" > out.log || fail "$2 to $3"
  [ "$(sed -n 's/^lost: //p' out.log)" = "$1" ] || fail "$2 to $3: $(cat out.log)"
}
magick -size 4x2 gradient:red-blue -alpha set -channel A -evaluate set 50% +channel -define png:color-type=6 -define png:bit-depth=16 deep.png
magick -size 4x2 gradient:red-blue -define png:color-type=2 -depth 8 colour.png
magick colour.png -alpha set -define png:color-type=6 opaque.png
loses "transparency, the low byte of 16-bit samples" deep.png a.png
loses "transparency, the low byte of 16-bit samples, colour" deep.png a.pgm
loses "colour" colour.png a.pgm
loses "" opaque.png a.ppm
# What a file could be seen through by counts only where it is.
magick -size 4x2 gradient:gray20-gray80 -alpha set -define png:color-type=4 -depth 8 opaque-grey.png
magick opaque-grey.png -channel A -evaluate set 99% +channel -define png:color-type=4 sheer-grey.png
magick opaque-grey.png -define png:color-type=4 -define png:bit-depth=16 -depth 16 opaque-deep.png
magick -size 4x2 xc:red xc:none -append PNG8:sheer-palette.png
loses "" opaque-grey.png a.pgm
loses "transparency" sheer-grey.png a.pgm
loses "the low byte of 16-bit samples" opaque-deep.png a.pgm
loses "transparency" sheer-palette.png a.ppm
loses "what JPEG rounds" colour.png a.jpg
loses "colour" a.jpg back.pgm
[ "$(stat -c %s back.pgm)" = 19 ] || fail "size of the grey file"
"$convert" opaque.png opaque.ppm > out.log
"$convert" colour.png colour.ppm > out.log
cmp opaque.ppm colour.ppm || fail "an opaque PNG's colours"

# A camera held upright: the picture is turned, its left side comes to the top.
magick -size 40x20 xc:blue -size 20x20 xc:red +swap +append flat.jpg
{ head -c 2 flat.jpg; printf '\377\341\0\042Exif\0\0MM\0*\0\0\0\10\0\1\1\22\0\3\0\0\0\1\0\6\0\0\0\0\0\0'; tail -c +3 flat.jpg; } > held.jpg
"$convert" held.jpg held.ppm | grep -q '^20 x 60, turned upright, ' || fail "a still that is to be turned"
[ "$(magick held.ppm -format '%[fx:p{10,5}.r > 0.9 && p{10,50}.b > 0.9]' info:)" = 1 ] || fail "turned the wrong way"
"$convert" --as-stored held.jpg stored.ppm | grep -q '^60 x 20, PF_JFIF' || fail "a still as it is stored"

! "$convert" colour.png a.bmp 2> error || fail "an unknown extension"
grep -q 'Cannot write a.bmp: extension not recognized.' error || fail "its message"
! "$convert" none.png b.pgm 2> error || fail "a still that is not there"
grep -q 'Cannot open none.png: No such file or directory.' error || fail "its message"

mkdir stills
{ printf 'P5 64 48 255\n'; head -c 3072 /dev/zero; } > big.pgm
for i in 0 1 2 3 4 5 6 7; do cp big.pgm stills/$i.pgm; done
"$sequence" stills out.avi --rate 30000/1001 > out.log 2> error
grep -qx '8 of 8 stills' out.log || fail "the count"
! grep -q $'\r' error || fail "a progress line in a file"
[ "$(ffprobe -v error -show_entries stream=r_frame_rate -of csv=p=0 out.avi)" = 30000/1001 ] || fail "the rate"
! "$sequence" stills out.avi 2> error < /dev/null || fail "a video was replaced without --force"

# By name 10 comes before 2, by number behind it; the ramp of greys tells. An odd size is kept.
mkdir numbered
for i in 1 2 10; do magick -size 65x49 "xc:gray($((i * 20)))" -depth 8 "numbered/s$i.pgm"; done
greys() { ffmpeg -v error -i "$1" -vf scale=1:1,format=gray -f rawvideo - | od -An -v -tu1 -w1 | sort -nc 2> /dev/null && echo rising; }
"$sequence" numbered by-name.mkv > out.log 2> error
"$sequence" numbered by-number.mkv --rate 2.5 --natural > out.log 2> error
[ "$(greys by-name.mkv)" != rising ] || fail "the order of names"
[ "$(greys by-number.mkv)" = rising ] || fail "the order of numbers"
[ "$(ffprobe -v error -show_entries stream=width,height,pix_fmt,color_space -of csv=p=0 by-name.mkv)" = \
  65,49,yuv444p,smpte170m ] || fail "the size or the matrix"

# A signal ends it like the end does.
mkdir large
for i in $(seq 10 49); do { printf 'P5 640 480 255\n'; head -c 307200 /dev/urandom; } > "large/$i.pgm"; done
mkdir many
for i in $(seq 1000 1999); do ln -s "$PWD/large/$((i % 40 + 10)).pgm" many/"$i".pgm; done
"$sequence" many stopped.avi --force > out.log 2> error &
pid=$!
until [ "$(stat -c %s stopped.avi 2> /dev/null || echo 0)" -gt 500000 ]; do kill -0 $pid || fail "ended by itself"; sleep 0.02; done
kill -TERM $pid
code=0
wait $pid || code=$?
[ $code -eq 143 ] || fail "exit code $code after TERM"
written=$(sed -n 's/ of 1000 stills//p' out.log)
[ "$(ffprobe -v error -count_frames -show_entries stream=nb_read_frames -of csv=p=0 stopped.avi)" = "$written" ] ||
  fail "not all of $written frames kept"

# A writer that fails while write() waits for it does not hold the program up.
! (trap '' XFSZ; ulimit -f 300; exec timeout 100 "$sequence" large cut.avi 2> error) || fail "a file that cannot grow"
grep -q '^sequence: .*av_write_frame failed' error || fail "its message"
! "$sequence" "$work/none" none.avi 2> error || fail "a directory that is not there"
grep -q 'There is no directory' error || fail "its message"
printf 'P5 2 2 255\nabcd' > stills/9.pgm
! "$sequence" stills other.avi 2> error || fail "a still of another size"
grep -q 'stills/9.pgm is 2 x 2, unlike the stills before, which are 64 x 48.' error || fail "its message"
