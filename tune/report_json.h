// SPDX-License-Identifier: MIT
// A report as a JSON document: what ran, whether it is partial, a table of
// edges per sweep (edge_table), and a shmoo's grid.
#ifndef PADKIT_TUNE_REPORT_JSON_H
#define PADKIT_TUNE_REPORT_JSON_H

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "tune/sweep/edge_table.h"
#include "tune/sweep/facts.h"
#include "tune/sweep/grid.h"

struct report_document {
    std::string kind;  // "sweep", "shmoo", "merge"
    facts about;
    bool partial = false;
    std::vector<edge_table> tables;
    const grid_results* grid = nullptr;
    std::optional<safest_point> safest;
};

void print_report_json(std::FILE* out, const report_document& document);

#endif
