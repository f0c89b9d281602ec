// SPDX-License-Identifier: MIT
// sweep: find the values of a property for which a test command passes.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "runtime/exit_status.h"
#include "runtime/report.h"
#include "runtime/run_lock.h"
#include "runtime/stop_signals.h"
#include "tune/commands.h"
#include "tune/profile/board_io.h"
#include "tune/sweep/chart.h"
#include "tune/sweep/command_run.h"
#include "tune/sweep/consent.h"
#include "tune/sweep/progress.h"
#include "tune/sweep/svg.h"
#include "tune/sweep/whole_file.h"
#include "tune/sweep_options.h"
#include "tune/sweep_plan.h"
#include "tune/test_run.h"

namespace {

// Why a sweep ended before its last value.
enum class cut { none, signal, not_started, write_failed };

class sweep {
public:
    // The files, when given, are open already.
    sweep(const sweep_options& options, const sweep_plan& plan, std::FILE* csv, std::FILE* svg, whole_file* profile,
          std::string profile_header)
        : options(options),
          plan(plan),
          csv(csv),
          svg(svg),
          profile(profile),
          profile_header(std::move(profile_header)),
          progress(stderr, isatty(STDERR_FILENO)) {
        results.axis = plan.axis;
        results.group = plan.group;
    }

    // Returns the exit status, unless a stop signal ends the program.
    int run() {
        if (!read_originals()) {
            if (ended != cut::signal)
                return tune_status::bad_input;
            report("interrupted by %s; nothing written", strsignal(stop_signal));
            stop_signals::die_of(stop_signal);
        }
        for (std::size_t row = 0; row < plan.rows.size() && ended == cut::none; ++row) {
            results.rows.push_back({plan.rows[row]->name, {}, plan.settings[row], {}});
            long long original = 0;
            if (plan.rows[row]->axis_value_of(originals[row], &original))
                results.rows.back().original = original;
            for (std::size_t at = 0; at < plan.axis.size() && ended == cut::none; ++at)
                measure(row, at);
            // The next row runs with this one as it was.
            put_back(row);
        }
        progress.clear();
        if (ended == cut::none && (stop_signal = stop.take()) != 0)
            ended = cut::signal;
        bool every_window = true;
        for (std::size_t row = 0; row < results.rows.size(); ++row) {
            const sweep_window window = widest_window(results.rows[row].results);
            every_window = every_window && window.count > 0;
            if (ended == cut::none && options.keep_centre && window.count > 0)
                keep_centre(row, window_centre(window, plan.axis.values));
        }
        return finish(every_window);
    }

private:
    // Takes the lock; a stop signal that arrives while it waits ends the sweep.
    bool lock() {
        int signal = 0;
        if (take_run_lock(stop.set(), &signal))
            return true;
        if (signal) {
            stop_signal = signal;
            ended = cut::signal;
        }
        return false;
    }

    // Writes and reads back under the lock, which is free again afterwards so
    // that the command may run padkit itself.
    bool locked_write(property* prop, const std::string& value) {
        if (!lock())
            return false;
        std::string problem;
        const bool written = write_checked(prop, value, &problem);
        release_run_lock();
        if (!written)
            report("%s: %s", prop->name.c_str(), problem.c_str());
        return written;
    }

    bool read_originals() {
        if (!lock())
            return false;
        bool good = true;
        for (property* row : plan.rows) {
            originals.emplace_back();
            good = read_now(row, &originals.back());
            if (!good) {
                report("%s: unreadable; nothing written", row->name.c_str());
                break;
            }
        }
        release_run_lock();
        return good;
    }

    void measure(std::size_t row, std::size_t at) {
        property* prop = plan.rows[row];
        const std::string& setting = plan.settings[row][at];
        if ((stop_signal = stop.take()) != 0) {
            ended = cut::signal;
            return;
        }
        progress.show(prop->name + " = " + plan.axis.text_at(at), row * plan.axis.size() + at + 1,
                      plan.rows.size() * plan.axis.size());
        if (!locked_write(prop, setting)) {
            if (ended == cut::none)
                ended = cut::write_failed;
            return;
        }
        const environment names = {{"PADKIT_SWEEP_NAME", prop->name},
                                   {"PADKIT_SWEEP_VALUE", std::to_string(plan.axis.values[at])},
                                   {"PADKIT_SWEEP_SETTING", setting}};
        outcome result = outcome::pass;
        for (long long run = 0; run < options.runs && result == outcome::pass; ++run) {
            const command_result got =
                run_command(options.command, names, options.timeout_seconds, stop, [this] { progress.refresh(); });
            switch (got.what) {
            case command_result::passed:
                break;
            case command_result::failed:
                result = outcome::fail;
                break;
            case command_result::timed_out:
                result = outcome::timeout;
                break;
            case command_result::not_started:
                progress.clear();
                report("cannot run %s: %s", options.command.front().c_str(), std::strerror(got.detail));
                ended = cut::not_started;
                return;
            case command_result::interrupted:
                stop_signal = got.detail;
                ended = cut::signal;
                return;
            }
        }
        results.rows[row].results.push_back(result);
        // Each measured value reaches the file at once, so that a sweep cut
        // short keeps it.
        if (csv) {
            print_csv_line(csv, prop->name, plan.axis.text_at(at), result);
            file_written(csv, options.csv_path, &csv_written);
        }
    }

    void put_back(std::size_t row) {
        if (!locked_write(plan.rows[row], originals[row])) {
            report("%s: left changed; it was %s", plan.rows[row]->name.c_str(), originals[row].c_str());
            left_changed = true;
        }
    }

    void keep_centre(std::size_t row, std::size_t centre) {
        if (locked_write(plan.rows[row], plan.settings[row][centre]))
            report("%s: kept at the centre, %s", plan.rows[row]->name.c_str(),
                   value_with_setting(plan.axis, centre, plan.settings[row][centre]).c_str());
        else
            put_back(row);
    }

    // The files first, standard output last: a reader of the output that
    // goes away early costs no result.
    int finish(bool every_window) {
        bool svg_written = true;
        if (svg) {
            print_svg(svg, {results}, "padkit-tune sweep");
            file_written(svg, options.svg_path, &svg_written);
        }
        const bool profile_written = write_profile();
        print_chart(stdout, results, terminal_columns(STDOUT_FILENO));
        std::fflush(stdout);
        if (ended == cut::signal) {
            report("interrupted by %s; %s", strsignal(stop_signal),
                   left_changed ? "not everything restored" : "every swept property restored");
            if (!left_changed)
                stop_signals::die_of(stop_signal);
        }
        if (left_changed)
            return tune_status::left_changed;
        if (ended == cut::not_started)
            return tune_status::bad_input;
        return ended == cut::write_failed || !every_window || !csv_written || !svg_written || !profile_written
                   ? tune_status::not_done
                   : tune_status::ok;
    }

    // Only a sweep that measured every value gives a profile.
    bool write_profile() {
        if (!profile)
            return true;
        if (ended != cut::none) {
            profile->discard();
            report("%s: not written; the sweep did not finish", options.profile_path.c_str());
            return false;
        }
        print_profile(profile->stream(), results, profile_header);
        if (profile->commit())
            return true;
        report("cannot write %s: %s", options.profile_path.c_str(), std::strerror(errno));
        return false;
    }

    // Flushes the file; the first time it could not be written, says so
    // and clears *good.
    void file_written(std::FILE* file, const std::string& path, bool* good) {
        if (std::fflush(file) == 0 && !std::ferror(file))
            return;
        if (*good)
            report("cannot write %s: %s", path.c_str(), std::strerror(errno));
        *good = false;
    }

    const sweep_options& options;
    const sweep_plan& plan;
    std::FILE* csv;
    std::FILE* svg;
    whole_file* profile;
    const std::string profile_header;
    const stop_signals stop;
    progress_line progress;
    sweep_results results;
    std::vector<std::string> originals;
    cut ended = cut::none;
    int stop_signal = 0;
    bool left_changed = false;
    bool csv_written = true;
};

std::string range_text(const sweep_plan& plan) {
    const value_axis& axis = plan.axis;
    return axis.text(axis.values.front()) + ".." + axis.text(axis.values.back()) + " (" + std::to_string(axis.size()) +
           (axis.size() == 1 ? " value)" : " values)");
}

bool confirmed(const sweep_options& options, const sweep_plan& plan) {
    if (options.assume_yes)
        return true;
    const std::string warning = "WARNING! This sweeps " + options.name + " over " + range_text(plan) +
                                " on the running board. A value outside its working window can hang the "
                                "system or corrupt memory and storage.";
    switch (ask_consent(warning, stdin, isatty(STDIN_FILENO), stderr)) {
    case consent::given:
        return true;
    case consent::refused:
        report("sweep cancelled; nothing written");
        return false;
    case consent::no_terminal:
        report("standard input is not a terminal; give -y to sweep without asking");
        return false;
    }
    return false;
}

}  // namespace

int sweep_command(int argc, char** argv) {
    sweep_options options;
    switch (parse_sweep_options(argc, argv, options)) {
    case sweep_request::help:
        print_usage(stdout);
        return tune_status::ok;
    case sweep_request::bad:
        return tune_status::bad_input;
    case sweep_request::run:
        break;
    }
    sweep_plan plan;
    if (!plan_sweep(options, &plan))
        return tune_status::bad_input;
    if (!command_exists(options.command.front())) {
        report("%s: no such command, or not executable; nothing written", options.command.front().c_str());
        return tune_status::bad_input;
    }
    if (!confirmed(options, plan))
        return tune_status::bad_input;
    file_ptr csv(nullptr, std::fclose), svg(nullptr, std::fclose);
    if (!open_output(options.csv_path, &csv, print_csv_header) || !open_output(options.svg_path, &svg, nullptr))
        return tune_status::bad_input;
    whole_file profile;
    if (!options.profile_path.empty() && !profile.open(options.profile_path)) {
        report("cannot write %s: %s; nothing written", options.profile_path.c_str(), std::strerror(errno));
        return tune_status::bad_input;
    }
    return sweep(options, plan, csv.get(), svg.get(), options.profile_path.empty() ? nullptr : &profile,
                 profile_header(argc, argv))
        .run();
}
