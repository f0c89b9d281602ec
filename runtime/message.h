// SPDX-License-Identifier: MIT
// What the layers of a program have to say, from the run lock up to the
// properties and the hardware access under them: one line at a time, through
// one sink. padkit prints each line as it is; a program that makes many
// accesses replaces the sink to say whose line it is.
#ifndef PADKIT_MESSAGE_H
#define PADKIT_MESSAGE_H

#include <cstdarg>
#include <string>

// Gets one line, without its newline.
using message_sink = void (*)(const std::string& line);

// nullptr puts back the plain sink, which writes the line to standard error.
// Gives the sink it replaces.
message_sink set_message_sink(message_sink sink);

// A message, formatted as printf does, handed to the sink.
void say(const char* format, ...) __attribute__((format(printf, 1, 2)));
void vsay(const char* format, va_list args) __attribute__((format(printf, 1, 0)));

#endif
