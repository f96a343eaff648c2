#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Whether this tree is slower than a commit: builds the benchmarks of both, runs them in turn and prints for each row how
# fast this tree is relative to the commit, with the spread over the rounds.
#
#   bench-against.sh COMMIT [ROUNDS [PROGRAM [ARGUMENT...]]]
#
# ROUNDS is 5 without, PROGRAM conversions; the arguments go to the program: --benchmark_filter='1920x1080/AVX2', ...
set -euo pipefail
cd "$(dirname "$0")/.."
[ $# -gt 0 ] || { sed -n '3,8s/^# \{0,1\}//p' "$0" >&2; exit 2; }
commit=$(git rev-parse --verify --short "$1^{commit}")
rounds=${2:-5}
program=${3:-conversions}
shift $(($# < 3 ? $# : 3))
scripts/setup.sh git libbenchmark-dev python3-minimal

scratch=build/against
old=$scratch/$commit
if [ ! -d "$old/source" ]; then
  mkdir -p "$old/unpacked"
  git archive "$commit" | tar -x -C "$old/unpacked"
  mv "$old/unpacked" "$old/source"
fi

build() { # SOURCE TARGET
  if ! { cmake -S "$1" -B "$2" -G Ninja -DCMAKE_BUILD_TYPE=Release -DKOVANTA_BUILD_BENCH=ON \
    -DKOVANTA_BUILD_TESTS=OFF -DKOVANTA_BUILD_EXAMPLES=OFF && cmake --build "$2" --target "bench_$program"; } \
    >"$2.log" 2>&1; then
    tail -n 30 "$2.log" >&2
    return 1
  fi
}
build "$old/source" "$old/build"
build . "$scratch/this"

# Few repetitions and many rounds: a process keeps the pages it got, fast or slow ones. Peers do not take part.
run() { # WHICH BUILD ROUND ARGUMENT...
  "$2/bench/bench_$program" --fastest --table="$scratch/$1.$3.tsv" --benchmark_repetitions=3 \
    --benchmark_filter='-/(lib|OpenCV|bare|memcpy)' "${@:4}" >"$scratch/$1.$3.log" 2>&1 ||
    { tail -n 30 "$scratch/$1.$3.log" >&2; return 1; }
}
rm -f "$scratch"/{old,this}.*.tsv
for ((round = 1; round <= rounds; ++round)); do
  # Whoever comes second finds another machine than the first, so they take turns.
  if ((round % 2)); then order=(old this); else order=(this old); fi
  for which in "${order[@]}"; do
    case $which in
      old) run old "$old/build" "$round" "$@" ;;
      this) run this "$scratch/this" "$round" "$@" ;;
    esac
  done
done
echo "This tree relative to $commit, $program, $rounds rounds:"
python3 bench/compare.py "$scratch" "$rounds"
