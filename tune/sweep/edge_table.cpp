// SPDX-License-Identifier: MIT
#include "tune/sweep/edge_table.h"

#include <algorithm>
#include <cstdlib>

namespace {

edge_line line_of(const sweep_row& row, const value_axis& axis) {
    edge_line line;
    line.line = row.name;
    line.original = row.original;
    const sweep_window window = widest_window(row.results);
    line.no_window = window.count == 0;
    if (line.no_window)
        return line;
    const long long one = axis.values[window.first], other = axis.values[window.last()];
    line.lower = std::min(one, other);
    line.upper = std::max(one, other);
    line.width = std::llabs(axis.in_units(other) - axis.in_units(one)) + axis.step();
    if (fully_measured(row, axis))
        line.centre = axis.values[window_centre(window, axis.values)];
    const open_sides open = sides_not_found(window, row.results.size(), axis);
    line.lower_not_found = open.below;
    line.upper_not_found = open.above;
    const original_room original = room_of_original(row, axis);
    if (original.where == original_room::inside) {
        line.margin_below = original.room.below;
        line.margin_above = original.room.above;
    }
    return line;
}

}  // namespace

edge_table edge_table_of(const std::string& name, const sweep_results& results) {
    edge_table table{name, results.axis.unit, {}};
    for (const sweep_row& row : results.rows)
        table.lines.push_back(line_of(row, results.axis));
    return table;
}
