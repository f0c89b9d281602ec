// SPDX-License-Identifier: MIT
// The sweep's chart as an SVG picture, for a browser or a report.
#ifndef PADKIT_SWEEP_SVG_H
#define PADKIT_SWEEP_SVG_H

#include <cstdio>
#include <string>
#include <vector>

#include "tune/sweep/window.h"

// The text with the characters that XML reserves as entities.
std::string svg_escaped(const std::string& text);

// The colours of the outcomes (CSS), and the legend that names them.
#define SVG_OUTCOME_STYLE \
    ".pass{fill:#2e7d32}.fail{fill:#c62828}.timeout{fill:#f9a825}.hang{fill:#424242}"
#define SVG_OUTCOME_LEGEND                                                                 \
    "<tspan class=\"pass\">\u25a0</tspan> pass <tspan class=\"fail\">\u25a0</tspan> fail " \
    "<tspan class=\"timeout\">\u25a0</tspan> time-out <tspan class=\"hang\">\u25a0</tspan> hang"

// The sweeps one below the other, each with the axis labels of the chart,
// one <rect class="cell RESULT"> per row and measured value, the widest
// window of each row outlined and its centre dotted, its original value
// framed, a group's common window outlined across its rows, the row names
// and the summary lines.
void print_svg(std::FILE* out, const std::vector<sweep_results>& sections, const char* title);

#endif
