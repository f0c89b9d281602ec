// SPDX-License-Identifier: MIT
#include "runtime/report.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

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
    std::fprintf(stderr, "%s: ", name);
    va_list args;
    va_start(args, format);
    std::vfprintf(stderr, format, args);
    va_end(args);
    std::fputc('\n', stderr);
}
