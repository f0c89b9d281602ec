// SPDX-License-Identifier: MIT
// What the property layer, the hardware access under it and the run lock
// have to say: one line at a time, through one sink. padkit prints each line
// as it is; a program that makes many accesses replaces the sink to say
// whose line it is.
#ifndef PADKIT_MESSAGE_H
#define PADKIT_MESSAGE_H

#include <string>

// Gets one line, without its newline.
using message_sink = void (*)(const std::string& line);

// nullptr puts back the plain sink, which writes the line to standard error.
void set_message_sink(message_sink sink);

// A message, formatted as printf does, handed to the sink.
void say(const char* format, ...) __attribute__((format(printf, 1, 2)));

// An access of the hardware or of a driver file that failed: said like any
// message and counted, so that a caller can tell a failed read from a value
// without padkit's output changing.
void say_failed(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Counts a failed access that has been said already (a word cached from a
// read that failed).
void note_failed_access();

// Failed accesses so far: a caller compares the count before and after.
unsigned long failed_accesses();

#endif
