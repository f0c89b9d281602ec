// SPDX-License-Identifier: MIT
#include "tune/sweep/progress.h"

namespace {

std::string duration_text(long long seconds) {
    char text[32];
    const long long hours = seconds / 3600, minutes = seconds / 60 % 60;
    if (hours > 0)
        std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", hours, minutes, seconds % 60);
    else
        std::snprintf(text, sizeof text, "%lld:%02lld", minutes, seconds % 60);
    return text;
}

}  // namespace

std::string progress_text(const std::string& what, const char* unit, std::size_t index,
                          std::size_t count, long long elapsed_seconds) {
    std::string text = what + " (" + unit + " " + std::to_string(index) + " of " +
                       std::to_string(count) + "), " + duration_text(elapsed_seconds) + " elapsed";
    const long long done = static_cast<long long>(index) - 1;
    if (done > 0)
        text += ", about " +
                duration_text(elapsed_seconds * (static_cast<long long>(count) - done) / done) +
                " left";
    return text;
}

progress_line::progress_line(std::FILE* out, bool on_terminal, const char* unit)
    : out(out), on_terminal(on_terminal), unit(unit), start(std::chrono::steady_clock::now()) {}

void progress_line::show(const std::string& shown, std::size_t shown_index,
                         std::size_t shown_count) {
    what = shown;
    index = shown_index;
    count = shown_count;
    refresh();
}

void progress_line::refresh() {
    if (!on_terminal || count == 0)
        return;
    const auto elapsed = std::chrono::steady_clock::now() - start;
    const std::string text =
        progress_text(what, unit, index, count,
                      std::chrono::duration_cast<std::chrono::seconds>(elapsed).count());
    // Spaces cover what is left of a longer line before.
    std::fprintf(out, "\r%s%*s", text.c_str(),
                 static_cast<int>(width > text.size() ? width - text.size() : 0), "");
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
