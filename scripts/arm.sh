#!/usr/bin/env bash
# The 32-bit ARM target: cross-compiles the library and the whole test suite
# with Debian's arm-linux-gnueabihf toolchain (GoogleTest built from the
# sources in libgtest-dev), runs the suite under qemu-arm, and then checks
# that qfb_digest prints the same fingerprint of the library's outputs on ARM
# as on the native x86-64 build. ARM runs the portable kernels (table-driven
# division, factorising root finder) and the native build the accelerated
# ones where the processor has them, so the digests also tie the two paths.
#
# The command-line tools stay host programs: they need host-only packages
# (CLI11) and their end-to-end tests start the tool through the shell, which
# cannot run an ARM binary without a registered binfmt handler.
#
#   BUILD=build-arm NATIVE_BUILD=build JOBS=2 scripts/arm.sh
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD=${BUILD:-build-arm}
NATIVE_BUILD=${NATIVE_BUILD:-build}
JOBS=${JOBS:-$(nproc)}

./scripts/deps.sh cmake g++ make libgtest-dev libgmock-dev g++-arm-linux-gnueabihf qemu-user

cmake -S . -B "$BUILD" -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/arm-linux-gnueabihf.cmake" \
  -DQFB_WERROR=ON -DQFB_BUILD_APPS=OFF ${CMAKE_ARGS:-}
cmake --build "$BUILD" -j "$JOBS"
# Everything built must really be ARM code, or the qemu run proves nothing.
file -L "$BUILD/libquilflashbch.so" | grep -q 'ELF 32-bit LSB.*ARM' || {
  echo "arm.sh: $BUILD/libquilflashbch.so is not a 32-bit ARM library" >&2
  exit 1
}
# Emulation is ~20x slower than native: a shorter soak keeps the step brief.
export QFB_SOAK_CYCLES=${QFB_SOAK_CYCLES:-10000}
ctest --test-dir "$BUILD" --output-on-failure -j "$JOBS"

if [ ! -f "$NATIVE_BUILD/CMakeCache.txt" ]; then
  cmake -S . -B "$NATIVE_BUILD" -DQFB_WERROR=ON
fi
cmake --build "$NATIVE_BUILD" -j "$JOBS" --target qfb_digest
"$NATIVE_BUILD/tests/digest/qfb_digest" > "$BUILD/digest-native.txt"
qemu-arm -L /usr/arm-linux-gnueabihf "$BUILD/tests/digest/qfb_digest" > "$BUILD/digest-arm.txt"
if ! diff -u "$BUILD/digest-native.txt" "$BUILD/digest-arm.txt"; then
  echo "arm.sh: ARM results differ from the native build (sections above)" >&2
  exit 1
fi
echo "arm.sh: ARM and native digests agree on $(wc -l < "$BUILD/digest-arm.txt") sections"
