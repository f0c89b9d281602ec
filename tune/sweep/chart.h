// SPDX-License-Identifier: MIT
// The sweep's results as text: a chart of cells and a line per row that
// names its passing window.
#ifndef PADKIT_SWEEP_CHART_H
#define PADKIT_SWEEP_CHART_H

#include <cstdio>
#include <string>
#include <vector>

#include "tune/sweep/window.h"

// "NAME: window LO..HI (N values), centre C" or "NAME: no passing value".
std::string window_summary(const sweep_row& row, const std::vector<long long>& axis);

// The first and last values of the axis above the cells, a line of cells per
// row ('#' pass, '.' fail, 'T' time-out, 'H' hang), then the summary of each row.
void print_chart(std::FILE* out, const sweep_results& results);

// "name,value,result" and one line per measured cell.
void print_csv(std::FILE* out, const sweep_results& results);

const char* outcome_name(outcome result);
// The mark of a cell in a chart.
char outcome_mark(outcome result);

#endif
