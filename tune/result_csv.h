// SPDX-License-Identifier: MIT
// The CSV files of sweeps, shmoos and merges read back: their fact lines,
// their header and their rows, each field checked against the properties.
#ifndef PADKIT_TUNE_RESULT_CSV_H
#define PADKIT_TUNE_RESULT_CSV_H

#include <sys/stat.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "properties/property.h"
#include "properties/value_domain.h"
#include "tune/sweep/axis.h"
#include "tune/sweep/boards.h"
#include "tune/sweep/facts.h"
#include "tune/sweep/outcome.h"

// Lines a campaign's CSV file gives beyond what its rows and summary say:
// "# values: NAME V ...", the values of NAME's axis in the order visited, as
// the rows write them, and "# original: NAME = VALUE", the value before the
// campaign as profiles write it, a DQ delay's delay beside it.
fact values_fact(const std::string& name, const value_axis& axis);
// A deskew's file: its rows, each line at a value it was run at, then per
// table of edges "# table: NAME, in UNIT" and the table (edge_table.h).
constexpr const char* deskew_csv_header = "line,value,result\n";
constexpr const char* table_key = "table";
fact original_fact(property* prop, long long code);

// Reads the file at PATH whole, with its identity; a file far beyond the CSV
// of any sweep (or /dev/zero) is refused. Says why it cannot.
bool read_csv_file(const std::string& path, std::string* text, struct stat* identity);

// Takes a line: the header (HEADER) or a row; false with *problem for a bad one.
using csv_line_taker =
    std::function<bool(const std::string& line, bool header, std::string* problem)>;

// Every line of TEXT: "# key: value" into *about, the first other one as
// the header, the others but empty ones as rows. Stops at the first bad
// line, reported as PATH:LINE.
bool read_csv_lines(const std::string& text, const std::string& path, facts* about,
                    const csv_line_taker& take);

// The COUNT fields of a line, none too long; false with *problem otherwise.
bool csv_fields(const std::string& line, std::size_t count, const char* expected,
                std::vector<std::string>* fields, std::string* problem);

// A value of the property NAME on its axis: the domain (a range that cannot
// be read from this board taken at its widest) in *domain; false with *problem.
bool axis_value(const std::string& name, const std::string& text, value_domain* domain,
                long long* value, std::string* problem);

// A result's name; false with *problem.
bool csv_outcome(const std::string& text, outcome* result, std::string* problem);

// A sweep's rows, per property in the order of the file.
struct swept_cells {
    std::vector<std::string> names;
    std::map<std::string, board_cells> cells;
    std::map<std::string, std::set<long long>> seen;
};

// One row "NAME,VALUE,RESULT" into the cells; false with *problem for a bad one.
bool take_sweep_row(const std::string& line, swept_cells* cells, std::string* problem);

#endif
