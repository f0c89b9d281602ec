// SPDX-License-Identifier: MIT
// What a sweep will touch: the properties, one row each, and the values.
#ifndef PADKIT_SWEEP_PLAN_H
#define PADKIT_SWEEP_PLAN_H

#include <cstddef>
#include <vector>

#include "properties/property.h"
#include "tune/sweep_options.h"

struct sweep_plan {
    std::vector<property*> rows;  // a composite's members, or the property itself
    std::vector<long long> axis;  // from FROM towards TO, which may be lower
};

// Beyond this a range is a typing mistake rather than a sweep.
constexpr std::size_t max_sweep_values = 4096;

// Finds the properties and the values: every step-th value from FROM to TO,
// or for a table field every step-th key of its table between them, with a
// default step of 10000 for regulators and 1 otherwise. Every value is
// checked against every row the way a profile's are, without touching the
// board. On failure says why and returns false.
bool plan_sweep(const swept_range& options, sweep_plan* plan);

#endif
