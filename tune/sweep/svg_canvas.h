// SPDX-License-Identifier: MIT
// What every picture of padkit-tune shares: the page with its title lines,
// text in a monospace font whose characters advance alike, the marks in
// colours that colour-blind readers tell apart (blue and orange, a symbol in
// every cell of a failing kind), and a legend that names every mark drawn
// and only those, wrapped to the page.
#ifndef PADKIT_SWEEP_SVG_CANVAS_H
#define PADKIT_SWEEP_SVG_CANVAS_H

#include <cstddef>
#include <cstdio>
#include <string>

#include "tune/sweep/facts.h"
#include "tune/sweep/outcome.h"

// The text with the characters that XML reserves as entities.
std::string svg_escaped(const std::string& text);

// Every mark a picture may draw; the legend names them in this order. The
// cells of the outcomes come first, in the order of outcome.
enum class mark {
    pass,
    fail,
    timeout,
    hang,
    unmeasured,
    window,
    open_edge,
    centre,
    original,
    common,
    common_centre,
    ship,
    safest,
    margin,
    count
};

class svg_canvas {
public:
    // Text is 12 px monospace, whose characters advance 0.6 em (7.2 px);
    // the layout gives each of them this much.
    static constexpr double char_width = 8;
    static constexpr double cell = 12, pitch = 14, line = 18, edge = 10;

    // Starts the page with the title lines of ABOUT and, when PARTIAL, a line
    // that says so.
    svg_canvas(const facts& about, bool partial);

    // Below everything drawn so far.
    double bottom() const { return lowest; }

    // Text of CLASS with its baseline at Y; ANCHOR start, middle or end.
    void text(const char* kind, double x, double y, const std::string& text,
              const char* anchor = "start");
    // A tick mark from (x1, y1) to (x2, y2).
    void tick(double x1, double y1, double x2, double y2);
    // A cell of RESULT at (x, y), titled for a reader who points at it.
    void result_cell(double x, double y, outcome result, const std::string& title);
    // An outline around the rectangle: unmeasured, window, common or margin.
    void outline(mark kind, double x, double y, double width, double height);
    // A round mark centred on (x, y): centre, original or safest.
    void dot(mark kind, double x, double y);
    // A triangle whose tip is at (x, y), pointing left (-1), right (1) or
    // down (0): open_edge, common_centre or ship.
    void pointer(mark kind, double x, double y, int towards);

    // The legend below everything, then the whole picture.
    void print(std::FILE* out);

private:
    // The class of a mark as drawn ("cell " before an outcome), or as a key of the legend.
    std::string class_of(mark kind, const char* drawn = "") const;
    // The element, the page grown to hold what reaches RIGHT and LOW.
    void place(const std::string& element, double right, double low);
    // The element of a mark, which then counts as used unless it is a key.
    void draw(mark kind, const std::string& element, double right, double low);
    void key(mark kind, double x, double y);

    std::string title, body;
    double rightmost = 0, lowest = 0;
    bool used[static_cast<std::size_t>(mark::count)] = {};
    bool in_legend = false;  // drawing its keys: nothing counts as used
};

#endif
