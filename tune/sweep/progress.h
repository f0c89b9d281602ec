// SPDX-License-Identifier: MIT
// The line on standard error that tells how far a sweep has got, rewritten
// in place; shown only on a terminal, so logs and pipes stay clean.
#ifndef PADKIT_PROGRESS_H
#define PADKIT_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <string>

// "WHAT (UNIT I of N), M:SS elapsed" and, once a step is done, ", about M:SS
// left" at the pace so far; hours are added when needed.
std::string progress_text(const std::string& what, const char* unit, std::size_t index,
                          std::size_t count, long long elapsed_seconds);

class progress_line {
public:
    // UNIT names what is counted: "value", "point".
    progress_line(std::FILE* out, bool on_terminal, const char* unit = "value");

    // Shows step index (counted from 1) of count; the elapsed time counts
    // from the construction.
    void show(const std::string& what, std::size_t index, std::size_t count);
    // Shows the last step again with the times brought up to date.
    void refresh();
    // Blanks the line, so that what follows starts on a clean one.
    void clear();

private:
    std::FILE* out;
    bool on_terminal;
    const char* unit;
    std::chrono::steady_clock::time_point start;
    std::string what;
    std::size_t index = 0, count = 0, width = 0;
};

#endif
