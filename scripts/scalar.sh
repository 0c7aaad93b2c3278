#!/usr/bin/env bash
# The portable kernels on a machine that has the accelerated ones: runs the
# codec tests again with QFB_FORCE_SCALAR=1 (the table-driven division and
# the factorising root finder instead of carry-less multiplication and the
# vector search), then checks that qfb_digest prints the same fingerprint of
# the library's outputs on both paths. Reuses an existing build directory.
#
#   BUILD=build JOBS=2 scripts/scalar.sh
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD=${BUILD:-build}
JOBS=${JOBS:-$(nproc)}

if [ ! -f "$BUILD/CMakeCache.txt" ]; then
  cmake -S . -B "$BUILD" -DQFB_WERROR=ON
fi
cmake --build "$BUILD" -j "$JOBS" --target test_bch test_api qfb_digest
QFB_FORCE_SCALAR=1 ctest --test-dir "$BUILD" --output-on-failure -j "$JOBS" \
  -R '^(Bch|FlashBCH|FlashDifferential|PackedBCH)'
"$BUILD/tests/digest/qfb_digest" > "$BUILD/digest-accelerated.txt"
QFB_FORCE_SCALAR=1 "$BUILD/tests/digest/qfb_digest" > "$BUILD/digest-scalar.txt"
if ! diff -u "$BUILD/digest-accelerated.txt" "$BUILD/digest-scalar.txt"; then
  echo "scalar.sh: the portable kernels give different results (sections above)" >&2
  exit 1
fi
echo "scalar.sh: accelerated and portable digests agree on $(wc -l < "$BUILD/digest-scalar.txt") sections"
