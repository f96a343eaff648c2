#!/usr/bin/env bash
# Compares what the library reads from real stills, sample for sample, with what bare libjpeg and libpng deliver and
# with the conversion's formulas: scripts/check-real-stills.sh [BUILD_DIRECTORY [DIRECTORY...]]
# Without directories, Debian packages with photographs, screenshots and icons are fetched and unpacked (not installed)
# under the build directory; about 80 MB.
set -euo pipefail
cd "$(dirname "$0")/.."
build=$(realpath "${1:-build/release}")
shift || true
packages=(desktop-base gnome-user-docs hugin-data imagemagick-6-doc lxqt-themes propaganda-debian tango-icon-theme
  ukui-wallpapers)

cmake --build "$build" --target check_real_stills > /dev/null
if [ $# -eq 0 ]; then
  mkdir -p "$build/real-stills/packages" "$build/real-stills/files"
  cd "$build/real-stills/packages"
  for package in "${packages[@]}"; do
    compgen -G "${package}_*.deb" > /dev/null || apt-get download "$package" > /dev/null
    dpkg -x "${package}"_*.deb ../files
  done
  set -- "$build/real-stills/files"
fi
"$build/tests/imagefile/check_real_stills" "$@"
