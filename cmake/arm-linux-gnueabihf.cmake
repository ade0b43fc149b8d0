# Cross build for the camera processor: 32-bit ARM Linux, hard-float EABI, with Debian's
# g++-arm-linux-gnueabihf. Executables run under qemu-arm (Debian's qemu-user), so ctest runs
# the whole suite on the workstation:
#
#   cmake -S . -B build-arm -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/arm-linux-gnueabihf.cmake
#   cmake --build build-arm -j2 && ctest --test-dir build-arm
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

set(ISP_TARGET_TRIPLE arm-linux-gnueabihf)
set(CMAKE_C_COMPILER ${ISP_TARGET_TRIPLE}-gcc)
set(CMAKE_CXX_COMPILER ${ISP_TARGET_TRIPLE}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${ISP_TARGET_TRIPLE})
# Everything on the target is built by this one compiler, so GCC's notes that the passing of
# some arguments changed in GCC 7.1 concern no code that can meet ours.
set(CMAKE_CXX_FLAGS_INIT "-Wno-psabi")

# Libraries come from the target's tree only. Headers and package configurations may also come
# from the host's arch-independent directories: Debian's cross compiler searches /usr/include
# itself, after its own tree, for header-only packages such as picojson and CLI11, while
# arch-specific package configurations live under lib/arm-linux-gnueabihf.
set(CMAKE_FIND_ROOT_PATH /usr/${ISP_TARGET_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE BOTH)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)

# Dependencies that the host has only as compiled libraries are built from their sources with
# this compiler instead: fmt as a header-only library (cmake/cross/Findfmt.cmake), GoogleTest
# from Debian's sources (cmake/googletest.cmake).
list(APPEND CMAKE_MODULE_PATH "${CMAKE_CURRENT_LIST_DIR}/cross")

# Every target executable that ctest runs goes through qemu-arm, pointed at the target's
# dynamic loader and C++ runtime.
set(CMAKE_CROSSCOMPILING_EMULATOR /bin/sh "${CMAKE_CURRENT_LIST_DIR}/qemu-arm.sh")
