// SPDX-License-Identifier: MIT
// Asking before a sweep writes values that may well break the board.
#ifndef PADKIT_CONSENT_H
#define PADKIT_CONSENT_H

#include <cstdio>
#include <string>

enum class consent { given, refused, no_terminal };

// Prints the warning on err and, when in is a terminal, asks and reads one
// line: "y" or "yes" (any case, blanks around ignored) gives consent,
// anything else, an empty line or the end of input refuses. Without a
// terminal nothing is read.
consent ask_consent(const std::string& warning, std::FILE* in, bool in_is_terminal, std::FILE* err);

#endif
