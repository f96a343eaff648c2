#!/usr/bin/env bash
# Builds the fuzz targets with clang in build/fuzz and runs each of them: scripts/fuzz.sh [SECONDS [TARGET...]]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
shift || true
build=build/fuzz
cmake -S . -B $build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
  -DKOVANTA_BUILD_FUZZ=ON -DKOVANTA_BUILD_TESTS=OFF -DKOVANTA_BUILD_EXAMPLES=OFF > /dev/null
cmake --build $build --target fuzz_targets

targets=("$@")
[ ${#targets[@]} -gt 0 ] || mapfile -t targets < <(ls $build/fuzz/corpus)
for target in "${targets[@]}"; do
  echo "== $target, $seconds s"
  mkdir -p "$build/found/$target"
  # Complaints of libjpeg and libpng go with -close_fd_mask; a finding is kept in build/fuzz/found.
  "$build/fuzz/$target" -max_total_time="$seconds" -max_len=4096 -timeout=20 -close_fd_mask=3 \
    -artifact_prefix="$build/found/$target/" -print_final_stats=1 "$build/fuzz/corpus/$target" 2>&1 | tail -12
done
