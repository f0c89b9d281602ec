// SPDX-License-Identifier: MIT
// merge: the window that every board passes, from the CSV files of their sweeps.
#include <fcntl.h>
#include <getopt.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "properties/property.h"
#include "properties/strict_value.h"
#include "runtime/exit_status.h"
#include "runtime/report.h"
#include "tune/commands.h"
#include "tune/profile/input_text.h"
#include "tune/sweep/boards.h"
#include "tune/sweep/chart.h"
#include "tune/sweep/facts.h"
#include "tune/sweep/outcome.h"
#include "tune/sweep/profile_header.h"
#include "tune/sweep/svg.h"
#include "tune/sweep/whole_file.h"
#include "tune/sweep/window.h"
#include "tune/sweep_options.h"
#include "tune/sweep_plan.h"
#include "tune/usage/usage.h"

namespace {

// Far beyond the CSV of any sweep: a larger file is a mistake (or /dev/zero).
constexpr std::size_t max_csv_size = 16 * 1024 * 1024;
// Longer fields are no property's, value or result, and are shown cut.
constexpr std::size_t max_field_size = 256;
constexpr std::size_t shown_field_size = 40;

// What one file holds: per property, in the order of the file.
struct board_file {
    std::string path, board;
    struct stat identity;  // the file itself, which no output may be
    std::vector<std::string> names;
    std::map<std::string, board_cells> cells;
    std::map<std::string, std::set<long long>> seen;
    facts about;  // from its comment lines "# key: value"
};

// The board a file is named after: its name without directory and ".csv".
std::string board_name(const std::string& path) {
    std::string name = path.substr(path.find_last_of('/') + 1);
    const std::string suffix = ".csv";
    if (name.size() > suffix.size() &&
        name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0)
        name.resize(name.size() - suffix.size());
    return shown(name);
}

bool read_csv(const std::string& path, std::string* text, struct stat* identity) {
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0 || fstat(fd, identity) != 0) {
        report("%s: %s", shown(path).c_str(), std::strerror(errno));
        if (fd >= 0)
            close(fd);
        return false;
    }
    const bool read = read_bounded(fd, shown(path), max_csv_size, text);
    close(fd);
    return read;
}

// A range that cannot be read from this board (the regulator's limits) is
// taken at its widest: merging needs no board.
bool on_axis(const value_domain& domain, long long value) {
    const std::vector<long long> keys = domain.keys();
    return keys.empty() ? domain.axis().holds(value)
                        : std::binary_search(keys.begin(), keys.end(), value);
}

// One line "NAME,VALUE,RESULT" into the file's cells; false with *problem for a bad one.
bool take_row(const std::string& line, board_file* file, std::string* problem) {
    const std::string::size_type first = line.find(','), second = line.find(',', first + 1);
    if (first == std::string::npos || second == std::string::npos ||
        line.find(',', second + 1) != std::string::npos)
        return *problem = "expected NAME,VALUE,RESULT", false;
    const std::string name = line.substr(0, first),
                      value_text = line.substr(first + 1, second - first - 1),
                      result_text = line.substr(second + 1);
    for (const std::string* field : {&name, &value_text, &result_text})
        if (field->size() > max_field_size)
            return *problem = "'" + shown(*field, shown_field_size) + "' is too long", false;
    property* prop = name.empty() ? nullptr : property::get_property(name);
    if (!prop)
        return *problem = name.empty() ? "missing name" : "no property " + shown(name), false;
    const value_domain domain = prop->domain();
    if (!domain.axis().sweepable())
        return *problem = name + ": cannot be swept", false;
    long long value = 0;
    if (!parse_signed_value(value_text, &value, problem))
        return *problem = name + ": " + shown(*problem), false;
    if (!on_axis(domain, value))
        return *problem = name + ": " + value_text + " is not on its axis", false;
    outcome result = outcome::pass;
    if (!parse_outcome(result_text, &result))
        return *problem = "'" + shown(result_text) + "' is not pass, fail, timeout or hang", false;
    board_cells& cells = file->cells[name];
    if (cells.values.empty())
        file->names.push_back(name);
    if (!file->seen[name].insert(value).second)
        return *problem = name + ": " + value_text + " given twice", false;
    if (cells.values.size() == max_sweep_values)
        return *problem = name + ": more than " + std::to_string(max_sweep_values) + " values",
               false;
    cells.board = file->board;
    cells.values.push_back(value);
    cells.results.push_back(result);
    return true;
}

// Reads a sweep's CSV; stops at the first bad line, which is reported as FILE:LINE.
bool read_board(const std::string& path, board_file* file) {
    std::string text;
    if (!read_csv(path, &text, &file->identity))
        return false;
    file->path = shown(path);
    file->board = board_name(path);
    std::string::size_type start = after_byte_order_mark(text);
    bool header = false;
    for (int number = 1; start < text.size(); ++number) {
        std::string::size_type end = text.find('\n', start);
        if (end == std::string::npos)
            end = text.size();
        const std::string line = trimmed(text.substr(start, end - start));
        start = end + 1;
        std::string problem;
        fact about;
        if (parse_fact_line(line, &about))
            file->about.push_back(about);
        else if (!header && line != "name,value,result")
            problem = "expected the header name,value,result";
        else if (!header)
            header = true;
        else if (!line.empty())
            take_row(line, file, &problem);
        if (!problem.empty()) {
            report("%s:%d: %s", file->path.c_str(), number, problem.c_str());
            return false;
        }
    }
    if (!file->names.empty())
        return true;
    report("%s: no measured value", file->path.c_str());
    return false;
}

// Each property of the files as a sweep with a row per board; false, said,
// when a file lacks a property of another or the boards share no value.
bool line_up_boards(const std::vector<board_file>& files, std::vector<sweep_results>* merged) {
    std::vector<std::string> names;
    for (const board_file& file : files)
        for (const std::string& name : file.names)
            if (std::find(names.begin(), names.end(), name) == names.end())
                names.push_back(name);
    for (const std::string& name : names) {
        std::vector<board_cells> boards;
        std::size_t most = 0;
        for (const board_file& file : files) {
            const auto cells = file.cells.find(name);
            if (cells == file.cells.end()) {
                report("%s: no value of %s; merge the boards that swept the same properties",
                       file.path.c_str(), name.c_str());
                return false;
            }
            boards.push_back(cells->second);
            most = std::max(most, cells->second.values.size());
        }
        const value_domain domain = property::get_property(name)->domain();
        merged->push_back(line_up(name, axis_kind(domain), boards));
        sweep_results& property_results = merged->back();
        property_results.partial = std::any_of(
            files.begin(), files.end(),
            [](const board_file& file) { return !fact_value(file.about, partial_key).empty(); });
        if (property_results.axis.size() == 0) {
            report("%s: no value that every board measured", name.c_str());
            return false;
        }
        if (property_results.axis.size() < most)
            report("%s: the boards' sweeps differ; merged on the %zu values every board measured",
                   name.c_str(), property_results.axis.size());
        std::vector<std::string> settings, delays;
        for (long long value : property_results.axis.values) {
            settings.push_back(domain.shown(domain.code_at(value)));
            delays.push_back(domain.delay_text(domain.code_at(value)));
        }
        for (sweep_row& row : property_results.rows) {
            row.settings = settings;
            row.delays = delays;
        }
    }
    return true;
}

// Each property at the centre of its common window, as apply takes it.
void print_merged_profile(std::FILE* out, const std::vector<sweep_results>& merged,
                          const std::string& header) {
    std::fputs(header.c_str(), out);
    for (const sweep_results& property_results : merged) {
        const std::size_t centre = common_centre(property_results);
        const sweep_row& first = property_results.rows.front();
        if (centre == property_results.axis.size())
            std::fprintf(out, "# %s: no common passing value\n", property_results.group.c_str());
        else
            std::fprintf(out, "%s%s = %s\n", delay_comment({first.delays[centre]}).c_str(),
                         property_results.group.c_str(),
                         setting_at(first, property_results.axis, centre).c_str());
    }
}

struct output {
    std::string path;
    whole_file file;
};

// Whether the output would overwrite one of the files merged; says so.
bool is_input(const std::string& path, const std::vector<board_file>& files) {
    struct stat target {};
    if (stat(path.c_str(), &target) != 0)
        return false;
    for (const board_file& file : files)
        if (file.identity.st_dev == target.st_dev && file.identity.st_ino == target.st_ino) {
            report("cannot write %s: it is %s, one of the files merged; nothing written",
                   shown(path).c_str(), file.path.c_str());
            return true;
        }
    return false;
}

}  // namespace

int merge_command(int argc, char** argv) {
    // The outputs first, in the order of outputs[].
    static const option long_options[] = {{"csv", required_argument, nullptr, 'o'},
                                          {"svg", required_argument, nullptr, 'o'},
                                          {"profile", required_argument, nullptr, 'o'},
                                          {"help", no_argument, nullptr, 'h'},
                                          {nullptr, 0, nullptr, 0}};
    output outputs[3];
    output &csv = outputs[0], &svg = outputs[1], &profile = outputs[2];
    int index = 0;
    for (int option; (option = getopt_long(argc, argv, ":h", long_options, &index)) != -1;) {
        switch (option) {
        case 'o':
            if (!take_file_name((std::string("--") + long_options[index].name).c_str(), optarg,
                                &outputs[index].path))
                return tune_status::bad_input;
            break;
        case 'h': print_usage(stdout); return tune_status::ok;
        case ':': return usage_error(std::string(argv[optind - 1]) + " needs a value");
        default: return unknown_option(argv);
        }
    }
    if (optind == argc)
        return usage_error("merge needs the CSV file of a sweep on each board");
    std::vector<board_file> files(static_cast<std::size_t>(argc - optind));
    std::map<std::string, std::string> paths_of_boards;
    for (std::size_t at = 0; at < files.size(); ++at) {
        if (!read_board(argv[optind + static_cast<int>(at)], &files[at]))
            return tune_status::bad_input;
        const std::string& earlier = paths_of_boards[files[at].board];
        if (!earlier.empty()) {
            report("%s and %s both name board %s", earlier.c_str(), files[at].path.c_str(),
                   files[at].board.c_str());
            return tune_status::bad_input;
        }
        paths_of_boards[files[at].board] = files[at].path;
    }
    std::vector<sweep_results> merged;
    if (!line_up_boards(files, &merged))
        return tune_status::bad_input;
    for (output& each : outputs) {
        if (each.path.empty())
            continue;
        if (is_input(each.path, files))
            return tune_status::bad_input;
        if (!each.file.open(each.path)) {
            report("cannot write %s: %s; nothing written", shown(each.path).c_str(),
                   std::strerror(errno));
            return tune_status::bad_input;
        }
    }
    std::vector<facts> board_facts;
    for (const board_file& file : files)
        board_facts.push_back(file.about);
    const facts about = merged_facts(merged, board_facts);
    bool every_window = true;
    for (const sweep_results& property_results : merged) {
        std::printf("%s%s\n", &property_results == &merged.front() ? "" : "\n",
                    property_results.group.c_str());
        print_chart(stdout, property_results, terminal_columns(STDOUT_FILENO));
        every_window =
            every_window && common_centre(property_results) < property_results.axis.size();
    }
    std::fflush(stdout);
    if (!csv.path.empty())
        print_merged_csv(csv.file.stream(), merged, about);
    if (!svg.path.empty())
        print_svg(svg.file.stream(), merged, about, mark::ship);
    if (!profile.path.empty())
        print_merged_profile(profile.file.stream(), merged, profile_header(argc, argv));
    bool written = true;
    for (output& each : outputs) {
        if (!each.path.empty() && !each.file.commit()) {
            report("cannot write %s: %s", shown(each.path).c_str(), std::strerror(errno));
            written = false;
        }
    }
    return every_window && written ? tune_status::ok : tune_status::not_done;
}
