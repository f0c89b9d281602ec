// SPDX-License-Identifier: MIT
#include "tune/sweep/svg.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "tune/sweep/chart.h"
#include "tune/sweep/outcome.h"

std::string svg_escaped(const std::string& text) {
    std::string out;
    for (char c : text) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        default: out += c;
        }
    }
    return out;
}

namespace {

// Layout in pixels; text is 12 px monospace, about 8 px a character.
const int cell = 12, pitch = 14, row_pitch = 18, char_width = 8, margin = 10, axis_height = 24;

// One sweep's block from top down: its axis labels, rows and summary lines;
// returns its height.
int print_section(std::FILE* out, const sweep_results& results, int top, int left) {
    const value_axis& axis = results.axis;
    const std::vector<std::string> summaries = summary_lines(results);
    const int n_rows = static_cast<int>(results.rows.size());
    // Labels start at their value's cell; the last one ends at its cell.
    for (const label_place& label : axis_labels(axis, static_cast<double>(pitch) / char_width)) {
        const int x = left + static_cast<int>(label.at) * pitch;
        const bool last = label.at + 1 == axis.size() && label.at > 0;
        std::fprintf(out, "<text class=\"axis\" x=\"%d\" y=\"%d\"%s>%s</text>\n",
                     last ? x + cell : x, top + axis_height - 8, last ? " text-anchor=\"end\"" : "",
                     axis.text_at(label.at).c_str());
    }
    for (int r = 0; r < n_rows; ++r) {
        const sweep_row& row = results.rows[r];
        const int y = top + axis_height + r * row_pitch;
        const std::string name = svg_escaped(row.name);
        std::fprintf(out, "<text class=\"name\" x=\"%d\" y=\"%d\">%s</text>\n", margin,
                     y + cell - 2, name.c_str());
        for (std::size_t at = 0; at < row.results.size(); ++at) {
            const char* result = outcome_name(row.results[at]);
            std::fprintf(out,
                         "<rect class=\"cell %s\" x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\">"
                         "<title>%s = %s: %s</title></rect>\n",
                         result, left + static_cast<int>(at) * pitch, y, cell, cell, name.c_str(),
                         axis.text_at(at).c_str(), result);
        }
        const std::size_t original = row.original ? axis.position_of(*row.original) : axis.size();
        if (original < row.results.size())
            std::fprintf(
                out, "<rect class=\"original\" x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\"/>\n",
                left + static_cast<int>(original) * pitch + 2, y + 2, cell - 4, cell - 4);
        const sweep_window window = widest_window(row.results);
        if (window.count == 0)
            continue;
        std::fprintf(out, "<rect class=\"window\" x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\"/>\n",
                     left + static_cast<int>(window.first) * pitch - 2, y - 2,
                     static_cast<int>(window.count) * pitch + 2, cell + 4);
        std::fprintf(out, "<circle class=\"centre\" cx=\"%d\" cy=\"%d\" r=\"3\"/>\n",
                     left + static_cast<int>(window_centre(window, axis.values)) * pitch + cell / 2,
                     y + cell / 2);
    }
    const sweep_window common = widest_window(common_results(results.rows));
    if (!results.group.empty() && common.count > 0)
        std::fprintf(out, "<rect class=\"common\" x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\"/>\n",
                     left + static_cast<int>(common.first) * pitch - 4, top + axis_height - 4,
                     static_cast<int>(common.count) * pitch + 6, n_rows * row_pitch + 4);
    const int summary_top = top + axis_height + n_rows * row_pitch + row_pitch;
    for (std::size_t line = 0; line < summaries.size(); ++line)
        std::fprintf(out, "<text class=\"summary\" x=\"%d\" y=\"%d\">%s</text>\n", margin,
                     summary_top + static_cast<int>(line) * row_pitch,
                     svg_escaped(summaries[line]).c_str());
    return summary_top - top + static_cast<int>(summaries.size()) * row_pitch;
}

}  // namespace

void print_svg(std::FILE* out, const std::vector<sweep_results>& sections, const char* title) {
    std::size_t name_chars = 0;
    int width = 0, height = 0;
    for (const sweep_results& results : sections) {
        for (const sweep_row& row : results.rows)
            name_chars = std::max(name_chars, row.name.size());
        const std::vector<std::string> summaries = summary_lines(results);
        for (const std::string& summary : summaries)
            width = std::max(width, margin + static_cast<int>(summary.size()) * char_width);
        height +=
            axis_height + static_cast<int>(results.rows.size() + 1 + summaries.size()) * row_pitch;
    }
    const int left = margin + static_cast<int>(name_chars) * char_width + margin;
    for (const sweep_results& results : sections)
        width = std::max(width, left + static_cast<int>(results.axis.size()) * pitch);
    std::fprintf(out,
                 "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                 "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" "
                 "font-family=\"monospace\" font-size=\"12\">\n"
                 "<title>%s</title>\n"
                 "<style>" SVG_OUTCOME_STYLE
                 ".window{fill:none;stroke:#000;stroke-width:2}.common{fill:none;stroke:#6a1b9a;"
                 "stroke-width:2;"
                 "stroke-dasharray:4 2}.centre{fill:#fff;stroke:#000}"
                 ".original{fill:none;stroke:#1565c0;stroke-width:2}</style>\n"
                 "<rect width=\"100%%\" height=\"100%%\" fill=\"#fff\"/>\n",
                 width + margin, height + margin, title);
    int top = 0;
    for (const sweep_results& results : sections)
        top += print_section(out, results, top, left);
    std::fprintf(out,
                 "<text class=\"legend\" x=\"%d\" y=\"%d\">" SVG_OUTCOME_LEGEND
                 " <tspan class=\"original\">\u25a1</tspan> original "
                 "<tspan class=\"common\">\u25a1</tspan> common window</text>\n</svg>\n",
                 margin, top);
}
