// SPDX-License-Identifier: MIT
// A shmoo's grid as an SVG picture.
#ifndef PADKIT_SWEEP_GRID_SVG_H
#define PADKIT_SWEEP_GRID_SVG_H

#include <cstdio>
#include <optional>

#include "tune/sweep/facts.h"
#include "tune/sweep/grid.h"

// Under the title lines of ABOUT: Y's title and unit, then the grid, X
// rising to the right and Y upwards, a <rect class="cell RESULT"> per
// measured point and a dashed box per point not measured; tick marks and
// labels on all four sides (X's as the sweep's, class "axis top" and "axis
// bottom"; every Y value, class "axis left" and "axis right"); the original
// point ringed, the safest one dotted and the rectangle of its margin
// outlined; X's title and unit, the summary and the legend.
void print_grid_svg(std::FILE* out, const grid_results& results,
                    const std::optional<safest_point>& safest, const facts& about);

#endif
