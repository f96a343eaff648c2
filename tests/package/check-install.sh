#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Installs the library into an empty prefix and builds and runs a small program against it: through find_package and
# through pkg-config.
set -euo pipefail
build_dir=$2 compiler=$4
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# A fresh configuration, since the prefix is part of kovanta.pc; the objects come from this build.
DESTDIR='' cmake --install "$build_dir" --prefix "$work/prefix" >/dev/null
libdir=$(dirname "$(find "$work/prefix" -name libKovanta.so)")

if ! { cmake -S "$here/consumer" -B "$work/build" -DCMAKE_PREFIX_PATH="$work/prefix" \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_BUILD_TYPE=Release && cmake --build "$work/build"; } >"$work/log" 2>&1; then
  cat "$work/log"
  echo "FAILED: find_package"
  exit 1
fi
LD_LIBRARY_PATH=$libdir "$work/build/consumer"

export PKG_CONFIG_PATH=$libdir/pkgconfig
for standard in c++17 c++20 c++2b; do
  # shellcheck disable=SC2046
  "$compiler" -std=$standard -Wall -Wextra -Wpedantic -Werror "$here/consumer/main.cpp" -o "$work/by-pkg-config" \
    $(pkg-config --cflags --libs kovanta)
  LD_LIBRARY_PATH=$libdir "$work/by-pkg-config"
done

# What is linked to is what is used: newer Boost has no library for the rest.
! pkg-config --libs kovanta | grep -oE 'boost_[a-z_]+' | grep -v boost_thread || { echo "FAILED: kovanta.pc"; exit 1; }
! readelf -d "$libdir/libKovanta.so" | grep -oE 'libboost_[a-z_]+' | grep -vE 'thread|filesystem' ||
  { echo "FAILED: a library of Boost's that nothing needs"; exit 1; }
