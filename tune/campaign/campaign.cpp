// SPDX-License-Identifier: MIT
#include "tune/campaign/campaign.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <optional>

#include "runtime/exit_status.h"
#include "runtime/report.h"
#include "runtime/stop_signals.h"
#include "tune/campaign/measure.h"
#include "tune/campaign/replay.h"
#include "tune/campaign/result_files.h"
#include "tune/campaign/start.h"
#include "tune/sweep/chart.h"
#include "tune/sweep/facts.h"
#include "tune/sweep/hang_guard.h"
#include "tune/sweep/profile_header.h"
#include "tune/sweep/progress.h"
#include "tune/sweep/whole_file.h"

namespace {

class campaign {
public:
    int start(std::unique_ptr<campaign_kind> planned);
    int resume(const std::string& path, resume_mode mode, kind_of_journal kind_of);

private:
    const test_options& options() const { return kind->options(); }
    bool open_files();
    // Once the originals are known, before the watchdog is armed: from here
    // on stop signals are held and the progress line counts.
    void begin(std::vector<long long> known);
    int carry_on(const journal_contents& journal, resume_mode mode);
    // The step in flight when the run stopped: said, and journalled as a
    // hang or, with RETRY, as not measured.
    bool settle_in_flight(const campaign_point& point, bool retry);

    // Returns the exit status, unless a stop signal ends the program.
    int run();
    void measure(std::size_t step, const campaign_point& point);
    void record(std::size_t step, const std::vector<outcome>& results);
    void mark(const std::vector<setting>& settings, bool as_changed);
    // --keep centre: what the kind keeps written in place of the originals.
    void keep();
    // A first stop signal while a put-back waits for the lock ends the
    // campaign once the property is back; a second one leaves it changed.
    void put_back(std::size_t at);
    void put_back_changed();
    void put_back_all();
    // The CSV file's end, the SVG and, when FINISHED, the profile; whether
    // every file is written whole.
    bool write_files(bool finished);
    // A stop signal that ended a wait for the lock ends the campaign; true
    // when it is the first to.
    bool stopped_by(int signal);
    // Not every step planned was measured.
    bool partial() const { return kind->point(done).has_value(); }
    // Once the files are WRITTEN (or not): the journal ended, then standard
    // output, last, so that a reader of it that goes away costs no result.
    int finish(bool written);
    // resume --restore: the originals put back, the files and the chart of
    // what was measured, the journal ended.
    int restore_and_end();
    // FOUND: the kind found what it looked for and every file is written.
    // An interrupted campaign that put everything back says so and ends by
    // its signal.
    int end_status(bool found) const;

    std::unique_ptr<campaign_kind> kind;
    // Declared before the guard, so that the watchdog is closed before the
    // stop signals are let go, whichever way the campaign ends.
    std::optional<stop_signals> stop;
    hang_guard guard;
    failing_bits_place failing_place;  // removed before the end, which may be by a signal
    result_files files;
    std::vector<property*> props;
    std::vector<long long> originals;  // of props, their codes
    std::vector<bool> changed;         // per prop: written, not yet put back or kept
    std::string profile_header_lines;
    std::optional<progress_line> progress;
    point_result::kind ended = point_result::measured;
    int stop_signal = 0;
    std::size_t done = 0;   // the steps measured
    bool in_place = false;  // the board holds the settings of the point before
    bool left_changed = false;
};

int campaign::start(std::unique_ptr<campaign_kind> planned) {
    kind = std::move(planned);
    std::vector<long long> read;
    if (!command_ready(options()) || !confirmed(options(), kind->description(), kind->name) ||
        !open_files() || !read_locked(kind->properties(), &read))
        return tune_status::bad_input;
    begin(std::move(read));
    if (!start_guard(options(), props, originals, guard))
        return tune_status::bad_input;
    return run();
}

int campaign::resume(const std::string& path, resume_mode mode, kind_of_journal kind_of) {
    journal_contents journal;
    if (!open_journal(path, guard.journal, &journal))
        return tune_status::bad_input;
    // Its result files give the date the campaign started, not today's.
    set_campaign_date(journal.header.date);
    kind = kind_of(journal.header.command, path);
    // Carrying on reads every property first, as a new campaign does;
    // --restore only writes the originals back.
    const bool restore = mode == resume_mode::restore;
    std::vector<long long> journalled, now;
    if (!kind || !command_ready(options()) ||
        !journal_matches(guard.journal.path(), journal, kind->properties(), &journalled) ||
        (!restore && !read_locked(kind->properties(), &now)) || !open_files())
        return tune_status::bad_input;
    // Whatever temporary files the run that stopped left, also of results
    // that this run does not write again.
    for (const std::string& temporary : journal.temporaries)
        remove_temporaries(result_of_temporary(temporary));
    begin(std::move(journalled));
    return carry_on(journal, mode);
}

bool campaign::open_files() {
    return files.open(
        options(), [this](std::FILE* out) { kind->print_csv_header(out); }, &guard.journal);
}

void campaign::begin(std::vector<long long> known) {
    props = kind->properties();
    originals = std::move(known);
    changed.assign(props.size(), false);
    kind->begin(originals);
    std::vector<std::string> words = options().words;
    profile_header_lines = profile_header(static_cast<int>(words.size()), argv_of(words).data());
    stop.emplace();
    progress.emplace(stderr, isatty(STDERR_FILENO), kind->step);
}

// The journal's steps must be the kind's own, in order.
int campaign::carry_on(const journal_contents& journal, resume_mode mode) {
    const bool retry = mode == resume_mode::retry_hang;
    std::optional<campaign_point> in_flight;
    for (std::size_t step = 0; step < journal.steps.size(); ++step) {
        std::vector<outcome> results;
        if (!is_next_step(*kind, step, journal.steps[step], guard.journal.path(), &results))
            return tune_status::bad_input;
        if (journal.in_flight && step + 1 == journal.steps.size()) {
            in_flight = kind->point(step);
            if (retry)
                break;
        }
        record(step, results);
    }
    if (mode != resume_mode::restore && !arm_watchdog(options(), guard))
        return tune_status::bad_input;
    if (in_flight && !settle_in_flight(*in_flight, retry))
        return tune_status::not_done;
    if (!in_flight && retry)
        report("no %s was in flight when the %s stopped; carrying on", kind->step, kind->name);
    if (mode == resume_mode::restore)
        return restore_and_end();
    put_back_all();
    return run();
}

bool campaign::settle_in_flight(const campaign_point& point, bool retry) {
    report("%s %s (in flight when the run stopped)", point.named.c_str(),
           retry ? "measured again" : "counted as a hang");
    return retry ? guard.journal.stopped() : guard.journal.finished({outcome::hang});
}

int campaign::run() {
    for (std::size_t step = done; ended == point_result::measured; ++step) {
        const std::optional<campaign_point> point = kind->point(step);
        if (!point)
            break;
        measure(step, *point);
        if (ended == point_result::measured && point->puts_back)
            put_back_changed();
    }
    progress->clear();
    if (ended == point_result::measured && (stop_signal = stop->take()) != 0)
        ended = point_result::interrupted;
    kind->conclude(partial());
    // The files before anything is kept and before the journal ends: a run
    // killed after them is carried on by resume to the same end, and one
    // whose files are not all written puts everything back.
    const bool written = write_files(ended == point_result::measured);
    if (written && ended == point_result::measured && options().keep_centre)
        keep();
    put_back_changed();
    return finish(written);
}

void campaign::measure(std::size_t step, const campaign_point& point) {
    progress->show(point.shown, step + 1, kind->steps());
    mark(point.settings, true);
    const std::vector<setting> writes(point.settings.begin() + (in_place ? point.carried : 0),
                                      point.settings.end());
    in_place = true;
    test_options runs = options();
    if (point.runs)
        runs.runs = point.runs;
    const point_result got = measure_point(writes, point.journal, point.shown, runs, point.names,
                                           point.judged, failing_place, *stop, *progress, guard);
    ended = got.what;
    stop_signal = got.signal;
    if (got.what == point_result::measured)
        record(step, got.results);
}

void campaign::record(std::size_t step, const std::vector<outcome>& results) {
    kind->record(step, results, files.csv());
    files.csv_line_written();
    done = step + 1;
}

void campaign::mark(const std::vector<setting>& settings, bool as_changed) {
    for (const setting& each : settings)
        changed.at(std::find(props.begin(), props.end(), each.prop) - props.begin()) = as_changed;
}

// Either all that it keeps is written, or what was changed goes back.
void campaign::keep() {
    const std::vector<setting> kept = kind->kept();
    if (kept.empty() || !guard.keeping())
        return;
    mark(kept, true);
    int signal = 0;
    if (!write_locked(kept, guard.watchdog, &*stop, &signal)) {
        if (!stopped_by(signal))
            ended = point_result::write_failed;
        return;
    }
    mark(kept, false);
    kind->report_kept();
}

void campaign::put_back(std::size_t at) {
    changed[at] = false;
    in_place = false;
    const std::vector<setting> original = {{props[at], originals[at]}};
    int signal = 0;
    if (write_locked(original, guard.watchdog, &*stop, &signal) ||
        (stopped_by(signal) && write_locked(original, guard.watchdog, &*stop)))
        return;
    report("%s: left changed; it was %s", props[at]->name.c_str(),
           code_text(props[at], originals[at]).c_str());
    left_changed = true;
}

void campaign::put_back_changed() {
    for (std::size_t at = 0; at < props.size(); ++at)
        if (changed[at])
            put_back(at);
}

void campaign::put_back_all() {
    for (std::size_t at = 0; at < props.size(); ++at)
        put_back(at);
}

bool campaign::write_files(bool finished) {
    return files.finish(
        finished, kind->name, [this](std::FILE* out) { kind->print_csv_summary(out); },
        [this](std::FILE* out) { kind->print_svg(out); },
        [this](std::FILE* out) { kind->print_profile(out, profile_header_lines); });
}

bool campaign::stopped_by(int signal) {
    if (signal == 0 || ended == point_result::interrupted)
        return false;
    ended = point_result::interrupted;
    stop_signal = signal;
    return true;
}

int campaign::finish(bool written) {
    failing_place.remove();
    guard.close(ended != point_result::interrupted);
    kind->print_chart(stdout, terminal_columns(STDOUT_FILENO));
    kind->print_summary(stdout);
    std::fflush(stdout);
    return end_status(kind->found() && written && !guard.failed());
}

int campaign::restore_and_end() {
    put_back_all();
    kind->conclude(partial());
    write_files(false);
    kind->print_chart(stdout, terminal_columns(STDOUT_FILENO));
    guard.close(true);
    return left_changed     ? tune_status::left_changed
           : guard.failed() ? tune_status::not_done
                            : tune_status::ok;
}

int campaign::end_status(bool found) const {
    if (ended == point_result::interrupted) {
        report("interrupted by %s; %s", strsignal(stop_signal),
               left_changed ? "not everything restored" : kind->restored);
        if (!left_changed)
            stop_signals::die_of(stop_signal);
    }
    if (left_changed)
        return tune_status::left_changed;
    if (ended == point_result::not_started)
        return tune_status::bad_input;
    return ended == point_result::write_failed || !found ? tune_status::not_done : tune_status::ok;
}

}  // namespace

int run_campaign(std::unique_ptr<campaign_kind> kind) { return campaign().start(std::move(kind)); }

int resume_campaign(const std::string& path, resume_mode mode, kind_of_journal kind_of) {
    return campaign().resume(path, mode, kind_of);
}
