// SPDX-License-Identifier: MIT
// The usage of padkit-tune, for the -h and the usage errors of every
// subcommand. The text comes from the table of subcommands, which sits above
// the libraries that print it and hands its printer over at the start.
#ifndef PADKIT_TUNE_USAGE_H
#define PADKIT_TUNE_USAGE_H

#include <cstdio>
#include <string>

using usage_printer = void (*)(std::FILE* out);

// What print_usage prints; nothing until it is set.
void set_usage_printer(usage_printer printer);

void print_usage(std::FILE* out);

// Reports the problem and the usage on standard error; the usage status, 2.
int usage_error(const std::string& problem);

// The usage error of the option getopt could not take.
int unknown_option(char** argv);

#endif
