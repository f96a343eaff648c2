#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# What a configuration decides: which parts are built, what distributors may choose, what a parent project notices.
# Developer warnings are errors throughout. check-configure.sh SOURCE BUILD LIBRARY COMPILER
set -euo pipefail
source_dir=$1 compiler=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { cat "$work/log"; echo "FAILED: $*"; exit 1; }

# configure SOURCE OPTIONS...: into a build directory of its own, $build
count=0
try() {
  build=$work/build-$((count += 1))
  cmake -G Ninja -S "$1" -B "$build" -DCMAKE_CXX_COMPILER="$compiler" -Wdev -Werror=dev "${@:2}" >"$work/log" 2>&1
}
configure() { try "$@" || fail "configuring with ${*:2}"; }
refused() { ! try "$@" || fail "not refused: ${*:2}"; }
says() { grep -qF -- "$1" <(tr -s '\n ' ' ' <"$work/log") || fail "it does not say: $1"; }
builds() { grep -q -- "$1" "$build/build.ninja" || fail "$1 is not built: $2"; }
omits() { ! grep -q -- "$1" "$build/build.ninja" || fail "$1 is built: $2"; }
without=(-DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON -DCMAKE_DISABLE_FIND_PACKAGE_CLI11=ON)
tests=tests/image/image_wrap examples=examples/track

configure "$source_dir"
builds $tests "nothing is lacking"
builds $examples "nothing is lacking"
configure "$source_dir" "${without[@]}"
omits $tests "they lack GoogleTest"
omits $examples "they lack CLI11"
says "no tests (they lack GTest"
says "no examples (they lack CLI11"
refused "$source_dir" "${without[@]}" -DKOVANTA_BUILD_TESTS=ON
says "the tests lack GTest"
configure "$source_dir" -DBUILD_TESTING=OFF
omits $tests "with BUILD_TESTING=OFF"
builds $examples "with BUILD_TESTING=OFF"

configure "$source_dir" -DBUILD_TESTING=OFF -DKOVANTA_SOVERSION=7 -DKOVANTA_BUILTIN_FONT="$source_dir/LICENSE"
builds 'SONAME = libKovanta.so.7$' "with KOVANTA_SOVERSION=7"
cmake --build "$build" --target kovanta_font >"$work/log" 2>&1 || fail "KOVANTA_BUILTIN_FONT"
grep -q "luximr_ttf_size = $(wc -c <"$source_dir/LICENSE");" "$build/src/draw/LuximrTtf.cpp" ||
  fail "KOVANTA_BUILTIN_FONT is not what is built in"
refused "$source_dir" -DKOVANTA_BUILTIN_FONT=/nowhere.ttf
says "/nowhere.ttf, which does not exist"

mkdir "$work/parent"
cat >"$work/parent/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.25)
project(Parent LANGUAGES CXX)
add_subdirectory("$source_dir" kovanta)
END
configure "$work/parent"
builds 'SONAME = libKovanta.so$' "in a parent"
omits $tests "in a parent"
omits $examples "in a parent"
! grep -E '^(BUILD_TESTING|X11_|CMAKE_BUILD_TYPE:[A-Z]+=.)' "$build/CMakeCache.txt" || fail "the parent's cache"
installs() { grep -q 'file(INSTALL' "$build"/kovanta/cmake_install.cmake "$build"/kovanta/src/cmake_install.cmake; }
! installs || fail "a parent installs what is not its own"
configure "$work/parent" -DKOVANTA_INSTALL=ON
installs || fail "KOVANTA_INSTALL"
