// SPDX-License-Identifier: MIT
// A pattern written into the test's buffer and compared word by word when it
// is read back; what differs is folded onto the bits of the data bus.
#ifndef PADKIT_MEMTEST_COMPARISON_H
#define PADKIT_MEMTEST_COMPARISON_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "memtest/patterns.h"

// Faults of the data bus, as masks of its bits, that the comparison puts
// into every word it reads back.
struct bus_faults {
    uint64_t stuck_at_0 = 0;
    uint64_t stuck_at_1 = 0;
    uint64_t flipped = 0;
};

struct comparison {
    uint64_t failing = 0;  // bits of the bus that came back wrong
    std::size_t words = 0, wrong_words = 0;
};

// Writes words FROM to TO (not included) of a pattern, given by its period
// (pattern_period), into the buffer.
void write_pattern(volatile uint64_t* buffer, std::size_t from, std::size_t to,
                   const std::vector<uint64_t>& period);

// Reads the words FROM to TO back through the faults of a bus of WIDTH bits
// and adds what they show to *found.
void compare_pattern(const volatile uint64_t* buffer, std::size_t from, std::size_t to,
                     const std::vector<uint64_t>& period, unsigned width, const bus_faults& faults,
                     comparison* found);

#endif
