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

// While an object of this class lives, the lines of the layers below (see
// runtime/message.h) concern this setting.
class about_setting {
public:
    explicit about_setting(const std::string& name);
    ~about_setting();
    about_setting(const about_setting&) = delete;
    about_setting& operator=(const about_setting&) = delete;

private:
    const std::string* outer;
};

// The message sink of padkit-tune: "<program>: <setting>: <line>", or
// "<program>: <line>" outside any setting.
void report_line(const std::string& line);

#endif
