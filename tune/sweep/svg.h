// SPDX-License-Identifier: MIT
// The sweep's chart as an SVG picture, for a browser or a report.
#ifndef PADKIT_SWEEP_SVG_H
#define PADKIT_SWEEP_SVG_H

#include <cstdio>
#include <vector>

#include "tune/sweep/facts.h"
#include "tune/sweep/svg_canvas.h"
#include "tune/sweep/window.h"

// The sweeps one below the other under the title lines of ABOUT, a group's
// block titled with its name. Each has tick marks and labels (class "axis
// top" and "axis bottom") above and below its cells at the first value, the
// last, 0 and a round grid between, and under them the axis's title with its
// unit; a <rect class="cell RESULT"> per row and measured value and a dashed
// box per value not measured; each row's widest window outlined, its ends
// not found pointed at and, for a row fully measured, its centre dotted;
// the original value ringed, also between two values; a group's common
// window outlined across its rows and its centre pointed at as
// COMMON_CENTRE (mark::common_centre, or mark::ship for the value to ship);
// the row names and the summary lines; then the legend.
void print_svg(std::FILE* out, const std::vector<sweep_results>& sections, const facts& about,
               mark common_centre);

#endif
