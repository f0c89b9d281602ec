// SPDX-License-Identifier: MIT
#include "tune/sweep/hang_guard.h"

bool hang_guard::trying(const journal_point& point) {
    watchdog.keep_alive();
    return !watchdog.failed() && (!journal.is_open() || journal.tried(point));
}

void hang_guard::measured(const std::vector<outcome>& results) {
    watchdog.keep_alive();
    if (journal.is_open())
        journal.finished(results);
}

void hang_guard::not_measured() {
    if (journal.is_open())
        journal.stopped();
}

bool hang_guard::keeping() {
    keep_refused = watchdog.failed() || (journal.is_open() && !journal.keeping());
    return !keep_refused;
}

void hang_guard::close(bool run_ended) {
    if (run_ended && journal.is_open())
        journal.end();
    watchdog.close();
}
