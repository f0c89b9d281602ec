// SPDX-License-Identifier: MIT
#include "runtime/report.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

const char* name = "padkit-tune";

}  // namespace

void set_program_name(const char* argv0) {
    if (!argv0 || !*argv0)
        return;
    const char* slash = std::strrchr(argv0, '/');
    name = slash ? slash + 1 : argv0;
}

const char* program_name() { return name; }

void report(const char* format, ...) {
    va_list args;
    va_start(args, format);
    char* text = nullptr;
    const int size = vasprintf(&text, format, args);
    va_end(args);
    if (size >= 0)
        std::fprintf(stderr, "%s: %s\n", name, text);
    std::free(text);
}

void report_line(const std::string& line) { report("%s", line.c_str()); }
