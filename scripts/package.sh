#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Makes Debian packages of what git tracks in this tree, as it is: libkovanta, libkovanta-dev and kovanta-tools, in
# build/packages. package.sh [--twice]: with --twice they are made in two places, and have to be the same to the byte.
#
# lintian warns that the library's name has no version and that there is no link to a versioned one: that is how it is
# named. Distributors who want a number set KOVANTA_SOVERSION.
set -euo pipefail
cd "$(dirname "$0")/.."
[[ $# -eq 0 || ($# -eq 1 && $1 == --twice) ]] || { echo "usage: package.sh [--twice]" >&2; exit 2; }
scripts/setup.sh demo build-essential debhelper dpkg-dev git help2man lintian

number() { sed -n "s/^#define KOVANTA_VERSION_$1 //p" include/Kovanta/Version.h; }
version=$(number MAJOR).$(number MINOR).$(number PATCH)
# The date of the packages, and of the files in them, is that of the last commit.
git() { command git -c safe.directory='*' "$@"; }
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
export SOURCE_DATE_EPOCH

# make_in PLACE: the packages in PLACE, built in PLACE/kovanta
make_in() {
  local tree=$1/kovanta
  rm -rf "$1"
  mkdir -p "$tree"
  git ls-files -z | tar --null -T - -cf - | tar -C "$tree" -xf -
  cp -r packaging/debian "$tree/debian"
  cat >"$tree/debian/changelog" <<END
kovanta ($version) unstable; urgency=medium

  * What is new stands in CHANGELOG.md.

 -- The Kovanta authors <kovanta@example.org>  $(date -uRd "@$SOURCE_DATE_EPOCH")
END
  echo "package: building $1" >&2
  (cd "$tree" && dpkg-buildpackage --build=binary --no-sign) >"$1/build.log" 2>&1 || { tail -n 30 "$1/build.log"; exit 1; }
}

make_in build/packages
if [ $# -gt 0 ]; then
  make_in build/packages-again/elsewhere
  for package in build/packages/*.deb; do
    cmp "$package" "build/packages-again/elsewhere/${package##*/}" || { echo "package: not reproducible" >&2; exit 1; }
  done
  rm -rf build/packages-again
fi
lintian --allow-root --tag-display-limit 0 --fail-on error build/packages/*.changes
ls build/packages/*.deb
