// SPDX-License-Identifier: MIT
#include "tune/sweep/grid_svg.h"

#include <algorithm>
#include <string>

#include "tune/sweep/chart.h"
#include "tune/sweep/svg.h"

namespace {

// Layout in pixels; text is 12 px monospace, about 8 px a character.
const int cell = 12, pitch = 14, char_width = 8, margin = 10, line = 18;

int text_width(const std::string& text) { return static_cast<int>(text.size()) * char_width; }

}  // namespace

void print_grid_svg(std::FILE* out, const grid_results& results, const std::optional<safest_point>& safest) {
    const int columns = static_cast<int>(results.x.values.size()), rows = static_cast<int>(results.y.values.size());
    int label_width = 0, x_label_width = 0;
    for (std::size_t y = 0; y < results.y.values.size(); ++y)
        label_width = std::max(label_width, text_width(results.y.label(y)));
    for (std::size_t x = 0; x < results.x.values.size(); ++x)
        x_label_width = std::max(x_label_width, text_width(results.x.label(x)));
    const int left = margin + label_width + margin, top = margin + 2 * line;
    const int bottom = top + rows * pitch;
    const int width = std::max({left + columns * pitch, margin + text_width(results.y.name),
                                left + text_width(results.x.name), margin + 60 * char_width}) + margin;
    const int height = bottom + 3 * line + margin;
    // Every k-th column labelled, so that the labels keep apart.
    const int label_every = (x_label_width + char_width + pitch - 1) / pitch;

    std::fprintf(out,
                 "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                 "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" "
                 "font-family=\"monospace\" font-size=\"12\">\n"
                 "<title>padkit-tune shmoo</title>\n"
                 "<style>" SVG_OUTCOME_STYLE
                 ".original{fill:none;stroke:#1565c0;stroke-width:2}.safest{fill:#fff;stroke:#000}</style>\n"
                 "<rect width=\"100%%\" height=\"100%%\" fill=\"#fff\"/>\n",
                 width, height);
    std::fprintf(out, "<text class=\"name\" x=\"%d\" y=\"%d\">%s</text>\n", margin, margin + line - 6,
                 svg_escaped(results.y.name).c_str());
    std::fprintf(out, "<text class=\"name\" x=\"%d\" y=\"%d\">%s</text>\n", left, bottom + 2 * line - 4,
                 svg_escaped(results.x.name).c_str());
    for (int x = 0; x < columns; x += label_every)
        std::fprintf(out, "<text class=\"axis\" x=\"%d\" y=\"%d\" text-anchor=\"middle\">%s</text>\n",
                     left + x * pitch + cell / 2, bottom + line - 4, results.x.label(x).c_str());
    for (int y = 0; y < rows; ++y) {
        const int cell_top = bottom - (y + 1) * pitch;
        std::fprintf(out, "<text class=\"axis\" x=\"%d\" y=\"%d\" text-anchor=\"end\">%s</text>\n", left - margin,
                     cell_top + cell - 2, results.y.label(y).c_str());
        for (int x = 0; x < columns; ++x) {
            const std::optional<outcome>& result = results.cells[y][x];
            if (!result)
                continue;
            const std::string title = "X=" + results.x.label(x) + ", Y=" + results.y.label(y);
            std::fprintf(out,
                         "<rect class=\"cell %s\" x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\">"
                         "<title>%s: %s</title></rect>\n",
                         outcome_name(*result), left + x * pitch, cell_top, cell, cell, title.c_str(),
                         outcome_name(*result));
        }
    }
    auto mark = [&](const char* kind, grid_point at, int radius) {
        std::fprintf(out, "<circle class=\"%s\" cx=\"%d\" cy=\"%d\" r=\"%d\"/>\n", kind,
                     left + static_cast<int>(at.x) * pitch + cell / 2,
                     bottom - static_cast<int>(at.y + 1) * pitch + cell / 2, radius);
    };
    if (results.original)
        mark("original", *results.original, cell / 2 + 2);
    if (safest)
        mark("safest", safest->at, 3);
    std::fprintf(out,
                 "<text class=\"legend\" x=\"%d\" y=\"%d\">" SVG_OUTCOME_LEGEND ", ring: original point, dot: safest point</text>\n</svg>\n",
                 margin, bottom + 3 * line);
}
