#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Runs one of the README's two commands as a newcomer would, in a bare Debian, from a clone of what is committed; or makes
# the Debian packages there, twice, and in a second root installs them, builds a program with them, uses them and removes
# them.
# fresh.sh bookworm|trixie|sid [demo|test|package]
#
# The roots are made anew by debootstrap in KOVANTA_FRESH_DIR (default: build/fresh) and stay there, to be looked at.
# Needs root. The mirror is this machine's own, or KOVANTA_MIRROR.
set -euo pipefail
cd "$(dirname "$0")/.."

usage() {
  echo "usage: fresh.sh bookworm|trixie|sid [demo|test|package]" >&2
  exit 2
}
suite=${1:-} task=${2:-test}
[[ $# -le 2 && $suite =~ ^(bookworm|trixie|sid)$ && $task =~ ^(demo|test|package)$ ]] || usage
[ "$(id -u)" -eq 0 ] || { echo "fresh: needs root, for debootstrap and chroot" >&2; exit 1; }
command -v debootstrap >/dev/null || { echo "fresh: debootstrap is not installed" >&2; exit 1; }

mirror=${KOVANTA_MIRROR:-}
[ -n "$mirror" ] ||
  mirror=$({ cat /etc/apt/sources.list /etc/apt/sources.list.d/* 2>/dev/null || true; } |
    grep -oE 'https?://[^ ]+/debian/?( |$)' | head -n 1 | tr -d ' ')
[ -n "$mirror" ] || { echo "fresh: no Debian mirror among apt's sources; name one in KOVANTA_MIRROR" >&2; exit 1; }

directory=${KOVANTA_FRESH_DIR:-$PWD/build/fresh}
unmount() {
  local point root
  for root in "$directory/$suite" "$directory/$suite-user"; do
    for point in dev sys proc; do
      ! mountpoint -q "$root/$point" || umount -R "$root/$point" || umount -R -l "$root/$point"
    done
  done
}
trap unmount EXIT
unmount

# bare ROOT: an empty Debian
bare() {
  local root=$1 file
  # Through a mount that could not be undone this would reach the machine's own files.
  ! grep -q " $root/" /proc/mounts || { echo "fresh: something is mounted below $root" >&2; exit 1; }
  rm -rf "$root"
  mkdir -p "$root"
  debootstrap --variant=minbase "$suite" "$root" "$mirror" >"$root.log" 2>&1 || { tail -n 20 "$root.log"; exit 1; }
  mount -t proc proc "$root/proc"
  mount -t sysfs -o ro sysfs "$root/sys"
  mount --rbind /dev "$root/dev"
  mount --make-rslave "$root/dev"
  cp /etc/resolv.conf "$root/etc/"
  # How this machine reaches its mirror (proxies, time limits) holds for the root as well; what packages brought comes
  # there with these.
  for file in /etc/apt/apt.conf.d/*; do
    ! grep -qiE '^ *acquire::' "$file" || dpkg-query -S "$file" >/dev/null 2>&1 || cp "$file" "$root/etc/apt/apt.conf.d/"
  done
}
# inside ROOT COMMAND...
inside() {
  chroot "$1" env -i PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LANG=C.UTF-8 \
    DEBIAN_FRONTEND=noninteractive ${CI:+CI="$CI"} "${@:2}"
}

SECONDS=0
root=$directory/$suite
echo "== $suite: a bare root"
bare "$root"
git clone --quiet --no-local . "$root/kovanta"
command=("scripts/$task.sh")
[ "$task" != package ] || command+=(--twice)
echo "== $suite: ${command[*]} ($SECONDS s)"
inside "$root" "/kovanta/${command[0]}" "${command[@]:1}"

if [ "$task" = package ]; then
  echo "== $suite: the packages in a second bare root ($SECONDS s)"
  user=$directory/$suite-user
  bare "$user"
  mkdir "$user/packages"
  cp "$root"/kovanta/build/packages/*.deb "$user/packages"
  cp -r tests/package/consumer "$user/packages"
  cp fuzz/corpus/video/seed_mp4_libx264 "$user/packages/clip.mp4"
  # shellcheck disable=SC2016
  inside "$user" bash -euc '
    cd /packages
    log=/tmp/log
    trap "tail -n 20 $log" ERR
    apt-get update >$log 2>&1
    apt-get install -y --no-install-recommends ./*.deb cmake g++ make pkg-config >$log 2>&1
    g++ -std=c++17 consumer/main.cpp -o /tmp/by-pkg-config $(pkg-config --cflags --libs kovanta) >$log 2>&1
    /tmp/by-pkg-config
    cmake -S consumer -B /tmp/by-cmake >$log 2>&1
    cmake --build /tmp/by-cmake >$log 2>&1
    /tmp/by-cmake/consumer
    for tool in capture contact convert play track; do
      kovanta-$tool --help >$log 2>&1
      test -s /usr/share/man/man1/kovanta-$tool.1.gz
    done
    printf "P6 1 1 255\nabc" >/tmp/one.ppm
    kovanta-convert /tmp/one.ppm /tmp/one.png >$log 2>&1
    kovanta-track clip.mp4 /tmp/tracked.mkv >$log 2>&1
    kovanta-contact /tmp/tracked.mkv /tmp/sheet.png >$log 2>&1
    test -s /tmp/one.png -a -s /tmp/sheet.png
    apt-get purge -y libkovanta libkovanta-dev kovanta-tools >$log 2>&1
    left=$(find /usr /etc -iname "*kovanta*")
    [ -z "$left" ] || { echo "left behind: $left"; exit 1; }'
fi
echo "== $suite: $task passed ($SECONDS s)"
