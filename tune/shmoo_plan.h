// SPDX-License-Identifier: MIT
// What a shmoo will touch: two properties, each on an axis of its own.
#ifndef PADKIT_TUNE_SHMOO_PLAN_H
#define PADKIT_TUNE_SHMOO_PLAN_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "properties/property.h"
#include "tune/sweep/axis.h"
#include "tune/sweep/facts.h"
#include "tune/sweep/grid.h"
#include "tune/sweep_options.h"

// One axis: its property and the values it visits.
struct shmoo_axis {
    property* prop = nullptr;
    value_axis visits;                  // in visiting order
    std::vector<long long> codes;       // per visit, the code written
    std::vector<std::string> settings;  // per visit, the value as padkit-tune shows it
    long long original = 0;             // the code before the shmoo

    // A visit's position among the values rising, or the other way round:
    // the same, or reversed.
    std::size_t other_order(std::size_t at) const;
    const std::string& setting_at(std::size_t position) const;
    long long code_at(std::size_t position) const;
    grid_axis rising() const;
    // "V", or "V (setting S)" where padkit writes it otherwise.
    std::string value_text(std::size_t position) const;
    // The profile's line that sets the value at the position, a DQ delay's
    // comment line above it.
    std::string profile_line(std::size_t position) const;
    // "NAME over LO..HI (N values)".
    std::string range_text() const;
    // Where the original lies on the rising axis, if it is one of its values.
    std::optional<std::size_t> original_position() const;
};

// Beyond this a grid is a typing mistake rather than a shmoo.
constexpr std::size_t max_shmoo_points = 4096;

// The axes of X and Y, two properties that are not composites, and at most
// max_shmoo_points points. On failure says why and returns false.
bool plan_shmoo(const shmoo_options& options, shmoo_axis* x, shmoo_axis* y);

// What the shmoo of the options over X and Y says of itself: both swept as
// visited, the weights when given, the host, the time and the test.
facts shmoo_facts(const shmoo_options& options, const shmoo_axis& x, const shmoo_axis& y);

#endif
