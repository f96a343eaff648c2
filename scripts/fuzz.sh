#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Fuzzes a target for a while, or every target in turn: scripts/fuzz.sh [TARGET|all [SECONDS]]
# Builds the targets with clang in build/fuzz, and with them libjpeg, libpng and FreeType from their Debian sources, so
# that coverage guides the fuzzer through these too. New inputs gather in build/fuzz/corpus/TARGET, findings in
# build/fuzz/found/TARGET. "scripts/fuzz.sh --minimise [TARGET|all]" puts the smallest set with the same coverage, within
# 80 kB a target, in the place of the committed one.
set -euo pipefail
cd "$(dirname "$0")/.."
minimise=
[ "${1:-}" != --minimise ] || { minimise=yes; shift; }
mapfile -t targets < <(sed -n 's/^kovanta_fuzz(\([a-z]*\).*/\1/p' fuzz/CMakeLists.txt)
[ "${1:-all}" = all ] || { [[ " ${targets[*]} " == *" $1 "* ]] || { echo "fuzz: no target $1, but: ${targets[*]}" >&2; exit 1; }; targets=("$1"); }
seconds=${2:-60}
command -v clang++ >/dev/null || { echo "fuzz: needs clang (Debian: apt-get install clang libclang-rt-14-dev dpkg-dev)" >&2; exit 1; }

build=$PWD/build/fuzz
libraries=()
if scripts/fuzz-libraries.sh "$build/libraries"; then
  libraries=("-DCMAKE_PREFIX_PATH=$build/libraries/prefix")
else
  echo "fuzz: going on with the system's libraries, into which the fuzzer does not see" >&2
fi
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ "${libraries[@]}" \
  -DKOVANTA_BUILD_FUZZ=ON -DKOVANTA_BUILD_TESTS=OFF -DKOVANTA_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$build" --target "${targets[@]/#/fuzz_}"

export ASAN_OPTIONS=allocator_may_return_null=1:detect_leaks=1
for target in "${targets[@]}"; do
  mkdir -p "$build/corpus/$target" "$build/found/$target"
  program=$build/fuzz/fuzz_$target
  if [ "$minimise" ]; then
    smallest=$build/smallest/$target
    rm -rf "$smallest"
    mkdir -p "$smallest"
    "$program" -merge=1 -close_fd_mask=3 -rss_limit_mb=3000 "$smallest" "fuzz/corpus/$target" "$build/corpus/$target" 2>&1 | tail -n 2
    # Files that have a name of their own are known cases and stay.
    find "fuzz/corpus/$target" -type f -regextype posix-extended -regex ".*/[0-9a-f]{40}" -delete
    # The smallest first, as far as the room goes.
    find "$smallest" -type f -printf '%s %p\n' | sort -n |
      while read -r size file; do
        room=$((${room:-80000} - size))
        [ "$room" -lt 0 ] || cp "$file" "fuzz/corpus/$target/"
      done
    continue
  fi
  echo "== $target, $seconds s"
  # The complaints of libjpeg and libpng go with -close_fd_mask; a finding is kept, with what the sanitizer says of it.
  if ! "$program" -max_total_time="$seconds" -max_len=16384 -timeout=20 -rss_limit_mb=3000 -close_fd_mask=1 \
      -artifact_prefix="$build/found/$target/" -print_final_stats=1 \
      "$build/corpus/$target" "fuzz/corpus/$target" >"$build/$target.log" 2>&1; then
    grep -aE 'FINDING|ERROR|SUMMARY|Test unit written' "$build/$target.log" | head -n 8
    echo "fuzz: $target has a finding; see $build/$target.log" >&2
    found=yes
  fi
  grep -aE 'cov: ' "$build/$target.log" | tail -n 1
  grep -aE 'stat::(number_of_executed|average_exec|peak_rss)' "$build/$target.log" || true
done
[ -z "${found:-}" ]
