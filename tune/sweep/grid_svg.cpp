// SPDX-License-Identifier: MIT
#include "tune/sweep/grid_svg.h"

#include <algorithm>
#include <string>
#include <vector>

#include "tune/sweep/grid_chart.h"
#include "tune/sweep/outcome.h"
#include "tune/sweep/svg_canvas.h"
#include "tune/sweep/tick_marks.h"

namespace {

using canvas_t = svg_canvas;
const double cell = canvas_t::cell, pitch = canvas_t::pitch;
// From the grid to a Y label: a tick and a gap on either side of it.
const double tick_gap = 2, tick_length = 4, label_gap = 12;

std::string axis_title(const grid_axis& axis) {
    return axis.name + " (" + axis.picture_unit() + ")";
}

// Where the grid lies: X's cells from LEFT, the top row's at TOP, Y rising
// upwards.
struct grid_place {
    const grid_results& results;
    tick_marks ticks;
    double top;

    double y_of(std::size_t row) const {
        return top + static_cast<double>(results.y.size() - 1 - row) * pitch;
    }
    double right() const { return ticks.x_of(results.x.size() - 1) + cell; }
};

// Each row's cells, a dashed box for each point not measured, and its label
// and tick on either side.
void print_rows(svg_canvas& canvas, const grid_place& grid) {
    const grid_results& results = grid.results;
    const std::vector<std::string> labels = results.y.texts(true);
    const double left = grid.ticks.x_of(0), right = grid.right();
    for (std::size_t row = 0; row < results.y.size(); ++row) {
        const double y = grid.y_of(row), middle = y + cell / 2;
        canvas.tick(left - tick_gap - tick_length, middle, left - tick_gap, middle);
        canvas.tick(right + tick_gap, middle, right + tick_gap + tick_length, middle);
        canvas.text("axis left", left - label_gap, y + cell - 2, labels[row], "end");
        canvas.text("axis right", right + label_gap, y + cell - 2, labels[row]);
        for (std::size_t column = 0; column < results.x.size(); ++column) {
            const std::optional<outcome>& result = results.cells[row][column];
            const double x = grid.ticks.x_of(column);
            if (result)
                canvas.result_cell(x, y, *result,
                                   "X=" + results.x.text_at(column) + ", Y=" +
                                       results.y.text_at(row) + ": " + outcome_name(*result));
            else
                canvas.outline(mark::unmeasured, x + 0.5, y + 0.5, cell - 1, cell - 1);
        }
    }
}

// The original point ringed, the safest one dotted and its margin outlined.
void print_points(svg_canvas& canvas, const grid_place& grid,
                  const std::optional<safest_point>& safest) {
    const auto dot = [&](mark kind, grid_point at) {
        canvas.dot(kind, grid.ticks.x_of(at.x) + cell / 2, grid.y_of(at.y) + cell / 2);
    };
    if (grid.results.original)
        dot(mark::original, *grid.results.original);
    if (!safest)
        return;
    const grid_point at = safest->at;
    const std::size_t half_x = safest->margin.x, half_y = safest->margin.y;
    const double from = grid.ticks.x_of(at.x - half_x) - 3,
                 to = grid.ticks.x_of(at.x + half_x) + cell + 3;
    const double high = grid.y_of(at.y + half_y) - 3, low = grid.y_of(at.y - half_y) + cell + 3;
    canvas.outline(mark::margin, from, high, to - from, low - high);
    dot(mark::safest, at);
}

}  // namespace

void print_grid_svg(std::FILE* out, const grid_results& results,
                    const std::optional<safest_point>& safest, const facts& about) {
    std::size_t label_chars = 0;
    for (const std::string& text : results.y.texts(true))
        label_chars = std::max(label_chars, text.size());
    const double left = std::max(
        canvas_t::edge + static_cast<double>(label_chars) * canvas_t::char_width + label_gap,
        tick_marks::least_left(results.x));
    svg_canvas canvas(about, results.partial);
    double y = canvas.bottom() + canvas_t::line;
    canvas.text("axis-title", canvas_t::edge, y, axis_title(results.y));
    const grid_place grid{results, tick_marks(results.x, left), y + canvas_t::line + 12};
    grid.ticks.print_above(canvas, y + canvas_t::line);
    print_rows(canvas, grid);
    print_points(canvas, grid, safest);
    y = grid.ticks.print_below(canvas, grid.y_of(0) + cell + 4) + canvas_t::line;
    canvas.text("axis-title", left, y, axis_title(results.x));
    for (const std::string& line : grid_summary(results, safest))
        canvas.text("summary", canvas_t::edge, y += canvas_t::line, line);
    canvas.print(out);
}
