#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Runs one of the README's two commands as a newcomer would: in a bare Debian, from a clone of what is committed.
# fresh.sh bookworm|trixie|sid [demo|test]
#
# The root is made anew by debootstrap in KOVANTA_FRESH_DIR (default: build/fresh) and stays there, to be looked at.
# Needs root. The mirror is this machine's own, or KOVANTA_MIRROR.
set -euo pipefail
cd "$(dirname "$0")/.."

usage() {
  echo "usage: fresh.sh bookworm|trixie|sid [demo|test]" >&2
  exit 2
}
suite=${1:-} task=${2:-test}
[[ $# -le 2 && $suite =~ ^(bookworm|trixie|sid)$ && $task =~ ^(demo|test)$ ]] || usage
[ "$(id -u)" -eq 0 ] || { echo "fresh: needs root, for debootstrap and chroot" >&2; exit 1; }
command -v debootstrap >/dev/null || { echo "fresh: debootstrap is not installed" >&2; exit 1; }

mirror=${KOVANTA_MIRROR:-}
[ -n "$mirror" ] ||
  mirror=$({ cat /etc/apt/sources.list /etc/apt/sources.list.d/* 2>/dev/null || true; } |
    grep -oE 'https?://[^ ]+/debian/?( |$)' | head -n 1 | tr -d ' ')
[ -n "$mirror" ] || { echo "fresh: no Debian mirror among apt's sources; name one in KOVANTA_MIRROR" >&2; exit 1; }

root=${KOVANTA_FRESH_DIR:-$PWD/build/fresh}/$suite
unmount() {
  local point
  for point in dev sys proc; do
    ! mountpoint -q "$root/$point" || umount -R "$root/$point" || umount -R -l "$root/$point"
  done
}
trap unmount EXIT
unmount
# Through a mount that could not be undone this would reach the machine's own files.
grep -q " $root/" /proc/mounts && { echo "fresh: something is mounted below $root" >&2; exit 1; }
rm -rf "$root"
mkdir -p "$root"

SECONDS=0
echo "== $suite: a bare root"
debootstrap --variant=minbase "$suite" "$root" "$mirror" >"$root.log" 2>&1 || { tail -n 20 "$root.log"; exit 1; }
mount -t proc proc "$root/proc"
mount -t sysfs -o ro sysfs "$root/sys"
mount --rbind /dev "$root/dev"
mount --make-rslave "$root/dev"
cp /etc/resolv.conf "$root/etc/"
# How this machine reaches its mirror (proxies, time limits) holds for the root as well.
for file in /etc/apt/apt.conf.d/*; do
  ! grep -qiE '^ *acquire::' "$file" || cp "$file" "$root/etc/apt/apt.conf.d/"
done

echo "== $suite: scripts/$task.sh ($SECONDS s)"
git clone --quiet --no-local . "$root/kovanta"
chroot "$root" env -i PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LANG=C.UTF-8 \
  ${CI:+CI="$CI"} "/kovanta/scripts/$task.sh"
echo "== $suite: $task passed ($SECONDS s)"
