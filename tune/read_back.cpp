// SPDX-License-Identifier: MIT
#include "tune/read_back.h"

#include <stdio.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>

#include "properties/property.h"
#include "runtime/report.h"
#include "tune/board/board_io.h"
#include "tune/campaign/replay.h"
#include "tune/kinds.h"
#include "tune/profile/input_text.h"
#include "tune/result_csv.h"
#include "tune/sweep/journal.h"
#include "tune/sweep_options.h"
#include "tune/sweep_plan.h"

namespace {

// A shmoo's row.
struct grid_row {
    long long x, y;
    outcome result;
};

// The rows of a file as its header names them.
struct csv_rows {
    swept_cells cells;  // a sweep's, or a merge's what every board passed
    std::string x_name, y_name;
    std::vector<grid_row> points;
};

bool take_merge_row(const std::string& line, csv_rows* rows, std::string* problem) {
    std::vector<std::string> fields;
    return csv_fields(line, 5, "NAME,VALUE,BOARDS_PASSING,BOARDS,RESULT", &fields, problem) &&
           take_sweep_row(fields[0] + "," + fields[1] + "," + fields[4], &rows->cells, problem);
}

bool take_grid_row(const std::string& line, csv_rows* rows, std::string* problem) {
    std::vector<std::string> fields;
    value_domain domain;
    grid_row point{};
    if (!csv_fields(line, 5, "X_NAME,X_VALUE,Y_NAME,Y_VALUE,RESULT", &fields, problem) ||
        !axis_value(fields[0], fields[1], &domain, &point.x, problem) ||
        !axis_value(fields[2], fields[3], &domain, &point.y, problem) ||
        !csv_outcome(fields[4], &point.result, problem))
        return false;
    if (rows->points.empty()) {
        rows->x_name = fields[0];
        rows->y_name = fields[2];
    } else if (fields[0] != rows->x_name || fields[2] != rows->y_name) {
        return *problem = "not the properties of the rows before", false;
    }
    rows->points.push_back(point);
    return true;
}

// The facts a run gives beyond its rows: its values and originals, by name.
struct given_facts {
    std::map<std::string, std::vector<long long>> values;
    std::map<std::string, std::string> originals;
};

given_facts split_facts(const facts& all, read_back* out) {
    given_facts given;
    for (const auto& [key, value] : all) {
        const std::string::size_type blank = value.find(' '), equals = value.find(" = ");
        if (key == "values" && blank != std::string::npos) {
            std::vector<long long>& values = given.values[value.substr(0, blank)];
            const std::string rest = value.substr(blank + 1);
            for (std::string::size_type at = 0; at != std::string::npos;) {
                const std::string::size_type next = rest.find(' ', at);
                long long number = 0;
                std::string problem;
                if (parse_signed_value(rest.substr(at, next - at), &number, &problem))
                    values.push_back(number);
                at = next == std::string::npos ? next : next + 1;
            }
        } else if (key == "original" && equals != std::string::npos) {
            given.originals[value.substr(0, equals)] = value.substr(equals + 3);
        } else if (key == partial_key) {
            out->partial = true;
        } else if (key == "summary") {
            // A sweep's is worked out again from its rows.
            if (out->kind == "deskew")
                out->summary.push_back(value);
        } else if (key != table_key) {
            out->about.emplace_back(key, value);
        }
    }
    return given;
}

// The axis value of the original of NAME, when the file gives one its domain holds.
std::optional<long long> original_of(const std::string& name, const given_facts& given,
                                     long long* code = nullptr) {
    const auto original = given.originals.find(name);
    long long taken = 0, value = 0;
    std::string problem;
    const value_domain domain = property::get_property(name)->domain();
    if (original == given.originals.end() ||
        !domain.code_of_shown(original->second.substr(0, original->second.find(" (delay ")), &taken,
                              &problem) ||
        !domain.axis_value_of(taken, &value))
        return std::nullopt;
    if (code)
        *code = taken;
    return value;
}

// The rows NAMES as one sweep over the values given for SWEPT, or else the
// longest row's; each row's values must begin that axis.
bool sweep_of(const std::string& swept, const std::vector<std::string>& names, const csv_rows& rows,
              const given_facts& given, bool partial, const std::string& path,
              sweep_results* results) {
    results->axis = axis_kind(property::get_property(names.front())->domain());
    results->partial = partial;
    const auto values = given.values.find(swept);
    if (values != given.values.end())
        results->axis.values = values->second;
    else
        for (const std::string& name : names)
            if (rows.cells.cells.at(name).values.size() > results->axis.values.size())
                results->axis.values = rows.cells.cells.at(name).values;
    for (const std::string& name : names) {
        const board_cells& cells = rows.cells.cells.at(name);
        const std::vector<long long>& axis = results->axis.values;
        if (cells.values.size() > axis.size() ||
            !std::equal(cells.values.begin(), cells.values.end(), axis.begin())) {
            report("%s: %s: its values are not those the sweep visits", path.c_str(), name.c_str());
            return false;
        }
        sweep_row row{name, cells.results, {}, {}, original_of(name, given)};
        axis_settings(property::get_property(name)->domain(), results->axis, &row.settings,
                      &row.delays);
        results->rows.push_back(row);
    }
    if (!swept.empty() && (names.size() > 1 || swept != names.front()))
        results->group = swept;
    return true;
}

// What the "sweep" fact names first: the property or composite swept.
std::string swept_name(const read_back& out, const given_facts& given) {
    const std::string what = fact_value(out.about, "sweep");
    if (!what.empty())
        return what.substr(0, what.find(' '));
    return given.values.empty() ? "" : given.values.begin()->first;
}

grid_axis grid_axis_of(const std::string& name, const std::vector<grid_row>& points,
                       long long grid_row::*value, const given_facts& given) {
    grid_axis axis;
    static_cast<value_axis&>(axis) = axis_kind(property::get_property(name)->domain());
    axis.name = name;
    const auto values = given.values.find(name);
    if (values != given.values.end())
        axis.values = values->second;
    else
        for (const grid_row& point : points)
            axis.values.push_back(point.*value);
    std::sort(axis.values.begin(), axis.values.end());
    axis.values.erase(std::unique(axis.values.begin(), axis.values.end()), axis.values.end());
    return axis;
}

// The original's text as the shmoo showed it, and its position when on the axis.
std::string grid_original(const grid_axis& axis, const given_facts& given,
                          std::optional<std::size_t>* at) {
    long long code = 0;
    const std::optional<long long> value = original_of(axis.name, given, &code);
    if (!value)
        return "";
    if (axis.position_of(*value) < axis.size())
        *at = axis.position_of(*value);
    return *at ? axis.text_at(**at) : code_text(property::get_property(axis.name), code);
}

bool grid_of(const csv_rows& rows, const given_facts& given, const std::string& path,
             read_back* out) {
    out->grid.emplace(grid_axis_of(rows.x_name, rows.points, &grid_row::x, given),
                      grid_axis_of(rows.y_name, rows.points, &grid_row::y, given));
    grid_results& grid = *out->grid;
    for (const grid_row& point : rows.points) {
        const grid_point at{grid.x.position_of(point.x), grid.y.position_of(point.y)};
        if (at.x == grid.x.size() || at.y == grid.y.size()) {
            report("%s: %s, %s: not on the grid its values make", path.c_str(),
                   grid.x.text(point.x).c_str(), grid.y.text(point.y).c_str());
            return false;
        }
        grid.cells[at.y][at.x] = point.result;
    }
    std::optional<std::size_t> x, y;
    grid.original_x = grid_original(grid.x, given, &x);
    grid.original_y = grid_original(grid.y, given, &y);
    if (x && y)
        grid.original = grid_point{*x, *y};
    const std::string what = fact_value(out->about, "shmoo");
    const std::string::size_type weighed = what.rfind(", weighed ");
    if (weighed != std::string::npos)
        std::sscanf(what.c_str() + weighed, ", weighed %lld:%lld", &grid.weigh_x, &grid.weigh_y);
    grid.partial = out->partial;
    out->safest = find_safest(grid, grid.original);
    return true;
}

// A deskew's line: a row of what was run, or a table's header or line, its
// name in the table fact before it.
bool take_deskew_line(const std::string& line, const facts& all, std::vector<edge_table>* tables,
                      std::string* problem) {
    if (is_edge_table_header(line)) {
        const std::string named =
            all.empty() || all.back().first != table_key ? "" : all.back().second;
        const std::string::size_type in = named.rfind(", in ");
        if (in == std::string::npos)
            return *problem = std::string("a table without its \"# ") + table_key + ": \" line",
                   false;
        tables->push_back({named.substr(0, in), named.substr(in + 5), {}});
        return true;
    }
    std::vector<std::string> fields;
    if (tables->empty())
        return csv_fields(line, 3, "LINE,VALUE,RESULT", &fields, problem);
    return parse_edge_line_csv(line, &tables->back().lines.emplace_back(), problem);
}

bool results_of(const csv_rows& rows, const facts& all, const std::string& path, read_back* out) {
    const given_facts given = split_facts(all, out);
    if (out->kind == "shmoo")
        return grid_of(rows, given, path, out);
    if (out->kind == "deskew")
        return true;
    const std::vector<std::string>& names = rows.cells.names;
    if (out->kind == "sweep") {
        out->sweeps.emplace_back();
        return sweep_of(swept_name(*out, given), names, rows, given, out->partial, path,
                        &out->sweeps.back());
    }
    for (const std::string& name : names) {
        out->sweeps.emplace_back();
        if (!sweep_of(name, {name}, rows, given, out->partial, path, &out->sweeps.back()))
            return false;
    }
    return true;
}

// The CSV TEXT of the file at PATH.
bool read_csv_text(const std::string& text, const std::string& path, read_back* out) {
    csv_rows rows;
    facts all;
    const bool read = read_csv_lines(
        text, path, &all, [&](const std::string& line, bool header, std::string* problem) {
            if (header) {
                out->kind = line == "name,value,result"                         ? "sweep"
                            : line == "name,value,boards_passing,boards,result" ? "merge"
                            : line == "x_name,x_value,y_name,y_value,result"    ? "shmoo"
                            : line + "\n" == deskew_csv_header                  ? "deskew"
                                                                                : "";
                *problem =
                    "expected the header of a sweep's, a shmoo's, a merge's or a deskew's "
                    "CSV file";
                return !out->kind.empty();
            }
            return out->kind == "sweep"    ? take_sweep_row(line, &rows.cells, problem)
                   : out->kind == "merge"  ? take_merge_row(line, &rows, problem)
                   : out->kind == "deskew" ? take_deskew_line(line, all, &out->tables, problem)
                                           : take_grid_row(line, &rows, problem);
        });
    if (!read)
        return false;
    if (rows.cells.names.empty() && rows.points.empty() && out->tables.empty()) {
        report("%s: no measured value", path.c_str());
        return false;
    }
    return results_of(rows, all, path, out);
}

// The CSV file the journal's campaign wrote, from its journal TEXT; *DATED:
// the journal keeps the date the campaign started.
bool journal_csv(const std::string& text, const std::string& path, std::string* csv, bool* dated) {
    journal_contents journal;
    std::string problem;
    if (!parse_journal(text, PADKIT_VERSION, &journal, &problem)) {
        report("%s:%s", path.c_str(), problem.c_str());
        return false;
    }
    *dated = !journal.header.date.empty();
    if (*dated)
        set_campaign_date(journal.header.date);
    char* buffer = nullptr;
    std::size_t size = 0;
    std::FILE* memory = open_memstream(&buffer, &size);
    if (!memory)
        return false;
    const bool replayed = replay_journal(journal, path, resumed_kind, memory) != nullptr;
    std::fclose(memory);
    csv->assign(buffer, size);
    std::free(buffer);
    return replayed;
}

}  // namespace

bool read_back_file(const std::string& path, read_back* out) {
    std::string text;
    struct stat identity {};
    const std::string name = shown(path);
    if (!read_csv_file(path, &text, &identity))
        return false;
    if (text.rfind("journal \"", 0) != 0)
        return read_csv_text(text, name, out);
    std::string csv;
    bool dated = false;
    if (!journal_csv(text, name, &csv, &dated) || !read_csv_text(csv, name, out))
        return false;
    // The journal does not keep the host, nor the date before it had one.
    out->about.erase(std::remove_if(out->about.begin(), out->about.end(),
                                    [dated](const fact& each) {
                                        return each.first == "host" ||
                                               (each.first == "date" && !dated);
                                    }),
                     out->about.end());
    return true;
}
