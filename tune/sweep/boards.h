// SPDX-License-Identifier: MIT
// Sweeps of one property on many boards, lined up as one sweep with a row
// per board.
#ifndef PADKIT_SWEEP_BOARDS_H
#define PADKIT_SWEEP_BOARDS_H

#include <cstdio>
#include <string>
#include <vector>

#include "tune/sweep/window.h"

// What one board measured of the property, in any order.
struct board_cells {
    std::string board;
    std::vector<long long> values;
    std::vector<outcome> results;
};

// The boards as the rows of one sweep whose group is the property: on the
// values that every board measured, rising. Rows carry no settings and no
// original.
sweep_results line_up(const std::string& name, bool is_signed,
                      const std::vector<board_cells>& boards);

// "name,value,boards_passing,boards,result" and a line per value of each
// lined-up sweep; the result is pass when every board passed.
void print_merged_csv(std::FILE* out, const std::vector<sweep_results>& merged);

#endif
