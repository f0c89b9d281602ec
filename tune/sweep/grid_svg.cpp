// SPDX-License-Identifier: MIT
#include "tune/sweep/grid_svg.h"

#include <algorithm>
#include <string>

#include "tune/sweep/outcome.h"
#include "tune/sweep/svg.h"

namespace {

// Layout in pixels; text is 12 px monospace, about 8 px a character.
const int cell = 12, pitch = 14, char_width = 8, margin = 10, line = 18;

int text_width(const std::string& text) { return static_cast<int>(text.size()) * char_width; }

}  // namespace

void print_grid_svg(std::FILE* out, const grid_results& results,
                    const std::optional<safest_point>& safest) {
    const int columns = static_cast<int>(results.x.values.size()),
              rows = static_cast<int>(results.y.values.size());
    int label_width = 0;
    for (std::size_t y = 0; y < results.y.values.size(); ++y)
        label_width = std::max(label_width, text_width(results.y.text_at(y)));
    const int left = margin + label_width + margin, top = margin + 2 * line;
    const int bottom = top + rows * pitch;
    const int width = std::max({left + columns * pitch, margin + text_width(results.y.name),
                                left + text_width(results.x.name), margin + 60 * char_width}) +
                      margin;
    const int height = bottom + 3 * line + margin;

    std::fprintf(
        out,
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" "
        "font-family=\"monospace\" font-size=\"12\">\n"
        "<title>padkit-tune shmoo</title>\n"
        "<style>" SVG_OUTCOME_STYLE
        ".original{fill:none;stroke:#1565c0;stroke-width:2}.safest{fill:#fff;stroke:#000}</style>\n"
        "<rect width=\"100%%\" height=\"100%%\" fill=\"#fff\"/>\n",
        width, height);
    std::fprintf(out, "<text class=\"name\" x=\"%d\" y=\"%d\">%s</text>\n", margin,
                 margin + line - 6, svg_escaped(results.y.name).c_str());
    std::fprintf(out, "<text class=\"name\" x=\"%d\" y=\"%d\">%s</text>\n", left,
                 bottom + 2 * line - 4, svg_escaped(results.x.name).c_str());
    for (const label_place& label : axis_labels(results.x, static_cast<double>(pitch) / char_width))
        std::fprintf(out,
                     "<text class=\"axis\" x=\"%d\" y=\"%d\" text-anchor=\"middle\">%s</text>\n",
                     left + static_cast<int>(label.at) * pitch + cell / 2, bottom + line - 4,
                     results.x.text_at(label.at).c_str());
    for (int y = 0; y < rows; ++y) {
        const int cell_top = bottom - (y + 1) * pitch;
        std::fprintf(out, "<text class=\"axis\" x=\"%d\" y=\"%d\" text-anchor=\"end\">%s</text>\n",
                     left - margin, cell_top + cell - 2, results.y.text_at(y).c_str());
        for (int x = 0; x < columns; ++x) {
            const std::optional<outcome>& result = results.cells[y][x];
            if (!result)
                continue;
            const std::string title = "X=" + results.x.text_at(x) + ", Y=" + results.y.text_at(y);
            std::fprintf(out,
                         "<rect class=\"cell %s\" x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\">"
                         "<title>%s: %s</title></rect>\n",
                         outcome_name(*result), left + x * pitch, cell_top, cell, cell,
                         title.c_str(), outcome_name(*result));
        }
    }
    if (results.original)
        std::fprintf(
            out, "<rect class=\"original\" x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\"/>\n",
            left + static_cast<int>(results.original->x) * pitch + 2,
            bottom - static_cast<int>(results.original->y + 1) * pitch + 2, cell - 4, cell - 4);
    if (safest)
        std::fprintf(out, "<circle class=\"safest\" cx=\"%d\" cy=\"%d\" r=\"3\"/>\n",
                     left + static_cast<int>(safest->at.x) * pitch + cell / 2,
                     bottom - static_cast<int>(safest->at.y + 1) * pitch + cell / 2);
    std::fprintf(out,
                 "<text class=\"legend\" x=\"%d\" y=\"%d\">" SVG_OUTCOME_LEGEND
                 ", frame: original point, dot: safest point</text>\n</svg>\n",
                 margin, bottom + 3 * line);
}
