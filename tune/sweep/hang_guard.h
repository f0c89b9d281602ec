// SPDX-License-Identifier: MIT
// What carries a sweep or a shmoo over a hang: the journal of its steps and
// the hardware watchdog that resets a hung board. Either may be missing; a
// call about a missing one does nothing.
#ifndef PADKIT_HANG_GUARD_H
#define PADKIT_HANG_GUARD_H

#include <vector>

#include "tune/sweep/journal.h"
#include "tune/sweep/outcome.h"
#include "tune/sweep/watchdog.h"

struct hang_guard {
    journal_file journal;
    watchdog_keeper watchdog;

    // Before a point is written: its try record, and a keep-alive; false
    // when either failed, now or before: the point must not be written.
    bool trying(const journal_point& point);
    // After the command; a failed record is reported, and the next try fails.
    void measured(const std::vector<outcome>& results);
    // The point tried last was not measured.
    void not_measured();
    // Before --keep centre writes; false when it must not: its record cannot
    // be written, a run before on this journal stopped while it kept, or the
    // watchdog failed.
    bool keeping();
    // After the last write: the end record unless the run stopped early and
    // can carry on, and the watchdog closed.
    void close(bool run_ended);
    // Whether a record or a keep-alive could not be written or the keep was
    // refused: the run did not do all it was asked.
    bool failed() const { return journal.failed() || watchdog.failed() || keep_refused; }

private:
    bool keep_refused = false;
};

#endif
