#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-2-Clause
# The library exports what exports.txt lists, nothing more and nothing less, and its soname carries no version.
set -euo pipefail
library=$3
here=$(cd "$(dirname "$0")" && pwd)

readelf -d "$library" | grep -q 'soname: \[libKovanta.so\]' || { echo "FAILED: soname"; exit 1; }

# clang also emits the destructor that nobody wrote.
actual=$(nm -DC --defined-only "$library" | cut -c20- | grep -vxF 'Ko::Image<unsigned char>::~Image()' | LC_ALL=C sort -u)
if ! difference=$(diff "$here/exports.txt" <(echo "$actual")); then
  echo "FAILED: exported symbols differ from exports.txt (< listed, > found):"
  echo "$difference"
  exit 1
fi
