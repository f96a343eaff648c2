#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Installs Debian packages where they are missing: setup.sh [library|demo|test] [PACKAGE...]
#   library  what the library is built with
#   demo     and the examples
#   test     and the tests (the default)
# and the packages named. Silent and quick when all are there; needs root or sudo.
set -euo pipefail

library=(
  # tools
  ca-certificates cmake g++ ninja-build pkg-config
  # what the library is built on
  libavcodec-dev libavformat-dev libavutil-dev libboost-filesystem-dev libboost-thread-dev libfreetype-dev
  libjpeg62-turbo-dev libpng-dev libsdl1.2-dev libv4l-dev libx11-dev libxcb1-dev
)
demo=("${library[@]}" libcli11-dev)
test=(
  "${demo[@]}" ffmpeg imagemagick libgmock-dev libgtest-dev libxtst-dev xauth xdotool xvfb
  # the virtual machine that the camera is tested in, and what its modules are built with
  libelf1 make qemu-system-x86 xz-utils
)

case ${1:-} in
  library) shift && packages=("${library[@]}" "$@") ;;
  demo) shift && packages=("${demo[@]}" "$@") ;;
  test) shift && packages=("${test[@]}" "$@") ;;
  *) packages=("${test[@]}" "$@") ;;
esac

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
# In a directory of its own: not even root may open a file of another user's in /tmp itself.
logs=$(mktemp -d)
log=$logs/apt
trap 'rm -rf "$logs"' EXIT

# What apt says is for the log; its progress, in the third field of status lines, shows now and then. The status goes
# through a descriptor that is opened behind sudo, which closes those it is given.
apt() {
  # shellcheck disable=SC2016
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive LOG="$log" \
    sh -c 'exec apt-get -o APT::Status-Fd=3 "$@" 3>&1 >"$LOG" 2>&1' apt-get "$@" |
    awk -F: '
      $1 == "dlstatus" || $1 == "pmstatus" {
        step = ($1 == "dlstatus" ? "downloaded" : "installed") " " int($3 / 25) * 25 " %"
        if (step != last && step !~ / 0 %/)
          print "setup: " step
        last = step
      }' >&2 || { tail -n 20 "$log" >&2; echo "setup: apt-get $1 failed" >&2; exit 1; }
}
echo "setup: reading the lists of packages" >&2
apt update
echo "setup: installing ${#missing[@]} packages and what they need: ${missing[*]}" >&2
apt install -y --no-install-recommends "${missing[@]}"
