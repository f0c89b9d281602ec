// SPDX-License-Identifier: MIT
// A shmoo's grid as an SVG picture.
#ifndef PADKIT_SWEEP_GRID_SVG_H
#define PADKIT_SWEEP_GRID_SVG_H

#include <cstdio>
#include <optional>

#include "tune/sweep/grid.h"

// One <rect class="cell RESULT"> per measured point, X rising to the right
// and Y upwards, tick labels (class "axis") on both axes, both property
// names (class "name"), a frame on the original point and a dot on the
// safest one, and the legend.
void print_grid_svg(std::FILE* out, const grid_results& results,
                    const std::optional<safest_point>& safest);

#endif
