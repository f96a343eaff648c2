#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Builds libjpeg, libpng and FreeType from Debian's source packages, as static libraries that the fuzzer sees into:
# scripts/fuzz-libraries.sh DIRECTORY. They end up in DIRECTORY/prefix. Needs no root: the lists of the source packages
# are kept in DIRECTORY, derived from the sources that the system's apt has.
set -euo pipefail
mkdir -p "$1"
cd "$1"
here=$PWD
flags="-O1 -g -fno-omit-frame-pointer -fsanitize=fuzzer-no-link,address"

for tool in clang apt-get dpkg-source cmake ninja; do
  command -v "$tool" >/dev/null || { echo "fuzz-libraries: $tool is missing (Debian: clang dpkg-dev cmake ninja-build)" >&2; exit 1; }
done

mkdir -p apt/sources apt/lists/partial apt/cache/archives/partial
rm -f apt/sources/*
for file in /etc/apt/sources.list.d/*.sources; do
  [ -f "$file" ] && sed 's/^Types:.*/Types: deb-src/' "$file" >"apt/sources/$(basename "$file")"
done
cat /etc/apt/sources.list /etc/apt/sources.list.d/*.list 2>/dev/null | sed -n 's/^deb /deb-src /p' >apt/sources/all.list || true
options=(-o Dir::Etc::sourcelist=/dev/null -o "Dir::Etc::sourceparts=$here/apt/sources" -o "Dir::State::lists=$here/apt/lists"
  -o "Dir::Cache=$here/apt/cache" -o APT::Sandbox::User= -qq)

fetch() {
  local package=$1 version
  [ -z "$(compgen -G "$package-*/")" ] || return 0
  [ -n "$(compgen -G "apt/lists/*Sources*")" ] || apt-get "${options[@]}" update
  apt-get "${options[@]}" source "$package" >fetch.log 2>&1 && return 0
  # The newest may be announced before it is there.
  for version in $(apt-cache "${options[@]}" showsrc "$package" | sed -n 's/^Version: //p'); do
    apt-get "${options[@]}" source "$package=$version" >>fetch.log 2>&1 && return 0
  done
  tail -n 5 fetch.log >&2
  echo "fuzz-libraries: the sources of $package cannot be had" >&2
  return 1
}

# build PACKAGE OPTIONS...
build() {
  local package=$1 source
  shift
  [ ! -f "built-$package" ] || return 0
  fetch "$package"
  source=$(compgen -G "$package-*/" | head -n 1)
  if ! {
    cmake -S "$source" -B "build-$package" -G Ninja -DCMAKE_BUILD_TYPE=None -DCMAKE_C_COMPILER=clang \
      -DCMAKE_C_FLAGS="$flags" -DCMAKE_INSTALL_PREFIX="$here/prefix" "-DCMAKE_INSTALL_LIBDIR:PATH=$here/prefix/lib" \
      -DCMAKE_POSITION_INDEPENDENT_CODE=ON -DCMAKE_POLICY_VERSION_MINIMUM=3.5 "$@" &&
      cmake --build "build-$package" && cmake --install "build-$package"
  } >"$package.log" 2>&1; then
    tail -n 15 "$package.log" >&2
    echo "fuzz-libraries: $package does not build" >&2
    return 1
  fi
  touch "built-$package"
}

build libjpeg-turbo -DENABLE_SHARED=OFF -DWITH_SIMD=OFF -DWITH_TURBOJPEG=OFF
build libpng1.6 -DPNG_SHARED=OFF -DPNG_TESTS=OFF
build freetype -DBUILD_SHARED_LIBS=OFF -DFT_DISABLE_HARFBUZZ=ON -DFT_DISABLE_BROTLI=ON -DFT_DISABLE_PNG=ON -DFT_DISABLE_BZIP2=ON
