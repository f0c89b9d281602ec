// SPDX-License-Identifier: MIT
// A shmoo's results as text: the chart of the grid, its summary, its CSV.
#ifndef PADKIT_SWEEP_GRID_CHART_H
#define PADKIT_SWEEP_GRID_CHART_H

#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "tune/sweep/facts.h"
#include "tune/sweep/grid.h"

// A line naming both settings; then a row of cells per Y value, the highest
// at the top, each labelled with its value, X rising from left to right and
// labelled above and below ('#' pass, '.' fail, 'T' time-out, 'H' hang, at the
// original point 'O' where it passed, else 'X', '@' at the safest point);
// then the legend (naming the hang where there is one). Wider than WIDTH
// (0: no limit), the grid is cut into blocks of columns, each with its own
// X labels, and the legend wrapped.
void print_grid_chart(std::FILE* out, const grid_results& results,
                      const std::optional<safest_point>& safest, std::size_t width);

// How many points pass, the safest point and its margin, the original point
// and its margin (in each axis's units), or that it does not pass, was not
// measured or is not on the grid; for partial results, how many points were
// measured, no safest point and no margin.
std::vector<std::string> grid_summary(const grid_results& results,
                                      const std::optional<safest_point>& safest);

// The facts, "x_name,x_value,y_name,y_value,result", then a line per
// measured point.
void print_grid_csv_header(std::FILE* out, const facts& about);
void print_grid_csv_point(std::FILE* out, const grid_results& results, grid_point at);

#endif
