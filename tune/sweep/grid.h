// SPDX-License-Identifier: MIT
// What a shmoo measured: one outcome per point of a grid of two settings,
// and the passing point with the most room around it.
#ifndef PADKIT_SWEEP_GRID_H
#define PADKIT_SWEEP_GRID_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "tune/sweep/axis.h"
#include "tune/sweep/outcome.h"

// One setting of the grid, its values rising.
struct grid_axis : value_axis {
    std::string name;
};

// A point as positions on the two axes.
struct grid_point {
    std::size_t x = 0, y = 0;
    bool operator==(const grid_point& other) const { return x == other.x && y == other.y; }
};

struct grid_results {
    grid_axis x, y;
    // cells[y][x], by rising positions; a point not measured (an interrupted
    // shmoo) is empty.
    std::vector<std::vector<std::optional<outcome>>> cells;
    // Where the board was before the shmoo, when both values are on the
    // axes, and the two values as shown.
    std::optional<grid_point> original;
    std::string original_x, original_y;

    grid_results(grid_axis x_axis, grid_axis y_axis);
    bool passes(grid_point at) const;
    std::size_t passing_count() const;
};

struct safest_point {
    grid_point at;
    std::size_t margin = 0;  // in grid steps
};

// The largest N such that every point of the (2N+1)x(2N+1) square centred on
// AT passes, a point outside the grid counting as not passing; for a point
// that does not pass, nothing.
std::optional<std::size_t> margin_at(const grid_results& results, grid_point at);

// The passing point of the largest margin. Of equal ones, the nearest to
// NEAR (the larger of the two distances in grid steps), then the lower Y,
// then the lower X. Nothing when no point passes.
std::optional<safest_point> find_safest(const grid_results& results,
                                        std::optional<grid_point> near);

#endif
