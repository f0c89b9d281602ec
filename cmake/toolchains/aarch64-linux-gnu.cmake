# SPDX-License-Identifier: MIT
# Cross build for a 64-bit board with Debian's aarch64-linux-gnu toolchain:
#   cmake -S . -B build/aarch64-linux-gnu -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/aarch64-linux-gnu.cmake
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(padkit_triple aarch64-linux-gnu)
set(padkit_qemu qemu-aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
