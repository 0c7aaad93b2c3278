#!/usr/bin/env bash
# Builds the libFuzzer targets of tests/fuzz with clang (QFB_FUZZ) and runs
# each for a bounded time, starting from its committed seed corpus. Any
# finding (crash, sanitizer report, timeout, out-of-memory, leak) fails the
# run; the reproducer is left in $BUILD/findings/<target>/.
#
#   FUZZ_SECONDS=60 BUILD=build-fuzz scripts/fuzz.sh [target ...]
#
# Targets default to every fuzz_* the build produced; name some (without
# the fuzz_ prefix) to run only those. New inputs found during the run go to
# $BUILD/corpus/<target>/, never into the committed corpus.
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD=${BUILD:-build-fuzz}
JOBS=${JOBS:-$(nproc)}
FUZZ_SECONDS=${FUZZ_SECONDS:-60}
# Per-input limit: an input that runs longer than this is reported as a hang.
FUZZ_INPUT_TIMEOUT=${FUZZ_INPUT_TIMEOUT:-10}

./scripts/deps.sh cmake make clang-14 libclang-rt-14-dev

# Warnings are errors here too: this is the one build that compiles the
# library with clang, whose -Wall -Wextra catches things gcc's does not.
CC=clang-14 CXX=clang++-14 cmake -S . -B "$BUILD" -DQFB_FUZZ=ON -DQFB_BUILD_TESTS=OFF \
  -DQFB_BUILD_APPS=OFF -DQFB_WERROR=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build "$BUILD" -j "$JOBS" --target fuzz

if [ $# -gt 0 ]; then
  targets=("$@")
else
  targets=()
  for exe in "$BUILD"/tests/fuzz/fuzz_*; do
    [ -x "$exe" ] && targets+=("$(basename "$exe" | sed 's/^fuzz_//')")
  done
fi
[ ${#targets[@]} -gt 0 ] || { echo "fuzz.sh: no fuzz targets were built" >&2; exit 1; }

status=0
total=0
summary=()
for t in "${targets[@]}"; do
  exe="$BUILD/tests/fuzz/fuzz_$t"
  seeds="tests/fuzz/corpus/$t"
  work="$BUILD/corpus/$t"
  findings="$BUILD/findings/$t"
  log="$BUILD/fuzz_$t.log"
  [ -d "$seeds" ] || { echo "fuzz.sh: no seed corpus $seeds" >&2; exit 1; }
  mkdir -p "$work" "$findings"
  echo "=== fuzz_$t for ${FUZZ_SECONDS}s"
  rc=0
  # -jobs/-workers are left at one: the machine's other core builds and
  # runs the rest of CI.
  "$exe" -max_total_time="$FUZZ_SECONDS" -timeout="$FUZZ_INPUT_TIMEOUT" -rss_limit_mb=2048 \
    -print_final_stats=1 -artifact_prefix="$findings/" "$work" "$seeds" > "$log" 2>&1 || rc=$?
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
  runs=${runs:-0}
  total=$((total + runs))
  if [ $rc -ne 0 ] || compgen -G "$findings/*" > /dev/null; then
    echo "fuzz.sh: fuzz_$t found a problem (exit $rc); reproducer(s):" >&2
    ls -1 "$findings" >&2 || true
    tail -60 "$log" >&2
    status=1
    summary+=("fuzz_$t: FAILED after $runs executions")
  else
    summary+=("fuzz_$t: $runs executions, no findings")
  fi
done
printf '%s\n' "${summary[@]}"
echo "fuzz.sh: $total executions in total over ${#targets[@]} target(s)"
exit $status
