// SPDX-License-Identifier: MIT
// The patterns of padkit-memtest: what each beat of the data bus carries, the
// first beat of a 64-bit word in its lowest bits. Each is chosen to stress
// the timing of the DQ lines, gives every bit of the bus both values, and
// repeats after a period of words that stays in the cache, so that the test
// runs at the speed of the memory.
#ifndef PADKIT_MEMTEST_PATTERNS_H
#define PADKIT_MEMTEST_PATTERNS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct pattern {
    const char* name;
    const char* what;  // for the usage
    // The beat N of the pattern on a bus of WIDTH bits (16, 32 or 64).
    uint64_t (*beat)(uint64_t n, unsigned width);
};

constexpr std::size_t pattern_count = 5;
extern const pattern patterns[pattern_count];

// The pattern of that name, or nullptr.
const pattern* find_pattern(const std::string& name);

// Every bit of a bus of WIDTH bits.
uint64_t bus_bits(unsigned width);

constexpr std::size_t period_words = 8192;  // 64 KiB

// The words of one period: word I of the buffer is word I % period_words.
std::vector<uint64_t> pattern_period(const pattern& p, unsigned width);

#endif
