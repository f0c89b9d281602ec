// SPDX-License-Identifier: MIT
#include "memtest/patterns.h"

#include <cstdint>
#include <string>
#include <vector>

namespace {

uint64_t switching(uint64_t n, unsigned width) { return n % 2 ? 0 : bus_bits(width); }

uint64_t walking_ones(uint64_t n, unsigned width) { return 1ull << n % width; }

uint64_t walking_zeros(uint64_t n, unsigned width) {
    return bus_bits(width) ^ walking_ones(n, width);
}

// Each bit in turn is held, low and then high, while all the others switch
// around it; between the two it switches against them.
uint64_t neighbours(uint64_t n, unsigned width) {
    const uint64_t victim = 1ull << n / 4 % width;
    const uint64_t others = n % 2 ? bus_bits(width) & ~victim : 0;
    return n / 2 % 2 ? others | victim : others;
}

// splitmix64 of the beat's index in the period.
uint64_t pseudo_random(uint64_t n, unsigned width) {
    uint64_t z = (n % (period_words * 64 / width) + 1) * 0x9e3779b97f4a7c15ull;
    z = (z ^ z >> 30) * 0xbf58476d1ce4e5b9ull;
    z = (z ^ z >> 27) * 0x94d049bb133111ebull;
    return (z ^ z >> 31) & bus_bits(width);
}

}  // namespace

// clang-format off
const pattern patterns[pattern_count] = {
    {"switching",     "all bits switching together",                 switching},
    {"walking-ones",  "a single one walking across the bus",         walking_ones},
    {"walking-zeros", "a single zero walking across the bus",        walking_zeros},
    {"neighbours",    "each bit against its switching neighbours",   neighbours},
    {"random",        "pseudo-random data",                          pseudo_random},
};
// clang-format on

const pattern* find_pattern(const std::string& name) {
    for (const pattern& p : patterns)
        if (name == p.name)
            return &p;
    return nullptr;
}

uint64_t bus_bits(unsigned width) { return width >= 64 ? ~0ull : (1ull << width) - 1; }

std::vector<uint64_t> pattern_period(const pattern& p, unsigned width) {
    const unsigned beats = 64 / width;
    std::vector<uint64_t> words(period_words);
    for (std::size_t index = 0; index < period_words; ++index)
        for (unsigned i = 0; i < beats; ++i)
            words[index] |= p.beat(index * beats + i, width) << (width * i);
    return words;
}
