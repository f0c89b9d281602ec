// SPDX-License-Identifier: MIT
#include "tune/sweep/chart.h"

#include <sys/ioctl.h>

#include <algorithm>

std::string setting_at(const sweep_row& row, const value_axis& axis, std::size_t at) {
    return row.settings.empty() ? std::to_string(axis.values[at]) : row.settings[at];
}

std::string value_with_setting(const value_axis& axis, std::size_t at, const std::string& setting) {
    return axis.text_at(at) +
           (setting == std::to_string(axis.values[at]) ? "" : " (setting " + setting + ")");
}

namespace {

std::string count_text(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " value" : " values");
}

std::string margin_text(const margins& margin) {
    return "margin " + std::to_string(margin.below) + " below, " + std::to_string(margin.above) +
           " above";
}

std::string centre_text(const value_axis& axis, std::size_t centre, const std::string& setting) {
    return ", centre " + value_with_setting(axis, centre, setting);
}

std::string window_line(const sweep_row& row, const value_axis& axis) {
    const sweep_window window = widest_window(row.results);
    if (window.count == 0)
        return row.name + ": no passing value";
    const std::size_t centre = window_centre(window, axis.values);
    return row.name + ": window " + axis.range_text(window.first, window.last()) + " (" +
           count_text(window.count) + ")" +
           centre_text(axis, centre, setting_at(row, axis, centre));
}

// Empty when the row has no original on its axis, or it was not measured.
std::string original_line(const sweep_row& row, const value_axis& axis) {
    if (!row.original)
        return "";
    const std::string lead = row.name + ": original " + axis.text(*row.original);
    const std::size_t at = axis.position_of(*row.original);
    if (at == axis.size())
        return lead + ": not on the axis";
    if (at >= row.results.size())
        return "";
    if (row.results[at] != outcome::pass)
        return lead + ": outside the window";
    return lead + ": " + margin_text(margins_in(window_at(row.results, at), at, axis.values));
}

std::string common_line(const sweep_results& results) {
    const sweep_window window = widest_window(common_results(results.rows));
    if (window.count == 0)
        return results.group + ": no common passing value";
    const std::size_t centre = window_centre(window, results.axis.values);
    std::string setting = setting_at(results.rows.front(), results.axis, centre);
    for (const sweep_row& row : results.rows)
        if (setting_at(row, results.axis, centre) != setting)
            setting = std::to_string(results.axis.values[centre]);  // no one setting to name
    return results.group + ": common window " +
           results.axis.range_text(window.first, window.last()) + " (" + count_text(window.count) +
           ")" + centre_text(results.axis, centre, setting);
}

// "GROUP: centre C: margin B below, A above (worst: ROW)": on each side the
// least margin of any row at the common centre, and the row that has it.
std::string worst_margin_line(const sweep_results& results) {
    const std::size_t centre = common_centre(results);
    margins worst{results.axis.size(), results.axis.size()};
    std::string below, above;
    for (const sweep_row& row : results.rows) {
        const margins margin =
            margins_in(window_at(row.results, centre), centre, results.axis.values);
        if (margin.below < worst.below)
            worst.below = margin.below, below = row.name;
        if (margin.above < worst.above)
            worst.above = margin.above, above = row.name;
    }
    const std::string rows = below == above ? below : below + " below, " + above + " above";
    return results.group + ": centre " + results.axis.text_at(centre) + ": " + margin_text(worst) +
           " (worst: " + rows + ")";
}

std::string cells(const sweep_row& row, const value_axis& axis, std::size_t first,
                  std::size_t count) {
    const std::size_t original = row.original ? axis.position_of(*row.original) : axis.size();
    std::string marks;
    for (std::size_t at = first; at < first + count && at < row.results.size(); ++at) {
        const outcome result = row.results[at];
        marks += at != original ? outcome_mark(result) : result == outcome::pass ? 'O' : 'X';
    }
    return marks;
}

}  // namespace

std::vector<std::string> summary_lines(const sweep_results& results) {
    std::vector<std::string> lines;
    for (const sweep_row& row : results.rows) {
        lines.push_back(window_line(row, results.axis));
        const std::string original = original_line(row, results.axis);
        if (!original.empty())
            lines.push_back(original);
    }
    if (results.group.empty() || results.rows.empty())
        return lines;
    lines.push_back(common_line(results));
    if (common_centre(results) < results.axis.size())
        lines.push_back(worst_margin_line(results));
    return lines;
}

std::string label_line(const value_axis& axis) {
    std::string line;
    for (const label_place& label : axis_labels(axis, 1)) {
        const long long wanted = static_cast<long long>(label.from);
        const long long after = line.empty() ? 0 : static_cast<long long>(line.size()) + 1;
        line.resize(static_cast<std::size_t>(std::max(wanted, after)), ' ');
        line += axis.text_at(label.at);
    }
    return line;
}

std::size_t cells_per_line(std::size_t columns, std::size_t indent, std::size_t values) {
    // A terminal too narrow for the labels still gets a few cells a line.
    const std::size_t least = 8;
    return columns == 0 ? values : std::max(columns > indent ? columns - indent : 0, least);
}

void print_chart(std::FILE* out, const sweep_results& results, std::size_t columns) {
    const std::size_t values = results.axis.size();
    if (values == 0)
        return;
    std::size_t name_width = 0;
    for (const sweep_row& row : results.rows)
        name_width = std::max(name_width, row.name.size());
    const std::size_t indent = name_width + 2;
    const std::size_t block = cells_per_line(columns, indent, values);
    for (std::size_t first = 0; first < values; first += block) {
        const std::size_t count = std::min(block, values - first);
        if (first > 0)
            std::fputc('\n', out);
        std::fprintf(out, "%*s%s\n", static_cast<int>(indent), "",
                     label_line(results.axis.part(first, count)).c_str());
        for (const sweep_row& row : results.rows) {
            const std::string marks = cells(row, results.axis, first, count);
            // A row interrupted before these values has no cells to line up.
            std::fprintf(out, "%-*s%s\n", marks.empty() ? 0 : static_cast<int>(indent),
                         row.name.c_str(), marks.c_str());
        }
    }
    for (const std::string& line : summary_lines(results))
        std::fprintf(out, "%s\n", line.c_str());
}

std::size_t terminal_columns(int fd) {
    winsize size{};
    return ioctl(fd, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

void print_csv_header(std::FILE* out) { std::fputs("name,value,result\n", out); }

void print_csv_line(std::FILE* out, const std::string& name, const std::string& value,
                    outcome result) {
    std::fprintf(out, "%s,%s,%s\n", name.c_str(), value.c_str(), outcome_name(result));
}

void print_profile(std::FILE* out, const sweep_results& results, const std::string& header) {
    std::fputs(header.c_str(), out);
    std::vector<std::string> centres;
    for (const sweep_row& row : results.rows) {
        const sweep_window window = widest_window(row.results);
        centres.push_back(
            window.count == 0
                ? ""
                : setting_at(row, results.axis, window_centre(window, results.axis.values)));
    }
    const bool every_window = std::find(centres.begin(), centres.end(), "") == centres.end();
    if (!results.group.empty() && every_window) {
        std::string list;
        for (const std::string& centre : centres)
            list += (list.empty() ? "{" : ",") + centre;
        std::fprintf(out, "%s = %s}\n", results.group.c_str(), list.c_str());
        return;
    }
    for (std::size_t row = 0; row < results.rows.size(); ++row) {
        const char* name = results.rows[row].name.c_str();
        if (centres[row].empty())
            std::fprintf(out, "# %s: no passing value\n", name);
        else
            std::fprintf(out, "%s = %s\n", name, centres[row].c_str());
    }
}
