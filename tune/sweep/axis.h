// SPDX-License-Identifier: MIT
// The values a sweep visits, how they are shown and counted, and which of
// them a chart labels.
#ifndef PADKIT_SWEEP_AXIS_H
#define PADKIT_SWEEP_AXIS_H

#include <cstddef>
#include <string>
#include <vector>

struct value_axis {
    std::vector<long long> values;  // in the order visited, rising or falling
    bool is_signed = false;         // shown with their sign: -3, 0, +5
    // What a value counts, in the plural: "codes", "delay steps", "microvolts", "keys".
    std::string unit = "codes";
    // A table's keys, rising: a key counts as its place among them. Empty:
    // a value counts as itself.
    std::vector<long long> keys;

    std::size_t size() const { return values.size(); }
    bool rising() const { return size() < 2 || values[0] < values[1]; }
    std::string text(long long value) const;
    std::string text_at(std::size_t at) const { return text(values[at]); }
    // "LO..HI" for the values at two positions.
    std::string range_text(std::size_t one, std::size_t other) const;
    // The position of the value; size() when it is not on the axis.
    std::size_t position_of(long long value) const;
    // The positions between which VALUE lies: *one == *other when it is a
    // value of the axis, else its two neighbours, *one the lower position;
    // false when it lies outside the axis.
    bool positions_around(long long value, std::size_t* one, std::size_t* other) const;
    // The values at positions first .. first + count - 1 as an axis of their own.
    value_axis part(std::size_t first, std::size_t count) const;
    // The value in the axis's units, where only differences count.
    long long in_units(long long value) const;
    // The distance between neighbouring values in units; 1 for a single value.
    long long step() const;
    // "LO..HI, step N UNIT", as the title of a picture says what was swept.
    std::string swept_text() const;
    // Pictures label microvolts in millivolts; everything else as text() does.
    std::string picture_unit() const;
    std::string picture_text(long long value) const;
    // The text of every value, as text() or picture_text() gives it.
    std::vector<std::string> texts(bool in_picture = false) const;
};

// "N UNIT", the unit in the singular for 1: "1 delay step", "20000 microvolts".
std::string amount_text(long long amount, const std::string& unit);

// Where a label is drawn, in characters from the first position's left edge.
struct label_place {
    std::size_t at;   // the position it names
    double from, to;  // its left and right edge
};

// The labels of an axis whose positions are cell_width characters apart,
// TEXTS[at] the label of each position: the first value and the last, 0 on
// a signed axis, and between them the values on the roundest grid (1, 2, 5,
// 10, 20, ...) whose labels stand a character apart; a label that would
// touch one of the first ones is left out. CENTRED labels stand in the
// middle of their cell; otherwise the first starts at its position, the
// last ends at its position and the others start at theirs. In position
// order; the last one may overlap the first on an axis too short for both.
std::vector<label_place> axis_labels(const value_axis& axis, const std::vector<std::string>& texts,
                                     double cell_width, bool centred = false);

// The least cell width, in characters, at which the centred labels of the
// first value, the last and 0 stand a character apart.
double cell_width_for_labels(const value_axis& axis, const std::vector<std::string>& texts);

#endif
