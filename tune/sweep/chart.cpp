// SPDX-License-Identifier: MIT
#include "tune/sweep/chart.h"

#include <sys/ioctl.h>

#include <algorithm>

#include "tune/sweep/profile_header.h"

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

std::string side_text(long long margin, bool open, const char* side) {
    return (open ? "at least " : "") + std::to_string(margin) + " " + side;
}

std::string margin_text(const margins& margin) {
    return "margin " + side_text(margin.below, margin.open.below, "below") + ", " +
           side_text(margin.above, margin.open.above, "above");
}

// "; lower edge not found" and the like, for a window that reaches an end
// of what was measured.
std::string edge_text(const open_sides& open) {
    if (open.below && open.above)
        return "; neither edge found";
    return open.below ? "; lower edge not found" : open.above ? "; upper edge not found" : "";
}

std::string centre_text(const value_axis& axis, std::size_t centre, const std::string& setting) {
    return ", centre " + value_with_setting(axis, centre, setting);
}

// "window LO..HI (N values)", then where given the centre, then the edges not found.
std::string window_text(const sweep_window& window, std::size_t measured, const value_axis& axis,
                        const std::string& centre) {
    return "window " + axis.range_text(window.first, window.last()) + " (" +
           count_text(window.count) + ")" + centre +
           edge_text(sides_not_found(window, measured, axis));
}

// A row not fully measured gets no centre.
std::string window_line(const sweep_row& row, const value_axis& axis) {
    const bool whole = fully_measured(row, axis);
    const std::string lead =
        row.name + (whole ? ""
                          : ": partial (" + std::to_string(row.results.size()) + " of " +
                                count_text(axis.size()) + " measured)");
    const sweep_window window = widest_window(row.results);
    if (window.count == 0)
        return lead + ": no passing value";
    const std::size_t centre = window_centre(window, axis.values);
    return lead + ": " +
           window_text(window, row.results.size(), axis,
                       whole ? centre_text(axis, centre, setting_at(row, axis, centre)) : "");
}

// Empty when the original was not measured.
std::string original_line(const sweep_row& row, const value_axis& axis) {
    const original_room original = room_of_original(row, axis);
    const std::string lead =
        row.original ? row.name + ": original " + axis.text(*row.original) : "";
    switch (original.where) {
    case original_room::off_axis: return lead + ": not on the axis";
    case original_room::outside: return lead + ": outside the window";
    case original_room::inside: return lead + ": " + margin_text(original.room);
    case original_room::unknown:
    case original_room::not_measured: break;
    }
    return "";
}

std::string common_line(const sweep_results& results) {
    const std::vector<outcome> common = common_results(results.rows);
    const sweep_window window = widest_window(common);
    if (window.count == 0)
        return results.group + ": no common passing value";
    const std::size_t centre = window_centre(window, results.axis.values);
    std::string setting = setting_at(results.rows.front(), results.axis, centre);
    for (const sweep_row& row : results.rows)
        if (setting_at(row, results.axis, centre) != setting)
            setting = std::to_string(results.axis.values[centre]);  // no one setting to name
    return results.group + ": common " +
           window_text(window, common.size(), results.axis,
                       centre_text(results.axis, centre, setting));
}

// Whether one side's margin is less than another's; of equal ones the
// exact one, since the other is only the least it can be.
bool less_room(long long margin, bool open, long long other, bool other_open) {
    return margin < other || (margin == other && !open && other_open);
}

// "GROUP: centre C: margin B below, A above (worst: ROW)": on each side the
// least margin of any row at the common centre, and the row that has it.
std::string worst_margin_line(const sweep_results& results) {
    const value_axis& axis = results.axis;
    const std::size_t centre = common_centre(results);
    margins worst{};
    std::string below, above;
    for (const sweep_row& row : results.rows) {
        const margins margin = margins_in(window_at(row.results, centre), axis.values[centre],
                                          row.results.size(), axis);
        if (below.empty() ||
            less_room(margin.below, margin.open.below, worst.below, worst.open.below))
            worst.below = margin.below, worst.open.below = margin.open.below, below = row.name;
        if (above.empty() ||
            less_room(margin.above, margin.open.above, worst.above, worst.open.above))
            worst.above = margin.above, worst.open.above = margin.open.above, above = row.name;
    }
    const std::string rows = below == above ? below : below + " below, " + above + " above";
    return results.group + ": centre " + axis.text_at(centre) + ": " + margin_text(worst) +
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
    if (!complete(results)) {
        lines.push_back(results.group + ": partial; no common window");
        return lines;
    }
    lines.push_back(common_line(results));
    if (common_centre(results) < results.axis.size())
        lines.push_back(worst_margin_line(results));
    return lines;
}

std::string label_line(const value_axis& axis) {
    std::string line;
    const std::vector<std::string> texts = axis.texts();
    for (const label_place& label : axis_labels(axis, texts, 1)) {
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

void print_csv_header(std::FILE* out, const facts& about) {
    print_fact_lines(out, about);
    std::fputs("name,value,result\n", out);
}

void print_csv_summary(std::FILE* out, const sweep_results& results) {
    print_summary_facts(out, results.partial, summary_lines(results));
}

void print_csv_line(std::FILE* out, const std::string& name, const std::string& value,
                    outcome result) {
    std::fprintf(out, "%s,%s,%s\n", name.c_str(), value.c_str(), outcome_name(result));
}

void print_profile(std::FILE* out, const sweep_results& results, const std::string& header) {
    std::fputs(header.c_str(), out);
    std::vector<std::string> centres, delays;
    for (const sweep_row& row : results.rows) {
        const sweep_window window = widest_window(row.results);
        if (window.count == 0) {
            centres.emplace_back();
            delays.emplace_back();
            continue;
        }
        const std::size_t centre = window_centre(window, results.axis.values);
        centres.push_back(setting_at(row, results.axis, centre));
        delays.push_back(row.delays.empty() ? "" : row.delays[centre]);
    }
    const bool every_window = std::find(centres.begin(), centres.end(), "") == centres.end();
    if (!results.group.empty() && every_window) {
        std::string list;
        for (const std::string& centre : centres)
            list += (list.empty() ? "{" : ",") + centre;
        std::fprintf(out, "%s%s = %s}\n", delay_comment(delays).c_str(), results.group.c_str(),
                     list.c_str());
        return;
    }
    for (std::size_t row = 0; row < results.rows.size(); ++row) {
        const char* name = results.rows[row].name.c_str();
        if (centres[row].empty())
            std::fprintf(out, "# %s: no passing value\n", name);
        else
            std::fprintf(out, "%s%s = %s\n", delay_comment({delays[row]}).c_str(), name,
                         centres[row].c_str());
    }
}
