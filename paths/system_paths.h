// SPDX-License-Identifier: MIT
// Where the program finds the files of the system it runs on.
#ifndef PADKIT_SYSTEM_PATHS_H
#define PADKIT_SYSTEM_PATHS_H

#include <string>

// The path to open for an absolute path of the board (lock file, debugfs,
// sysfs). The board itself uses the paths as they are.
std::string system_path(const std::string& path);

// Whether the symbolic link LINK (a path as system_path gives it) among the
// system's configuration files (/etc/padkit.d) is followed: on the board,
// yes; in a simulated board, only to a file within the board directory.
bool system_link_followed(const std::string& link);

// Whether a regular file may stand in for the hardware watchdog: in a
// simulated board, so that a test can read what it got; on the board, never.
extern const bool watchdog_stand_in_allowed;

#endif
