# SPDX-License-Identifier: MIT
# Cross build for a 32-bit board with Debian's arm-linux-gnueabihf toolchain:
#   cmake -S . -B build/arm-linux-gnueabihf -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/arm-linux-gnueabihf.cmake
set(CMAKE_SYSTEM_PROCESSOR arm)
set(padkit_triple arm-linux-gnueabihf)
set(padkit_qemu qemu-arm)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
