#!/usr/bin/env bash
# run_all.sh - runs every built fuzz target for a bounded time, each on a
# scratch copy of its seeds in fuzz/corpus/<target>/, so the tree is never
# written. Stops with a non-zero status at the first failure; the failing
# input is left beside the binaries as <target>-crash-... (or -leak-, -oom-,
# -timeout-).
#
# Usage: run_all.sh <build>/fuzz      FUZZ_SECONDS per target, default 20
set -euo pipefail

if [ $# -ne 1 ] || [ ! -d "$1" ]; then
  echo "usage: $0 <build dir>/fuzz" >&2
  exit 2
fi
bin_dir=$(cd "$1" && pwd)
seeds=$(cd "$(dirname "$0")" && pwd)/corpus
seconds=${FUZZ_SECONDS:-20}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

count=0
for target in "$bin_dir"/*_fuzzer; do
  [ -f "$target" ] && [ -x "$target" ] || continue
  name=$(basename "$target")
  mkdir -p "$scratch/$name"
  if [ -d "$seeds/$name" ]; then
    cp -R "$seeds/$name/." "$scratch/$name/"
  fi
  echo "== $name: ${seconds}s"
  if ! "$target" -max_len=4096 -max_total_time="$seconds" -print_final_stats=1 \
      -artifact_prefix="$bin_dir/$name-" "$scratch/$name" 2>"$scratch/$name.log"; then
    tail -n 60 "$scratch/$name.log"
    echo "== $name FAILED; the input is in $bin_dir/$name-*" >&2
    exit 1
  fi
  grep -E '^(Done|stat::(number_of_executed_units|average_exec_per_sec))' "$scratch/$name.log" || true
  count=$((count + 1))
done

if [ "$count" -eq 0 ]; then
  echo "no *_fuzzer binaries in $bin_dir" >&2
  exit 1
fi
echo "== $count fuzz targets ran without a failure"
