// SPDX-License-Identifier: MIT
// A campaign's point at a time: its settings written and read back under
// padkit's lock, then the test command run, with the lock free, as often as
// asked.
#ifndef PADKIT_CAMPAIGN_MEASURE_H
#define PADKIT_CAMPAIGN_MEASURE_H

#include <string>
#include <vector>

#include "properties/property.h"
#include "runtime/stop_signals.h"
#include "tune/board/board_io.h"
#include "tune/campaign/test_options.h"
#include "tune/sweep/command_run.h"
#include "tune/sweep/failing_bits.h"
#include "tune/sweep/hang_guard.h"
#include "tune/sweep/progress.h"
#include "tune/sweep/window.h"

struct point_result {
    enum kind { measured, interrupted, not_started, write_failed };
    kind what;
    std::vector<outcome> results;  // when measured: one per member judged
    int signal;                    // when interrupted
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
// the environment; a member passes when it passed every run. With bits to
// judge the members by, the command is given a fresh failing-bits file in
// PLACE before each run. With --log, each run's output goes to a file named
// after the point as SHOWN. A stop signal before or during a
// run interrupts; a command that cannot start is reported. The guard's
// journal has the point before the write and its result after the command
// (a journal that cannot be written fails the write); its watchdog is kept
// alive meanwhile.
point_result measure_point(const std::vector<setting>& changes, const journal_point& point,
                           const std::string& shown, const test_options& options,
                           const environment& names, const member_bits& judged,
                           failing_bits_place& place, const stop_signals& stop,
                           progress_line& progress, hang_guard& guard);

#endif
