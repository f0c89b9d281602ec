// SPDX-License-Identifier: MIT
// Sweeps of one property on many boards, lined up as one sweep with a row
// per board.
#ifndef PADKIT_SWEEP_BOARDS_H
#define PADKIT_SWEEP_BOARDS_H

#include <cstdio>
#include <string>
#include <vector>

#include "tune/sweep/facts.h"
#include "tune/sweep/window.h"

// What one board measured of the property, in any order.
struct board_cells {
    std::string board;
    std::vector<long long> values;
    std::vector<outcome> results;
};

// The boards as the rows of one sweep whose group is the property: on the
// values that every board measured, rising, on an axis of the kind of KIND
// (its sign, unit and keys). Rows carry no settings and no original.
sweep_results line_up(const std::string& name, const value_axis& kind,
                      const std::vector<board_cells>& boards);

// What a merge of the lined-up sweeps says about itself: the properties,
// their ranges and steps, the boards (with the host of each whose file
// names one), the time, and the test when every board's file names the same.
// BOARD_FACTS are those of the boards' files, in the order of the rows.
facts merged_facts(const std::vector<sweep_results>& merged, const std::vector<facts>& board_facts);

// The facts, "name,value,boards_passing,boards,result" and a line per value
// of each lined-up sweep (the result is pass when every board passed), then
// the summary.
void print_merged_csv(std::FILE* out, const std::vector<sweep_results>& merged, const facts& about);

#endif
