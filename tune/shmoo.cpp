// SPDX-License-Identifier: MIT
// shmoo: two properties against each other, the region where a test command
// passes and the point with the most room around it.
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "runtime/report.h"
#include "tune/board/board_io.h"
#include "tune/campaign/kind.h"
#include "tune/dq_bits.h"
#include "tune/kinds.h"
#include "tune/result_csv.h"
#include "tune/shmoo_plan.h"
#include "tune/sweep/facts.h"
#include "tune/sweep/grid.h"
#include "tune/sweep/grid_chart.h"
#include "tune/sweep/grid_svg.h"
#include "tune/sweep_options.h"

namespace {

// Row by row, Y the slow one (a voltage, say), written once a row; the
// safest point is the passing one with the most room around it.
class shmoo final : public campaign_kind {
public:
    shmoo(shmoo_options options, shmoo_axis x, shmoo_axis y, bus_bits bits)
        : campaign_kind("shmoo", "point", "both settings restored"),
          given(std::move(options)),
          x(std::move(x)),
          y(std::move(y)),
          bits(std::move(bits)),
          results(this->x.rising(), this->y.rising()),
          about(shmoo_facts(given, this->x, this->y)) {
        results.weigh_x = given.weigh_x;
        results.weigh_y = given.weigh_y;
    }

    const test_options& options() const override { return given; }
    std::vector<property*> properties() const override { return {x.prop, y.prop}; }
    std::string description() const override {
        return "This shmoo sweeps " + x.range_text() + " against " + y.range_text();
    }
    void begin(const std::vector<long long>& originals) override {
        x.original = originals[0];
        y.original = originals[1];
        const std::optional<std::size_t> original_x = x.original_position(),
                                         original_y = y.original_position();
        results.original_x =
            original_x ? results.x.text_at(*original_x) : code_text(x.prop, x.original);
        results.original_y =
            original_y ? results.y.text_at(*original_y) : code_text(y.prop, y.original);
        if (original_x && original_y)
            results.original = grid_point{*original_x, *original_y};
    }
    std::size_t steps() const override { return x.visits.size() * y.visits.size(); }

    std::optional<campaign_point> point(std::size_t step) const override {
        if (step >= steps())
            return std::nullopt;
        const std::size_t row = step / x.visits.size(), column = step % x.visits.size();
        campaign_point next;
        next.settings = {{y.prop, y.codes[row]}, {x.prop, x.codes[column]}};
        next.carried = column == 0 ? 0 : 1;
        next.journal = {std::to_string(x.visits.values[column]),
                        std::to_string(y.visits.values[row])};
        next.names = {{"PADKIT_SHMOO_X_NAME", x.prop->name},
                      {"PADKIT_SHMOO_X_VALUE", next.journal[0]},
                      {"PADKIT_SHMOO_X_SETTING", x.settings[column]},
                      {"PADKIT_SHMOO_Y_NAME", y.prop->name},
                      {"PADKIT_SHMOO_Y_VALUE", next.journal[1]},
                      {"PADKIT_SHMOO_Y_SETTING", y.settings[row]}};
        bits.name_bus(&next.names);
        next.judged = bits.judging(0, 1);
        next.shown = x.prop->name + " = " + x.visits.text_at(column) + ", " + y.prop->name + " = " +
                     y.visits.text_at(row);
        next.named = x.prop->name + ": " + x.visits.text_at(column) + ", " + y.prop->name + ": " +
                     y.visits.text_at(row);
        return next;
    }

    void print_csv_header(std::FILE* out) const override {
        facts header = about;
        header.push_back(values_fact(x.prop->name, x.visits));
        header.push_back(values_fact(y.prop->name, y.visits));
        print_grid_csv_header(out, header);
    }

    void record(std::size_t step, const std::vector<outcome>& outcomes, std::FILE* csv) override {
        const grid_point at{x.other_order(step % x.visits.size()),
                            y.other_order(step / x.visits.size())};
        results.cells[at.y][at.x] = outcomes.front();
        if (csv)
            print_grid_csv_point(csv, results, at);
    }

    void conclude(bool partial) override {
        results.partial = partial;
        safest = find_safest(results, results.original);
    }
    bool found() const override { return safest.has_value(); }
    std::vector<setting> kept() const override {
        if (!safest)
            return {};
        return {{y.prop, y.code_at(safest->at.y)}, {x.prop, x.code_at(safest->at.x)}};
    }
    void report_kept() const override {
        report("%s: kept at the safest point, %s", x.prop->name.c_str(),
               x.value_text(safest->at.x).c_str());
        report("%s: kept at the safest point, %s", y.prop->name.c_str(),
               y.value_text(safest->at.y).c_str());
    }

    void print_chart(std::FILE* out, std::size_t columns) const override {
        print_grid_chart(out, results, safest, columns);
    }
    void print_summary(std::FILE* out) const override {
        for (const std::string& line : grid_summary(results, safest))
            std::fprintf(out, "%s\n", line.c_str());
    }
    void print_csv_summary(std::FILE* out) const override {
        print_fact_lines(out,
                         {original_fact(x.prop, x.original), original_fact(y.prop, y.original)});
        print_summary_facts(out, results.partial, grid_summary(results, safest));
    }
    void print_svg(std::FILE* out) const override { print_grid_svg(out, results, safest, about); }
    // Both settings at the safest point.
    void print_profile(std::FILE* out, const std::string& header) const override {
        std::fputs(header.c_str(), out);
        if (safest)
            std::fprintf(out, "%s%s", x.profile_line(safest->at.x).c_str(),
                         y.profile_line(safest->at.y).c_str());
        else
            std::fprintf(out, "# %s, %s: no passing point\n", x.prop->name.c_str(),
                         y.prop->name.c_str());
    }

private:
    const shmoo_options given;
    shmoo_axis x, y;
    const bus_bits bits;  // of the axis that is a DQ line, if one is
    grid_results results;
    const facts about;
    std::optional<safest_point> safest;
};

}  // namespace

sweep_request plan_shmoo_campaign(int argc, char** argv, std::unique_ptr<campaign_kind>* kind) {
    shmoo_options options;
    const sweep_request request = parse_shmoo_options(argc, argv, options);
    if (request != sweep_request::run)
        return request;
    shmoo_axis x, y;
    bus_bits bits;
    if (!plan_shmoo(options, &x, &y) || !plan_bits({x.prop}, "", &bits) ||
        (bits.bus.empty() && !plan_bits({y.prop}, "", &bits)))
        return sweep_request::bad;
    *kind =
        std::make_unique<shmoo>(std::move(options), std::move(x), std::move(y), std::move(bits));
    return sweep_request::run;
}
