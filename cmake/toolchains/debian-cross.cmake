# SPDX-License-Identifier: MIT
# Shared part of the Debian cross toolchains: set padkit_triple and
# CMAKE_SYSTEM_PROCESSOR, then include this file.
# Tests run the target binaries under qemu-user with the matching sysroot.
set(CMAKE_SYSTEM_NAME Linux)

set(CMAKE_C_COMPILER ${padkit_triple}-gcc)
set(CMAKE_CXX_COMPILER ${padkit_triple}-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR ${padkit_qemu};-L;/usr/${padkit_triple})

# Libraries and headers of the target only; programs from the host.
set(CMAKE_FIND_ROOT_PATH /usr/${padkit_triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
