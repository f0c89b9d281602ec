// SPDX-License-Identifier: MIT
// Reading and writing properties in a run that touches many of them: every
// access sees the hardware as it is, and every write is read back.
#ifndef PADKIT_TUNE_BOARD_IO_H
#define PADKIT_TUNE_BOARD_IO_H

#include <optional>
#include <string>
#include <vector>

#include "properties/property.h"

// One field to be given one value: a composite in a profile stands for one
// setting per member.
struct setting {
    property* prop;
    std::string value;  // as check() gives it: decimal
};

// The property's value as the hardware holds it now, in the form save()
// gives: what get() shows, unless get() has no name for it. A value made of
// an access that failed is no value: false.
bool read_now(property* prop, std::string* value);

// The values of the properties as the hardware holds them now, each
// register read once; nothing for an unreadable property. Meant for a
// caller that holds the run lock, so that nothing changes in between.
std::vector<std::optional<std::string>> read_all_now(const std::vector<property*>& props);

// Writes a value that the property's check() gave as canonical (decimal, so
// property::number_mode must be 0), or one that read_now() gave, and reads
// it back. On failure says in
// *problem whether the write failed or what it reads back instead.
bool write_checked(property* prop, const std::string& value, std::string* problem);

// One property changed, or to be changed, from one value to another.
struct change {
    property* prop;
    std::string before;
    std::string after;
};

// The settings that the board does not hold, with the board's values as
// read_now() gives them; each property that cannot be read goes to
// *unreadable instead. Meant for a caller that holds the run lock.
std::vector<change> compare_with_board(const std::vector<setting>& settings,
                                       std::vector<property*>* unreadable);

// Puts every property back to its value before the changes, last change
// first; one that already reads as before is left alone. Reports each
// restored property, and each that could not be restored, on standard
// error. Gives the names of the properties left changed.
std::vector<std::string> undo(const std::vector<change>& changes);

#endif
