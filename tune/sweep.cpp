// SPDX-License-Identifier: MIT
// sweep: find the values of a property for which a test command passes.
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
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
#include "tune/sweep_options.h"
#include "tune/sweep_plan.h"

namespace {

using file_ptr = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// Why a sweep ended before its last value.
enum class cut { none, signal, not_started, write_failed };

// Writes and reads back under the lock, which is free again afterwards so
// that the command may run padkit itself.
bool locked_write(property* prop, const std::string& value) {
    if (!take_run_lock())
        return false;
    std::string problem;
    const bool written = write_checked(prop, value, &problem);
    release_run_lock();
    if (!written)
        report("%s: %s", prop->name.c_str(), problem.c_str());
    return written;
}

bool read_originals(const std::vector<property*>& rows, std::vector<std::string>* originals) {
    if (!take_run_lock())
        return false;
    bool good = true;
    for (property* row : rows) {
        originals->emplace_back();
        good = read_now(row, &originals->back());
        if (!good) {
            report("%s: unreadable; nothing written", row->name.c_str());
            break;
        }
    }
    release_run_lock();
    return good;
}

class sweep {
public:
    // The files, when given, are open already.
    sweep(const sweep_options& options, const sweep_plan& plan, std::FILE* csv, std::FILE* svg)
        : options(options), plan(plan), csv(csv), svg(svg), progress(stderr, isatty(STDERR_FILENO)) {
        results.axis = plan.axis;
    }

    // Returns the exit status, unless a stop signal ends the program.
    int run() {
        if (!read_originals(plan.rows, &originals))
            return tune_status::bad_input;
        for (std::size_t row = 0; row < plan.rows.size() && ended == cut::none; ++row) {
            results.rows.push_back({plan.rows[row]->name, {}});
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
                keep_centre(row, plan.axis[window_centre(window, plan.axis)]);
        }
        return finish(every_window);
    }

private:
    void measure(std::size_t row, std::size_t at) {
        property* prop = plan.rows[row];
        const long long value = plan.axis[at];
        if ((stop_signal = stop.take()) != 0) {
            ended = cut::signal;
            return;
        }
        progress.show(prop->name + " = " + std::to_string(value), row * plan.axis.size() + at + 1,
                      plan.rows.size() * plan.axis.size());
        if (!locked_write(prop, std::to_string(value))) {
            ended = cut::write_failed;
            return;
        }
        const environment names = {{"PADKIT_SWEEP_NAME", prop->name}, {"PADKIT_SWEEP_VALUE", std::to_string(value)}};
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
    }

    void put_back(std::size_t row) {
        if (!locked_write(plan.rows[row], originals[row])) {
            report("%s: left changed; it was %s", plan.rows[row]->name.c_str(), originals[row].c_str());
            left_changed = true;
        }
    }

    void keep_centre(std::size_t row, long long centre) {
        if (locked_write(plan.rows[row], std::to_string(centre)))
            report("%s: kept at the centre, %lld", plan.rows[row]->name.c_str(), centre);
        else
            put_back(row);
    }

    int finish(bool every_window) {
        print_chart(stdout, results);
        std::fflush(stdout);
        const bool csv_written = write_file(csv, options.csv_path, print_csv);
        const bool svg_written = write_file(svg, options.svg_path, print_svg);
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
        return ended == cut::write_failed || !every_window || !csv_written || !svg_written ? tune_status::not_done : tune_status::ok;
    }

    bool write_file(std::FILE* file, const std::string& path, void (*print)(std::FILE*, const sweep_results&)) {
        if (!file)
            return true;
        print(file, results);
        if (std::fflush(file) == 0 && !std::ferror(file))
            return true;
        report("cannot write %s: %s", path.c_str(), std::strerror(errno));
        return false;
    }

    const sweep_options& options;
    const sweep_plan& plan;
    std::FILE* csv;
    std::FILE* svg;
    const stop_signals stop;
    progress_line progress;
    sweep_results results;
    std::vector<std::string> originals;
    cut ended = cut::none;
    int stop_signal = 0;
    bool left_changed = false;
};

std::string range_text(const sweep_plan& plan) {
    return std::to_string(plan.axis.front()) + ".." + std::to_string(plan.axis.back()) + " (" +
           std::to_string(plan.axis.size()) + (plan.axis.size() == 1 ? " value)" : " values)");
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

// Opened before anything is written, so that a bad path costs nothing;
// close-on-exec, since the test command has no business with it.
bool open_output(const std::string& path, file_ptr* file) {
    if (path.empty())
        return true;
    file->reset(std::fopen(path.c_str(), "we"));
    if (*file)
        return true;
    report("cannot write %s: %s; nothing written", path.c_str(), std::strerror(errno));
    return false;
}

}  // namespace

int sweep_command(int argc, char** argv) {
    sweep_options options;
    switch (parse_sweep_options(argc, argv, options)) {
    case sweep_request::help:
        print_usage(stdout);
        return 0;
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
    if (!open_output(options.csv_path, &csv) || !open_output(options.svg_path, &svg))
        return tune_status::bad_input;
    return sweep(options, plan, csv.get(), svg.get()).run();
}
