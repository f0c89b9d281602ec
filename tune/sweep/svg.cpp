// SPDX-License-Identifier: MIT
#include "tune/sweep/svg.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "tune/sweep/chart.h"
#include "tune/sweep/outcome.h"
#include "tune/sweep/tick_marks.h"

namespace {

using canvas_t = svg_canvas;
const double cell = canvas_t::cell, row_pitch = canvas_t::line;
// Between a row's name and its first cell: room for the pointer of an edge not found.
const double name_gap = 14;

// A row's cells at Y, a dashed box for each value not measured, the marks of
// its widest window and its original.
void print_row(svg_canvas& canvas, const sweep_row& row, const value_axis& axis,
               const tick_marks& ticks, double y) {
    const double middle = y + cell / 2;
    canvas.text("name", canvas_t::edge, y + cell - 2, row.name);
    for (std::size_t at = 0; at < axis.size(); ++at) {
        if (at < row.results.size())
            canvas.result_cell(
                ticks.x_of(at), y, row.results[at],
                row.name + " = " + axis.text_at(at) + ": " + outcome_name(row.results[at]));
        else
            canvas.outline(mark::unmeasured, ticks.x_of(at) + 0.5, y + 0.5, cell - 1, cell - 1);
    }
    const sweep_window window = widest_window(row.results);
    if (window.count > 0) {
        const double from = ticks.x_of(window.first) - 2, to = ticks.x_of(window.last()) + cell + 2;
        canvas.outline(mark::window, from, y - 2, to - from, cell + 4);
        const open_sides open = sides_not_found(window, row.results.size(), axis);
        if (axis.rising() ? open.below : open.above)
            canvas.pointer(mark::open_edge, from - 9, middle, -1);
        if (axis.rising() ? open.above : open.below)
            canvas.pointer(mark::open_edge, to + 9, middle, 1);
        if (fully_measured(row, axis))
            canvas.dot(mark::centre, ticks.x_of(window_centre(window, axis.values)) + cell / 2,
                       middle);
    }
    std::size_t below = 0, above = 0;
    if (row.original && axis.positions_around(*row.original, &below, &above) &&
        above < row.results.size()) {
        // Between two values, as far from each as it lies.
        const double share = below == above
                                 ? 0
                                 : static_cast<double>(*row.original - axis.values[below]) /
                                       static_cast<double>(axis.values[above] - axis.values[below]);
        canvas.dot(mark::original,
                   ticks.x_of(below) + share * (ticks.x_of(above) - ticks.x_of(below)) + cell / 2,
                   middle);
    }
}

// A sweep's block, below what the canvas holds, its cells from LEFT.
void print_section(svg_canvas& canvas, const sweep_results& results, double left,
                   mark centre_mark) {
    const value_axis& axis = results.axis;
    const tick_marks ticks(axis, left);
    double y = canvas.bottom() + canvas_t::line;
    if (!results.group.empty()) {
        canvas.text("block", canvas_t::edge, y, results.group);
        y += canvas_t::line;
    }
    ticks.print_above(canvas, y);
    // Below the ticks, room for the pointer at the common centre.
    const double top = y + 22;
    for (std::size_t r = 0; r < results.rows.size(); ++r)
        print_row(canvas, results.rows[r], axis, ticks, top + static_cast<double>(r) * row_pitch);
    const double bottom =
        top + static_cast<double>(results.rows.size()) * row_pitch - (row_pitch - cell);
    const std::size_t centre = common_centre(results);
    if (!results.group.empty() && centre < axis.size()) {
        const sweep_window common = widest_window(common_results(results.rows));
        const double from = ticks.x_of(common.first) - 4, to = ticks.x_of(common.last()) + cell + 4;
        canvas.outline(mark::common, from, top - 4, to - from, bottom - top + 8);
        canvas.pointer(centre_mark, ticks.x_of(centre) + cell / 2, top - 5, 0);
    }
    y = ticks.print_below(canvas, bottom + 6) + canvas_t::line;
    const std::string name =
        results.group.empty() && !results.rows.empty() ? results.rows.front().name : results.group;
    canvas.text("axis-title", left, y, name + " (" + axis.picture_unit() + ")");
    for (const std::string& line : summary_lines(results))
        canvas.text("summary", canvas_t::edge, y += canvas_t::line, line);
}

}  // namespace

void print_svg(std::FILE* out, const std::vector<sweep_results>& sections, const facts& about,
               mark common_centre) {
    double left = 0;
    bool partial = false;
    for (const sweep_results& results : sections) {
        for (const sweep_row& row : results.rows)
            left = std::max(left, canvas_t::edge +
                                      canvas_t::char_width * static_cast<double>(row.name.size()) +
                                      name_gap);
        left = std::max(left, tick_marks::least_left(results.axis));
        partial = partial || results.partial;
    }
    svg_canvas canvas(about, partial);
    for (const sweep_results& results : sections)
        print_section(canvas, results, left, common_centre);
    canvas.print(out);
}
