// SPDX-License-Identifier: MIT
#include "tune/sweep/grid_chart.h"

#include <algorithm>

#include "tune/sweep/chart.h"
#include "tune/sweep/outcome.h"

namespace {

char mark_at(const grid_results& results, const std::optional<safest_point>& safest,
             grid_point at) {
    const std::optional<outcome>& cell = results.cells[at.y][at.x];
    if (safest && safest->at == at)
        return '@';
    if (results.original == at)
        return cell == outcome::pass ? 'O' : 'X';
    return cell ? outcome_mark(*cell) : ' ';
}

// "margin A in X, B in Y", each in its axis's units.
std::string margin_text(const grid_results& results, const point_margin& margin) {
    const auto units = [](const grid_axis& axis, std::size_t steps) {
        return amount_text(static_cast<long long>(steps) * axis.step(), axis.unit);
    };
    return "margin " + units(results.x, margin.x) + " in X, " + units(results.y, margin.y) +
           " in Y";
}

// The items joined by two blanks, a line ending before it would pass WIDTH
// (0: no limit).
void print_wrapped(std::FILE* out, const std::vector<std::string>& items, std::size_t width) {
    std::string line;
    for (const std::string& item : items) {
        if (!line.empty() && width > 0 && line.size() + 2 + item.size() > width) {
            std::fprintf(out, "%s\n", line.c_str());
            line.clear();
        }
        line += (line.empty() ? "" : "  ") + item;
    }
    std::fprintf(out, "%s\n", line.c_str());
}

std::string point_text(const grid_results& results, grid_point at) {
    return "X=" + results.x.text_at(at.x) + ", Y=" + results.y.text_at(at.y);
}

}  // namespace

void print_grid_chart(std::FILE* out, const grid_results& results,
                      const std::optional<safest_point>& safest, std::size_t width) {
    const std::size_t columns = results.x.values.size();
    if (columns == 0 || results.y.values.empty())
        return;
    std::size_t label_width = 0;
    for (std::size_t y = 0; y < results.y.values.size(); ++y)
        label_width = std::max(label_width, results.y.text_at(y).size());
    const int indent = static_cast<int>(label_width) + 2;
    const std::size_t per_block = cells_per_line(width, static_cast<std::size_t>(indent), columns);

    std::fprintf(out, "%s (rows) against %s (columns)\n", results.y.name.c_str(),
                 results.x.name.c_str());
    for (std::size_t first = 0; first < columns; first += per_block) {
        const std::size_t last = std::min(columns, first + per_block) - 1;
        const std::string labels = label_line(results.x.part(first, last - first + 1));
        if (first > 0)
            std::fprintf(out, "\n");
        std::fprintf(out, "%*s%s\n", indent, "", labels.c_str());
        for (std::size_t y = results.y.values.size(); y-- > 0;) {
            std::string cells;
            for (std::size_t x = first; x <= last; ++x)
                cells += mark_at(results, safest, {x, y});
            std::fprintf(out, "%*s  %s\n", static_cast<int>(label_width),
                         results.y.text_at(y).c_str(), cells.c_str());
        }
        std::fprintf(out, "%*s%s\n", indent, "", labels.c_str());
    }
    // A hang comes only from a resumed journal; the legend names it then.
    bool hung = false;
    for (const auto& row : results.cells)
        hung = hung || std::find(row.begin(), row.end(), outcome::hang) != row.end();
    std::vector<std::string> legend = {"# pass", ". fail", "T time-out"};
    if (hung)
        legend.push_back("H hang");
    legend.insert(legend.end(), {"O original passing", "X original not passing", "@ safest point"});
    print_wrapped(out, legend, width);
}

std::vector<std::string> grid_summary(const grid_results& results,
                                      const std::optional<safest_point>& safest) {
    const std::size_t points = results.x.size() * results.y.size();
    const std::string of = " of " + std::to_string(points);
    std::vector<std::string> lines;
    if (results.partial)
        lines.push_back("partial: " + std::to_string(results.measured_count()) + of +
                        " points measured");
    const std::size_t passing = results.passing_count();
    lines.push_back(std::to_string(passing) + of +
                    (points == 1 ? " point passes" : " points pass"));
    if (results.partial)
        lines.push_back("no safest point from a partial shmoo");
    else if (safest)
        lines.push_back("safest point " + point_text(results, safest->at) + " (" +
                        margin_text(results, safest->margin) + ")");
    else
        lines.push_back("no passing point");
    const std::string original = "original X=" + results.original_x + ", Y=" + results.original_y;
    const std::optional<grid_point>& at = results.original;
    if (!at)
        lines.push_back(original + ": not on the grid");
    else if (!results.cells[at->y][at->x])
        lines.push_back(original + ": not measured");
    else if (!results.passes(*at))
        lines.push_back(original + ": does not pass");
    else if (results.partial)
        lines.push_back(original + ": passes");
    else
        lines.push_back(original + " (" + margin_text(results, *margin_at(results, *at)) + ")");
    return lines;
}

void print_grid_csv_header(std::FILE* out, const facts& about) {
    print_fact_lines(out, about);
    std::fprintf(out, "x_name,x_value,y_name,y_value,result\n");
}

void print_grid_csv_point(std::FILE* out, const grid_results& results, grid_point at) {
    std::fprintf(out, "%s,%s,%s,%s,%s\n", results.x.name.c_str(), results.x.text_at(at.x).c_str(),
                 results.y.name.c_str(), results.y.text_at(at.y).c_str(),
                 outcome_name(*results.cells[at.y][at.x]));
}
