// SPDX-License-Identifier: MIT
// merge: the window that every board passes, from the CSV files of their sweeps.
#include <getopt.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "properties/property.h"
#include "runtime/exit_status.h"
#include "runtime/report.h"
#include "tune/commands.h"
#include "tune/profile/input_text.h"
#include "tune/result_csv.h"
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

// What one file holds, and the board it is named after.
struct board_file {
    std::string path, board;
    struct stat identity;  // the file itself, which no output may be
    swept_cells rows;
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

// Reads a sweep's CSV; stops at the first bad line, which is reported as FILE:LINE.
bool read_board(const std::string& path, board_file* file) {
    std::string text;
    if (!read_csv_file(path, &text, &file->identity))
        return false;
    file->path = shown(path);
    file->board = board_name(path);
    if (!read_csv_lines(text, file->path, &file->about,
                        [file](const std::string& line, bool header, std::string* problem) {
                            if (!header)
                                return take_sweep_row(line, &file->rows, problem);
                            *problem = "expected the header name,value,result";
                            return line == "name,value,result";
                        }))
        return false;
    for (auto& [name, cells] : file->rows.cells)
        cells.board = file->board;
    if (!file->rows.names.empty())
        return true;
    report("%s: no measured value", file->path.c_str());
    return false;
}

// Each property of the files as a sweep with a row per board; false, said,
// when a file lacks a property of another or the boards share no value.
bool line_up_boards(const std::vector<board_file>& files, std::vector<sweep_results>* merged) {
    std::vector<std::string> names;
    for (const board_file& file : files)
        for (const std::string& name : file.rows.names)
            if (std::find(names.begin(), names.end(), name) == names.end())
                names.push_back(name);
    for (const std::string& name : names) {
        std::vector<board_cells> boards;
        std::size_t most = 0;
        for (const board_file& file : files) {
            const auto cells = file.rows.cells.find(name);
            if (cells == file.rows.cells.end()) {
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
        for (sweep_row& row : property_results.rows)
            axis_settings(domain, property_results.axis, &row.settings, &row.delays);
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
