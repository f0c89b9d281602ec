// SPDX-License-Identifier: MIT
// The command line of padkit-memtest.
#ifndef PADKIT_MEMTEST_OPTIONS_H
#define PADKIT_MEMTEST_OPTIONS_H

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "memtest/patterns.h"

struct memtest_options {
    uint64_t size = 64ull << 20;  // bytes
    unsigned width = 32;          // bits of the data bus
    std::vector<const pattern*> patterns;
    uint32_t passes = 1;
};

enum class memtest_request { run, help, version, bad };

// A bad command line has been reported, with the usage.
memtest_request parse_memtest_options(int argc, char** argv, memtest_options* options);

void print_memtest_usage(std::FILE* out);

// "64 MiB", "12 KiB", "4100 bytes".
std::string size_text(uint64_t bytes);

#endif
