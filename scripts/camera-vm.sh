#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# Runs a command in a small virtual machine that has cameras, for machines that have none (or cannot load kernel
# modules). The guest sees this machine's files, so that a program built here runs there as it is; what it writes stays
# in the guest's memory and is gone at the end.
#
#   camera-vm.sh [OPTION]... COMMAND [ARGUMENT]...
#   camera-vm.sh --prepare              fetch and build what the guest needs, run nothing
#
#   --camera "PARAMETERS"  how the kernel's virtual camera driver (vivid) is loaded; "none" loads none.
#                          Default: one webcam, /dev/video0
#   --writable DIR         what the guest writes below DIR (an existing folder) stays
#   --timeout SECONDS      default 300
#
# The exit code and the output are those of the command, whose environment holds PATH, HOME, LC_ALL,
# KOVANTA_VM_MODULES (a folder with vivid.ko and v4l2loopback.ko, whose dependencies are loaded) and what this
# environment has of the options of sanitizers and of Google Test. Other exit codes: 124 the time is up, 125 the guest died,
# 200 the machine cannot be had here (QEMU missing, packages not to be fetched); with CI=true that is 1, an error.
#
# Packages are fetched with apt-get download and unpacked into KOVANTA_VM_CACHE, by default
# ${XDG_CACHE_HOME:-~/.cache}/kovanta-camera-vm; nothing is installed.
set -euo pipefail

self=$(realpath "$0")
cameraParameters="n_devs=1 node_types=0x1 num_inputs=1 input_types=0x0"
writable=""
limit=300
prepareOnly=false

unavailable() {
    echo "camera-vm: no virtual camera here: $1" >&2
    [ "${CI:-}" = true ] && exit 1
    exit 200
}

while [ $# -gt 0 ]; do
    case $1 in
        --camera) cameraParameters=$2; shift 2 ;;
        --writable) writable=$(realpath "$2"); shift 2 ;;
        --timeout) limit=$2; shift 2 ;;
        --prepare) prepareOnly=true; shift ;;
        --) shift; break ;;
        -*) echo "camera-vm: unknown option $1" >&2; exit 2 ;;
        *) break ;;
    esac
done
if [ $# -eq 0 ] && ! $prepareOnly; then
    sed -n '3,/^set /s/^# \{0,1\}//p' "$self" >&2
    exit 2
fi
command -v qemu-system-x86_64 >/dev/null || unavailable "qemu-system-x86_64 is not installed (package qemu-system-x86)"

# ---- What the guest is made of -------------------------------------------------------------------------------------

cache=${KOVANTA_VM_CACHE:-${XDG_CACHE_HOME:-${HOME:-/var/tmp}/.cache}/kovanta-camera-vm}
mkdir -p "$cache" 2>/dev/null || unavailable "cannot write to $cache"
# The script is part of the recipe: a changed script does not use what an older one made.
guest=$cache/guest-$(sha256sum "$self" | cut -c1-16)

dependency() { # PACKAGE PATTERN: the first dependency whose name matches
    apt-cache depends "$1" 2>/dev/null | sed -n 's/^ *Depends: *//p' | grep -m1 -E "$2"
}

downloadPackages() { # FOLDER: on failure says why in the variable reason
    local image headers common kbuild
    image=$(dependency linux-image-amd64 '^linux-image-') ||
        { reason="apt-get knows no package linux-image-amd64"; return 1; }
    release=${image#linux-image-}
    headers=linux-headers-$release
    if ! common=$(dependency "$headers" '^linux-headers-.*-common$') ||
        ! kbuild=$(dependency "$headers" '^linux-kbuild-'); then
        reason="apt-get knows no package $headers"
        return 1
    fi
    (cd "$1" && apt-get download -q "$image" "$headers" "$common" "$kbuild" busybox-static v4l2loopback-dkms) \
        >"$1/log" 2>&1 || { reason="apt-get download failed: $(tail -n1 "$1/log")"; return 1; }
}

fetchPackages() { # FOLDER: unpacks everything below it
    command -v apt-get >/dev/null || unavailable "packages come from apt-get, which is not here"
    mkdir -p "$1/packages"
    # What apt-get knows may be nothing, or out of date.
    downloadPackages "$1/packages" || { apt-get update -qq >/dev/null 2>&1 && downloadPackages "$1/packages"; } ||
        unavailable "$reason"
    local package folder
    for package in "$1"/packages/*.deb; do
        dpkg -x "$package" "$1/tree" || unavailable "cannot unpack $package"
    done
    for folder in bin lib; do # newer packages have all of it below usr
        [ -e "$1/tree/$folder" ] || ln -s "usr/$folder" "$1/tree/$folder"
    done
}

# v4l2loopback offers just what its producer feeds it, compressed formats included; vivid has only raw ones.
buildLoopback() { # FOLDER
    local kernelHeaders=$1/tree/usr/src/linux-headers-$release
    sed -i "s#/usr/src/#$1/tree/usr/src/#" "$kernelHeaders/Makefile"
    cp -r "$1"/tree/usr/src/v4l2loopback-* "$1/v4l2loopback"
    # without its types in BTF, which take pahole and tell nobody here anything
    make -s -C "$kernelHeaders" M="$1/v4l2loopback" CONFIG_DEBUG_INFO_BTF_MODULES= modules >"$1/make.log" 2>&1 || {
        cat "$1/make.log" >&2
        unavailable "v4l2loopback does not build here (it takes make, libelf1 and the compiler of the kernel)"
    }
}

moduleFile() { # NAME
    find "$work/tree/lib/modules/$release" -name "${1//[-_]/[-_]}.ko*" | grep -m1 .
}

inOrder=""
addModule() { # NAME: appends it after all that it depends on
    case " $inOrder " in *" $1 "*) return ;; esac
    local file wanted
    file=$(moduleFile "$1") || return 0 # built into the kernel
    case $file in
        *.xz) xz -dc "$file" ;;
        *.zst) zstd -dcq "$file" ;;
        *) cat "$file" ;;
    esac >"$work/root/modules/$1.ko"
    for wanted in $(grep -a -z -m1 '^depends=' "$work/root/modules/$1.ko" | tr -d '\0' | cut -d= -f2 | tr ',' ' '); do
        addModule "$wanted"
    done
    inOrder="$inOrder $1"
}

writeInit() {
    cat <<'INIT'
#!/bin/busybox sh
# ttyS0 carries the kernel's messages and the verdict, ttyS1 the command's output.
/bin/busybox mkdir -p /bin /dev /proc /sys /below /memory /host
/bin/busybox --install -s /bin
export PATH=/bin
mount -t proc proc /proc
mount -t sysfs sysfs /sys
mount -t devtmpfs devtmpfs /dev
finish() {
    stty -F /dev/ttyS1 raw # waits until the output is through
    echo "camera-vm: exit code $1" >/dev/ttyS0
    stty -F /dev/ttyS0 raw
    value=$1
    [ "$value" -gt 127 ] && value=127
    printf "\\$(printf %03o "$value")" | dd of=/dev/port bs=1 seek=244 2>/dev/null
    poweroff -f
}
fail() {
    echo "camera-vm: $1" >/dev/ttyS0
    poweroff -f
}
. /settings
stty -F /dev/ttyS1 raw -echo
for module in $(cat /modules/order); do
    insmod "/modules/$module.ko" || fail "cannot load $module"
done
options=trans=virtio,version=9p2000.L,msize=512000
mount -t 9p -o "ro,$options,cache=loose" host /below || fail "cannot mount the files of the host"
mount -t tmpfs tmpfs /memory
mkdir /memory/upper /memory/work
mount -t overlay -o lowerdir=/below,upperdir=/memory/upper,workdir=/memory/work overlay /host ||
    fail "cannot put memory over the files of the host"
if [ -n "$writable" ]; then
    mount -t 9p -o "rw,$options,cache=none" writable "/host$writable" || fail "cannot mount $writable"
fi
mount -t proc proc /host/proc
mount -t sysfs sysfs /host/sys
mount -t tmpfs tmpfs /host/run
ln -sf /proc/self/fd /dev/fd
ln -sf /proc/self/fd/0 /dev/stdin
ln -sf /proc/self/fd/1 /dev/stdout
ln -sf /proc/self/fd/2 /dev/stderr
mkdir -p /dev/pts /dev/shm /host/run/modules /host/run/home
mount -t devpts devpts /dev/pts
mount -t tmpfs tmpfs /dev/shm
mount -o bind /dev /host/dev
mount -o bind /dev/pts /host/dev/pts
mount -o bind /dev/shm /host/dev/shm
ln -s /proc/mounts /host/run/mounts
cp /modules/vivid.ko /modules/v4l2loopback.ko /command /host/run/modules
if [ "$cameraParameters" != none ]; then
    insmod /modules/vivid.ko $cameraParameters || fail "cannot load vivid"
fi
ip link set lo up
env -i chroot /host /bin/bash /run/modules/command </dev/null >/dev/ttyS1 2>&1
finish $?
INIT
}

buildGuest() {
    work=$(mktemp -d "$cache/work.XXXXXX")
    trap 'rm -rf "$work"' EXIT
    fetchPackages "$work"
    buildLoopback "$work"
    mkdir -p "$work/root/bin" "$work/root/modules" "$work/guest"
    cp "$work/tree/bin/busybox" "$work/root/bin/busybox"
    cp "$work/tree/bin/busybox" "$work/guest/busybox"
    local module
    for module in virtio_pci 9pnet_virtio 9p overlay vivid videodev; do
        addModule "$module"
    done
    strip --strip-debug -o "$work/root/modules/v4l2loopback.ko" "$work/v4l2loopback/v4l2loopback.ko"
    tr ' ' '\n' <<<"$inOrder" | grep -v -x -e vivid -e '' >"$work/root/modules/order"
    writeInit >"$work/root/init"
    chmod 755 "$work/root/init"
    (cd "$work/root" && find . | ../tree/bin/busybox cpio -o -H newc 2>/dev/null) >"$work/guest/initramfs"
    cp "$work/tree/boot/vmlinuz-$release" "$work/guest/vmlinuz"
    touch "$work/guest/ready"
    rm -rf "$guest"
    mv "$work/guest" "$guest"
    rm -rf "$work"
    trap - EXIT
}

prepare() {
    exec 9>"$cache/lock"
    flock 9 # another run may be at it
    [ -e "$guest/ready" ] || buildGuest
    exec 9>&-
}

[ -e "$guest/ready" ] || prepare
$prepareOnly && exit 0

# ---- One run -------------------------------------------------------------------------------------------------------

run=$(mktemp -d "${TMPDIR:-/tmp}/camera-vm.XXXXXX")
trap 'rm -rf "$run"' EXIT
mkdir "$run/root"
{
    printf 'writable=%q\n' "$writable"
    printf 'cameraParameters=%q\n' "$cameraParameters"
} >"$run/root/settings"
{
    echo 'export PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=/run/home'
    echo 'export KOVANTA_VM_MODULES=/run/modules LC_ALL=C.UTF-8'
    while IFS='=' read -r -d '' name value; do
        case $name in
            ASAN_OPTIONS | UBSAN_OPTIONS | LSAN_OPTIONS | TSAN_OPTIONS | GTEST_* | GCOV_* | LLVM_PROFILE_FILE)
                printf 'export %s=%q\n' "$name" "$value" ;;
        esac
    done < <(env -0)
    printf 'cd %q || exit 126\n' "$PWD"
    printf 'exec'
    printf ' %q' "$@"
    echo
} >"$run/root/command"
# The kernel unpacks archives one after the other, so what changes from run to run is simply appended.
(cd "$run/root" && find . -type f | "$guest/busybox" cpio -o -H newc 2>/dev/null) >"$run/extra"
cat "$guest/initramfs" "$run/extra" >"$run/initramfs"

share=()
if [ -n "$writable" ]; then
    share=(-fsdev "local,id=writable,path=$writable,security_model=none,multidevs=remap"
           -device "virtio-9p-pci,fsdev=writable,mount_tag=writable")
fi
# Always plain emulation: a /dev/kvm that opens does not mean that it works. The kernel's guards against faults of real
# processors, and page tables of five levels, make an emulated one several times slower.
status=0
timeout "$limit" qemu-system-x86_64 \
    -accel tcg -machine pc -cpu max -smp 2 -m 768 -nodefaults -no-user-config -display none -no-reboot -monitor none \
    -serial "file:$run/console" -serial stdio -device isa-debug-exit,iobase=0xf4,iosize=0x04 \
    -kernel "$guest/vmlinuz" -initrd "$run/initramfs" -append "console=ttyS0 quiet panic=-1 mitigations=off no5lvl" \
    -fsdev local,id=host,path=/,security_model=none,readonly=on,multidevs=remap \
    -device virtio-9p-pci,fsdev=host,mount_tag=host \
    "${share[@]}" </dev/null &
machine=$!
trap 'kill "$machine"; exit 143' INT TERM
wait "$machine" || status=$?

if [ "$status" -eq 124 ]; then
    tr -d '\r' <"$run/console" >&2
    echo "camera-vm: not finished after $limit s" >&2
    exit 124
fi
code=$(sed -n 's/^camera-vm: exit code \([0-9]*\)\r*$/\1/p' "$run/console" | tail -n1)
if [ -z "$code" ] || [ "$status" -ne $(((code > 127 ? 127 : code) * 2 + 1)) ]; then
    tr -d '\r' <"$run/console" >&2
    echo "camera-vm: the guest died (QEMU's exit code $status)" >&2
    exit 125
fi
[ "$code" -eq 0 ] || grep -a -v '^camera-vm: exit code' "$run/console" | tr -d '\r' >&2 || true
exit "$code"
