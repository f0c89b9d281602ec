// SPDX-License-Identifier: MIT
// Reading and writing properties in a run that touches many of them, on
// their codes (property.h): every access sees the hardware as it is, every
// write is read back, and what the layers below say about a failure is
// reported on standard error naming the property.
#ifndef PADKIT_TUNE_BOARD_IO_H
#define PADKIT_TUNE_BOARD_IO_H

#include <optional>
#include <string>
#include <vector>

#include "properties/property.h"

// One field to be given one code: a composite in a profile stands for one
// setting per member.
struct setting {
    property* prop;
    long long code;
};

// The property's code as the hardware holds it now; false when it cannot be
// read.
bool read_now(property* prop, long long* code);

// A property's value: its code, or one per member of a composite.
using board_value = std::vector<long long>;

// The values of the properties as the hardware holds them now, each
// register read once; nothing for an unreadable property. Meant for a
// caller that holds the run lock, so that nothing changes in between.
std::vector<std::optional<board_value>> read_all_now(const std::vector<property*>& props);

// Writes a code, a value of the property's domain or one that read_now()
// gave, and reads it back. On failure says in *problem whether the write
// failed or what it reads back instead.
bool write_checked(property* prop, long long code, std::string* problem);

// One property changed, or to be changed, from one code to another.
struct change {
    property* prop;
    long long before;
    long long after;
};

// The settings that the board does not hold, with the board's codes; each
// property that cannot be read goes to *unreadable instead. Meant for a
// caller that holds the run lock.
std::vector<change> compare_with_board(const std::vector<setting>& settings,
                                       std::vector<property*>* unreadable);

// Puts every property back to its code before the changes, last change
// first; one that already reads as before is left alone. Reports each
// restored property, and each that could not be restored, on standard
// error. Gives the names of the properties left changed.
std::vector<std::string> undo(const std::vector<change>& changes);

// A code as padkit-tune shows it to people (value_domain::told): the
// property's value, or "code N" where no key of its table names it, and a DQ
// delay's signed delay beside it.
std::string code_text(property* prop, long long code);

#endif
