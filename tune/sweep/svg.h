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

// The sweeps one below the other, each with the axis labels of the chart,
// one <rect class="cell RESULT"> per row and measured value, the widest
// window of each row outlined and its centre dotted, its original value
// framed, a group's common window outlined across its rows, the row names
// and the summary lines.
void print_svg(std::FILE* out, const std::vector<sweep_results>& sections, const char* title);

#endif
