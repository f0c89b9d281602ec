// SPDX-License-Identifier: MIT
// padkit-memtest's comparison: one faulty data bit is found as that bit and no other, by every pattern, on every
// width of bus.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "memtest/comparison.h"

namespace {

uint64_t failing_bits(const pattern& p, unsigned width, const bus_faults& faults) {
    const std::vector<uint64_t> period = pattern_period(p, width);
    std::vector<uint64_t> buffer(period_words + 5);
    write_pattern(buffer.data(), 0, buffer.size(), period);
    comparison found;
    compare_pattern(buffer.data(), 0, buffer.size(), period, width, faults, &found);
    return found.failing;
}

struct fault_kind {
    const char* name;
    bus_faults (*of)(uint64_t bits);
};
// clang-format off
const fault_kind kinds[] = {
    {"stuck at 0", [](uint64_t bits) { return bus_faults{bits, 0, 0}; }},
    {"stuck at 1", [](uint64_t bits) { return bus_faults{0, bits, 0}; }},
    {"flipped",    [](uint64_t bits) { return bus_faults{0, 0, bits}; }},
};
// clang-format on

TEST(MemtestComparison, FindsExactlyTheFaultyBit) {
    for (const pattern& p : patterns)
        for (unsigned width : {16u, 32u, 64u}) {
            EXPECT_EQ(failing_bits(p, width, {}), 0u) << p.name << ", " << width << " bits, no fault";
            for (unsigned bit : {0u, 7u, width / 2 + 3, width - 1})
                for (const fault_kind& kind : kinds)
                    EXPECT_EQ(failing_bits(p, width, kind.of(1ull << bit)), 1ull << bit)
                        << p.name << ", " << width << " bits, bit " << bit << " " << kind.name;
        }
}

}  // namespace
