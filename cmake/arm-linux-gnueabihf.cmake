# Cross-compilation to 32-bit little-endian ARM Linux (hard-float EABI) with
# Debian's g++-arm-linux-gnueabihf. Test programs run under qemu-arm (Debian
# qemu-user) with the cross sysroot as its library prefix, so CTest and
# gtest_discover_tests execute them transparently on an x86-64 host.
#
#   cmake -S . -B build-arm -DCMAKE_TOOLCHAIN_FILE=cmake/arm-linux-gnueabihf.cmake
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

set(QFB_ARM_TRIPLE arm-linux-gnueabihf)
set(QFB_ARM_SYSROOT /usr/${QFB_ARM_TRIPLE})

set(CMAKE_C_COMPILER ${QFB_ARM_TRIPLE}-gcc)
set(CMAKE_CXX_COMPILER ${QFB_ARM_TRIPLE}-g++)

# Headers and libraries come from the cross sysroot only; programs (cmake's
# own helpers) from the host.
set(CMAKE_FIND_ROOT_PATH ${QFB_ARM_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L ${QFB_ARM_SYSROOT})

# GCC notes that the ARM calling convention for some std:: types changed in
# GCC 7 and 10; every object here is built by the same compiler, so the notes
# are noise in the build log.
set(CMAKE_CXX_FLAGS_INIT "-Wno-psabi")
