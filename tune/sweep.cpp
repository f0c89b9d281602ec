// SPDX-License-Identifier: MIT
// sweep: find the values of a property for which a test command passes.
#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "runtime/report.h"
#include "tune/campaign/kind.h"
#include "tune/dq_bits.h"
#include "tune/kinds.h"
#include "tune/result_csv.h"
#include "tune/sweep/chart.h"
#include "tune/sweep/facts.h"
#include "tune/sweep/svg.h"
#include "tune/sweep_options.h"
#include "tune/sweep_plan.h"

namespace {

// Row by row, each over the axis and put back before the next, or with
// --parallel every row at once, a value at a time; a row's window is the
// widest run of passing values.
class sweep final : public campaign_kind {
public:
    sweep(sweep_options options, std::vector<sweep_plan> plans, bus_bits bits)
        : campaign_kind("sweep", "value", "every swept property restored"),
          given(std::move(options)),
          plans(std::move(plans)),
          bits(std::move(bits)),
          axis(this->plans.front().axis),
          about(run_facts("sweep", joined(given.names) + " " + axis.swept_text(), given.command)),
          rows(rows_of(this->plans)) {
        for (const sweep_plan& plan : this->plans) {
            results.emplace_back();
            results.back().axis = axis;
            results.back().group = plan.group;
        }
        at_once = given.parallel ? rows.size() : 1;
    }

    const test_options& options() const override { return given; }
    std::vector<property*> properties() const override { return members_of(plans, rows); }
    std::string description() const override {
        return "This sweeps " + joined(given.names) + (given.parallel ? " in parallel" : "") +
               " over " + axis.text(axis.values.front()) + ".." + axis.text(axis.values.back()) +
               " (" + std::to_string(axis.size()) + (axis.size() == 1 ? " value)" : " values)");
    }
    void begin(const std::vector<long long>& known) override { originals = known; }
    std::size_t steps() const override { return rows.size() / at_once * axis.size(); }

    std::optional<campaign_point> point(std::size_t step) const override {
        if (step >= steps())
            return std::nullopt;
        const std::size_t first = step / axis.size() * at_once, at = step % axis.size();
        campaign_point next;
        for (std::size_t row = first; row < first + at_once; ++row)
            next.settings.push_back(
                {member(rows[row]), plan_of(rows[row]).codes[rows[row].row][at]});
        next.judged = bits.judging(first, at_once);
        const std::string name = given.parallel ? joined(given.names) : member(rows[first])->name;
        const std::string value = std::to_string(axis.values[at]);
        next.puts_back = at + 1 == axis.size();
        next.journal = given.parallel ? given.names : journal_point{name};
        next.journal.push_back(value);
        next.names = {{"PADKIT_SWEEP_NAME", name},
                      {"PADKIT_SWEEP_VALUE", value},
                      {"PADKIT_SWEEP_SETTING", plan_of(rows[first]).settings[rows[first].row][at]}};
        bits.name_bus(&next.names);
        next.shown = name + " = " + axis.text_at(at);
        next.named = name + ": " + axis.text_at(at);
        return next;
    }

    void print_csv_header(std::FILE* out) const override {
        facts header = about;
        header.push_back(values_fact(joined(given.names), axis));
        ::print_csv_header(out, header);
    }

    void record(std::size_t step, const std::vector<outcome>& outcomes, std::FILE* csv) override {
        const std::size_t first = step / axis.size() * at_once, at = step % axis.size();
        for (std::size_t row = first; row < first + at_once; ++row) {
            const plan_row& where = rows[row];
            const sweep_plan& plan = plans[where.plan];
            std::vector<sweep_row>& lane = results[where.plan].rows;
            if (at == 0) {
                lane.push_back({member(where)->name,
                                {},
                                plan.settings[where.row],
                                plan.delays[where.row],
                                {}});
                long long original = 0;
                if (member(where)->domain().axis_value_of(originals[row], &original))
                    lane.back().original = original;
            }
            lane[where.row].results.push_back(outcomes[row - first]);
            if (csv)
                print_csv_line(csv, lane[where.row].name, axis.text_at(at), outcomes[row - first]);
        }
    }

    void conclude(bool partial) override {
        centres.clear();
        for (sweep_results& lane : results) {
            lane.partial = partial;
            for (const sweep_row& row : lane.rows) {
                const sweep_window window = widest_window(row.results);
                centres.push_back(window.count ? std::optional(window_centre(window, axis.values))
                                               : std::nullopt);
            }
        }
    }
    bool found() const override {
        return std::all_of(
            centres.begin(), centres.end(),
            [](const std::optional<std::size_t>& centre) { return centre.has_value(); });
    }
    std::vector<setting> kept() const override { return centre_settings(plans, rows, centres); }
    void report_kept() const override { report_centres_kept(plans, rows, centres); }

    void print_chart(std::FILE* out, std::size_t columns) const override {
        for (const sweep_results& lane : results)
            ::print_chart(out, lane, columns);
    }
    // The chart ends with the lines that sum it up.
    void print_summary(std::FILE*) const override {}
    void print_csv_summary(std::FILE* out) const override {
        for (std::size_t row = 0; row < originals.size(); ++row)
            print_fact_lines(out, {original_fact(member(rows[row]), originals[row])});
        for (const sweep_results& lane : results)
            ::print_csv_summary(out, lane);
    }
    void print_svg(std::FILE* out) const override {
        ::print_svg(out, results, about, mark::common_centre);
    }
    void print_profile(std::FILE* out, const std::string& header) const override {
        for (std::size_t plan = 0; plan < plans.size(); ++plan) {
            sweep_results lane = results[plan];
            // A composite set whole only when no member was left out.
            if (plans[plan].left_out)
                lane.group.clear();
            ::print_profile(out, lane, plan == 0 ? header : "");
        }
    }

private:
    property* member(const plan_row& where) const { return member_of(plans, where); }
    const sweep_plan& plan_of(const plan_row& where) const { return plans[where.plan]; }

    const sweep_options given;
    const std::vector<sweep_plan> plans;  // one per NAME
    const bus_bits bits;                  // per row
    const value_axis axis;                // every plan's
    const facts about;
    const std::vector<plan_row> rows;                 // every plan's, in order
    std::size_t at_once = 1;                          // rows written together
    std::vector<long long> originals;                 // per row, the code before the sweep
    std::vector<sweep_results> results;               // per plan
    std::vector<std::optional<std::size_t>> centres;  // per row measured, of its window
};

// --parallel takes lanes of DQ lines of one controller and one direction,
// each once, and leaves out the lines that have no data bit.
bool lanes_fit(const sweep_options& options, std::vector<sweep_plan>* plans) {
    std::optional<dq_line> first;
    for (sweep_plan& plan : *plans) {
        dq_line line;
        if (plan.group.empty() || !parse_dq_line(plan.rows.front()->name, &line)) {
            report("--parallel: %s is no lane of DQ lines; nothing written",
                   plan.rows.front()->name.c_str());
            return false;
        }
        if (!first)
            first = line;
        if (line.controller != first->controller || line.write != first->write) {
            report("--parallel: %s is not a %s lane of %s; nothing written", plan.group.c_str(),
                   first->write ? "write" : "read", first->controller.c_str());
            return false;
        }
        if (std::count(options.names.begin(), options.names.end(), plan.group) > 1) {
            report("--parallel: %s is named twice; nothing written", plan.group.c_str());
            return false;
        }
        const auto without_bit = [](property* row) {
            dq_line line;
            return parse_dq_line(row->name, &line) && line.dq >= data_lines;
        };
        const auto dropped = std::stable_partition(
            plan.rows.begin(), plan.rows.end(), [&](property* row) { return !without_bit(row); });
        for (auto row = dropped; row != plan.rows.end(); ++row)
            report("%s carries no data bit: left out; sweep it alone", (*row)->name.c_str());
        const std::size_t kept = static_cast<std::size_t>(dropped - plan.rows.begin());
        plan.left_out = kept < plan.rows.size();
        plan.rows.resize(kept);
        plan.codes.resize(kept);
        plan.settings.resize(kept);
        plan.delays.resize(kept);
    }
    return true;
}

}  // namespace

sweep_request plan_sweep_campaign(int argc, char** argv, std::unique_ptr<campaign_kind>* kind) {
    sweep_options options;
    const sweep_request request = parse_sweep_options(argc, argv, options);
    if (request != sweep_request::run)
        return request;
    std::vector<sweep_plan> plans;
    for (const std::string& name : options.names) {
        swept_range range = options;
        range.name = name;
        if (!plan_sweep(range, &plans.emplace_back()))
            return sweep_request::bad;
    }
    if (options.parallel && !lanes_fit(options, &plans))
        return sweep_request::bad;
    std::vector<property*> rows;
    for (const sweep_plan& plan : plans)
        rows.insert(rows.end(), plan.rows.begin(), plan.rows.end());
    bus_bits bits;
    if (!plan_bits(rows, options.bits_path, &bits))
        return sweep_request::bad;
    *kind = std::make_unique<sweep>(std::move(options), std::move(plans), std::move(bits));
    return sweep_request::run;
}
