// SPDX-License-Identifier: MIT
// The journal and the watchdog of a sweep or a shmoo: set up before the
// first write, and read back by resume to carry on after a hang.
#ifndef PADKIT_TUNE_RESUME_H
#define PADKIT_TUNE_RESUME_H

#include <string>
#include <vector>

#include "properties/property.h"
#include "runtime/exit_status.h"
#include "runtime/report.h"
#include "tune/sweep/hang_guard.h"
#include "tune/sweep_options.h"

// Opens the watchdog the options name, if any. Says why it cannot.
bool arm_watchdog(const test_options& options, hang_guard& guard);

// Before the first write: the original value of each property read, and
// the watchdog armed and the journal created with them, when the options
// ask for them.
bool start_guard(const test_options& options, const std::vector<property*>& props,
                 std::vector<long long>* originals, hang_guard& guard);

// Whether the journal's originals are those of the properties, by name, each
// a code of its property; gives the codes, or says why not.
bool journal_matches(const std::string& path, const journal_contents& journal,
                     const std::vector<property*>& props, std::vector<long long>* originals);

// The words as an argv, ending with a null pointer; valid while WORDS lives.
std::vector<char*> argv_of(std::vector<std::string>& words);

// Gives RUN, a sweep or a shmoo of STEPS steps, the journal's steps, which
// must be its own in order (WHAT names one in the refusal: "value",
// "point"); arms the watchdog and records the step in flight as a hang; then
// puts back the originals and carries on, or with RESTORE only puts them
// back. Returns the exit status.
template <class Run>
int carry_on(Run& run, std::size_t steps, const char* what, const test_options& options,
             hang_guard& guard, const journal_contents& journal, bool restore) {
    for (std::size_t step = 0; step < journal.steps.size(); ++step) {
        if (step >= steps || journal.steps[step].point != run.point(step)) {
            report("%s:%zu: not the next %s of this %s; nothing written",
                   guard.journal.path().c_str(), journal.steps[step].line, what,
                   journal.header.command[0].c_str());
            return tune_status::bad_input;
        }
        run.add(step, journal.steps[step].result);
    }
    if (!restore && !arm_watchdog(options, guard))
        return tune_status::bad_input;
    if (journal.in_flight && !guard.journal.finished(outcome::hang))
        return tune_status::not_done;
    if (restore)
        return run.restore();
    run.put_back_all();
    return run.run();
}

// Carry on with the sweep or shmoo of a journal, which has been read, has
// not ended and whose directory is the current one; with RESTORE, put back
// its originals and end it instead. Returns the exit status.
int resume_sweep(hang_guard& guard, const journal_contents& journal, bool restore);
int resume_shmoo(hang_guard& guard, const journal_contents& journal, bool restore);

#endif
