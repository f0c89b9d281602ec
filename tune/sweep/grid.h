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
    // How many units of X count like how many units of Y when the room
    // around a point is weighed; 0 for one step of each.
    long long weigh_x = 0, weigh_y = 0;
    // The shmoo did not measure every point: it names no safest point.
    bool partial = false;

    grid_results(grid_axis x_axis, grid_axis y_axis);
    bool passes(grid_point at) const;
    std::size_t passing_count() const;
    std::size_t measured_count() const;
};

// A number NUM/DEN (NUM at least 0, DEN above 0), compared exactly.
struct ratio {
    long long num = 0, den = 1;
};
bool operator<(const ratio& one, const ratio& other);
bool operator==(const ratio& one, const ratio& other);

// The room around a passing point: the largest rectangle centred on it, as
// wide against high as the weights say, whose points all pass (a point
// outside the grid counting as not passing).
struct point_margin {
    std::size_t x = 0, y = 0;  // its half sides in grid steps
    ratio room;                // its half width in X's units by X's weight: what ranks points
};

struct safest_point {
    grid_point at;
    point_margin margin;
};

// The room around AT; nothing for a point that does not pass.
std::optional<point_margin> margin_at(const grid_results& results, grid_point at);

// The passing point of the most room. Of equal ones, the nearest to NEAR
// (the larger of the two weighed distances), then the lower Y, then the
// lower X. Nothing when no point passes or the results are partial.
std::optional<safest_point> find_safest(const grid_results& results,
                                        std::optional<grid_point> near);

#endif
