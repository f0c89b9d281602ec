// SPDX-License-Identifier: MIT
#include "tune/sweep/progress.h"

std::string progress_text(const std::string& name, const std::string& value, std::size_t index, std::size_t count,
                          long long elapsed_seconds) {
    char elapsed[32];
    const long long hours = elapsed_seconds / 3600, minutes = elapsed_seconds / 60 % 60,
                    seconds = elapsed_seconds % 60;
    if (hours > 0)
        std::snprintf(elapsed, sizeof elapsed, "%lld:%02lld:%02lld", hours, minutes, seconds);
    else
        std::snprintf(elapsed, sizeof elapsed, "%lld:%02lld", minutes, seconds);
    return name + " = " + value + " (value " + std::to_string(index) + " of " +
           std::to_string(count) + "), " + elapsed + " elapsed";
}

progress_line::progress_line(std::FILE* out, bool on_terminal)
    : out(out), on_terminal(on_terminal), start(std::chrono::steady_clock::now()) {}

void progress_line::show(const std::string& shown_name, const std::string& shown_value, std::size_t shown_index,
                         std::size_t shown_count) {
    name = shown_name;
    value = shown_value;
    index = shown_index;
    count = shown_count;
    refresh();
}

void progress_line::refresh() {
    if (!on_terminal || count == 0)
        return;
    const auto elapsed = std::chrono::steady_clock::now() - start;
    const std::string text =
        progress_text(name, value, index, count, std::chrono::duration_cast<std::chrono::seconds>(elapsed).count());
    // Spaces cover what is left of a longer line before.
    std::fprintf(out, "\r%s%*s", text.c_str(), static_cast<int>(width > text.size() ? width - text.size() : 0), "");
    std::fflush(out);
    width = text.size();
}

void progress_line::clear() {
    if (!on_terminal || width == 0)
        return;
    std::fprintf(out, "\r%*s\r", static_cast<int>(width), "");
    std::fflush(out);
    width = 0;
}
