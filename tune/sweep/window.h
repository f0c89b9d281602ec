// SPDX-License-Identifier: MIT
// What a sweep measured, the passing windows in it, and how far a value
// inside a window lies from its ends.
#ifndef PADKIT_SWEEP_WINDOW_H
#define PADKIT_SWEEP_WINDOW_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "tune/sweep/axis.h"
#include "tune/sweep/outcome.h"

// One swept property: a result for each value of the axis measured so far,
// in axis order (an interrupted sweep leaves a row shorter than its axis).
struct sweep_row {
    std::string name;
    std::vector<outcome> results;
    // Per value of the axis, the value as written; empty when that is the
    // axis value itself.
    std::vector<std::string> settings;
    // Per value of the axis, a DQ delay's signed delay ("-0", "+3"); empty
    // for other properties.
    std::vector<std::string> delays;
    std::optional<long long> original;  // the axis value in use before the sweep
};

struct sweep_results {
    value_axis axis;
    std::vector<sweep_row> rows;
    std::string group;  // the composite whose members the rows are; empty for none
    // The run did not measure every value it meant to (it was interrupted,
    // or restored from its journal): it says so, and sums up no rows.
    bool partial = false;
};

// Whether the row has a result for every value of the axis.
bool fully_measured(const sweep_row& row, const value_axis& axis);

// Whether the results are not partial and every row was fully measured:
// only then are the rows summed up.
bool complete(const sweep_results& results);

// A run of consecutive passing values, as positions on the axis.
struct sweep_window {
    std::size_t first = 0;
    std::size_t count = 0;  // 0: no passing value

    std::size_t last() const { return first + count - 1; }
};

// The widest run of passing values; of equally wide ones the first, that is
// the one at the lowest values.
sweep_window widest_window(const std::vector<outcome>& results);

// The run of passing values around position at; empty when at did not pass.
sweep_window window_at(const std::vector<outcome>& results, std::size_t at);

// The position of the window's middle value; of two middle values, the lower.
std::size_t window_centre(const sweep_window& window, const std::vector<long long>& axis);

// The sides, toward the lower and the higher values, on which a window
// reaches the end of what was measured, its first position or the last of
// MEASURED, so that its edge there was not found.
struct open_sides {
    bool below = false, above = false;
};
open_sides sides_not_found(const sweep_window& window, std::size_t measured,
                           const value_axis& axis);

// How far VALUE, in a window, lies from its ends in the axis's units, toward
// the lower and the higher values; on an open side at least that far.
struct margins {
    long long below, above;
    open_sides open;
};
margins margins_in(const sweep_window& window, long long value, std::size_t measured,
                   const value_axis& axis);

// Where a row's original lies: unknown, off the axis, beyond what was
// measured, outside the window around it, or inside, with its margins.
struct original_room {
    enum place { unknown, off_axis, not_measured, outside, inside };
    place where;
    margins room;  // when inside
};
original_room room_of_original(const sweep_row& row, const value_axis& axis);

// Pass where every row passed, as far as the shortest row goes.
std::vector<outcome> common_results(const std::vector<sweep_row>& rows);

// The position of the centre of the widest window common to every row; the
// axis size when there is none, or when the results are partial or a row
// was not fully measured.
std::size_t common_centre(const sweep_results& results);

#endif
