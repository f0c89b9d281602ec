// SPDX-License-Identifier: MIT
// The sweep's chart as an SVG picture, for a browser or a report.
#ifndef PADKIT_SWEEP_SVG_H
#define PADKIT_SWEEP_SVG_H

#include <cstdio>
#include <string>

#include "tune/sweep/window.h"

// The text with the characters that XML reserves as entities.
std::string svg_escaped(const std::string& text);

// One <rect class="cell RESULT"> per row and measured value, the widest
// window of each row outlined and its centre dotted, the first and last
// values of the axis, the property names and each row's summary.
void print_svg(std::FILE* out, const sweep_results& results);

#endif
