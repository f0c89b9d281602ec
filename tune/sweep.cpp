// SPDX-License-Identifier: MIT
// sweep: find the values of a property for which a test command passes.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "runtime/exit_status.h"
#include "runtime/report.h"
#include "runtime/stop_signals.h"
#include "tune/board/board_io.h"
#include "tune/commands.h"
#include "tune/resume.h"
#include "tune/sweep/chart.h"
#include "tune/sweep/facts.h"
#include "tune/sweep/profile_header.h"
#include "tune/sweep/progress.h"
#include "tune/sweep/svg.h"
#include "tune/sweep_options.h"
#include "tune/sweep_plan.h"
#include "tune/test_run.h"
#include "tune/usage/usage.h"

namespace {

class sweep {
public:
    // The files, when given, are open already; ORIGINALS are the rows'. A
    // resumed sweep is given the steps its journal says were measured (add)
    // before it runs.
    sweep(const sweep_options& options, const sweep_plan& plan, std::FILE* csv, std::FILE* svg,
          whole_file* profile, std::string profile_header, hang_guard& guard,
          std::vector<long long> originals, facts about)
        : options(options),
          plan(plan),
          csv(csv),
          svg(svg),
          profile(profile),
          profile_header(std::move(profile_header)),
          guard(guard),
          originals(std::move(originals)),
          about(std::move(about)),
          progress(stderr, isatty(STDERR_FILENO)) {
        results.axis = plan.axis;
        results.group = plan.group;
    }

    // The point a step of the journal must name: the row and its axis value.
    journal_point point(std::size_t step) const {
        return {plan.rows[step / plan.axis.size()]->name,
                std::to_string(plan.axis.values[step % plan.axis.size()])};
    }

    // Steps go row by row, each over the axis.
    void add(std::size_t step, outcome result) {
        const std::size_t row = step / plan.axis.size();
        if (step % plan.axis.size() == 0) {
            results.rows.push_back({plan.rows[row]->name, {}, plan.settings[row], {}});
            long long original = 0;
            if (plan.rows[row]->domain().axis_value_of(originals[row], &original))
                results.rows.back().original = original;
        }
        results.rows.back().results.push_back(result);
        done = step + 1;
        // Each measured value reaches the file at once, so that a sweep cut
        // short keeps it.
        if (csv) {
            print_csv_line(csv, results.rows.back().name,
                           plan.axis.text_at(step % plan.axis.size()), result);
            file_written(csv, options.csv_path, &csv_written);
        }
    }

    // Returns the exit status, unless a stop signal ends the program.
    int run() {
        const std::size_t values = plan.axis.size();
        for (std::size_t step = done;
             step < plan.rows.size() * values && ended == point_result::measured; ++step) {
            measure(step);
            // The next row runs with this one as it was.
            if ((step + 1) % values == 0 || ended != point_result::measured)
                put_back(step / values);
        }
        progress.clear();
        if (ended == point_result::measured && (stop_signal = stop.take()) != 0)
            ended = point_result::interrupted;
        std::vector<sweep_window> windows;
        for (const sweep_row& row : results.rows)
            windows.push_back(widest_window(row.results));
        const auto has_window = [](const sweep_window& window) { return window.count > 0; };
        if (ended == point_result::measured && options.keep_centre &&
            std::any_of(windows.begin(), windows.end(), has_window) && guard.keeping())
            for (std::size_t row = 0; row < windows.size(); ++row)
                if (has_window(windows[row]))
                    keep_centre(row, window_centre(windows[row], plan.axis.values));
        return finish(std::all_of(windows.begin(), windows.end(), has_window));
    }

    // Every row back at its original value, as before the first write.
    void put_back_all() {
        for (std::size_t row = 0; row < plan.rows.size(); ++row)
            put_back(row);
    }

    // resume --restore: the originals put back, the chart so far, the journal ended.
    int restore() {
        put_back_all();
        note_partial();
        print_chart(stdout, results, terminal_columns(STDOUT_FILENO));
        guard.close(true);
        return left_changed     ? tune_status::left_changed
               : guard.failed() ? tune_status::not_done
                                : tune_status::ok;
    }

private:
    void measure(std::size_t step) {
        const std::size_t row = step / plan.axis.size(), at = step % plan.axis.size();
        property* prop = plan.rows[row];
        const std::string& value = plan.settings[row][at];
        progress.show(prop->name + " = " + plan.axis.text_at(at), step + 1,
                      plan.rows.size() * plan.axis.size());
        const environment names = {{"PADKIT_SWEEP_NAME", prop->name},
                                   {"PADKIT_SWEEP_VALUE", std::to_string(plan.axis.values[at])},
                                   {"PADKIT_SWEEP_SETTING", value}};
        const point_result got = test_point({{prop, plan.codes[row][at]}}, point(step), options,
                                            names, stop, progress, guard);
        ended = got.what;
        stop_signal = got.signal;
        if (got.what == point_result::measured)
            add(step, got.result);
    }

    // A first stop signal while it waits for the lock ends the sweep once the
    // row is back; a second one leaves the row changed.
    void put_back(std::size_t row) {
        const std::vector<setting> original = {{plan.rows[row], originals[row]}};
        int signal = 0;
        if (write_locked(original, guard.watchdog, &stop, &signal))
            return;
        if (signal != 0 && ended != point_result::interrupted) {
            ended = point_result::interrupted;
            stop_signal = signal;
            if (write_locked(original, guard.watchdog, &stop))
                return;
        }
        report("%s: left changed; it was %s", plan.rows[row]->name.c_str(),
               code_text(plan.rows[row], originals[row]).c_str());
        left_changed = true;
    }

    void keep_centre(std::size_t row, std::size_t centre) {
        if (write_locked({{plan.rows[row], plan.codes[row][centre]}}, guard.watchdog, &stop))
            report("%s: kept at the centre, %s", plan.rows[row]->name.c_str(),
                   value_with_setting(plan.axis, centre, plan.settings[row][centre]).c_str());
        else
            put_back(row);
    }

    // The files first, standard output last: a reader of the output that
    // goes away early costs no result.
    int finish(bool every_window) {
        guard.close(ended != point_result::interrupted);
        note_partial();
        if (csv) {
            print_csv_summary(csv, results);
            file_written(csv, options.csv_path, &csv_written);
        }
        bool svg_written = true;
        if (svg) {
            print_svg(svg, {results}, about, mark::common_centre);
            file_written(svg, options.svg_path, &svg_written);
        }
        const bool profile_written =
            write_profile(profile, options.profile_path, ended == point_result::measured, "sweep",
                          [this](std::FILE* out) { print_profile(out, results, profile_header); });
        print_chart(stdout, results, terminal_columns(STDOUT_FILENO));
        std::fflush(stdout);
        return end_status(
            ended, stop_signal, left_changed,
            every_window && csv_written && svg_written && profile_written && !guard.failed(),
            "every swept property restored");
    }

    void note_partial() { results.partial = done < plan.rows.size() * plan.axis.size(); }

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
    hang_guard& guard;
    const std::vector<long long> originals;
    const facts about;
    const stop_signals stop;
    progress_line progress;
    sweep_results results;
    point_result::kind ended = point_result::measured;
    int stop_signal = 0;
    std::size_t done = 0;  // the steps measured
    bool left_changed = false;
    bool csv_written = true;
};

std::string range_text(const sweep_plan& plan) {
    const value_axis& axis = plan.axis;
    return axis.text(axis.values.front()) + ".." + axis.text(axis.values.back()) + " (" +
           std::to_string(axis.size()) + (axis.size() == 1 ? " value)" : " values)");
}

facts sweep_facts(const sweep_options& options, const sweep_plan& plan) {
    return run_facts("sweep", options.name + " " + plan.axis.swept_text(), options.command);
}

// What a new sweep and a resumed one check before anything is written.
bool ready(const sweep_options& options, sweep_plan* plan) {
    return plan_sweep(options, plan) && command_ready(options);
}

}  // namespace

int sweep_command(int argc, char** argv) {
    sweep_options options;
    switch (parse_sweep_options(argc, argv, options)) {
    case sweep_request::help: print_usage(stdout); return tune_status::ok;
    case sweep_request::bad: return tune_status::bad_input;
    case sweep_request::run: break;
    }
    sweep_plan plan;
    if (!ready(options, &plan))
        return tune_status::bad_input;
    const std::string warning =
        "WARNING! This sweeps " + options.name + " over " + range_text(plan) +
        " on the running board. A value outside its working window can hang the "
        "system or corrupt memory and storage.";
    if (!confirmed(options, warning, "sweep"))
        return tune_status::bad_input;
    file_ptr csv(nullptr, std::fclose), svg(nullptr, std::fclose);
    whole_file profile;
    const facts about = sweep_facts(options, plan);
    const auto header = [&](std::FILE* out) { print_csv_header(out, about); };
    if (!open_output(options.csv_path, &csv, header) ||
        !open_output(options.svg_path, &svg, nullptr) || !open_profile(options, &profile))
        return tune_status::bad_input;
    std::vector<long long> originals;
    hang_guard guard;
    if (!start_guard(options, plan.rows, &originals, guard))
        return tune_status::bad_input;
    return sweep(options, plan, csv.get(), svg.get(),
                 options.profile_path.empty() ? nullptr : &profile, profile_header(argc, argv),
                 guard, std::move(originals), about)
        .run();
}

int resume_sweep(hang_guard& guard, const journal_contents& journal, bool restore) {
    sweep_options options;
    std::vector<std::string> words = journal.header.command;
    if (parse_sweep_options(static_cast<int>(words.size()), argv_of(words).data(), options) !=
        sweep_request::run)
        return tune_status::bad_input;
    sweep_plan plan;
    std::vector<long long> originals;
    if (!ready(options, &plan) ||
        !journal_matches(guard.journal.path(), journal, plan.rows, &originals))
        return tune_status::bad_input;
    file_ptr csv(nullptr, std::fclose), svg(nullptr, std::fclose);
    whole_file profile;
    const facts about = sweep_facts(options, plan);
    const auto header = [&](std::FILE* out) { print_csv_header(out, about); };
    if (!restore &&
        (!open_output(options.csv_path, &csv, header) ||
         !open_output(options.svg_path, &svg, nullptr) || !open_profile(options, &profile)))
        return tune_status::bad_input;
    sweep resumed(options, plan, csv.get(), svg.get(),
                  options.profile_path.empty() || restore ? nullptr : &profile,
                  profile_header(static_cast<int>(words.size()), argv_of(words).data()), guard,
                  originals, about);
    return carry_on(resumed, plan.rows.size() * plan.axis.size(), "value", options, guard, journal,
                    restore);
}
