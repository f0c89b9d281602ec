// SPDX-License-Identifier: MIT
// Messages of padkit-tune on standard error, each prefixed by the program's name.
#ifndef PADKIT_REPORT_H
#define PADKIT_REPORT_H

#include <string>

// The name messages begin with: the last part of argv[0].
void set_program_name(const char* argv0);
const char* program_name();

// One line "<program>: <message>" on standard error.
void report(const char* format, ...) __attribute__((format(printf, 1, 2)));

// The message sink of padkit-tune (runtime/message.h): "<program>: <line>".
void report_line(const std::string& line);

#endif
