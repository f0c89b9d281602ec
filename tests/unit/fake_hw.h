// SPDX-License-Identifier: MIT
// A recording fake of the physical access unit, and the fixture of every unit
// test: fresh hardware before, registries emptied after.
#ifndef PADKIT_TESTS_FAKE_HW_H
#define PADKIT_TESTS_FAKE_HW_H

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "properties/property.h"

namespace fake_hw {
using accesses = std::vector<std::tuple<char, uint32_t, uint32_t>>;  // 'r' or 'w', address, word
extern std::map<uint32_t, uint32_t> words;
extern accesses log;
void reset();
}  // namespace fake_hw

template <typename F>
std::string stderr_of(F&& f) {
    testing::internal::CaptureStderr();
    f();
    return testing::internal::GetCapturedStderr();
}

struct unit_test : testing::Test {
    void SetUp() override { fake_hw::reset(); }
    void TearDown() override {
        property_group::free_all();
        property::free_all();
    }
};

#endif
