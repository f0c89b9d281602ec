// SPDX-License-Identifier: MIT
// Text read from files a user names: read within a bound, so that a wrong
// file (a link to /dev/zero) cannot exhaust memory, and shown escaped, so
// that odd bytes in a file or a file name cannot garble the terminal or the
// line a message is on.
#ifndef PADKIT_TUNE_INPUT_TEXT_H
#define PADKIT_TUNE_INPUT_TEXT_H

#include <cstddef>
#include <string>

// All that the descriptor gives, up to limit bytes (a whole number of MiB);
// more is refused. Failures are reported under the name given.
bool read_bounded(int fd, const std::string& name, std::size_t limit, std::string* text);

// Where the text begins after a UTF-8 byte order mark, as some editors
// write one: 3 with one, else 0.
std::size_t after_byte_order_mark(const std::string& text);

// Control characters as \xNN; a text longer than at_most cut there and "..." added.
std::string shown(const std::string& text, std::size_t at_most = std::string::npos);

#endif
