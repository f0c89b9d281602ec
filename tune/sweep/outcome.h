// SPDX-License-Identifier: MIT
// What a test of one value came to, and its names: the word in files and the
// chart's mark.
#ifndef PADKIT_SWEEP_OUTCOME_H
#define PADKIT_SWEEP_OUTCOME_H

#include <string>

// hang: the value a journal shows in flight when the sweep stopped, most
// likely because it hung the board.
enum class outcome { pass, fail, timeout, hang };

// "pass", "fail", "timeout" or "hang", as CSV files and journals write it.
const char* outcome_name(outcome result);

// The outcome named by one of those words; false for any other word.
bool parse_outcome(const std::string& name, outcome* result);

// '#' pass, '.' fail, 'T' time-out, 'H' hang.
char outcome_mark(outcome result);

#endif
