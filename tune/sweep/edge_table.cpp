// SPDX-License-Identifier: MIT
#include "tune/sweep/edge_table.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <utility>

namespace {

edge_line line_of(const sweep_row& row, const value_axis& axis) {
    edge_line line;
    line.line = row.name;
    line.original = row.original;
    const sweep_window window = widest_window(row.results);
    line.no_window = window.count == 0;
    if (line.no_window)
        return line;
    const long long one = axis.values[window.first], other = axis.values[window.last()];
    line.lower = std::min(one, other);
    line.upper = std::max(one, other);
    line.width = std::llabs(axis.in_units(other) - axis.in_units(one)) + axis.step();
    if (fully_measured(row, axis))
        line.centre = axis.values[window_centre(window, axis.values)];
    const open_sides open = sides_not_found(window, row.results.size(), axis);
    line.lower_not_found = open.below;
    line.upper_not_found = open.above;
    const original_room original = room_of_original(row, axis);
    if (original.where == original_room::inside) {
        line.margin_below = original.room.below;
        line.margin_above = original.room.above;
    }
    return line;
}

// The numbers of a line in the table's order.
std::vector<std::optional<long long>> numbers_of(const edge_line& line) {
    return {line.lower,    line.upper,        line.width,       line.centre,
            line.original, line.margin_below, line.margin_above};
}

// The flags of a line and their text.
std::vector<std::pair<bool*, const char*>> flags_in(edge_line* line) {
    return {{&line->no_window, "no window"},
            {&line->lower_not_found, "lower edge cut by the range"},
            {&line->upper_not_found, "upper edge cut by the range"}};
}

std::string flags_of(edge_line line) {
    std::string flags;
    for (const auto& [set, text] : flags_in(&line))
        if (*set)
            flags += (flags.empty() ? "" : "; ") + std::string(text);
    return flags;
}

const char* const columns[] = {"lower", "upper", "width", "centre", "original", "below", "above"};

std::string csv_header() {
    std::string header = "line";
    for (const char* column : columns)
        header += std::string(",") + column;
    return header + ",flags";
}

}  // namespace

edge_table edge_table_of(const std::string& name, const sweep_results& results) {
    edge_table table{name, results.axis.unit, {}};
    for (const sweep_row& row : results.rows)
        table.lines.push_back(line_of(row, results.axis));
    return table;
}

void print_edge_table(std::FILE* out, const edge_table& table) {
    std::fprintf(out, "%s, in %s:\n", table.name.c_str(), table.unit.c_str());
    const auto lane_of = [](const std::string& line) {
        const std::string::size_type colons = line.find("::");
        return colons == std::string::npos ? std::string() : line.substr(0, colons + 2);
    };
    int width = 8;
    for (const edge_line& line : table.lines) {
        const std::size_t lane = lane_of(line.line).size();
        width = std::max(
            {width, static_cast<int>(lane), static_cast<int>(line.line.size() - lane) + 2});
    }
    std::string lane;
    for (const edge_line& line : table.lines) {
        if (lane_of(line.line) != lane || &line == &table.lines.front()) {
            lane = lane_of(line.line);
            std::fprintf(out, "  %-*s", width, lane.c_str());
            for (const char* column : columns)
                std::fprintf(out, " %8s", column);
            std::fputc('\n', out);
        }
        std::fprintf(out, "    %-*s", width - 2, line.line.substr(lane.size()).c_str());
        for (const std::optional<long long>& number : numbers_of(line))
            std::fprintf(out, " %8s", number ? std::to_string(*number).c_str() : "-");
        const std::string flags = flags_of(line);
        std::fprintf(out, "%s%s\n", flags.empty() ? "" : "  ", flags.c_str());
    }
}

void print_edge_table_csv(std::FILE* out, const edge_table& table) {
    std::fprintf(out, "%s\n", csv_header().c_str());
    for (const edge_line& line : table.lines) {
        std::fputs(line.line.c_str(), out);
        for (const std::optional<long long>& number : numbers_of(line))
            std::fprintf(out, ",%s", number ? std::to_string(*number).c_str() : "");
        std::fprintf(out, ",%s\n", flags_of(line).c_str());
    }
}

bool is_edge_table_header(const std::string& line) { return line == csv_header(); }

bool parse_edge_line_csv(const std::string& text, edge_line* line, std::string* problem) {
    std::vector<std::string> fields;
    for (std::string::size_type start = 0; start != std::string::npos;) {
        const std::string::size_type comma = text.find(',', start);
        fields.push_back(text.substr(start, comma - start));
        start = comma == std::string::npos ? comma : comma + 1;
    }
    *line = {};
    std::optional<long long>* numbers[] = {&line->lower,       &line->upper,    &line->width,
                                           &line->centre,      &line->original, &line->margin_below,
                                           &line->margin_above};
    if (fields.size() != std::size(numbers) + 2)
        return *problem = "expected " + csv_header(), false;
    line->line = fields.front();
    for (std::size_t at = 0; at < std::size(numbers); ++at) {
        const std::string& field = fields[at + 1];
        char* end = nullptr;
        if (!field.empty())
            *numbers[at] = std::strtoll(field.c_str(), &end, 10);
        if (!field.empty() && (*end || field.size() > 20))
            return *problem = "'" + field + "' is not a number", false;
    }
    std::string flags = fields.back();
    for (const auto& [set, flag] : flags_in(line))
        *set = flags.find(flag) != std::string::npos;
    if (flags_of(*line) != flags)
        return *problem = "'" + flags + "' are not the flags of a line", false;
    return true;
}
