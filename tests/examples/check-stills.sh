#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# The example programs on stills: check-examples.sh CONVERT SEQUENCE
set -euo pipefail
convert=$(realpath "$1")
sequence=$(realpath "$2")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
fail() { echo "FAILED: $*"; exit 1; }

# Grey has no way to RGB but the bridge, and survives it; RGB files exchange their samples as they are.
printf 'P5 4 2 255\n\000\020\100\177\200\300\360\377' > grey.pgm
"$convert" grey.pgm a.ppm | grep -q '4 x 2, PF_Y (Grayscale) to PF_YCC444P .* to PF_RGB' || fail "the way from grey to RGB"
"$convert" a.ppm a.png | grep -q 'as it is' || fail "RGB to RGB"
"$convert" a.png b.ppm > /dev/null
cmp a.ppm b.ppm || fail "samples through a PNG file"
[ "$(head -c 11 a.ppm)" = "P6 4 2 255" ] || fail "header"
# What came from grey is grey.
od -An -v -t u1 -w3 -j 11 a.ppm | while read -r r g b; do
  (( r - g <= 1 && g - r <= 1 && b - g <= 1 && g - b <= 1 )) || { echo "FAILED: $r $g $b is no grey"; exit 1; }
done
"$convert" a.png a.jpg > /dev/null
"$convert" a.jpg back.pgm | grep -q 'PF_JFIF .* to PF_YCC444P .* to PF_Y' || fail "the way from JPEG to grey"
[ "$(stat -c %s back.pgm)" = 19 ] || fail "size of the grey file"
! "$convert" a.png a.bmp 2> error || fail "an unknown extension"
grep -q 'Cannot write a.bmp: extension not recognized.' error || fail "its message"

mkdir stills
{ printf 'P5 64 48 255\n'; head -c 3072 /dev/zero; } > big.pgm
for i in 0 1 2 3 4 5 6 7; do cp big.pgm stills/$i.pgm; done
"$sequence" stills out.avi --rate 10 2> progress
grep -q '8 of 8' progress || fail "progress"
[ "$(head -c 4 out.avi)" = RIFF ] || fail "the video file"
# A writer that fails while write() waits for it does not hold the program up.
mkdir large
for i in $(seq 10 49); do { printf 'P5 640 480 255\n'; head -c 307200 /dev/urandom; } > "large/$i.pgm"; done
! (trap '' XFSZ; ulimit -f 300; exec timeout 100 "$sequence" large cut.avi 2> error) || fail "a file that cannot grow"
grep -q '^sequence: .*av_write_frame failed' error || fail "its message"
! "$sequence" "$work/none" out.avi 2> error || fail "a directory that is not there"
grep -q 'Invalid image file directory given!' error || fail "its message"
printf 'P5 2 2 255\nabcd' > stills/9.pgm
! "$sequence" stills out.avi 2> error || fail "a still of another size"
grep -q 'A still is 2 x 2, unlike the first.' error || fail "its message"
