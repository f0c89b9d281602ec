// SPDX-License-Identifier: MIT
#include "tune/campaign/measure.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "runtime/report.h"
#include "runtime/run_lock.h"
#include "tune/board/board_io.h"
#include "tune/sweep/run_log.h"

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

// With --log, the file of a run's output in *log, created fresh (-1
// without); false, said why, when it cannot be.
bool open_log(const test_options& options, const std::string& shown, long long run,
              progress_line& progress, int* log) {
    *log = -1;
    if (options.log_dir.empty())
        return true;
    const std::string path = run_log_path(options.log_dir, shown, run + 1);
    *log =
        open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY | O_NOFOLLOW, 0644);
    if (*log >= 0)
        return true;
    progress.clear();
    report("cannot write %s: %s", path.c_str(), std::strerror(errno));
    return false;
}

// What the failing-bits file says of the run just ended; a garbled one is said.
failing_bits read_bits(const std::string& path, const member_bits& judged,
                       progress_line& progress) {
    if (judged.bits.empty())
        return {failing_bits::absent, 0, ""};
    failing_bits file = read_failing_bits(path, judged.width);
    if (file.what == failing_bits::garbled) {
        progress.clear();
        report("the failing bits: %s; every line fails", file.problem.c_str());
    }
    return file;
}

point_result run_tests(const std::string& shown, const test_options& options, environment names,
                       const member_bits& judged, failing_bits_place& place,
                       const stop_signals& stop, progress_line& progress, hang_guard& guard) {
    std::vector<outcome> results(judged.members(), outcome::pass);
    std::string path;
    if (!judged.bits.empty())
        names.emplace_back("PADKIT_FAILING_BITS", "");
    for (long long run = 0; run < options.runs; ++run) {
        if (!judged.bits.empty()) {
            if ((path = place.fresh_file()).empty())
                return {point_result::not_started, {}, 0};
            names.back().second = path;
        }
        int log = -1;
        if (!open_log(options, shown, run, progress, &log))
            return {point_result::not_started, {}, 0};
        const command_result got = run_command(
            options.command, names, options.timeout_seconds, stop,
            [&] {
                progress.refresh();
                guard.watchdog.keep_alive();
            },
            log);
        if (log >= 0)
            close(log);
        switch (got.what) {
        case command_result::passed:
        case command_result::failed:
            judge_run(got.what == command_result::passed, read_bits(path, judged, progress), judged,
                      &results);
            break;
        case command_result::timed_out:
            return {point_result::measured, std::vector<outcome>(results.size(), outcome::timeout),
                    0};
        case command_result::not_started:
            progress.clear();
            report("cannot run %s: %s", options.command.front().c_str(), std::strerror(got.detail));
            return {point_result::not_started, {}, 0};
        case command_result::interrupted: return {point_result::interrupted, {}, got.detail};
        }
        if (std::count(results.begin(), results.end(), outcome::pass) == 0)
            break;  // nothing a further run could change
    }
    return {point_result::measured, results, 0};
}

}  // namespace

point_result measure_point(const std::vector<setting>& changes, const journal_point& point,
                           const std::string& shown, const test_options& options,
                           const environment& names, const member_bits& judged,
                           failing_bits_place& place, const stop_signals& stop,
                           progress_line& progress, hang_guard& guard) {
    if (const int signal = stop.take())
        return {point_result::interrupted, {}, signal};
    if (!guard.trying(point))
        return {point_result::write_failed, {}, 0};
    int signal = 0;
    const point_result got =
        write_locked(changes, guard.watchdog, &stop, &signal)
            ? run_tests(shown, options, names, judged, place, stop, progress, guard)
        : signal ? point_result{point_result::interrupted, {}, signal}
                 : point_result{point_result::write_failed, {}, 0};
    if (got.what == point_result::measured)
        guard.measured(got.results);
    else
        guard.not_measured();
    return got;
}
