// SPDX-License-Identifier: MIT
// Where a profile that a sweep, a shmoo or a merge writes comes from.
#ifndef PADKIT_SWEEP_PROFILE_HEADER_H
#define PADKIT_SWEEP_PROFILE_HEADER_H

#include <string>

// The comment lines that say where a profile comes from: the command line,
// quoted as a shell would take it back, and the time.
std::string profile_header(int argc, char** argv);

#endif
