// SPDX-License-Identifier: MIT
#include "tune/sweep/chart.h"

#include <algorithm>
#include <cstddef>

std::string window_summary(const sweep_row& row, const std::vector<long long>& axis) {
    const sweep_window window = widest_window(row.results);
    if (window.count == 0)
        return row.name + ": no passing value";
    const long long ends[] = {axis[window.first], axis[window.last()]};
    return row.name + ": window " + std::to_string(std::min(ends[0], ends[1])) + ".." +
           std::to_string(std::max(ends[0], ends[1])) + " (" + std::to_string(window.count) +
           (window.count == 1 ? " value" : " values") + "), centre " +
           std::to_string(axis[window_centre(window, axis)]);
}

namespace {

// By outcome: the chart's mark and the name in files.
const struct {
    char mark;
    const char* name;
} outcome_texts[] = {{'#', "pass"}, {'.', "fail"}, {'T', "timeout"}, {'H', "hang"}};

}  // namespace

const char* outcome_name(outcome result) { return outcome_texts[static_cast<int>(result)].name; }

char outcome_mark(outcome result) { return outcome_texts[static_cast<int>(result)].mark; }

void print_chart(std::FILE* out, const sweep_results& results) {
    if (results.axis.empty())
        return;
    std::size_t name_width = 0;
    for (const sweep_row& row : results.rows)
        name_width = std::max(name_width, row.name.size());
    const int indent = static_cast<int>(name_width) + 2;

    // The last label ends above the last cell, unless the axis is too short
    // to hold both labels apart.
    const std::string first = std::to_string(results.axis.front());
    std::string axis = first;
    if (results.axis.size() > 1) {
        const std::string last = std::to_string(results.axis.back());
        const std::size_t gap = results.axis.size() > first.size() + last.size()
                                    ? results.axis.size() - first.size() - last.size()
                                    : 1;
        axis += std::string(gap, ' ') + last;
    }
    std::fprintf(out, "%*s%s\n", indent, "", axis.c_str());

    for (const sweep_row& row : results.rows) {
        std::string cells;
        for (outcome result : row.results)
            cells += outcome_mark(result);
        // A row interrupted before its first value has no cells to line up.
        std::fprintf(out, "%-*s%s\n", cells.empty() ? 0 : indent, row.name.c_str(), cells.c_str());
    }
    for (const sweep_row& row : results.rows)
        std::fprintf(out, "%s\n", window_summary(row, results.axis).c_str());
}

void print_csv(std::FILE* out, const sweep_results& results) {
    std::fprintf(out, "name,value,result\n");
    for (const sweep_row& row : results.rows)
        for (std::size_t at = 0; at < row.results.size(); ++at)
            std::fprintf(out, "%s,%lld,%s\n", row.name.c_str(), results.axis[at],
                         outcome_name(row.results[at]));
}
