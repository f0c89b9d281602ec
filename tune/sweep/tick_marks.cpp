// SPDX-License-Identifier: MIT
#include "tune/sweep/tick_marks.h"

#include <algorithm>
#include <cmath>

namespace {

const double tick_length = 4, label_gap = 3;

}  // namespace

tick_marks::tick_marks(const value_axis& axis, double left)
    : left(left),
      texts(axis.texts(true)),
      step(std::max(svg_canvas::pitch,
                    std::ceil(cell_width_for_labels(axis, texts) * svg_canvas::char_width))),
      labels(axis_labels(axis, texts, step / svg_canvas::char_width, true)) {}

void tick_marks::print(svg_canvas& canvas, const char* kind, double label_y, double tick_from,
                       double tick_to) const {
    for (const label_place& label : labels) {
        const double x = x_of(label.at) + svg_canvas::cell / 2;
        canvas.tick(x, tick_from, x, tick_to);
        canvas.text(kind, x, label_y, texts[label.at], "middle");
    }
}

void tick_marks::print_above(svg_canvas& canvas, double y) const {
    print(canvas, "axis top", y, y + label_gap, y + label_gap + tick_length);
}

double tick_marks::print_below(svg_canvas& canvas, double y) const {
    const double baseline = y + tick_length + label_gap + svg_canvas::cell - 2;
    print(canvas, "axis bottom", baseline, y, y + tick_length);
    return baseline;
}

double tick_marks::least_left(const value_axis& axis) {
    if (axis.size() == 0)
        return 0;
    const double half = static_cast<double>(axis.picture_text(axis.values.front()).size()) *
                        svg_canvas::char_width / 2;
    return svg_canvas::edge + std::max(0.0, half - svg_canvas::cell / 2);
}
