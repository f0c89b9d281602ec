// SPDX-License-Identifier: MIT
// The values a sweep visits, how they are shown, and which of them a chart
// labels.
#ifndef PADKIT_SWEEP_AXIS_H
#define PADKIT_SWEEP_AXIS_H

#include <cstddef>
#include <string>
#include <vector>

struct value_axis {
    std::vector<long long> values;  // in the order visited, rising or falling
    bool is_signed = false;         // shown with their sign: -3, 0, +5

    std::size_t size() const { return values.size(); }
    std::string text(long long value) const;
    std::string text_at(std::size_t at) const { return text(values[at]); }
    // "LO..HI" for the values at two positions.
    std::string range_text(std::size_t one, std::size_t other) const;
    // The position of the value; size() when it is not on the axis.
    std::size_t position_of(long long value) const;
    // The values at positions first .. first + count - 1 as an axis of their own.
    value_axis part(std::size_t first, std::size_t count) const;
};

// Where a label is drawn, in characters from the first position's left edge.
struct label_place {
    std::size_t at;   // the position it names
    double from, to;  // its left and right edge
};

// The labels of an axis whose positions are cell_width characters apart: the
// first value (starting at its position) and the last (ending at its
// position), 0 on a signed axis, and between them the values on the
// roundest grid (1, 2, 5, 10, 20, ...) whose labels stand a character apart;
// a label that would touch one of the first ones is left out. In position
// order; the last one may overlap the first on an axis too short for both.
std::vector<label_place> axis_labels(const value_axis& axis, double cell_width);

#endif
