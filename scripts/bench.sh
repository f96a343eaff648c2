#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Installs the peers, builds the benchmarks and runs them one after the other. Conversions run once for each level of
# instructions, peers held to the same. All figures go to build/bench/results.tsv (program, level, contest, contender,
# side, units per second), and from there into the tables of docs/performance.md and README.md and the plot docs/performance.svg.
# Some twelve minutes. Arguments go to the programs: --fastest for a busy machine, --benchmark_filter=REGEX, ...
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh libbenchmark-dev libopencv-dev libswscale-dev libyuv-dev python3-minimal

build=build/bench
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DKOVANTA_BUILD_BENCH=ON -DKOVANTA_BUILD_TESTS=OFF \
  -DKOVANTA_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$build" >/dev/null

results=$build/results.tsv
: >"$results.new"
run() { # PROGRAM LEVEL ARGUMENT...
  local table=$build/table.tsv status=0
  printf '\n== %s %s\n' "$1" "$2"
  # Whatever a peer or a writer has to say stays out of the tables.
  "$build/bench/bench_$1" --table="$table" "${@:3}" 2>"$build/$1.log" || status=$?
  if [ "$status" -eq 2 ] && [ -n "$2" ]; then
    cat "$build/$1.log" # a level that this processor does not have
    return
  fi
  [ "$status" -eq 0 ] || { cat "$build/$1.log" >&2; exit 1; }
  sed "s/^/$1\t$2\t/" "$table" >>"$results.new"
}
for level in AVX-512 AVX-VNNI AVX2 SSE4.1 portable; do
  run conversions "$level" --level="$level" "$@"
done
for program in stills text videoread stored road startup; do
  run "$program" "" "$@"
done
run road "" --size=3840x2160 "$@"
mv "$results.new" "$results"
printf '\n== growth\n'
"$build/bench/bench_growth" 20000 2>"$build/growth.log" | tee "$build/growth.txt"

case "$*" in
  *benchmark_filter*) exit ;; # half a table is none
esac
python3 bench/tables.py "$results" "$build/growth.txt" "$@"
python3 bench/plot.py "$results" 1920x1080 >docs/performance.svg
echo "The tables are in docs/performance.md, the plot is docs/performance.svg."
