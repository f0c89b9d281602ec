// SPDX-License-Identifier: MIT
// shmoo: two properties against each other, the region where a test command
// passes and the point with the most room around it.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <list>
#include <optional>
#include <string>
#include <vector>

#include "runtime/exit_status.h"
#include "runtime/report.h"
#include "runtime/stop_signals.h"
#include "tune/board/board_io.h"
#include "tune/commands.h"
#include "tune/resume.h"
#include "tune/sweep/chart.h"
#include "tune/sweep/facts.h"
#include "tune/sweep/grid_chart.h"
#include "tune/sweep/grid_svg.h"
#include "tune/sweep/profile_header.h"
#include "tune/sweep/whole_file.h"
#include "tune/sweep_options.h"
#include "tune/sweep_plan.h"
#include "tune/test_run.h"
#include "tune/usage/usage.h"

namespace {

// Beyond this a grid is a typing mistake rather than a shmoo.
constexpr std::size_t max_shmoo_points = 4096;

// One axis of the shmoo: its property and its values in visiting order.
struct shmoo_axis {
    property* prop = nullptr;
    value_axis visits;
    std::vector<long long> codes;       // per visit, the code written
    std::vector<std::string> settings;  // per visit, the value as padkit writes it
    long long original = 0;             // the code before the shmoo

    // A visit's position among the values rising, or the other way round:
    // the same, or reversed.
    std::size_t other_order(std::size_t at) const {
        return visits.values.front() <= visits.values.back() ? at : visits.size() - 1 - at;
    }
    const std::string& setting_at(std::size_t position) const {
        return settings[other_order(position)];
    }
    long long code_at(std::size_t position) const { return codes[other_order(position)]; }
    grid_axis rising() const {
        grid_axis axis;
        axis.name = prop->name;
        static_cast<value_axis&>(axis) = visits;
        std::sort(axis.values.begin(), axis.values.end());
        return axis;
    }
    // "V", or "V (setting S)" where padkit writes it otherwise.
    std::string value_text(std::size_t position) const {
        const std::size_t visit = other_order(position);
        const std::string& setting = settings[visit];
        return visits.text_at(visit) + (setting == std::to_string(visits.values[visit])
                                            ? ""
                                            : " (setting " + setting + ")");
    }
};

bool plan_axis(const swept_range& range, shmoo_axis* axis) {
    property* prop = property::get_property(range.name);
    const std::list<std::string>* members = prop ? prop->domain().members : nullptr;
    if (members) {
        std::string list;
        for (const std::string& member : *members)
            list += (list.empty() ? "" : ", ") + member;
        report("%s is a composite of %s; a shmoo takes one of them; nothing written",
               range.name.c_str(), list.c_str());
        return false;
    }
    sweep_plan plan;
    if (!plan_sweep(range, &plan))
        return false;
    axis->prop = plan.rows.front();
    axis->visits = plan.axis;
    axis->codes = plan.codes.front();
    axis->settings = plan.settings.front();
    return true;
}

std::string range_text(const shmoo_axis& axis) {
    const value_axis& visits = axis.visits;
    return axis.prop->name + " over " + visits.range_text(0, visits.size() - 1) + " (" +
           std::to_string(visits.size()) + (visits.size() == 1 ? " value)" : " values)");
}

facts shmoo_facts(const shmoo_options& options, const shmoo_axis& x, const shmoo_axis& y) {
    std::string what = x.prop->name + " " + x.visits.swept_text() + " against " + y.prop->name +
                       " " + y.visits.swept_text();
    if (options.weigh_x)
        what +=
            ", weighed " + std::to_string(options.weigh_x) + ":" + std::to_string(options.weigh_y);
    return run_facts("shmoo", what, options.command);
}

// What a new shmoo and a resumed one check before anything is written.
bool ready(const shmoo_options& options, shmoo_axis* x, shmoo_axis* y) {
    if (!plan_axis(options.x, x) || !plan_axis(options.y, y))
        return false;
    if (x->prop == y->prop) {
        report("X and Y are both %s; a shmoo takes two different properties",
               x->prop->name.c_str());
        return false;
    }
    const std::size_t points = x->visits.size() * y->visits.size();
    if (points > max_shmoo_points) {
        report("%zu points (%zu by %zu); a shmoo takes at most %zu", points, x->visits.size(),
               y->visits.size(), max_shmoo_points);
        return false;
    }
    return command_ready(options);
}

// Where the original value lies on the rising axis, if it is one of its values.
std::optional<std::size_t> original_position(const shmoo_axis& axis, const grid_axis& rising) {
    long long value = 0;
    if (!axis.prop->domain().axis_value_of(axis.original, &value) ||
        rising.position_of(value) == rising.size())
        return std::nullopt;
    return rising.position_of(value);
}

class shmoo {
public:
    // The files, when given, are open already; ORIGINALS are X's and Y's. A
    // resumed shmoo is given the points its journal says were measured
    // (add) before it runs.
    shmoo(const shmoo_options& options, shmoo_axis x, shmoo_axis y, std::FILE* csv, std::FILE* svg,
          whole_file* profile, std::string profile_header, hang_guard& guard,
          const std::vector<long long>& originals, facts about)
        : options(options),
          x(std::move(x)),
          y(std::move(y)),
          csv(csv),
          svg(svg),
          profile(profile),
          profile_header(std::move(profile_header)),
          guard(guard),
          about(std::move(about)),
          progress(stderr, isatty(STDERR_FILENO), "point"),
          results(this->x.rising(), this->y.rising()) {
        results.weigh_x = options.weigh_x;
        results.weigh_y = options.weigh_y;
        this->x.original = originals[0];
        this->y.original = originals[1];
        const std::optional<std::size_t> original_x = original_position(this->x, results.x),
                                         original_y = original_position(this->y, results.y);
        results.original_x =
            original_x ? results.x.text_at(*original_x) : code_text(this->x.prop, this->x.original);
        results.original_y =
            original_y ? results.y.text_at(*original_y) : code_text(this->y.prop, this->y.original);
        if (original_x && original_y)
            results.original = grid_point{*original_x, *original_y};
    }

    // The point a step of the journal must name: the axis values of X and Y.
    journal_point point(std::size_t step) const {
        return {std::to_string(x.visits.values[step % x.visits.size()]),
                std::to_string(y.visits.values[step / x.visits.size()])};
    }

    void add(std::size_t step, outcome result) {
        const std::size_t row = step / x.visits.size(), column = step % x.visits.size();
        const grid_point at{x.other_order(column), y.other_order(row)};
        results.cells[at.y][at.x] = result;
        if (csv) {
            print_grid_csv_point(csv, results, at);
            std::fflush(csv);
        }
        done = step + 1;
    }

    // Returns the exit status, unless a stop signal ends the program.
    int run() {
        for (std::size_t step = done;
             step < x.visits.size() * y.visits.size() && ended == point_result::measured; ++step)
            measure(step / x.visits.size(), step % x.visits.size());
        progress.clear();
        if (ended == point_result::measured && (stop_signal = stop.take()) != 0)
            ended = point_result::interrupted;
        note_partial();
        const std::optional<safest_point> safest = find_safest(results, results.original);
        if (ended == point_result::measured && options.keep_centre && safest && guard.keeping())
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
        note_partial();
        print_grid_chart(stdout, results, find_safest(results, results.original),
                         terminal_columns(STDOUT_FILENO));
        guard.close(true);
        return left_changed     ? tune_status::left_changed
               : guard.failed() ? tune_status::not_done
                                : tune_status::ok;
    }

private:
    void note_partial() { results.partial = done < x.visits.size() * y.visits.size(); }

    void measure(std::size_t row, std::size_t column) {
        std::vector<setting> changes;
        // The slow one, a voltage say, changes once a row, and first of all
        // where a resumed shmoo carries on in the middle of a row.
        if (column == 0 || !y_written)
            changes.push_back({y.prop, y.codes[row]});
        y_written = true;
        changes.push_back({x.prop, x.codes[column]});
        changed = true;
        const std::size_t step = row * x.visits.size() + column;
        progress.show(x.prop->name + " = " + x.visits.text_at(column) + ", " + y.prop->name +
                          " = " + y.visits.text_at(row),
                      step + 1, x.visits.size() * y.visits.size());
        const environment names = {
            {"PADKIT_SHMOO_X_NAME", x.prop->name},
            {"PADKIT_SHMOO_X_VALUE", std::to_string(x.visits.values[column])},
            {"PADKIT_SHMOO_X_SETTING", x.settings[column]},
            {"PADKIT_SHMOO_Y_NAME", y.prop->name},
            {"PADKIT_SHMOO_Y_VALUE", std::to_string(y.visits.values[row])},
            {"PADKIT_SHMOO_Y_SETTING", y.settings[row]}};
        const point_result got =
            test_point(changes, point(step), options, names, stop, progress, guard);
        ended = got.what;
        stop_signal = got.signal;
        if (got.what == point_result::measured)
            add(step, got.result);
    }

    void put_back() {
        if (!changed)
            return;
        for (const shmoo_axis* axis : {&x, &y})
            if (!write_locked({{axis->prop, axis->original}}, guard.watchdog)) {
                report("%s: left changed; it was %s", axis->prop->name.c_str(),
                       code_text(axis->prop, axis->original).c_str());
                left_changed = true;
            }
    }

    void keep(const safest_point& safest) {
        if (!write_locked({{y.prop, y.code_at(safest.at.y)}, {x.prop, x.code_at(safest.at.x)}},
                          guard.watchdog)) {
            put_back();
            return;
        }
        report("%s: kept at the safest point, %s", x.prop->name.c_str(),
               x.value_text(safest.at.x).c_str());
        report("%s: kept at the safest point, %s", y.prop->name.c_str(),
               y.value_text(safest.at.y).c_str());
    }

    // The files first, standard output last: a reader of the output that
    // goes away early costs no result.
    int finish(const std::optional<safest_point>& safest) {
        guard.close(ended != point_result::interrupted);
        if (csv)
            print_summary_facts(csv, results.partial, grid_summary(results, safest));
        bool files_written = !csv || (std::fflush(csv) == 0 && !std::ferror(csv));
        if (!files_written)
            report("cannot write %s: %s", options.csv_path.c_str(), std::strerror(errno));
        if (svg) {
            print_grid_svg(svg, results, safest, about);
            if (std::fflush(svg) != 0 || std::ferror(svg)) {
                report("cannot write %s: %s", options.svg_path.c_str(), std::strerror(errno));
                files_written = false;
            }
        }
        files_written =
            write_profile(profile, options.profile_path, ended == point_result::measured, "shmoo",
                          [&](std::FILE* out) { print_profile(out, safest); }) &&
            files_written;
        print_grid_chart(stdout, results, safest, terminal_columns(STDOUT_FILENO));
        for (const std::string& line : grid_summary(results, safest))
            std::printf("%s\n", line.c_str());
        std::fflush(stdout);
        return end_status(ended, stop_signal, left_changed,
                          safest && files_written && !guard.failed(), "both settings restored");
    }

    // Both settings at the safest point.
    void print_profile(std::FILE* out, const std::optional<safest_point>& safest) const {
        std::fputs(profile_header.c_str(), out);
        if (safest)
            std::fprintf(out, "%s = %s\n%s = %s\n", x.prop->name.c_str(),
                         x.setting_at(safest->at.x).c_str(), y.prop->name.c_str(),
                         y.setting_at(safest->at.y).c_str());
        else
            std::fprintf(out, "# %s, %s: no passing point\n", x.prop->name.c_str(),
                         y.prop->name.c_str());
    }
    const shmoo_options& options;
    shmoo_axis x, y;
    std::FILE* csv;
    std::FILE* svg;
    whole_file* profile;
    const std::string profile_header;
    hang_guard& guard;
    const facts about;
    const stop_signals stop;
    progress_line progress;
    grid_results results;
    point_result::kind ended = point_result::measured;
    int stop_signal = 0;
    std::size_t done = 0;  // the steps measured
    bool changed = false, left_changed = false;
    bool y_written = false;  // by this run
};

}  // namespace

int shmoo_command(int argc, char** argv) {
    shmoo_options options;
    switch (parse_shmoo_options(argc, argv, options)) {
    case sweep_request::help: print_usage(stdout); return tune_status::ok;
    case sweep_request::bad: return tune_status::bad_input;
    case sweep_request::run: break;
    }
    shmoo_axis x, y;
    if (!ready(options, &x, &y))
        return tune_status::bad_input;
    const std::string warning =
        "WARNING! This shmoo sweeps " + range_text(x) + " against " + range_text(y) +
        " on the running board. A value outside its working window can hang the "
        "system or corrupt memory and storage.";
    if (!confirmed(options, warning, "shmoo"))
        return tune_status::bad_input;
    file_ptr csv(nullptr, std::fclose), svg(nullptr, std::fclose);
    const facts about = shmoo_facts(options, x, y);
    const auto header = [&](std::FILE* out) { print_grid_csv_header(out, about); };
    if (!open_output(options.csv_path, &csv, header) ||
        !open_output(options.svg_path, &svg, nullptr))
        return tune_status::bad_input;
    whole_file profile;
    if (!open_profile(options, &profile))
        return tune_status::bad_input;
    std::vector<long long> originals;
    hang_guard guard;
    if (!start_guard(options, {x.prop, y.prop}, &originals, guard))
        return tune_status::bad_input;
    return shmoo(options, std::move(x), std::move(y), csv.get(), svg.get(),
                 options.profile_path.empty() ? nullptr : &profile, profile_header(argc, argv),
                 guard, originals, about)
        .run();
}

int resume_shmoo(hang_guard& guard, const journal_contents& journal, bool restore) {
    shmoo_options options;
    std::vector<std::string> words = journal.header.command;
    shmoo_axis x, y;
    std::vector<long long> originals;
    if (parse_shmoo_options(static_cast<int>(words.size()), argv_of(words).data(), options) !=
            sweep_request::run ||
        !ready(options, &x, &y) ||
        !journal_matches(guard.journal.path(), journal, {x.prop, y.prop}, &originals))
        return tune_status::bad_input;
    const std::size_t points = x.visits.size() * y.visits.size();
    file_ptr csv(nullptr, std::fclose), svg(nullptr, std::fclose);
    whole_file profile;
    const facts about = shmoo_facts(options, x, y);
    const auto header = [&](std::FILE* out) { print_grid_csv_header(out, about); };
    if (!restore &&
        (!open_output(options.csv_path, &csv, header) ||
         !open_output(options.svg_path, &svg, nullptr) || !open_profile(options, &profile)))
        return tune_status::bad_input;
    shmoo resumed(options, std::move(x), std::move(y), csv.get(), svg.get(),
                  options.profile_path.empty() || restore ? nullptr : &profile,
                  profile_header(static_cast<int>(words.size()), argv_of(words).data()), guard,
                  originals, about);
    return carry_on(resumed, points, "point", options, guard, journal, restore);
}
