// SPDX-License-Identifier: MIT
// deskew: the edges of the windows of many DQ lines, the lines of one
// controller and one direction searched together, each judged by its own
// data bit; a line without a data bit alone, by the command's exit status,
// with every other line at its original.
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
#include "tune/sweep/edge_search.h"
#include "tune/sweep/edge_table.h"
#include "tune/sweep/facts.h"
#include "tune/sweep_options.h"
#include "tune/sweep_plan.h"
#include "tune/usage/usage.h"

namespace {

// Values apart of the coarse pass; a window at least half as wide is found.
constexpr std::size_t coarse_stride = 8;

// Lines searched together in the same runs.
struct line_group {
    std::string name;               // "tarnm-ddra-read", or the line judged alone
    std::vector<std::size_t> rows;  // of the campaign
    bus_bits bits;
    bool by_status;  // judged by the exit status: a line without a data bit
    edge_search search;
    std::size_t points = 0;
    long long runs = 0;  // at most; a run that every line fails ends its point
};

// The tables of a controller's direction: "tarnm-ddra-read".
std::string direction_of(const std::string& line) {
    dq_line dq;
    parse_dq_line(line, &dq);
    return dq.controller + (dq.write ? "-write" : "-read");
}

class deskew final : public campaign_kind {
public:
    deskew(deskew_options options, std::vector<sweep_plan> lanes, std::vector<plan_row> rows,
           std::vector<line_group> groups)
        : campaign_kind("deskew", "point", "every DQ line restored"),
          given(std::move(options)),
          lanes(std::move(lanes)),
          rows(std::move(rows)),
          groups(std::move(groups)),
          axis(this->lanes.front().axis),
          about(run_facts("deskew", joined(given.whats) + " " + axis.swept_text(), given.command)) {
    }

    const test_options& options() const override { return given; }
    std::vector<property*> properties() const override { return members_of(lanes, rows); }
    std::string description() const override {
        return "This deskews " + std::to_string(rows.size()) + " DQ lines of " +
               joined(given.whats) + " over " + axis.text(axis.values.front()) + ".." +
               axis.text(axis.values.back()) + (given.full ? ", every value" : ", their edges");
    }
    void begin(const std::vector<long long>& known) override { originals = known; }
    std::size_t steps() const override {
        std::size_t left = 0;
        for (const line_group& group : groups)
            left += group.search.rounds_left();
        return recorded + left;
    }

    std::optional<campaign_point> point(std::size_t step) const override {
        const std::size_t at = current();
        if (at == groups.size())
            return std::nullopt;
        const line_group& group = groups[at];
        const probe_round round = *group.search.next();
        campaign_point next;
        // Every other line at its original, as the group's first point wrote it.
        for (std::size_t row = 0; row < rows.size(); ++row)
            if (std::find(group.rows.begin(), group.rows.end(), row) == group.rows.end())
                next.settings.push_back({member(rows[row]), originals[row]});
        next.carried = group.points ? next.settings.size() : 0;
        std::vector<std::string> values;
        for (std::size_t line = 0; line < group.rows.size(); ++line) {
            const std::size_t row = group.rows[line];
            const std::optional<std::size_t> probe = round.at[line];
            next.settings.push_back(
                {member(rows[row]),
                 probe ? lanes[rows[row].plan].codes[rows[row].row][*probe] : originals[row]});
            values.push_back(probe ? axis.text_at(*probe) : "=");
        }
        next.runs = round.runs;
        next.judged = group.by_status ? member_bits{} : group.bits.judging(0, group.rows.size());
        next.journal = {group.name, joined(values)};
        next.names = {{"PADKIT_SWEEP_NAME", group.name}, {"PADKIT_SWEEP_VALUE", joined(values)}};
        group.bits.name_bus(&next.names);
        next.shown = group.name + ", point " + std::to_string(step + 1);
        next.named = group.name + ": " + joined(values);
        return next;
    }

    void print_csv_header(std::FILE* out) const override {
        facts header = about;
        header.push_back(values_fact(joined(given.whats), axis));
        print_fact_lines(out, header);
        std::fputs(deskew_csv_header, out);
    }

    void record(std::size_t, const std::vector<outcome>& results, std::FILE* csv) override {
        line_group& group = groups[current()];
        const probe_round round = *group.search.next();
        group.search.record(round, results);
        ++group.points;
        group.runs += round.runs;
        ++recorded;
        for (std::size_t line = 0; csv && line < group.rows.size(); ++line)
            if (round.at[line])
                print_csv_line(csv, member(rows[group.rows[line]])->name,
                               axis.text_at(*round.at[line]), results[line]);
    }

    void conclude(bool partial) override {
        stopped = partial;
        found_lanes.clear();
        tables.clear();
        centres.clear();
        if (partial)
            return;
        for (std::size_t row = 0; row < rows.size(); ++row) {
            const sweep_window window = window_of(row);
            centres.push_back(window.count ? std::optional(window_centre(window, axis.values))
                                           : std::nullopt);
        }
        for (const sweep_plan& lane : lanes)
            found_lanes.push_back({axis, {}, lane.group, false});
        for (std::size_t row = 0; row < rows.size(); ++row)
            found_lanes[rows[row].plan].rows.push_back(found_row(row));
        for (const sweep_results& lane : found_lanes) {
            const edge_table of_lane = edge_table_of(lane.group, lane);
            const std::string name = direction_of(lane.rows.front().name);
            if (tables.empty() || tables.back().name != name)
                tables.push_back({name, of_lane.unit, {}});
            tables.back().lines.insert(tables.back().lines.end(), of_lane.lines.begin(),
                                       of_lane.lines.end());
        }
    }
    bool found() const override {
        if (stopped)
            return false;
        for (const edge_table& table : tables)
            for (const edge_line& line : table.lines)
                if (line.no_window)
                    return false;
        return true;
    }
    std::vector<setting> kept() const override { return centre_settings(lanes, rows, centres); }
    void report_kept() const override { report_centres_kept(lanes, rows, centres); }

    void print_chart(std::FILE* out, std::size_t) const override {
        for (const edge_table& table : tables)
            print_edge_table(out, table);
    }
    void print_summary(std::FILE* out) const override {
        for (const std::string& line : summary())
            std::fprintf(out, "%s\n", line.c_str());
    }
    void print_csv_summary(std::FILE* out) const override {
        for (std::size_t row = 0; row < originals.size(); ++row)
            print_fact_lines(out, {original_fact(member(rows[row]), originals[row])});
        print_summary_facts(out, stopped, summary());
        for (const edge_table& table : tables) {
            print_fact_lines(out, {{table_key, table.name + ", in " + table.unit}});
            print_edge_table_csv(out, table);
        }
    }
    // Refused when planned: the values it skipped would be drawn.
    void print_svg(std::FILE*) const override {}
    void print_profile(std::FILE* out, const std::string& header) const override {
        for (const sweep_results& lane : found_lanes)
            ::print_profile(out, lane, &lane == &found_lanes.front() ? header : "");
    }

private:
    property* member(const plan_row& where) const { return member_of(lanes, where); }

    // The group still searching; groups.size() once every one is done.
    std::size_t current() const {
        std::size_t at = 0;
        while (at < groups.size() && !groups[at].search.next())
            ++at;
        return at;
    }

    // A row's window as the search found it, one interval: passing between
    // its edges, failing beyond. For the table and the profile, never drawn.
    sweep_row found_row(std::size_t row) const {
        const plan_row& where = rows[row];
        sweep_row found{member(where)->name,
                        std::vector<outcome>(axis.size(), outcome::fail),
                        lanes[where.plan].settings[where.row],
                        lanes[where.plan].delays[where.row],
                        {}};
        const sweep_window window = window_of(row);
        std::fill_n(found.results.begin() + static_cast<long>(window.first), window.count,
                    outcome::pass);
        long long original = 0;
        if (member(where)->domain().axis_value_of(originals[row], &original))
            found.original = original;
        return found;
    }

    sweep_window window_of(std::size_t row) const {
        for (const line_group& group : groups) {
            const auto line = std::find(group.rows.begin(), group.rows.end(), row);
            if (line != group.rows.end())
                return group.search.window(static_cast<std::size_t>(line - group.rows.begin()));
        }
        return {};
    }

    std::vector<std::string> summary() const {
        std::size_t lines = 0, without = 0, alone = 0;
        long long runs = 0, alone_runs = 0;
        for (const line_group& group : groups) {
            (group.by_status ? alone : lines) += group.rows.size();
            (group.by_status ? alone_runs : runs) += group.runs;
        }
        for (const edge_table& table : tables)
            without += static_cast<std::size_t>(
                std::count_if(table.lines.begin(), table.lines.end(),
                              [](const edge_line& line) { return line.no_window; }));
        std::vector<std::string> said = {amount_text(lines, "lines") + " by their data bits in " +
                                         amount_text(runs, "runs")};
        if (alone)
            said.push_back(amount_text(alone, "lines") +
                           " without a data bit by the exit status in " +
                           amount_text(alone_runs, "runs"));
        if (stopped)
            said.push_back("stopped before every edge was found");
        else
            said.push_back(without ? amount_text(without, "lines") + " without a window"
                                   : "every line has a window");
        return said;
    }

    const deskew_options given;
    const std::vector<sweep_plan> lanes;
    const std::vector<plan_row> rows;  // every lane's, in order
    std::vector<line_group> groups;    // searched one after another
    const value_axis axis;
    const facts about;
    std::vector<long long> originals;  // per row
    std::size_t recorded = 0;          // points
    bool stopped = false;
    std::vector<sweep_results> found_lanes;           // per lane, once concluded
    std::vector<edge_table> tables;                   // per controller and direction
    std::vector<std::optional<std::size_t>> centres;  // per row, of its window
};

// The lanes of a controller in one direction: CONTROLLER-readK::dq, K from 0.
void add_lanes(const std::string& controller, const char* direction,
               std::vector<std::string>* lanes) {
    for (unsigned lane = 0;; ++lane) {
        const std::string name = controller + direction + std::to_string(lane) + "::dq";
        if (!property::get_property(name + "0"))
            return;
        lanes->push_back(name);
    }
}

// The lanes WHAT names: a controller's, a lane, or every controller's.
bool lanes_named(const std::string& what, std::vector<std::string>* lanes) {
    std::vector<std::string> controllers;
    dq_line line;
    const std::string suffix = "-read0::dq0";
    if (what == "all") {
        for (const auto& [name, prop] : property::properties())
            if (name.size() > suffix.size() &&
                name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0)
                controllers.emplace_back(name.substr(0, name.size() - suffix.size()));
    } else if (property::get_property(what + suffix)) {
        controllers.push_back(what);
    } else if (parse_dq_line(what + "0", &line) && property::get_property(what + "0")) {
        lanes->push_back(what);
        return true;
    } else {
        report("%s is no controller, lane of DQ lines or all; nothing written", what.c_str());
        return false;
    }
    for (const std::string& controller : controllers) {
        add_lanes(controller, "-read", lanes);
        add_lanes(controller, "-write", lanes);
    }
    return true;
}

// Groups of the lines with a data bit, one per controller and direction in
// the order first named, then each line without one alone.
bool plan_groups(const std::vector<sweep_plan>& lanes, const std::vector<plan_row>& rows,
                 const deskew_options& options, std::vector<line_group>* groups) {
    const std::size_t stride = options.full ? 1 : coarse_stride;
    const std::size_t values = lanes.front().axis.size();
    std::vector<std::pair<std::string, std::vector<std::size_t>>> together, alone;
    for (std::size_t row = 0; row < rows.size(); ++row) {
        const std::string name = lanes[rows[row].plan].rows[rows[row].row]->name;
        dq_line line;
        parse_dq_line(name, &line);
        if (line.dq >= data_lines) {
            alone.push_back({name, {row}});
            continue;
        }
        const std::string direction = direction_of(name);
        auto group = std::find_if(together.begin(), together.end(),
                                  [&](const auto& each) { return each.first == direction; });
        if (group == together.end())
            group = together.insert(together.end(), {direction, {}});
        group->second.push_back(row);
    }
    together.insert(together.end(), alone.begin(), alone.end());
    for (const auto& [name, members] : together) {
        std::vector<property*> props;
        for (std::size_t row : members)
            props.push_back(lanes[rows[row].plan].rows[rows[row].row]);
        bus_bits bits;
        if (!plan_bits(props, options.bits_path, &bits))
            return false;
        const bool by_status = !bits.bits.front();
        groups->push_back({name, members, std::move(bits), by_status,
                           edge_search(members.size(), values, stride, options.runs)});
    }
    return true;
}

}  // namespace

sweep_request plan_deskew_campaign(int argc, char** argv, std::unique_ptr<campaign_kind>* kind) {
    deskew_options options;
    const sweep_request request = parse_deskew_options(argc, argv, options);
    if (request != sweep_request::run)
        return request;
    if (!options.svg_path.empty()) {
        usage_error("--svg: deskew draws no picture, its values are not all measured");
        return sweep_request::bad;
    }
    std::vector<std::string> names;
    for (const std::string& what : options.whats)
        if (!lanes_named(what, &names))
            return sweep_request::bad;
    std::vector<sweep_plan> lanes;
    for (const std::string& name : names) {
        if (std::count(names.begin(), names.end(), name) > 1) {
            report("%s is named twice; nothing written", name.c_str());
            return sweep_request::bad;
        }
        swept_range range = options.range;
        range.name = name;
        if (!plan_sweep(range, &lanes.emplace_back()))
            return sweep_request::bad;
    }
    std::vector<plan_row> rows = rows_of(lanes);
    std::vector<line_group> groups;
    if (!plan_groups(lanes, rows, options, &groups))
        return sweep_request::bad;
    *kind = std::make_unique<deskew>(std::move(options), std::move(lanes), std::move(rows),
                                     std::move(groups));
    return sweep_request::run;
}
