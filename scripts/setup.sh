#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Installs the Debian packages that building and testing take, and those named: setup.sh [PACKAGE...]. Silent and quick
# when all are there.
set -euo pipefail

packages=(
  # tools
  ca-certificates cmake g++ ninja-build pkg-config
  # what the library is built on
  libavcodec-dev libavformat-dev libavutil-dev libboost-date-time-dev libboost-filesystem-dev libboost-system-dev
  libboost-thread-dev libfreetype-dev libjpeg62-turbo-dev libpng-dev libsdl1.2-dev libx11-dev
  # examples and tests
  ffmpeg imagemagick libcli11-dev libgmock-dev libgtest-dev libxtst-dev xauth xdotool xvfb
  # the virtual machine that the camera is tested in, and what its modules are built with
  libelf1 make qemu-system-x86 xz-utils
  "$@"
)

missing=()
for package in "${packages[@]}"; do
  [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "setup: not root and no sudo; install: ${missing[*]}" >&2; exit 1; }
  as_root=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
log=$(mktemp)
trap 'rm -f "$log"' EXIT
echo "setup: installing ${#missing[@]} packages" >&2
if ! { "${as_root[@]}" apt-get update && "${as_root[@]}" apt-get install -y --no-install-recommends "${missing[@]}"; } \
    >"$log" 2>&1; then
  tail -n 20 "$log" >&2
  echo "setup: apt-get failed" >&2
  exit 1
fi
