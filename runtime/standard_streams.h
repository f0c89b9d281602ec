// SPDX-License-Identifier: MIT
// The standard streams of a run: open before anything else is, checked at the end.
#ifndef PADKIT_STANDARD_STREAMS_H
#define PADKIT_STANDARD_STREAMS_H

// Whether standard input was closed when the program started (it reads as
// /dev/null since).
bool standard_input_was_closed();

// Flushes standard output; when it could not be written, says so on standard
// error and returns false.
bool standard_output_written();

#endif
