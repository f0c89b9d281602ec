// SPDX-License-Identifier: MIT
// Profiles: files of "name = value" lines, checked against the properties
// they name before anything is written.
#ifndef PADKIT_TUNE_PROFILE_H
#define PADKIT_TUNE_PROFILE_H

#include <string>
#include <vector>

#include "properties/property.h"
#include "tune/board/board_io.h"

// Reads and checks the files in order ("-" is standard input, once). A
// later setting of a field replaces an earlier one, and takes its place in
// the order. Every bad line is reported as "FILE:LINE: what is wrong" on
// standard error (the first 100; the rest are counted); false when there
// was any, or a file could not be read or is larger than 1 MiB. Files of
// the system directory that are not regular files are skipped, said, and
// never opened in a way that could block.
bool load_profiles(const std::vector<std::string>& files, std::vector<setting>* settings,
                   bool system_files = false);

// The regular files of the system profile directory ending in ".conf",
// sorted by name; none when the directory is missing. Hidden files are left
// out; anything else that is no regular file is skipped, and said unless
// QUIET. False, reported, when the directory cannot be read.
bool system_profiles(std::vector<std::string>* files, bool quiet = false);

#endif
