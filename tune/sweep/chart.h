// SPDX-License-Identifier: MIT
// The sweep's results as text: a chart of cells, the lines that sum it up,
// the CSV file and the profile of the centres.
#ifndef PADKIT_SWEEP_CHART_H
#define PADKIT_SWEEP_CHART_H

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

#include "tune/sweep/outcome.h"
#include "tune/sweep/window.h"

// The value as written at a position of the row's axis.
std::string setting_at(const sweep_row& row, const value_axis& axis, std::size_t at);

// The axis value at a position, and " (setting S)" where it is written as S.
std::string value_with_setting(const value_axis& axis, std::size_t at, const std::string& setting);

// Per row "NAME: window LO..HI (N values), centre C" (with " (setting S)"
// where the centre is written otherwise) or "NAME: no passing value", and
// where its original lies: "NAME: original V: margin B below, A above"
// (steps to the ends of the passing run around it), "...: outside the
// window" or "...: not on the axis". For a group then its common window:
// "GROUP: common window LO..HI (N values), centre C" or "GROUP: no common
// passing value".
std::vector<std::string> summary_lines(const sweep_results& results);

// A line of labels (axis_labels) and a line of cells per row ('#' pass, '.'
// fail, 'T' time-out, 'H' hang; at the original 'O' where it passed, else 'X'),
// wrapped into blocks of that kind that fit the columns (0: no limit), then
// the summary lines.
void print_chart(std::FILE* out, const sweep_results& results, std::size_t columns);

// The width of the terminal on the descriptor; 0 when it is none.
std::size_t terminal_columns(int fd);

// The CSV file is written as the sweep goes: "name,value,result", then one
// line per measured cell.
void print_csv_header(std::FILE* out);
void print_csv_line(std::FILE* out, const std::string& name, const std::string& value,
                    outcome result);

// The header, then "NAME = SETTING" at the centre of each row's widest window,
// or "# NAME: no passing value"; a group as "GROUP = {S,...}" when every row
// has a window.
void print_profile(std::FILE* out, const sweep_results& results, const std::string& header);

// The labels (axis_labels) of an axis over cells a character wide.
std::string label_line(const value_axis& axis);

// How many cells a line of a chart holds beside labels INDENT wide: all
// VALUES without a limit (COLUMNS 0), else what fits, but at least a few.
std::size_t cells_per_line(std::size_t columns, std::size_t indent, std::size_t values);

#endif
