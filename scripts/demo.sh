#!/usr/bin/env bash
# Builds the library and runs the demo programs: the tour, then the search
# example.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
out=${KI_BUILD_ROOT:-$root/build}/demo
cmake -S "$root" -B "$out" -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DKI_BUILD_TESTS=OFF -DKI_BUILD_BENCH=OFF -DKI_BUILD_FUZZ=OFF >/dev/null
cmake --build "$out" --target kiDemo kiSearchDemo
"$out/examples/kiDemo"
echo
"$out/examples/kiSearchDemo"
