#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Cross-compiles images and conversions for 64-bit ARM and runs their tests under emulation: the portable path gives the
# bytes that x86 gives. Nothing else is promised there.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh library g++-aarch64-linux-gnu libgmock-dev libgtest-dev qemu-user

cmake -S tests/arm64 -B build/arm64 -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_SYSTEM_NAME=Linux \
  -DCMAKE_SYSTEM_PROCESSOR=aarch64 -DCMAKE_CXX_COMPILER=aarch64-linux-gnu-g++ >/dev/null
cmake --build build/arm64 -j "$(nproc)" --target portable
qemu-aarch64 build/arm64/portable "$@"
