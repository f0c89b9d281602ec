// SPDX-License-Identifier: MIT
// The sweep's results as text: a chart of cells, the lines that sum it up,
// the CSV file and the profile of the centres.
#ifndef PADKIT_SWEEP_CHART_H
#define PADKIT_SWEEP_CHART_H

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

#include "tune/sweep/facts.h"
#include "tune/sweep/outcome.h"
#include "tune/sweep/window.h"

// The value as written at a position of the row's axis.
std::string setting_at(const sweep_row& row, const value_axis& axis, std::size_t at);

// The axis value at a position, and " (setting S)" where it is written as S.
std::string value_with_setting(const value_axis& axis, std::size_t at, const std::string& setting);

// Per row "NAME: window LO..HI (N values), centre C" (with " (setting S)"
// where the centre is written otherwise; a row not fully measured as
// "NAME: partial (K of N values measured): window LO..HI (M values)", with no
// centre) or "...: no passing value", each window followed by
// "; lower edge not found", "; upper edge not found" or "; neither edge
// found" where it reaches an end of what was measured; and where its
// original lies: "NAME: original V: margin B below, A above" (in the axis's
// units to the ends of the passing run around it, also from a value between
// two swept ones; "at least B" on a side whose edge was not found),
// "...: outside the window" or "...: not on the axis". For a group then its
// common window: "GROUP: common window LO..HI (N values), centre C" and the
// worst margin at that centre, "GROUP: no common passing value", or, for
// partial results or a row not fully measured, "GROUP: partial; no common
// window".
std::vector<std::string> summary_lines(const sweep_results& results);

// A line of labels (axis_labels) and a line of cells per row ('#' pass, '.'
// fail, 'T' time-out, 'H' hang; at the original 'O' where it passed, else 'X'),
// wrapped into blocks of that kind that fit the columns (0: no limit), then
// the summary lines.
void print_chart(std::FILE* out, const sweep_results& results, std::size_t columns);

// The width of the terminal on the descriptor; 0 when it is none.
std::size_t terminal_columns(int fd);

// The CSV file is written as the sweep goes: the facts, "name,value,result",
// then one line per measured cell, and at the end the summary.
void print_csv_header(std::FILE* out, const facts& about);
void print_csv_line(std::FILE* out, const std::string& name, const std::string& value,
                    outcome result);
void print_csv_summary(std::FILE* out, const sweep_results& results);

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
