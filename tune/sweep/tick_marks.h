// SPDX-License-Identifier: MIT
// An axis across a picture: its cells, far enough apart that the labels of
// the first value, the last and 0 never touch, and a tick and a label at
// each labelled value, above the cells and below them.
#ifndef PADKIT_SWEEP_TICK_MARKS_H
#define PADKIT_SWEEP_TICK_MARKS_H

#include <cstddef>
#include <string>
#include <vector>

#include "tune/sweep/axis.h"
#include "tune/sweep/svg_canvas.h"

class tick_marks {
public:
    // The first cell's left edge at LEFT.
    tick_marks(const value_axis& axis, double left);

    double pitch() const { return step; }
    // The left edge of the cell at a position.
    double x_of(std::size_t at) const { return left + static_cast<double>(at) * step; }

    // Labels (class "axis top") with their baseline at Y, ticks under them.
    void print_above(svg_canvas& canvas, double y) const;
    // Ticks from Y down, labels (class "axis bottom") under them; returns
    // their baseline.
    double print_below(svg_canvas& canvas, double y) const;

    // The least LEFT at which the first value's label stays on the page.
    static double least_left(const value_axis& axis);

private:
    void print(svg_canvas& canvas, const char* kind, double label_y, double tick_from,
               double tick_to) const;

    double left;
    std::vector<std::string> texts;
    double step;
    std::vector<label_place> labels;
};

#endif
