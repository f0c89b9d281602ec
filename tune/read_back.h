// SPDX-License-Identifier: MIT
// A campaign's results read back from its CSV file (a sweep's, a shmoo's or
// a merge's) or from its journal, without the board.
#ifndef PADKIT_TUNE_READ_BACK_H
#define PADKIT_TUNE_READ_BACK_H

#include <optional>
#include <string>
#include <vector>

#include "tune/sweep/edge_table.h"
#include "tune/sweep/facts.h"
#include "tune/sweep/grid.h"
#include "tune/sweep/window.h"

struct read_back {
    std::string kind;  // "sweep", "shmoo", "merge" or "deskew"
    facts about;       // what the run says of itself, as its pictures show it
    bool partial = false;
    // A sweep's results; a merge's, a section per property, each with one
    // row: what every board passed.
    std::vector<sweep_results> sweeps;
    std::optional<grid_results> grid;  // a shmoo's
    std::optional<safest_point> safest;
    // A deskew's tables of edges and the lines of its summary, as it wrote them.
    std::vector<edge_table> tables;
    std::vector<std::string> summary;
};

// Reads the file at PATH; says what is wrong with it, as FILE:LINE where it can.
bool read_back_file(const std::string& path, read_back* out);

#endif
