// SPDX-License-Identifier: MIT
// A sweep's results as a table of numbers, a line per row: the edges of its
// widest window and the room its original had, in the axis's values and
// units. A report holds one table per sweep (a campaign of many lanes, one
// per controller and direction).
#ifndef PADKIT_SWEEP_EDGE_TABLE_H
#define PADKIT_SWEEP_EDGE_TABLE_H

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "tune/sweep/window.h"

struct edge_line {
    std::string line;
    // Axis values; none without a window, the centre none for a row not
    // fully measured, the original none when it is not known.
    std::optional<long long> lower, upper, centre, original;
    // Units, the lowest value's step counted in: a window of one value is a
    // step wide.
    std::optional<long long> width;
    // Units from the original to each edge, when it lies in a window.
    std::optional<long long> margin_below, margin_above;
    bool lower_not_found = false, upper_not_found = false, no_window = false;
};

struct edge_table {
    std::string name;  // what was swept: a composite, a property, a lane
    std::string unit;  // what the widths and margins count
    std::vector<edge_line> lines;
};

edge_table edge_table_of(const std::string& name, const sweep_results& results);

// The table as text: its name and unit, then lane by lane (a line's name up
// to its "::") a heading and a row per line, labelled by the rest of its
// name, "-" for what it lacks and its flags at the end.
void print_edge_table(std::FILE* out, const edge_table& table);

// The table in CSV: a header line, then a line per line, empty fields for
// what it lacks.
void print_edge_table_csv(std::FILE* out, const edge_table& table);

// Whether LINE is the CSV header line of a table.
bool is_edge_table_header(const std::string& line);
// A CSV line of a table read back; false, said why in *PROBLEM, when it is none.
bool parse_edge_line_csv(const std::string& text, edge_line* line, std::string* problem);

#endif
