#!/usr/bin/env bash
# Builds the whole project with AddressSanitizer + UndefinedBehaviorSanitizer
# (QFB_SANITIZE: -fsanitize=address,undefined -fno-sanitize-recover=all) in
# its own build directory and runs the whole test suite under it.
#
# Any sanitizer report fails the run. Every report ends its process with a
# non-zero status (halt_on_error, no recovery), which fails the test that ran
# it; a report inside a death test's child changes the child's status and
# output, which the tests' exact EXPECT_EXIT_PRINTS comparison rejects.
# AddressSanitizer and LeakSanitizer reports additionally go to log files
# under $BUILD/sanitizer-logs, and any such file fails this script, even one
# from a child whose status nobody checked. (UBSan always prints to stderr,
# whatever log_path says, so for it the status is the net.)
#
#   BUILD=build-asan JOBS=2 scripts/sanitize.sh
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD=${BUILD:-build-asan}
JOBS=${JOBS:-$(nproc)}

./scripts/deps.sh cmake g++ make libgtest-dev libgmock-dev

# This is also the build without MPI (QFB_MPI=OFF): flashbch as one process
# must keep working, and Open MPI's own start-up allocations would drown
# LeakSanitizer's report anyway.
cmake -S . -B "$BUILD" -DQFB_SANITIZE=ON -DQFB_WERROR=ON -DQFB_BUILD_APPS=ON -DQFB_MPI=OFF \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo ${CMAKE_ARGS:-}

# The flags must really be there: a silently dropped option would make this
# step pass without checking anything.
grep -q -- '-fno-sanitize-recover=all' "$BUILD/compile_commands.json" || {
  echo "sanitize.sh: the build does not use -fno-sanitize-recover=all" >&2
  exit 1
}

logs="$PWD/$BUILD/sanitizer-logs"
rm -rf "$logs"
mkdir -p "$logs"
export ASAN_OPTIONS="halt_on_error=1:detect_leaks=1:log_path=$logs/report:strict_string_checks=1:detect_stack_use_after_return=1:check_initialization_order=1"
export UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1"
export LSAN_OPTIONS="log_path=$logs/report"

cmake --build "$BUILD" -j "$JOBS"
export QFB_SOAK_CYCLES=${QFB_SOAK_CYCLES:-30000}
status=0
ctest --test-dir "$BUILD" --output-on-failure -j "$JOBS" || status=$?

if compgen -G "$logs/report*" > /dev/null; then
  echo "sanitize.sh: sanitizer reports were written:" >&2
  for f in "$logs"/report*; do
    echo "=== $f" >&2
    cat "$f" >&2
  done
  status=1
fi
exit $status
