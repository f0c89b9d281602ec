// SPDX-License-Identifier: MIT
#include "tune/sweep/svg.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "tune/sweep/chart.h"

namespace {

// Layout in pixels; text is 12 px monospace, about 8 px a character.
const int cell = 12, pitch = 14, row_pitch = 18, char_width = 8, margin = 10, axis_height = 24;

}  // namespace

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

void print_svg(std::FILE* out, const sweep_results& results) {
    std::size_t name_chars = 0, summary_chars = 0;
    std::vector<std::string> summaries;
    for (const sweep_row& row : results.rows) {
        name_chars = std::max(name_chars, row.name.size());
        summaries.push_back(window_summary(row, results.axis));
        summary_chars = std::max(summary_chars, summaries.back().size());
    }
    const int left = margin + static_cast<int>(name_chars) * char_width + margin;
    const int n_values = static_cast<int>(results.axis.size());
    const int n_rows = static_cast<int>(results.rows.size());
    const int summary_top = axis_height + n_rows * row_pitch + row_pitch;
    const int width = std::max(left + n_values * pitch,
                               margin + static_cast<int>(summary_chars) * char_width) + margin;
    const int legend_top = summary_top + n_rows * row_pitch;
    const int height = legend_top + margin;

    std::fprintf(out,
                 "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                 "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" "
                 "font-family=\"monospace\" font-size=\"12\">\n"
                 "<title>padkit-tune sweep</title>\n"
                 "<style>" SVG_OUTCOME_STYLE
                 ".window{fill:none;stroke:#000;stroke-width:2}"
                 ".centre{fill:#fff;stroke:#000}</style>\n"
                 "<rect width=\"100%%\" height=\"100%%\" fill=\"#fff\"/>\n",
                 width, height);
    if (n_values > 0) {
        std::fprintf(out, "<text class=\"axis\" x=\"%d\" y=\"%d\">%lld</text>\n", left,
                     axis_height - 8, results.axis.front());
        if (n_values > 1)
            std::fprintf(out, "<text class=\"axis\" x=\"%d\" y=\"%d\" text-anchor=\"end\">%lld</text>\n",
                         left + (n_values - 1) * pitch + cell, axis_height - 8, results.axis.back());
    }
    for (int r = 0; r < n_rows; ++r) {
        const sweep_row& row = results.rows[r];
        const int y = axis_height + r * row_pitch;
        const std::string name = svg_escaped(row.name);
        std::fprintf(out, "<text class=\"name\" x=\"%d\" y=\"%d\">%s</text>\n", margin, y + cell - 2,
                     name.c_str());
        for (std::size_t at = 0; at < row.results.size(); ++at) {
            const char* result = outcome_name(row.results[at]);
            std::fprintf(out,
                         "<rect class=\"cell %s\" x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\">"
                         "<title>%s = %lld: %s</title></rect>\n",
                         result, left + static_cast<int>(at) * pitch, y, cell, cell, name.c_str(),
                         results.axis[at], result);
        }
        const sweep_window window = widest_window(row.results);
        if (window.count == 0)
            continue;
        std::fprintf(out, "<rect class=\"window\" x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\"/>\n",
                     left + static_cast<int>(window.first) * pitch - 2, y - 2,
                     static_cast<int>(window.count) * pitch + 2, cell + 4);
        std::fprintf(out, "<circle class=\"centre\" cx=\"%d\" cy=\"%d\" r=\"3\"/>\n",
                     left + static_cast<int>(window_centre(window, results.axis)) * pitch + cell / 2, y + cell / 2);
    }
    for (int r = 0; r < n_rows; ++r)
        std::fprintf(out, "<text class=\"summary\" x=\"%d\" y=\"%d\">%s</text>\n", margin,
                     summary_top + r * row_pitch, svg_escaped(summaries[r]).c_str());
    std::fprintf(out,
                 "<text class=\"legend\" x=\"%d\" y=\"%d\">" SVG_OUTCOME_LEGEND "</text>\n</svg>\n",
                 margin, legend_top);
}
