// SPDX-License-Identifier: MIT
// A board's own wiring of DQ lines to the data bits of their bus, as a text
// file of one line per DQ line, its name and its bit:
//   tarnm-ddra-read0::dq0 8   # lanes 0 and 1 swapped on this board
// Blank lines are ignored, and so is a comment: a word that begins with '#'
// or ';' and the rest of its line.
#ifndef PADKIT_BIT_MAP_H
#define PADKIT_BIT_MAP_H

#include <map>
#include <string>

// The bits by name. Refuses a line of other than a name and a number, and a
// name or a bit given twice; the problem is "LINE: what".
bool parse_bit_map(const std::string& text, std::map<std::string, unsigned>* bits,
                   std::string* problem);

#endif
