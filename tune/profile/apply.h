// SPDX-License-Identifier: MIT
// Applying profiles, for apply and for the trial profile.
#ifndef PADKIT_TUNE_APPLY_H
#define PADKIT_TUNE_APPLY_H

#include <string>
#include <vector>

// Sets the board to the settings of the files, all or nothing, under the
// run lock; -n prints the changes instead, -v prints them as well. Nothing
// to do for no files. Files found by listing a system directory are read as
// load_profiles reads them (profile.h). Returns apply's exit status.
int apply_profiles(const std::vector<std::string>& files, bool system_files, bool dry_run,
                   bool verbose);

#endif
