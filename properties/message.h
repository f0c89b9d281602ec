// SPDX-License-Identifier: MIT
// What the property layer, the hardware access under it and the run lock
// have to say: one line at a time, through one sink. padkit prints each line
// as it is; padkit-tune replaces the sink to put its name first. A typed
// access hands its failures back instead (access_result.h).
#ifndef PADKIT_MESSAGE_H
#define PADKIT_MESSAGE_H

#include <string>

// Gets one line, without its newline.
using message_sink = void (*)(const std::string& line);

// nullptr puts back the plain sink, which writes the line to standard error.
void set_message_sink(message_sink sink);

// A message, formatted as printf does, handed to the sink.
void say(const char* format, ...) __attribute__((format(printf, 1, 2)));

#endif
