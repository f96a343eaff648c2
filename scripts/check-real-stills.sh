#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Compares what the library reads from real stills, sample for sample, with what bare libjpeg and libpng deliver and
# with the conversion's formulas: scripts/check-real-stills.sh [BUILD_DIRECTORY [[--most FILES_OF_A_KIND] DIRECTORY...]]
# Without directories, Debian packages with photographs, screenshots and icons are fetched and unpacked (not installed)
# under the build directory; about 80 MB. Ends with 77 where there are no stills.
set -euo pipefail
cd "$(dirname "$0")/.."
build=$(realpath "${1:-build/release}")
shift || true
most=1000000
[ "${1:-}" != --most ] || { most=$2; shift 2; }
packages=(desktop-base gnome-user-docs hugin-data imagemagick-6-doc lxqt-themes propaganda-debian tango-icon-theme
  ukui-wallpapers)

if [ $# -eq 0 ]; then
  cmake --build "$build" --target fuzz_png fuzz_jpeg > /dev/null
  mkdir -p "$build/real-stills/packages" "$build/real-stills/files"
  cd "$build/real-stills/packages"
  for package in "${packages[@]}"; do
    compgen -G "${package}_*.deb" > /dev/null || apt-get download "$package" > /dev/null
    dpkg -x "${package}"_*.deb ../files
  done
  set -- "$build/real-stills/files"
fi
none=yes
for kind in png jpeg; do
  # Every so many, so that a few hundred stand for all places.
  find "$@" -type f -iregex ".*\\.\\(${kind/jpeg/jpe?g}\\)" -print0 2>/dev/null | sort -z |
    awk -v RS='\0' -v ORS='\0' -v most="$most" '{ f[NR] = $0 } END { s = int((NR + most - 1) / most); for (i = 1; i <= NR; i += s) print f[i] }' \
    > "$build/real-$kind"
  [ -s "$build/real-$kind" ] || continue
  none=
  xargs -0 "$build/fuzz/fuzz_$kind" --patient < "$build/real-$kind" 2>/dev/null | wc -l | sed "s/$/ $kind files compared/"
done
[ -z "$none" ] || { echo "No PNG or JPEG files here."; exit 77; }
