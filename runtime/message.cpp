// SPDX-License-Identifier: MIT
#include "runtime/message.h"

#include <cstdarg>
#include <cstdio>
#include <string>

namespace {

void plain(const std::string& line) { std::fprintf(stderr, "%s\n", line.c_str()); }

message_sink sink = plain;

}  // namespace

message_sink set_message_sink(message_sink replacement) {
    const message_sink replaced = sink;
    sink = replacement ? replacement : plain;
    return replaced;
}

void say(const char* format, ...) {
    va_list args;
    va_start(args, format);
    vsay(format, args);
    va_end(args);
}

void vsay(const char* format, va_list args) {
    char text[512];
    va_list again;
    va_copy(again, args);
    const int size = std::vsnprintf(text, sizeof text, format, args);
    if (size < 0) {
        va_end(again);
        return;
    }
    if (static_cast<std::size_t>(size) < sizeof text) {
        sink(std::string(text, static_cast<std::size_t>(size)));
    } else {
        std::string line(static_cast<std::size_t>(size) + 1, '\0');
        std::vsnprintf(&line[0], line.size(), format, again);
        line.pop_back();
        sink(line);
    }
    va_end(again);
}
