// SPDX-License-Identifier: MIT
// Profiles: files of "name = value" lines, checked against the properties
// they name before anything is written.
#ifndef PADKIT_TUNE_PROFILE_H
#define PADKIT_TUNE_PROFILE_H

#include <string>
#include <vector>

#include "properties/property.h"

// One field to be given one value: a composite in a profile stands for one
// setting per member.
struct setting {
    property* prop;
    std::string value;  // as check() gives it: decimal
};

// Reads and checks the files in order ("-" is standard input). A later
// setting of a field replaces an earlier one, and takes its place in the
// order. Every bad line is reported as "FILE:LINE: what is wrong" on
// standard error; false when there was any, or a file could not be read.
bool load_profiles(const std::vector<std::string>& files, std::vector<setting>* settings);

// The files of the system profile directory ending in ".conf", sorted by
// name; none when the directory is missing. False, reported, when it cannot
// be read.
bool system_profiles(std::vector<std::string>* files);

#endif
