#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# What all programs have in common: check-usage.sh PROGRAM...
set -euo pipefail
exec </dev/null # nobody answers questions
declare -A program
for path in "$@"; do program[$(basename "$path")]=$(realpath "$path"); done
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
fail() { echo "FAILED: $*"; cat ./*.log; exit 1; }

for name in "${!program[@]}"; do
  "${program[$name]}" --version >out.log 2>err.log || fail "$name --version"
  grep -qE "^$name \(Kovanta\) [0-9]+\.[0-9]+\.[0-9]+$" out.log || fail "$name: the version"
  "${program[$name]}" --help >out.log 2>err.log || fail "$name --help"
  [ "$(head -n 1 out.log | cut -d ' ' -f 1-3)" = "Usage: $name [OPTION]..." ] || fail "$name: the usage"
  for line in '  -h, --help  ' '  --version  ' '^O[Pp][Tt][Ii][Oo][Nn][Ss]:$' '^Exit codes:$'; do
    grep -q -e "$line" out.log || fail "$name --help has no '$line'"
  done
  [ "$(wc -L <out.log)" -le 100 ] || fail "$name --help is wide"
  if "${program[$name]}" --help >/dev/full 2>/dev/null; then fail "$name did not notice a full disk"; fi
done

# What is wrong with a command line is said in a sentence, with exit code 2, and nothing is written.
printf 'P5 2 2 255\nabcd' >in.pgm
mkdir stills
cp in.pgm stills
refused() { # TEXT PROGRAM ARGUMENTS...
  local text=$1 code=0
  shift
  "${program[$1]}" "${@:2}" >out.log 2>err.log </dev/null || code=$?
  [ $code -eq 2 ] || fail "exit code $code for: $*"
  grep -qF -- "$1: " err.log || fail "no name for: $*"
  grep -qF -- "$text" err.log || fail "no '$text' for: $*"
  [ -z "$(find . -name 'out*' ! -name out.log)" ] || fail "something was written by: $*"
}
refused "'out' has no extension" track in.mp4 out
refused "'out' has no extension" sequence stills out
refused "'out' has no extension" convert in.pgm out
refused "'out' has no extension" contact in.mp4 out
refused "'out' has no extension" text in.pgm out
refused "'out.' has no extension" convert in.pgm out.
refused "'dir.d/out' has no extension" convert in.pgm dir.d/out
refused "unlike '0'" track in.mp4 out.mp4 --bitrate 0
refused "unlike '1k'" track in.mp4 out.mp4 --bitrate 1k
refused "unlike '25/0'" sequence stills out.avi --rate 25/0
refused "unlike '-5'" sequence stills out.avi --rate -5
refused "from 1 to 50, unlike '51'" contact in.mp4 out.png --rows 51
refused "not expected: more" gallery out more
refused "unlike '0'" play in.mp4 --rate 0
refused "'out' has no extension" capture 0 out
refused "two outputs" capture 0 out.avi out.mp4
refused "unlike '-1'" capture -n -1 --show
refused "Give a file to write, or --show." capture 0 320x240
refused "Give a file to write, or --show." capture -n 5
refused "unlike '08'" contact --columns 08 clip.mp4 sheet.png

# What the library takes for an extension is one.
"${program[convert]}" in.pgm .png >out.log 2>err.log || fail "a name that is an extension"
[ "$(head -c 4 .png | tail -c 3)" = PNG ] || fail "its format"

# Writers of stills, like those of videos, keep what exists unless told otherwise.
question="out.png exists. Replace it? [y/N] "
echo old >out.png
for arguments in "convert in.pgm out.png" "text in.pgm out.png"; do
  read -ra words <<<"$arguments"
  code=0
  "${program[${words[0]}]}" "${words[@]:1}" 2>err.log </dev/null || code=$?
  [ "$code $(cat out.png)" = "1 old" ] || fail "replaced: $arguments"
  grep -qx "${words[0]}: out.png exists. Say --force to replace it." err.log || fail "no reason: $arguments"
done
answered() { # ANSWER: convert as somebody at a terminal sees it
  echo "$1" | script -qec "'${program[convert]}' in.pgm out.png" answer.log >/dev/null
}
! answered n || fail "replaced after a no"
grep -qF "$question" answer.log || fail "no question"
[ "$(cat out.png)" = old ] || fail "written after a no"
answered y || fail "a yes"
[ "$(head -c 4 out.png | tail -c 3)" = PNG ] || fail "nothing written after a yes"
echo old >out.png
"${program[convert]}" in.pgm out.png --force >out.log || fail "--force"
[ "$(head -c 4 out.png | tail -c 3)" = PNG ] || fail "--force wrote nothing"
