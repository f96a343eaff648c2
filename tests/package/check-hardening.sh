#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# The release library carries what hardens it: check-hardening.sh SOURCE BUILD LIBRARY COMPILER
set -euo pipefail
library=$3
fail() { echo "FAILED: $*"; exit 1; }
has() { readelf -W "$1" "$library" | grep -qE "$2" || fail "$3"; }

has -d 'FLAGS.*\bBIND_NOW\b|FLAGS_1.*\bNOW\b' "symbols are bound late"
has -l 'GNU_RELRO' "relocated data stays writable"
has -l 'GNU_STACK .* RW ' "the stack is executable"
! readelf -Wd "$library" | grep -q TEXTREL || fail "code is relocated"
imports=$(nm -D --undefined-only "$library")
grep -q ' __stack_chk_fail' <<<"$imports" || fail "no stack protector"
grep -qE ' __[a-z]+_chk(@|$)' <<<"$imports" || fail "no call is checked by _FORTIFY_SOURCE"
if [ "$(uname -m)" = x86_64 ]; then
  has -n 'x86 feature: IBT, SHSTK' "no note for control-flow enforcement"
  # The note promises that whatever is called through a pointer begins with a landing pad.
  ! readelf -Wd "$library" | grep -qE '\((INIT|FINI)\)' || fail "an _init or _fini without a landing pad"
fi
