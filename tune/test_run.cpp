// SPDX-License-Identifier: MIT
#include "tune/test_run.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "runtime/exit_status.h"
#include "runtime/report.h"
#include "runtime/run_lock.h"
#include "tune/board/board_io.h"
#include "tune/sweep/consent.h"

namespace {

// Takes the lock, the watchdog kept alive while it waits; with STOP, a stop
// signal that arrives while it waits ends the wait, and is given in *signal.
// Without, no signal ends it, but it is polled all the same for the watchdog.
bool lock(watchdog_keeper& watchdog, const stop_signals* stop, int* signal) {
    sigset_t none;
    sigemptyset(&none);
    int arrived = 0;
    const bool taken =
        take_run_lock(stop ? stop->set() : none, &arrived, [&] { watchdog.keep_alive(); });
    if (signal)
        *signal = arrived;
    return taken;
}

}  // namespace

bool write_locked(const std::vector<setting>& settings, watchdog_keeper& watchdog,
                  const stop_signals* stop, int* signal) {
    if (!lock(watchdog, stop, signal))
        return false;
    for (const setting& change : settings) {
        std::string problem;
        if (!write_checked(change.prop, change.code, &problem)) {
            release_run_lock();
            report("%s: %s", change.prop->name.c_str(), problem.c_str());
            return false;
        }
    }
    release_run_lock();
    return true;
}

bool read_locked(const std::vector<property*>& props, std::vector<long long>* codes) {
    if (!take_run_lock())
        return false;
    bool good = true;
    for (property* prop : props) {
        codes->emplace_back();
        good = read_now(prop, &codes->back());
        if (!good) {
            report("%s: unreadable; nothing written", prop->name.c_str());
            break;
        }
    }
    release_run_lock();
    return good;
}

namespace {

point_result run_tests(const test_options& options, const environment& names,
                       const stop_signals& stop, progress_line& progress, hang_guard& guard) {
    for (long long run = 0; run < options.runs; ++run) {
        const command_result got =
            run_command(options.command, names, options.timeout_seconds, stop, [&] {
                progress.refresh();
                guard.watchdog.keep_alive();
            });
        switch (got.what) {
        case command_result::passed: break;
        case command_result::failed: return {point_result::measured, outcome::fail, 0};
        case command_result::timed_out: return {point_result::measured, outcome::timeout, 0};
        case command_result::not_started:
            progress.clear();
            report("cannot run %s: %s", options.command.front().c_str(), std::strerror(got.detail));
            return {point_result::not_started, outcome::fail, 0};
        case command_result::interrupted:
            return {point_result::interrupted, outcome::fail, got.detail};
        }
    }
    return {point_result::measured, outcome::pass, 0};
}

}  // namespace

point_result test_point(const std::vector<setting>& changes, const journal_point& point,
                        const test_options& options, const environment& names,
                        const stop_signals& stop, progress_line& progress, hang_guard& guard) {
    if (const int signal = stop.take())
        return {point_result::interrupted, outcome::fail, signal};
    if (!guard.trying(point))
        return {point_result::write_failed, outcome::fail, 0};
    int signal = 0;
    const point_result got = write_locked(changes, guard.watchdog, &stop, &signal)
                                 ? run_tests(options, names, stop, progress, guard)
                             : signal
                                 ? point_result{point_result::interrupted, outcome::fail, signal}
                                 : point_result{point_result::write_failed, outcome::fail, 0};
    if (got.what == point_result::measured)
        guard.measured(got.result);
    else
        guard.not_measured();
    return got;
}

bool confirmed(const test_options& options, const std::string& warning, const char* what) {
    if (options.assume_yes)
        return true;
    switch (ask_consent(warning, stdin, isatty(STDIN_FILENO), stderr)) {
    case consent::given: return true;
    case consent::refused: report("%s cancelled; nothing written", what); return false;
    case consent::no_terminal:
        report("standard input is not a terminal; give -y to %s without asking", what);
        return false;
    }
    return false;
}

bool command_ready(const test_options& options) {
    if (command_exists(options.command.front()))
        return true;
    report("%s: no such command, or not executable; nothing written",
           options.command.front().c_str());
    return false;
}

// Close-on-exec, since the test command has no business with it.
bool open_output(const std::string& path, file_ptr* file,
                 const std::function<void(std::FILE*)>& header) {
    if (path.empty())
        return true;
    file->reset(open_in_place(path));
    if (*file && header)
        header(file->get());
    if (*file && std::fflush(file->get()) == 0 && !std::ferror(file->get()))
        return true;
    report("cannot write %s: %s; nothing written", path.c_str(), std::strerror(errno));
    return false;
}

bool open_profile(const test_options& options, whole_file* profile) {
    if (options.profile_path.empty() || profile->open(options.profile_path))
        return true;
    report("cannot write %s: %s; nothing written", options.profile_path.c_str(),
           std::strerror(errno));
    return false;
}

bool write_profile(whole_file* profile, const std::string& path, bool finished, const char* what,
                   const std::function<void(std::FILE*)>& print) {
    if (!profile)
        return true;
    if (!finished) {
        profile->discard();
        report("%s: not written; the %s did not finish", path.c_str(), what);
        return false;
    }
    print(profile->stream());
    if (profile->commit())
        return true;
    report("cannot write %s: %s", path.c_str(), std::strerror(errno));
    return false;
}

int end_status(point_result::kind ended, int signal, bool left_changed, bool found,
               const char* restored) {
    if (ended == point_result::interrupted) {
        report("interrupted by %s; %s", strsignal(signal),
               left_changed ? "not everything restored" : restored);
        if (!left_changed)
            stop_signals::die_of(signal);
    }
    if (left_changed)
        return tune_status::left_changed;
    if (ended == point_result::not_started)
        return tune_status::bad_input;
    return ended == point_result::write_failed || !found ? tune_status::not_done : tune_status::ok;
}
