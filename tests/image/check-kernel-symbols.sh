#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# check-kernel-symbols.sh OBJECT...: the sources compiled for newer processors must define nothing that another source
# may define as well, or the linker could take their copy for all.
set -euo pipefail
checked=0
for object in "$@"; do
  case "$object" in */Sse*Kernels.cpp.* | */Avx*Kernels.cpp.*) ;; *) continue ;; esac
  if nm --defined-only --demangle "$object" | grep -E ' [WVu] '; then
    echo "$object defines what is above for everybody" >&2
    exit 1
  fi
  checked=$((checked + 1))
done
[ "$checked" -gt 0 ] || { echo "no kernels among the objects" >&2; exit 1; }
