// SPDX-License-Identifier: MIT
// Runs the sweep's test command once: in a process group of its own, with
// extra environment variables, its standard output and error on standard
// error or in a file of its own, within a time limit.
#ifndef PADKIT_COMMAND_RUN_H
#define PADKIT_COMMAND_RUN_H

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "runtime/stop_signals.h"

struct command_result {
    enum kind { passed, failed, timed_out, not_started, interrupted };
    kind what;
    int detail;  // errno when not started, the signal when interrupted, else 0
};

using environment = std::vector<std::pair<std::string, std::string>>;

// How long a command's process group has between SIGTERM and SIGKILL.
constexpr double kill_grace_seconds = 2;

// Passed: the command exited with 0 within the time limit. Past the limit,
// or when a stop signal arrives, its whole process group gets SIGTERM and,
// after the grace, SIGKILL; when it exits, what it left running in the group
// gets both at once, so that nothing of it runs on into the next value.
// The caller becomes a child subreaper: what the command started outside its
// group (setsid) is adopted and gets SIGTERM and, after the grace, SIGKILL
// too. The caller must have no other children.
// every_second runs once a second by the clock while the command runs.
// With an OUTPUT descriptor, both its standard output and error go there.
command_result run_command(const std::vector<std::string>& argv, const environment& extra,
                           double timeout_seconds, const stop_signals& stop,
                           const std::function<void()>& every_second, int output = -1);

// Whether execvp would find an executable file for this command name.
bool command_exists(const std::string& command);

#endif
