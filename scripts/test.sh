#!/usr/bin/env bash
# Builds and runs every test twice: a normal build (g++, warnings as errors)
# and an AddressSanitizer + UndefinedBehaviorSanitizer build (clang) that also
# gives every fuzzer a short run; the threading tests run a third time under
# ThreadSanitizer. Ends with one "N passed, N failed" line.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
out=${KI_BUILD_ROOT:-$root/build}
jobs=$(nproc)
export CTEST_OUTPUT_ON_FAILURE=1

passed=0
failed=0
skipped=0
count() {  # adds a ctest log's totals to the summary
  local line skips
  line=$(grep -E 'tests passed, [0-9]+ tests? failed out of [0-9]+' "$1" | tail -n 1 || true)
  skips=$(grep -c -E '\(Skipped\)$' "$1" || true)
  if [[ $line =~ ([0-9]+)\ tests?\ failed\ out\ of\ ([0-9]+) ]]; then
    failed=$((failed + BASH_REMATCH[1]))
    passed=$((passed + BASH_REMATCH[2] - BASH_REMATCH[1] - skips))
    skipped=$((skipped + skips))
  fi
}
step() {  # name, command...: one more check in the summary
  local name=$1
  shift
  if "$@"; then
    passed=$((passed + 1))
  else
    echo "== $name FAILED" >&2
    failed=$((failed + 1))
    status=1
  fi
}

run_ctest() {  # name, build dir, ctest arguments...
  local log="$2/ctest.log" status=0 dir=$2
  shift 2
  ctest --test-dir "$dir" -j "$jobs" --timeout 120 "$@" 2>&1 | tee "$log" || status=$?
  count "$log"
  return $status
}

# The benchmarks' peer libraries (Debian packages); without them the peer
# cases are left out and everything else still builds and runs.
peers="libicu-dev libinih-dev rapidjson-dev nlohmann-json3-dev"
missing=$(for p in $peers; do dpkg -s "$p" >/dev/null 2>&1 || echo "$p"; done)
if [ -n "$missing" ] && [ "$(id -u)" = 0 ] && command -v apt-get >/dev/null; then
  echo "== installing $missing"
  (apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq $missing) >/dev/null ||
    echo "warning: could not install $missing; the benchmarks skip their peers"
fi

# A decimal-comma locale, so that the locale-independence tests run rather
# than skip (glibc's localedef, as root).
if ! locale -a 2>/dev/null | grep -qi '^de_DE\.utf-\?8$' && [ "$(id -u)" = 0 ] &&
  command -v localedef >/dev/null; then
  localedef -i de_DE -f UTF-8 de_DE.UTF-8 >/dev/null 2>&1 ||
    echo "warning: no decimal-comma locale; the locale tests skip"
fi

echo "== normal build (g++)"
cmake -S "$root" -B "$out/gcc" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_CXX_COMPILER=g++ -DCMAKE_C_COMPILER=gcc -DKI_WERROR=ON >/dev/null
cmake --build "$out/gcc"
status=0
run_ctest gcc "$out/gcc" || status=1

echo "== install, and the demos built against the installed tree"
installed() {
  rm -rf "$out/install" "$out/installed-demo"
  cmake --install "$out/gcc" --prefix "$out/install" >/dev/null &&
    cmake -S "$root/examples" -B "$out/installed-demo" -G Ninja \
      -DCMAKE_PREFIX_PATH="$out/install" >/dev/null &&
    cmake --build "$out/installed-demo" >/dev/null &&
    "$out/installed-demo/kiDemo" >/dev/null 2>&1 &&
    "$out/installed-demo/kiSearchDemo" >/dev/null 2>&1
}
step install installed

echo "== AddressSanitizer + UndefinedBehaviorSanitizer build (clang)"
cmake -S "$root" -B "$out/asan" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
  -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_C_COMPILER=clang -DKI_WERROR=ON \
  -DKI_SANITIZE=address,undefined -DKI_BUILD_FUZZ=ON -DKI_BUILD_BENCH=OFF >/dev/null
cmake --build "$out/asan"
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=0:strict_string_checks=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
run_ctest asan "$out/asan" || status=1

echo "== ThreadSanitizer build of the threading tests (clang)"
# The suites whose code runs on several threads: threads and locks, and the
# log companion every thread writes through.
tsan_targets="kiOSTest kivoToolsLogTest"
cmake -S "$root" -B "$out/tsan" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_C_COMPILER=clang -DKI_WERROR=ON \
  -DKI_SANITIZE=thread -DKI_BUILD_BENCH=OFF -DKI_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$out/tsan" --target $tsan_targets
export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1
run_ctest tsan "$out/tsan" -R "^(${tsan_targets// /|})\\." || status=1

echo "== fuzzers (${FUZZ_SECONDS:-20} s each)"
step fuzz bash "$root/fuzz/run_all.sh" "$out/asan/fuzz"

echo "$passed passed, $failed failed, $skipped skipped"
exit $status
