// SPDX-License-Identifier: MIT
// Input as a message shows it, so that odd bytes in a file or a file name
// cannot garble the terminal or the line a message is on.
#ifndef PADKIT_TUNE_SHOWN_TEXT_H
#define PADKIT_TUNE_SHOWN_TEXT_H

#include <cstddef>
#include <string>

// Control characters as \xNN; a text longer than at_most cut there and "..." added.
std::string shown(const std::string& text, std::size_t at_most = std::string::npos);

#endif
