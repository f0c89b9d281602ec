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

std::string steps(std::size_t n) { return std::to_string(n) + (n == 1 ? " step" : " steps"); }

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
    std::fprintf(out,
                 "# pass  . fail  T time-out  %sO original passing  X original not passing  @ "
                 "safest point\n",
                 hung ? "H hang  " : "");
}

std::vector<std::string> grid_summary(const grid_results& results,
                                      const std::optional<safest_point>& safest) {
    const std::size_t passing = results.passing_count(),
                      points = results.x.values.size() * results.y.values.size();
    std::vector<std::string> lines = {std::to_string(passing) + " of " + std::to_string(points) +
                                      (points == 1 ? " point passes" : " points pass")};
    if (safest)
        lines.push_back("safest point " + point_text(results, safest->at) + " (margin " +
                        steps(safest->margin) + ")");
    else
        lines.push_back("no passing point");
    const std::string original = "original X=" + results.original_x + ", Y=" + results.original_y;
    if (!results.original)
        lines.push_back(original + ": not on the grid");
    else if (!results.cells[results.original->y][results.original->x])
        lines.push_back(original + ": not measured");
    else if (const std::optional<std::size_t> margin = margin_at(results, *results.original))
        lines.push_back(original + " (margin " + steps(*margin) + ")");
    else
        lines.push_back(original + ": does not pass");
    return lines;
}

void print_grid_csv_header(std::FILE* out) {
    std::fprintf(out, "x_name,x_value,y_name,y_value,result\n");
}

void print_grid_csv_point(std::FILE* out, const grid_results& results, grid_point at) {
    std::fprintf(out, "%s,%s,%s,%s,%s\n", results.x.name.c_str(), results.x.text_at(at.x).c_str(),
                 results.y.name.c_str(), results.y.text_at(at.y).c_str(),
                 outcome_name(*results.cells[at.y][at.x]));
}
