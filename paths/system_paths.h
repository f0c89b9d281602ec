// SPDX-License-Identifier: MIT
// Where the program finds the files of the system it runs on.
#ifndef PADKIT_SYSTEM_PATHS_H
#define PADKIT_SYSTEM_PATHS_H

#include <string>

// The path to open for an absolute path of the board (lock file, debugfs,
// sysfs). The board itself uses the paths as they are.
std::string system_path(const std::string& path);

// Whether a symbolic link among the system's configuration files
// (/etc/padkit.d) is followed: on the board, yes; links planted in a
// simulated board, never.
extern const bool system_links_followed;

#endif
