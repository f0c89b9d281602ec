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

}  // namespace

void print_grid_svg(std::FILE* out, const grid_results& results,
                    const std::optional<safest_point>& safest, const facts& about) {
    const std::vector<std::string> y_texts = results.y.texts(true);
    std::size_t y_chars = 0;
    for (const std::string& text : y_texts)
        y_chars = std::max(y_chars, text.size());
    const double left =
        std::max(canvas_t::edge + static_cast<double>(y_chars) * canvas_t::char_width + label_gap,
                 tick_marks::least_left(results.x));
    const tick_marks ticks(results.x, left);
    svg_canvas canvas(about, results.partial);
    double y = canvas.bottom() + canvas_t::line;
    canvas.text("axis-title", canvas_t::edge, y, axis_title(results.y));
    ticks.print_above(canvas, y += canvas_t::line);
    const double top = y + 12, right = ticks.x_of(results.x.size() - 1) + cell;
    const std::size_t rows = results.y.size();
    // Y rises upwards: row 0 at the bottom.
    const auto y_of = [&](std::size_t row) {
        return top + static_cast<double>(rows - 1 - row) * pitch;
    };
    for (std::size_t row = 0; row < rows; ++row) {
        const double cell_top = y_of(row), middle = cell_top + cell / 2;
        canvas.tick(left - tick_gap - tick_length, middle, left - tick_gap, middle);
        canvas.tick(right + tick_gap, middle, right + tick_gap + tick_length, middle);
        canvas.text("axis left", left - label_gap, cell_top + cell - 2, y_texts[row], "end");
        canvas.text("axis right", right + label_gap, cell_top + cell - 2, y_texts[row]);
        for (std::size_t column = 0; column < results.x.size(); ++column) {
            const std::optional<outcome>& result = results.cells[row][column];
            if (result)
                canvas.result_cell(ticks.x_of(column), cell_top, *result,
                                   "X=" + results.x.text_at(column) + ", Y=" +
                                       results.y.text_at(row) + ": " + outcome_name(*result));
            else
                canvas.outline(mark::unmeasured, ticks.x_of(column) + 0.5, cell_top + 0.5, cell - 1,
                               cell - 1);
        }
    }
    const auto centre_of = [&](grid_point at) {
        return std::make_pair(ticks.x_of(at.x) + cell / 2, y_of(at.y) + cell / 2);
    };
    if (results.original) {
        const auto [x, y_centre] = centre_of(*results.original);
        canvas.dot(mark::original, x, y_centre);
    }
    if (safest) {
        const grid_point at = safest->at;
        const std::size_t half_x = safest->margin.x, half_y = safest->margin.y;
        const double from = ticks.x_of(at.x - half_x) - 3,
                     to = ticks.x_of(at.x + half_x) + cell + 3;
        const double high = y_of(at.y + half_y) - 3, low = y_of(at.y - half_y) + cell + 3;
        canvas.outline(mark::margin, from, high, to - from, low - high);
        const auto [x, y_centre] = centre_of(at);
        canvas.dot(mark::safest, x, y_centre);
    }
    y = ticks.print_below(canvas, y_of(0) + cell + 4) + canvas_t::line;
    canvas.text("axis-title", left, y, axis_title(results.x));
    for (const std::string& line : grid_summary(results, safest))
        canvas.text("summary", canvas_t::edge, y += canvas_t::line, line);
    canvas.print(out);
}
