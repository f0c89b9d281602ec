// SPDX-License-Identifier: MIT
#include "tune/sweep/svg_canvas.h"

#include <algorithm>
#include <cstdarg>
#include <vector>

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

// In the order of the enumeration: the class of the mark, its name in the
// legend and, for a dot, its radius.
const struct {
    const char* kind;
    const char* name;
    double radius;
} marks[] = {
    {"pass", "pass", 0},
    {"fail", "fail", 0},
    {"timeout", "time-out", 0},
    {"hang", "hang", 0},
    {"unmeasured", "not measured", 0},
    {"window", "widest window", 0},
    {"edge", "edge not found", 0},
    {"centre", "centre", 3},
    {"original", "original", 5},
    {"common", "common window", 0},
    {"common-centre", "common centre", 0},
    {"ship", "value to ship", 0},
    {"safest", "safest point", 3.5},
    {"margin", "safest point's margin", 0},
};

// Okabe and Ito's colours; the symbols come after the outcomes' colours,
// which they share a class with.
const char* const style =
    ".title,.block{font-weight:bold}.partial{font-weight:bold;fill:#d55e00}"
    ".axis-title{font-style:italic}.tick{stroke:#666}"
    ".pass{fill:#0072b2}.fail{fill:#e69f00}.timeout{fill:#cc79a7}.hang{fill:#000}"
    ".symbol{font-size:10px;font-weight:bold;fill:#000}.symbol.light{fill:#fff}"
    ".unmeasured{fill:none;stroke:#888;stroke-dasharray:2 2}"
    ".window{fill:none;stroke:#000;stroke-width:2}.edge{fill:#000}"
    ".centre,.safest{fill:#fff;stroke:#000;stroke-width:1.5}"
    ".original{fill:none;stroke:#000;stroke-width:2.5}"
    ".common{fill:none;stroke:#d55e00;stroke-width:2;stroke-dasharray:5 3}"
    ".common-centre,.ship{fill:#d55e00}"
    ".margin{fill:none;stroke:#000;stroke-width:1.5;stroke-dasharray:4 2}";

// In the order of the outcomes: what a cell of each shows on its colour.
const char* const symbols[] = {"", "\u00d7", "T", "H"};

const double key_gap = 4, item_gap = 16;

std::string format(const char* pattern, ...) __attribute__((format(printf, 1, 2)));

std::string format(const char* pattern, ...) {
    char text[512];
    va_list args;
    va_start(args, pattern);
    std::vsnprintf(text, sizeof text, pattern, args);
    va_end(args);
    return text;
}

// Characters, not bytes, of UTF-8 text: its width in a monospace font.
double text_width(const std::string& text) {
    const auto count = std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xc0) != 0x80;
    });
    return static_cast<double>(count) * svg_canvas::char_width;
}

const char* kind_of(mark kind) { return marks[static_cast<std::size_t>(kind)].kind; }

std::string legend_name(mark kind) { return marks[static_cast<std::size_t>(kind)].name; }

double item_width(mark kind) { return svg_canvas::cell + key_gap + text_width(legend_name(kind)); }

}  // namespace

svg_canvas::svg_canvas(const facts& about, bool partial) {
    std::vector<std::string> lines = title_lines(about);
    if (partial)
        lines.push_back("partial: not every value was measured");
    title = lines.front();
    for (std::size_t at = 0; at < lines.size(); ++at)
        text(partial && at + 1 == lines.size() ? "partial" : "title", edge,
             edge + cell + static_cast<double>(at) * line, lines[at]);
}

std::string svg_canvas::class_of(mark kind, const char* drawn) const {
    return std::string(in_legend ? "key " : drawn) + kind_of(kind);
}

void svg_canvas::place(const std::string& element, double right, double low) {
    body += element;
    rightmost = std::max(rightmost, right);
    lowest = std::max(lowest, low);
}

void svg_canvas::draw(mark kind, const std::string& element, double right, double low) {
    place(element, right, low);
    if (!in_legend)
        used[static_cast<std::size_t>(kind)] = true;
}

void svg_canvas::text(const char* kind, double x, double y, const std::string& text,
                      const char* anchor) {
    const double width = text_width(text);
    place(format("<text class=\"%s\" x=\"%g\" y=\"%g\"", kind, x, y) +
              (anchor[0] == 's' ? "" : format(" text-anchor=\"%s\"", anchor)) + ">" +
              svg_escaped(text) + "</text>\n",
          x + (anchor[0] == 's'   ? width
               : anchor[0] == 'm' ? width / 2
                                  : 0),
          y + 4);
}

void svg_canvas::tick(double x1, double y1, double x2, double y2) {
    place(
        format("<line class=\"tick\" x1=\"%g\" y1=\"%g\" x2=\"%g\" y2=\"%g\"/>\n", x1, y1, x2, y2),
        std::max(x1, x2), std::max(y1, y2));
}

void svg_canvas::result_cell(double x, double y, outcome result, const std::string& title) {
    const mark kind = static_cast<mark>(static_cast<int>(result));
    const char* symbol = symbols[static_cast<int>(result)];
    std::string element = format("<rect class=\"%s\" x=\"%g\" y=\"%g\" width=\"%g\" height=\"%g\">",
                                 class_of(kind, "cell ").c_str(), x, y, cell, cell) +
                          (in_legend ? "" : "<title>" + svg_escaped(title) + "</title>") +
                          "</rect>\n";
    if (*symbol)
        element += format(
            "<text class=\"symbol%s\" x=\"%g\" y=\"%g\" text-anchor=\"middle\">%s"
            "</text>\n",
            result == outcome::hang ? " light" : "", x + cell / 2, y + cell - 2.5, symbol);
    draw(kind, element, x + cell, y + cell);
}

void svg_canvas::outline(mark kind, double x, double y, double width, double height) {
    draw(kind,
         format("<rect class=\"%s\" x=\"%g\" y=\"%g\" width=\"%g\" height=\"%g\"/>\n",
                class_of(kind).c_str(), x, y, width, height),
         x + width + 1, y + height + 1);
}

void svg_canvas::dot(mark kind, double x, double y) {
    const double radius = marks[static_cast<std::size_t>(kind)].radius;
    draw(kind,
         format("<circle class=\"%s\" cx=\"%g\" cy=\"%g\" r=\"%g\"/>\n", class_of(kind).c_str(), x,
                y, radius),
         x + radius + 1, y + radius + 1);
}

void svg_canvas::pointer(mark kind, double x, double y, int towards) {
    const double length = 7, half = 4;
    // The corners of the base, behind the tip.
    const double bx = x - towards * length, by = towards == 0 ? y - length : y;
    const double dx = towards == 0 ? half : 0, dy = towards == 0 ? 0 : half;
    draw(kind,
         format("<path class=\"%s\" d=\"M%g %gL%g %gL%g %gZ\"/>\n", class_of(kind).c_str(), x, y,
                bx - dx, by - dy, bx + dx, by + dy),
         std::max(x, bx + dx), std::max(y, by + dy));
}

// The legend's symbol of a mark, in a cell-sized square at (x, y), drawn by
// the same means as the mark.
void svg_canvas::key(mark kind, double x, double y) {
    in_legend = true;
    if (kind <= mark::hang)
        result_cell(x, y, static_cast<outcome>(static_cast<int>(kind)), "");
    else if (kind == mark::centre || kind == mark::original || kind == mark::safest)
        dot(kind, x + cell / 2, y + cell / 2);
    else if (kind == mark::open_edge)
        pointer(kind, x + 2, y + cell / 2, -1);
    else if (kind == mark::common_centre || kind == mark::ship)
        pointer(kind, x + cell / 2, y + cell - 1, 0);
    else
        outline(kind, x + 1, y + 1, cell - 2, cell - 2);
    in_legend = false;
}

void svg_canvas::print(std::FILE* out) {
    double right = rightmost;
    for (std::size_t at = 0; at < static_cast<std::size_t>(mark::count); ++at)
        if (used[at])
            right = std::max(right, edge + item_width(static_cast<mark>(at)));
    double x = edge, y = lowest + line;
    for (std::size_t at = 0; at < static_cast<std::size_t>(mark::count); ++at) {
        const mark kind = static_cast<mark>(at);
        if (!used[at])
            continue;
        if (x > edge && x + item_width(kind) > right) {
            x = edge;
            y += line;
        }
        key(kind, x, y - cell + 2);
        text("legend", x + cell + key_gap, y, legend_name(kind));
        x += item_width(kind) + item_gap;
    }
    std::fprintf(out,
                 "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                 "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%g\" height=\"%g\" "
                 "font-family=\"monospace\" font-size=\"12\">\n"
                 "<title>%s</title>\n<style>%s</style>\n"
                 "<rect width=\"100%%\" height=\"100%%\" fill=\"#fff\"/>\n%s</svg>\n",
                 right + edge, lowest + edge, svg_escaped(title).c_str(), style, body.c_str());
}
