// SPDX-License-Identifier: MIT
// The standard streams of a run: open before anything else is, checked at the end.
#ifndef PADKIT_STANDARD_STREAMS_H
#define PADKIT_STANDARD_STREAMS_H

// Flushes standard output; when it could not be written, says so on standard
// error and returns false.
bool standard_output_written();

#endif
