// SPDX-License-Identifier: MIT
// What a sweep and a shmoo do alike: ask first, open the result files, and
// at each point write the properties that change, read back under padkit's
// lock, then run the test command, with the lock free, as often as asked.
#ifndef PADKIT_TEST_RUN_H
#define PADKIT_TEST_RUN_H

#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "properties/property.h"
#include "runtime/stop_signals.h"
#include "tune/profile/profile.h"
#include "tune/sweep/command_run.h"
#include "tune/sweep/hang_guard.h"
#include "tune/sweep/progress.h"
#include "tune/sweep/whole_file.h"
#include "tune/sweep/window.h"
#include "tune/sweep_options.h"

struct point_result {
    enum kind { measured, interrupted, not_started, write_failed };
    kind what;
    outcome result;  // when measured
    int signal;      // when interrupted
};

// Takes the lock, writes the settings in order, each read back, and releases
// it, so that the command may run padkit itself. Says what failed. The
// watchdog is kept alive while it waits for the lock. With STOP, a stop
// signal that arrives meanwhile ends the wait: false, with the signal in
// *signal (when given).
bool write_locked(const std::vector<setting>& settings, watchdog_keeper& watchdog,
                  const stop_signals* stop = nullptr, int* signal = nullptr);

// The codes of the properties as the hardware holds them, under the lock;
// says which cannot be read.
bool read_locked(const std::vector<property*>& props, std::vector<long long>* codes);

// Writes the changes, then runs the command up to options.runs times with
// the environment; every run must pass. A stop signal before or during a
// run interrupts; a command that cannot start is reported. The guard's
// journal has the point before the write and its result after the command
// (a journal that cannot be written fails the write); its watchdog is kept
// alive meanwhile.
point_result test_point(const std::vector<setting>& changes, const journal_point& point,
                        const test_options& options, const environment& names,
                        const stop_signals& stop, progress_line& progress, hang_guard& guard);

// Asks before the first write, unless -y was given: WARNING on standard
// error, the question on a terminal. WHAT names the run in the refusal:
// "sweep", "shmoo".
bool confirmed(const test_options& options, const std::string& warning, const char* what);

// Whether the test command can be started; says so when not.
bool command_ready(const test_options& options);

using file_ptr = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// Creates a result file, and writes its HEADER (if any), before anything is
// written to the board, so that a bad path costs nothing; nothing for an
// empty path. Says why it cannot.
bool open_output(const std::string& path, file_ptr* file,
                 const std::function<void(std::FILE*)>& header);

// Opens the --profile file, if one is named, to be written whole at the end.
// Says why it cannot.
bool open_profile(const test_options& options, whole_file* profile);

// Writes the --profile file (when one is open) at the end of a run: PRINT
// gives its content. A run that did not measure every point (FINISHED
// false) writes none, and says so naming WHAT ran. False when none was written.
bool write_profile(whole_file* profile, const std::string& path, bool finished, const char* what,
                   const std::function<void(std::FILE*)>& print);

// The exit status of a run whose files and output are written; FOUND: it
// found what it looked for and wrote every file. An interrupted run that
// restored everything says so, naming what it RESTORED, and ends by its signal.
int end_status(point_result::kind ended, int signal, bool left_changed, bool found,
               const char* restored);

#endif
