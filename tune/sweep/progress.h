// SPDX-License-Identifier: MIT
// The line on standard error that tells how far a sweep has got, rewritten
// in place; shown only on a terminal, so logs and pipes stay clean.
#ifndef PADKIT_PROGRESS_H
#define PADKIT_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <string>

// "NAME = VALUE (value I of N), M:SS elapsed"; hours are added when needed.
std::string progress_text(const std::string& name, const std::string& value, std::size_t index, std::size_t count,
                          long long elapsed_seconds);

class progress_line {
public:
    progress_line(std::FILE* out, bool on_terminal);

    // Shows value index (counted from 1) of count; the elapsed time counts
    // from the construction.
    void show(const std::string& name, const std::string& value, std::size_t index, std::size_t count);
    // Shows the last values again with the elapsed time brought up to date.
    void refresh();
    // Blanks the line, so that what follows starts on a clean one.
    void clear();

private:
    std::FILE* out;
    bool on_terminal;
    std::chrono::steady_clock::time_point start;
    std::string name;
    std::string value;
    std::size_t index = 0, count = 0, width = 0;
};

#endif
