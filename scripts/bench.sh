#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Installs the peers, builds the benchmarks and runs them one after the other; the plot of the conversions goes to
# docs/performance.svg. Arguments go to the programs: --fastest for a busy machine, --benchmark_filter=REGEX, ...
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh libbenchmark-dev libopencv-dev libswscale-dev libyuv-dev python3-minimal

build=build/bench
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DKOVANTA_BUILD_BENCH=ON -DKOVANTA_BUILD_TESTS=OFF \
  -DKOVANTA_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$build" >/dev/null

for program in conversions stills text videoread road; do
  [ -x "$build/bench/bench_$program" ] || continue
  printf '\n== %s\n' "$program"
  # Whatever a peer or a writer has to say stays out of the tables.
  "$build/bench/bench_$program" --table="$build/$program.tsv" "$@" 2>"$build/$program.log" ||
    { cat "$build/$program.log" >&2; exit 1; }
done
printf '\n== growth\n'
"$build/bench/bench_growth" 20000 2>"$build/growth.log"

python3 bench/plot.py "$build/conversions.tsv" 1920x1080 >docs/performance.svg
echo "The plot is docs/performance.svg."
