// SPDX-License-Identifier: MIT
#include "memtest/memtest.h"

int main(int argc, char** argv) { return padkit_memtest_main(argc, argv); }
