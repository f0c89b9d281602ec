// SPDX-License-Identifier: MIT
// Reading and writing properties in a run that touches many of them: every
// access sees the hardware as it is, and every write is read back.
#ifndef PADKIT_TUNE_BOARD_IO_H
#define PADKIT_TUNE_BOARD_IO_H

#include <optional>
#include <string>
#include <vector>

#include "properties/property.h"

// The property's value as the hardware holds it now, as get() shows it.
bool read_now(property* prop, std::string* value);

// The values of the properties as the hardware holds them now, each
// register read once; nothing for an unreadable property. Meant for a
// caller that holds the run lock, so that nothing changes in between.
std::vector<std::optional<std::string>> read_all_now(const std::vector<property*>& props);

// Writes a value that the property's check() gave as canonical (decimal, so
// property::number_mode must be 0) and reads it back. On failure says in
// *problem whether the write failed or what it reads back instead.
bool write_checked(property* prop, const std::string& value, std::string* problem);

// One property changed, or to be changed, from one value to another.
struct change {
    property* prop;
    std::string before;
    std::string after;
};

// Puts every property back to its value before the changes, last change
// first; one that already reads as before is left alone. Reports each
// restored property, and each that could not be restored, on standard
// error. Gives the names of the properties left changed.
std::vector<std::string> undo(const std::vector<change>& changes);

#endif
