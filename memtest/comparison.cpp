// SPDX-License-Identifier: MIT
#include "memtest/comparison.h"

#include <cstddef>
#include <cstdint>
#include <vector>

#include "memtest/patterns.h"

namespace {

// A mask of bus bits, as it applies to every beat of a word.
uint64_t in_every_beat(uint64_t bits, unsigned width) {
    uint64_t word = 0;
    for (unsigned shift = 0; shift < 64; shift += width)
        word |= (bits & bus_bits(width)) << shift;
    return word;
}

// The bits of the bus that differ in any beat of the word.
uint64_t onto_bus(uint64_t word, unsigned width) {
    uint64_t bits = 0;
    for (unsigned shift = 0; shift < 64; shift += width)
        bits |= word >> shift & bus_bits(width);
    return bits;
}

}  // namespace

void write_pattern(volatile uint64_t* buffer, std::size_t from, std::size_t to,
                   const std::vector<uint64_t>& period) {
    for (std::size_t i = from; i < to; ++i)
        buffer[i] = period[i % period_words];
}

void compare_pattern(const volatile uint64_t* buffer, std::size_t from, std::size_t to,
                     const std::vector<uint64_t>& period, unsigned width, const bus_faults& faults,
                     comparison* found) {
    const uint64_t low = in_every_beat(faults.stuck_at_0, width);
    const uint64_t high = in_every_beat(faults.stuck_at_1, width);
    const uint64_t flipped = in_every_beat(faults.flipped, width);
    uint64_t differing = 0;
    for (std::size_t i = from; i < to; ++i) {
        const uint64_t seen = ((buffer[i] & ~low) | high) ^ flipped;
        const uint64_t wrong = seen ^ period[i % period_words];
        differing |= wrong;
        found->wrong_words += wrong != 0;
    }
    found->failing |= onto_bus(differing, width);
    found->words += to - from;
}
