// SPDX-License-Identifier: MIT
// sweep: find the values of a property for which a test command passes.
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>
#include <string>
#include <vector>

#include "runtime/exit_status.h"
#include "runtime/report.h"
#include "runtime/stop_signals.h"
#include "tune/commands.h"
#include "tune/resume.h"
#include "tune/sweep/chart.h"
#include "tune/sweep/progress.h"
#include "tune/sweep/svg.h"
#include "tune/sweep_options.h"
#include "tune/sweep_plan.h"
#include "tune/test_point.h"

namespace {

class sweep {
public:
    // The files, when given, are open already. A resumed sweep starts with
    // what its journal says was measured; a new one with no rows.
    sweep(const sweep_options& options, const sweep_plan& plan, std::FILE* csv, std::FILE* svg, hang_guard& guard,
          std::vector<std::string> originals, sweep_results done = {})
        : options(options), plan(plan), csv(csv), svg(svg), guard(guard), originals(std::move(originals)),
          progress(stderr, isatty(STDERR_FILENO)), results(std::move(done)) {
        results.axis = plan.axis;
    }

    // Returns the exit status, unless a stop signal ends the program.
    int run() {
        const std::size_t values = plan.axis.size(), steps = plan.rows.size() * values;
        for (std::size_t step = measured_steps(); step < steps && ended == point_result::measured; ++step) {
            const std::size_t row = step / values, at = step % values;
            if (at == 0)
                results.rows.push_back({plan.rows[row]->name, {}});
            measure(row, at);
            // The next row runs with this one as it was.
            if (at + 1 == values || ended != point_result::measured)
                put_back(row);
        }
        progress.clear();
        if (ended == point_result::measured && (stop_signal = stop.take()) != 0)
            ended = point_result::interrupted;
        bool every_window = true;
        for (std::size_t row = 0; row < results.rows.size(); ++row) {
            const sweep_window window = widest_window(results.rows[row].results);
            every_window = every_window && window.count > 0;
            if (ended == point_result::measured && options.keep_centre && window.count > 0)
                keep_centre(row, plan.axis[window_centre(window, plan.axis)]);
        }
        return finish(every_window);
    }

    // Every row back at its original value, as before the first write.
    void put_back_all() {
        for (std::size_t row = 0; row < plan.rows.size(); ++row)
            put_back(row);
    }

    // resume --restore: the originals put back, the chart so far, the journal ended.
    int restore() {
        put_back_all();
        print_chart(stdout, results);
        guard.close(true);
        return left_changed ? tune_status::left_changed : guard.failed() ? tune_status::not_done : tune_status::ok;
    }

private:
    std::size_t measured_steps() const {
        std::size_t steps = 0;
        for (const sweep_row& row : results.rows)
            steps += row.results.size();
        return steps;
    }

    void measure(std::size_t row, std::size_t at) {
        property* prop = plan.rows[row];
        const std::string value = std::to_string(plan.axis[at]);
        progress.show(prop->name + " = " + value, row * plan.axis.size() + at + 1, plan.rows.size() * plan.axis.size());
        const environment names = {{"PADKIT_SWEEP_NAME", prop->name}, {"PADKIT_SWEEP_VALUE", value}};
        const point_result got = test_point({{prop, value}}, {prop->name, value}, options, names, stop, progress, guard);
        ended = got.what;
        stop_signal = got.signal;
        if (got.what == point_result::measured)
            results.rows[row].results.push_back(got.result);
    }

    void put_back(std::size_t row) {
        if (!write_locked({{plan.rows[row], originals[row]}})) {
            report("%s: left changed; it was %s", plan.rows[row]->name.c_str(), originals[row].c_str());
            left_changed = true;
        }
    }

    void keep_centre(std::size_t row, long long centre) {
        if (write_locked({{plan.rows[row], std::to_string(centre)}}))
            report("%s: kept at the centre, %lld", plan.rows[row]->name.c_str(), centre);
        else
            put_back(row);
    }

    int finish(bool every_window) {
        guard.close(ended != point_result::interrupted);
        print_chart(stdout, results);
        std::fflush(stdout);
        const bool csv_written = write_file(csv, options.csv_path, print_csv);
        const bool svg_written = write_file(svg, options.svg_path, print_svg);
        if (ended == point_result::interrupted) {
            report("interrupted by %s; %s", strsignal(stop_signal),
                   left_changed ? "not everything restored" : "every swept property restored");
            if (!left_changed)
                stop_signals::die_of(stop_signal);
        }
        if (left_changed)
            return tune_status::left_changed;
        if (ended == point_result::not_started)
            return tune_status::bad_input;
        return ended == point_result::write_failed || !every_window || !csv_written || !svg_written || guard.failed()
                   ? tune_status::not_done
                   : tune_status::ok;
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
    hang_guard& guard;
    const std::vector<std::string> originals;
    const stop_signals stop;
    progress_line progress;
    sweep_results results;
    point_result::kind ended = point_result::measured;
    int stop_signal = 0;
    bool left_changed = false;
};

std::string range_text(const sweep_plan& plan) {
    return std::to_string(plan.axis.front()) + ".." + std::to_string(plan.axis.back()) + " (" +
           std::to_string(plan.axis.size()) + (plan.axis.size() == 1 ? " value)" : " values)");
}

// What a new sweep and a resumed one check before anything is written.
bool ready(const sweep_options& options, sweep_plan* plan) {
    return plan_sweep(options, plan) && command_ready(options);
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
    if (!ready(options, &plan))
        return tune_status::bad_input;
    const std::string warning = "WARNING! This sweeps " + options.name + " over " + range_text(plan) +
                                " on the running board. A value outside its working window can hang the "
                                "system or corrupt memory and storage.";
    if (!confirmed(options, warning, "sweep"))
        return tune_status::bad_input;
    file_ptr csv(nullptr, std::fclose), svg(nullptr, std::fclose);
    if (!open_output(options.csv_path, &csv) || !open_output(options.svg_path, &svg))
        return tune_status::bad_input;
    std::vector<std::string> originals;
    hang_guard guard;
    if (!start_guard(options, plan.rows, &originals, guard))
        return tune_status::bad_input;
    return sweep(options, plan, csv.get(), svg.get(), guard, std::move(originals)).run();
}

int resume_sweep(hang_guard& guard, const journal_contents& journal, bool restore) {
    sweep_options options;
    std::vector<std::string> words = journal.header.command;
    if (parse_sweep_options(static_cast<int>(words.size()), argv_of(words).data(), options) != sweep_request::run)
        return tune_status::bad_input;
    sweep_plan plan;
    if (!ready(options, &plan) || !journal_matches(guard.journal.path(), journal, plan.rows))
        return tune_status::bad_input;
    // Steps in the order the sweep visits them: row by row, each over the axis.
    sweep_results done;
    const std::size_t values = plan.axis.size();
    for (std::size_t step = 0; step < journal.steps.size(); ++step) {
        const std::size_t row = step / values, at = step % values;
        if (row >= plan.rows.size() ||
            journal.steps[step].point != journal_point{plan.rows[row]->name, std::to_string(plan.axis[at])}) {
            report("%s:%zu: not the next value of this sweep; nothing written", guard.journal.path().c_str(),
                   journal.steps[step].line);
            return tune_status::bad_input;
        }
        if (at == 0)
            done.rows.push_back({plan.rows[row]->name, {}});
        done.rows.back().results.push_back(journal.steps[step].result);
    }
    file_ptr csv(nullptr, std::fclose), svg(nullptr, std::fclose);
    if (!restore && (!open_output(options.csv_path, &csv) || !open_output(options.svg_path, &svg) ||
                     !arm_watchdog(options, guard)))
        return tune_status::bad_input;
    if (journal.in_flight && !guard.journal.finished(outcome::hang))
        return tune_status::not_done;
    sweep resumed(options, plan, csv.get(), svg.get(), guard, originals_of(journal), std::move(done));
    if (restore)
        return resumed.restore();
    resumed.put_back_all();
    return resumed.run();
}
