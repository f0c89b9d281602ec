// SPDX-License-Identifier: MIT
#include "tune/usage/usage.h"

#include <unistd.h>

#include <cstdio>
#include <string>

#include "runtime/exit_status.h"
#include "runtime/report.h"

namespace {

usage_printer printer = nullptr;

}  // namespace

void set_usage_printer(usage_printer replacement) { printer = replacement; }

void print_usage(std::FILE* out) {
    if (printer)
        printer(out);
}

int usage_error(const std::string& problem) {
    report("%s", problem.c_str());
    print_usage(stderr);
    return tune_status::bad_input;
}

int unknown_option(char** argv) {
    return usage_error(std::string("unknown option ") + argv[optind - 1]);
}
