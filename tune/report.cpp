// SPDX-License-Identifier: MIT
// report: a campaign's results shown again from its CSV file or its
// journal, as text, JSON or SVG, without the board.
#include <getopt.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "runtime/exit_status.h"
#include "runtime/report.h"
#include "tune/commands.h"
#include "tune/read_back.h"
#include "tune/report_json.h"
#include "tune/sweep/chart.h"
#include "tune/sweep/grid_chart.h"
#include "tune/sweep/grid_svg.h"
#include "tune/sweep/svg.h"
#include "tune/usage/usage.h"

namespace {

// The chart and the summary as the campaign printed them; a merge's
// sections one after another.
void print_text(const read_back& got) {
    const std::size_t columns = terminal_columns(STDOUT_FILENO);
    if (got.grid) {
        print_grid_chart(stdout, *got.grid, got.safest, columns);
        // A file that does not give the original point says nothing of it.
        for (const std::string& line : grid_summary(*got.grid, got.safest))
            if (!got.grid->original_x.empty() || line.rfind("original ", 0) != 0)
                std::printf("%s\n", line.c_str());
        return;
    }
    for (const sweep_results& results : got.sweeps) {
        std::printf("%s", &results == &got.sweeps.front() ? "" : "\n");
        print_chart(stdout, results, columns);
    }
    for (const edge_table& table : got.tables)
        print_edge_table(stdout, table);
    for (const std::string& line : got.summary)
        std::printf("%s\n", line.c_str());
}

void print_picture(const read_back& got) {
    if (got.grid)
        print_grid_svg(stdout, *got.grid, got.safest, got.about);
    else
        print_svg(stdout, got.sweeps, got.about,
                  got.kind == "merge" ? mark::ship : mark::common_centre);
}

void print_json(const read_back& got) {
    report_document document{got.kind, got.about, got.partial, got.tables, nullptr, got.safest};
    if (got.grid)
        document.grid = &*got.grid;
    for (const sweep_results& results : got.sweeps)
        document.tables.push_back(edge_table_of(
            results.group.empty() ? results.rows.front().name : results.group, results));
    print_report_json(stdout, document);
}

}  // namespace

int report_command(int argc, char** argv) {
    static const option long_options[] = {{"json", no_argument, nullptr, 'j'},
                                          {"svg", no_argument, nullptr, 's'},
                                          {"help", no_argument, nullptr, 'h'},
                                          {nullptr, 0, nullptr, 0}};
    void (*print)(const read_back&) = print_text;
    optind = 0;
    for (int option; (option = getopt_long(argc, argv, "+h", long_options, nullptr)) != -1;) {
        if (option == 'h') {
            print_usage(stdout);
            return tune_status::ok;
        }
        if (option != 'j' && option != 's')
            return unknown_option(argv);
        if (print != print_text)
            return usage_error("report takes --json or --svg, not both");
        print = option == 'j' ? print_json : print_picture;
    }
    if (argc - optind != 1)
        return usage_error("report needs one FILE: a CSV file or a journal");
    const std::string path = argv[optind];
    read_back got;
    if (!read_back_file(path, &got))
        return tune_status::bad_input;
    if (got.kind == "deskew" && print == print_picture) {
        report("%s: a deskew draws no picture, its values are not all measured", path.c_str());
        return tune_status::bad_input;
    }
    print(got);
    return tune_status::ok;
}
