// SPDX-License-Identifier: MIT
// Failed accesses of the hardware or of a driver file: said like any message
// (runtime/message.h) and counted, so that a caller can tell a failed read
// from a value without padkit's output changing.
#ifndef PADKIT_PROPERTIES_MESSAGE_H
#define PADKIT_PROPERTIES_MESSAGE_H

// A failed access, said and counted.
void say_failed(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Counts a failed access that has been said already (a word cached from a
// read that failed).
void note_failed_access();

// Failed accesses so far: a caller compares the count before and after.
unsigned long failed_accesses();

#endif
