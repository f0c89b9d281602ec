// SPDX-License-Identifier: MIT
// Applying profiles, for apply and for the trial profile.
#ifndef PADKIT_TUNE_APPLY_H
#define PADKIT_TUNE_APPLY_H

#include <string>
#include <vector>

#include "runtime/stop_signals.h"

// Sets the board to the settings of the files, all or nothing, under the
// run lock; -n prints the changes instead, -v prints them as well. Nothing
// to do for no files. Files found by listing a system directory are read as
// load_profiles reads them (profile.h). The stop signals are held during the
// writes, and one that arrived then ends the program after them
// (end_if_stopped), unless the caller holds them and ends it itself.
// Returns apply's exit status.
int apply_profiles(const std::vector<std::string>& files, bool system_files, bool dry_run,
                   bool verbose, bool held_by_caller = false);

// A stop signal that arrived while HELD ends the program once the writes are
// done, saying how the apply ended (STATUS), unless that would hide that
// something is left changed.
void end_if_stopped(const stop_signals& held, int status);

#endif
