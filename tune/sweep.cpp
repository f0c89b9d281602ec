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
#include "tune/kinds.h"
#include "tune/result_csv.h"
#include "tune/sweep/chart.h"
#include "tune/sweep/facts.h"
#include "tune/sweep/svg.h"
#include "tune/sweep_options.h"
#include "tune/sweep_plan.h"

namespace {

// Row by row, each over the axis and put back before the next; a row's
// window is the widest run of passing values.
class sweep final : public campaign_kind {
public:
    sweep(sweep_options options, sweep_plan plan)
        : campaign_kind("sweep", "value", "every swept property restored"),
          given(std::move(options)),
          plan(std::move(plan)),
          about(
              run_facts("sweep", given.name + " " + this->plan.axis.swept_text(), given.command)) {
        results.axis = this->plan.axis;
        results.group = this->plan.group;
    }

    const test_options& options() const override { return given; }
    std::vector<property*> properties() const override { return plan.rows; }
    std::string description() const override {
        const value_axis& axis = plan.axis;
        return "This sweeps " + given.name + " over " + axis.text(axis.values.front()) + ".." +
               axis.text(axis.values.back()) + " (" + std::to_string(axis.size()) +
               (axis.size() == 1 ? " value)" : " values)");
    }
    void begin(const std::vector<long long>& known) override { originals = known; }
    std::size_t steps() const override { return plan.rows.size() * plan.axis.size(); }

    std::optional<campaign_point> point(std::size_t step) const override {
        if (step >= steps())
            return std::nullopt;
        const std::size_t row = step / plan.axis.size(), at = step % plan.axis.size();
        property* prop = plan.rows[row];
        const std::string& value = plan.settings[row][at];
        campaign_point next;
        next.settings = {{prop, plan.codes[row][at]}};
        next.puts_back = at + 1 == plan.axis.size();
        next.journal = {prop->name, std::to_string(plan.axis.values[at])};
        next.names = {{"PADKIT_SWEEP_NAME", prop->name},
                      {"PADKIT_SWEEP_VALUE", next.journal[1]},
                      {"PADKIT_SWEEP_SETTING", value}};
        next.shown = prop->name + " = " + plan.axis.text_at(at);
        next.named = prop->name + ": " + plan.axis.text_at(at);
        return next;
    }

    void print_csv_header(std::FILE* out) const override {
        facts header = about;
        header.push_back(values_fact(given.name, plan.axis));
        ::print_csv_header(out, header);
    }

    void record(std::size_t step, outcome result, std::FILE* csv) override {
        const std::size_t row = step / plan.axis.size(), at = step % plan.axis.size();
        if (at == 0) {
            results.rows.push_back(
                {plan.rows[row]->name, {}, plan.settings[row], plan.delays[row], {}});
            long long original = 0;
            if (plan.rows[row]->domain().axis_value_of(originals[row], &original))
                results.rows.back().original = original;
        }
        results.rows.back().results.push_back(result);
        if (csv)
            print_csv_line(csv, results.rows.back().name, plan.axis.text_at(at), result);
    }

    void conclude(bool partial) override {
        results.partial = partial;
        centres.clear();
        for (const sweep_row& row : results.rows) {
            const sweep_window window = widest_window(row.results);
            centres.push_back(window.count ? std::optional(window_centre(window, plan.axis.values))
                                           : std::nullopt);
        }
    }
    bool found() const override {
        return std::all_of(
            centres.begin(), centres.end(),
            [](const std::optional<std::size_t>& centre) { return centre.has_value(); });
    }
    std::vector<setting> kept() const override {
        std::vector<setting> settings;
        for (std::size_t row = 0; row < centres.size(); ++row)
            if (centres[row])
                settings.push_back({plan.rows[row], plan.codes[row][*centres[row]]});
        return settings;
    }
    void report_kept() const override {
        for (std::size_t row = 0; row < centres.size(); ++row) {
            if (!centres[row])
                continue;
            const std::size_t at = *centres[row];
            report("%s: kept at the centre, %s", plan.rows[row]->name.c_str(),
                   value_with_setting(plan.axis, at, plan.settings[row][at]).c_str());
        }
    }

    void print_chart(std::FILE* out, std::size_t columns) const override {
        ::print_chart(out, results, columns);
    }
    // The chart ends with the lines that sum it up.
    void print_summary(std::FILE*) const override {}
    void print_csv_summary(std::FILE* out) const override {
        for (std::size_t row = 0; row < originals.size(); ++row)
            print_fact_lines(out, {original_fact(plan.rows[row], originals[row])});
        ::print_csv_summary(out, results);
    }
    void print_svg(std::FILE* out) const override {
        ::print_svg(out, {results}, about, mark::common_centre);
    }
    void print_profile(std::FILE* out, const std::string& header) const override {
        ::print_profile(out, results, header);
    }

private:
    const sweep_options given;
    const sweep_plan plan;
    const facts about;
    std::vector<long long> originals;  // per row, the code before the sweep
    sweep_results results;
    std::vector<std::optional<std::size_t>> centres;  // per row measured, of its window
};

}  // namespace

sweep_request plan_sweep_campaign(int argc, char** argv, std::unique_ptr<campaign_kind>* kind) {
    sweep_options options;
    const sweep_request request = parse_sweep_options(argc, argv, options);
    if (request != sweep_request::run)
        return request;
    sweep_plan plan;
    if (!plan_sweep(options, &plan))
        return sweep_request::bad;
    *kind = std::make_unique<sweep>(std::move(options), std::move(plan));
    return sweep_request::run;
}
