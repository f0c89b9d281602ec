// SPDX-License-Identifier: MIT
// Where a profile that a sweep, a shmoo or a merge writes comes from.
#ifndef PADKIT_SWEEP_PROFILE_HEADER_H
#define PADKIT_SWEEP_PROFILE_HEADER_H

#include <string>
#include <vector>

// The comment lines that say where a profile comes from: the command line,
// quoted as a shell would take it back, and the time.
std::string profile_header(int argc, char** argv);

// The comment line above a DQ setting in a profile, its signed delays in
// member order: "# delays: -4 +2 +0\n", "# delay: +3\n"; empty when a
// value has no delay.
std::string delay_comment(const std::vector<std::string>& delays);

#endif
