// SPDX-License-Identifier: MIT
#include "tune/report_json.h"

#include "tune/profile/json.h"

namespace {

std::string number(const std::optional<long long>& value) {
    return value ? std::to_string(*value) : "null";
}

const char* flag(bool value) { return value ? "true" : "false"; }

void print_line(std::FILE* out, const edge_line& line, bool last) {
    std::fprintf(
        out,
        "        {\"line\": %s, \"lower\": %s, \"upper\": %s, \"width\": %s, \"centre\": %s, "
        "\"original\": %s, \"margin_below\": %s, \"margin_above\": %s, "
        "\"lower_edge_not_found\": %s, \"upper_edge_not_found\": %s, \"no_window\": %s}%s\n",
        json_string(line.line).c_str(), number(line.lower).c_str(), number(line.upper).c_str(),
        number(line.width).c_str(), number(line.centre).c_str(), number(line.original).c_str(),
        number(line.margin_below).c_str(), number(line.margin_above).c_str(),
        flag(line.lower_not_found), flag(line.upper_not_found), flag(line.no_window),
        last ? "" : ",");
}

void print_table(std::FILE* out, const edge_table& table, bool last) {
    std::fprintf(out, "    {\"name\": %s, \"unit\": %s, \"lines\": [\n",
                 json_string(table.name).c_str(), json_string(table.unit).c_str());
    for (const edge_line& line : table.lines)
        print_line(out, line, &line == &table.lines.back());
    std::fprintf(out, "    ]}%s\n", last ? "" : ",");
}

std::string axis_json(const grid_axis& axis) {
    std::string values;
    for (long long value : axis.values)
        values += (values.empty() ? "" : ", ") + std::to_string(value);
    return "{\"name\": " + json_string(axis.name) + ", \"unit\": " + json_string(axis.unit) +
           ", \"values\": [" + values + "]}";
}

std::string point_json(const grid_results& grid, const std::optional<grid_point>& at) {
    if (!at)
        return "null";
    return "{\"x\": " + std::to_string(grid.x.values[at->x]) +
           ", \"y\": " + std::to_string(grid.y.values[at->y]) + "}";
}

// Rows of Y rising, each X rising: a result's name, null where not measured.
void print_grid(std::FILE* out, const grid_results& grid,
                const std::optional<safest_point>& safest) {
    std::fprintf(out, "  \"grid\": {\n    \"x\": %s,\n    \"y\": %s,\n    \"cells\": [\n",
                 axis_json(grid.x).c_str(), axis_json(grid.y).c_str());
    for (std::size_t y = 0; y < grid.cells.size(); ++y) {
        std::string row;
        for (const std::optional<outcome>& cell : grid.cells[y])
            row += std::string(row.empty() ? "" : ", ") +
                   (cell ? json_string(outcome_name(*cell)) : "null");
        std::fprintf(out, "      [%s]%s\n", row.c_str(), y + 1 == grid.cells.size() ? "" : ",");
    }
    std::fprintf(out, "    ],\n    \"original\": %s,\n    \"safest\": %s\n  },\n",
                 point_json(grid, grid.original).c_str(),
                 point_json(grid, safest ? std::optional(safest->at) : std::nullopt).c_str());
}

}  // namespace

void print_report_json(std::FILE* out, const report_document& document) {
    std::fprintf(out, "{\n  \"kind\": %s,\n  \"facts\": {", json_string(document.kind).c_str());
    for (const fact& each : document.about)
        std::fprintf(out, "%s\n    %s: %s", &each == &document.about.front() ? "" : ",",
                     json_string(each.first).c_str(), json_string(each.second).c_str());
    std::fprintf(out, "%s},\n  \"partial\": %s,\n", document.about.empty() ? "" : "\n  ",
                 flag(document.partial));
    if (document.grid)
        print_grid(out, *document.grid, document.safest);
    std::fprintf(out, "  \"tables\": [\n");
    for (const edge_table& table : document.tables)
        print_table(out, table, &table == &document.tables.back());
    std::fprintf(out, "  ]\n}\n");
}
