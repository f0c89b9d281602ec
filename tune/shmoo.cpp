// SPDX-License-Identifier: MIT
// shmoo: two properties against each other, the region where a test command
// passes and the point with the most room around it.
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "runtime/exit_status.h"
#include "runtime/report.h"
#include "runtime/stop_signals.h"
#include "tune/commands.h"
#include "tune/sweep/grid_chart.h"
#include "tune/sweep/grid_svg.h"
#include "tune/sweep_options.h"
#include "tune/resume.h"
#include "tune/sweep_plan.h"
#include "tune/test_point.h"

namespace {

// Beyond this a grid is a typing mistake rather than a shmoo.
constexpr std::size_t max_shmoo_points = 4096;

// One axis of the shmoo: its property and its values in visiting order.
struct shmoo_axis {
    property* prop = nullptr;
    std::vector<long long> visits;
    std::string original;  // as padkit shows it

    std::string setting(long long value) const { return std::to_string(value); }
    // The position of a visited value among the values rising.
    std::size_t position(std::size_t visit) const {
        return visits.front() <= visits.back() ? visit : visits.size() - 1 - visit;
    }
    grid_axis rising() const {
        grid_axis axis{prop->name, visits, false};
        std::sort(axis.values.begin(), axis.values.end());
        return axis;
    }
};

bool plan_axis(const swept_range& range, shmoo_axis* axis) {
    if (const auto* composite = dynamic_cast<property_set*>(property::get_property(range.name))) {
        std::string members;
        for (const std::string& member : composite->members)
            members += (members.empty() ? "" : ", ") + member;
        report("%s is a composite of %s; a shmoo takes one of them; nothing written", range.name.c_str(),
               members.c_str());
        return false;
    }
    sweep_plan plan;
    if (!plan_sweep(range, &plan))
        return false;
    axis->prop = plan.rows.front();
    axis->visits = plan.axis;
    return true;
}

std::string range_text(const shmoo_axis& axis) {
    return axis.prop->name + " over " + std::to_string(axis.visits.front()) + ".." +
           std::to_string(axis.visits.back()) + " (" + std::to_string(axis.visits.size()) +
           (axis.visits.size() == 1 ? " value)" : " values)");
}

// What a new shmoo and a resumed one check before anything is written.
bool ready(const shmoo_options& options, shmoo_axis* x, shmoo_axis* y) {
    if (!plan_axis(options.x, x) || !plan_axis(options.y, y))
        return false;
    if (x->prop == y->prop) {
        report("X and Y are both %s; a shmoo takes two different properties", x->prop->name.c_str());
        return false;
    }
    const std::size_t points = x->visits.size() * y->visits.size();
    if (points > max_shmoo_points) {
        report("%zu points (%zu by %zu); a shmoo takes at most %zu", points, x->visits.size(), y->visits.size(),
               max_shmoo_points);
        return false;
    }
    return command_ready(options);
}

// Where the original value lies on the rising axis, if it is one of its values.
std::optional<std::size_t> original_position(const grid_axis& axis, const std::string& original) {
    for (std::size_t at = 0; at < axis.values.size(); ++at)
        if (std::to_string(axis.values[at]) == original)
            return at;
    return std::nullopt;
}

// The width of the terminal on standard output; 0 when it is none.
std::size_t terminal_width() {
    winsize size{};
    return isatty(STDOUT_FILENO) && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

class shmoo {
public:
    // ORIGINALS are X's and Y's. A resumed shmoo starts with the points its
    // journal says were measured, in visiting order.
    shmoo(const shmoo_options& options, shmoo_axis x, shmoo_axis y, std::FILE* csv, std::FILE* svg, hang_guard& guard,
          const std::vector<std::string>& originals)
        : options(options), x(std::move(x)), y(std::move(y)), csv(csv), svg(svg), guard(guard),
          progress(stderr, isatty(STDERR_FILENO), "point"), results(this->x.rising(), this->y.rising()) {
        this->x.original = results.original_x = originals[0];
        this->y.original = results.original_y = originals[1];
        const std::optional<std::size_t> original_x = original_position(results.x, this->x.original),
                                         original_y = original_position(results.y, this->y.original);
        if (original_x && original_y)
            results.original = grid_point{*original_x, *original_y};
        if (csv)
            print_grid_csv_header(csv);
    }

    // The point a step of the journal must name: the values of X and Y.
    journal_point point(std::size_t step) const {
        return {std::to_string(x.visits[step % x.visits.size()]), std::to_string(y.visits[step / x.visits.size()])};
    }

    void add(std::size_t step, outcome result) {
        const std::size_t row = step / x.visits.size(), column = step % x.visits.size();
        const grid_point at{x.position(column), y.position(row)};
        results.cells[at.y][at.x] = result;
        if (csv) {
            print_grid_csv_point(csv, results, at);
            std::fflush(csv);
        }
        done = step + 1;
    }

    // Returns the exit status, unless a stop signal ends the program.
    int run() {
        for (std::size_t step = done; step < x.visits.size() * y.visits.size() && ended == point_result::measured;
             ++step)
            measure(step / x.visits.size(), step % x.visits.size());
        progress.clear();
        if (ended == point_result::measured && (stop_signal = stop.take()) != 0)
            ended = point_result::interrupted;
        const std::optional<safest_point> safest = find_safest(results, results.original);
        if (ended == point_result::measured && options.keep_centre && safest)
            keep(*safest);
        else
            put_back();
        return finish(safest);
    }

    // Both settings back at their originals, whatever a run before left.
    void put_back_all() {
        changed = true;
        put_back();
    }

    // resume --restore: the originals put back, the chart so far, the journal ended.
    int restore() {
        put_back_all();
        print_grid_chart(stdout, results, find_safest(results, results.original), terminal_width());
        guard.close(true);
        return left_changed ? tune_status::left_changed : guard.failed() ? tune_status::not_done : tune_status::ok;
    }

private:
    void measure(std::size_t row, std::size_t column) {
        const long long x_value = x.visits[column], y_value = y.visits[row];
        std::vector<setting> changes;
        // The slow one, a voltage say, changes once a row.
        if (column == 0)
            changes.push_back({y.prop, y.setting(y_value)});
        changes.push_back({x.prop, x.setting(x_value)});
        changed = true;
        const std::size_t step = row * x.visits.size() + column;
        progress.show(x.prop->name + " = " + std::to_string(x_value) + ", " + y.prop->name + " = " +
                          std::to_string(y_value),
                      step + 1, x.visits.size() * y.visits.size());
        const environment names = {{"PADKIT_SHMOO_X_NAME", x.prop->name},
                                   {"PADKIT_SHMOO_X_VALUE", std::to_string(x_value)},
                                   {"PADKIT_SHMOO_X_SETTING", x.setting(x_value)},
                                   {"PADKIT_SHMOO_Y_NAME", y.prop->name},
                                   {"PADKIT_SHMOO_Y_VALUE", std::to_string(y_value)},
                                   {"PADKIT_SHMOO_Y_SETTING", y.setting(y_value)}};
        const point_result got = test_point(changes, point(step), options, names, stop, progress, guard);
        ended = got.what;
        stop_signal = got.signal;
        if (got.what == point_result::measured)
            add(step, got.result);
    }

    void put_back() {
        if (!changed)
            return;
        for (const shmoo_axis* axis : {&x, &y})
            if (!write_locked({{axis->prop, axis->original}})) {
                report("%s: left changed; it was %s", axis->prop->name.c_str(), axis->original.c_str());
                left_changed = true;
            }
    }

    void keep(const safest_point& safest) {
        const std::string x_setting = x.setting(results.x.values[safest.at.x]),
                          y_setting = y.setting(results.y.values[safest.at.y]);
        if (!write_locked({{y.prop, y_setting}, {x.prop, x_setting}})) {
            put_back();
            return;
        }
        report("%s: kept at the safest point, %s", x.prop->name.c_str(), x_setting.c_str());
        report("%s: kept at the safest point, %s", y.prop->name.c_str(), y_setting.c_str());
    }

    int finish(const std::optional<safest_point>& safest) {
        guard.close(ended != point_result::interrupted);
        print_grid_chart(stdout, results, safest, terminal_width());
        for (const std::string& line : grid_summary(results, safest))
            std::printf("%s\n", line.c_str());
        std::fflush(stdout);
        bool files_written = !csv || (std::fflush(csv) == 0 && !std::ferror(csv));
        if (!files_written)
            report("cannot write %s: %s", options.csv_path.c_str(), std::strerror(errno));
        if (svg) {
            print_grid_svg(svg, results, safest);
            if (std::fflush(svg) != 0 || std::ferror(svg)) {
                report("cannot write %s: %s", options.svg_path.c_str(), std::strerror(errno));
                files_written = false;
            }
        }
        if (ended == point_result::interrupted) {
            report("interrupted by %s; %s", strsignal(stop_signal),
                   left_changed ? "not everything restored" : "both settings restored");
            if (!left_changed)
                stop_signals::die_of(stop_signal);
        }
        if (left_changed)
            return tune_status::left_changed;
        if (ended == point_result::not_started)
            return tune_status::bad_input;
        return ended == point_result::write_failed || !safest || !files_written || guard.failed() ? tune_status::not_done
                                                                                 : tune_status::ok;
    }

    const shmoo_options& options;
    shmoo_axis x, y;
    std::FILE* csv;
    std::FILE* svg;
    hang_guard& guard;
    const stop_signals stop;
    progress_line progress;
    grid_results results;
    point_result::kind ended = point_result::measured;
    int stop_signal = 0;
    std::size_t done = 0;  // the steps measured
    bool changed = false, left_changed = false;
};

}  // namespace

int shmoo_command(int argc, char** argv) {
    shmoo_options options;
    switch (parse_shmoo_options(argc, argv, options)) {
    case sweep_request::help:
        print_usage(stdout);
        return tune_status::ok;
    case sweep_request::bad:
        return tune_status::bad_input;
    case sweep_request::run:
        break;
    }
    shmoo_axis x, y;
    if (!ready(options, &x, &y))
        return tune_status::bad_input;
    const std::string warning = "WARNING! This shmoo sweeps " + range_text(x) + " against " + range_text(y) +
                                " on the running board. A value outside its working window can hang the "
                                "system or corrupt memory and storage.";
    if (!confirmed(options, warning, "shmoo"))
        return tune_status::bad_input;
    file_ptr csv(nullptr, std::fclose), svg(nullptr, std::fclose);
    if (!open_output(options.csv_path, &csv) || !open_output(options.svg_path, &svg))
        return tune_status::bad_input;
    std::vector<std::string> originals;
    hang_guard guard;
    if (!start_guard(options, {x.prop, y.prop}, &originals, guard))
        return tune_status::bad_input;
    return shmoo(options, std::move(x), std::move(y), csv.get(), svg.get(), guard, originals).run();
}

int resume_shmoo(hang_guard& guard, const journal_contents& journal, bool restore) {
    shmoo_options options;
    std::vector<std::string> words = journal.header.command;
    shmoo_axis x, y;
    if (parse_shmoo_options(static_cast<int>(words.size()), argv_of(words).data(), options) != sweep_request::run ||
        !ready(options, &x, &y) || !journal_matches(guard.journal.path(), journal, {x.prop, y.prop}))
        return tune_status::bad_input;
    const std::size_t points = x.visits.size() * y.visits.size();
    file_ptr csv(nullptr, std::fclose), svg(nullptr, std::fclose);
    if (!restore && (!open_output(options.csv_path, &csv) || !open_output(options.svg_path, &svg)))
        return tune_status::bad_input;
    shmoo resumed(options, std::move(x), std::move(y), csv.get(), svg.get(), guard, originals_of(journal));
    for (std::size_t step = 0; step < journal.steps.size(); ++step) {
        if (step >= points || journal.steps[step].point != resumed.point(step)) {
            report("%s:%zu: not the next point of this shmoo; nothing written", guard.journal.path().c_str(),
                   journal.steps[step].line);
            return tune_status::bad_input;
        }
        resumed.add(step, journal.steps[step].result);
    }
    if (!restore && !arm_watchdog(options, guard))
        return tune_status::bad_input;
    if (journal.in_flight && !guard.journal.finished(outcome::hang))
        return tune_status::not_done;
    if (restore)
        return resumed.restore();
    resumed.put_back_all();
    return resumed.run();
}
