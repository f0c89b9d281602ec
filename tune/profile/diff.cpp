// SPDX-License-Identifier: MIT
// diff: the settings of profiles that the board does not hold, like diff(1)
// exits: 0 equal, 1 differences, 2 trouble.
#include <getopt.h>

#include <cstdio>
#include <string>
#include <vector>

#include "runtime/exit_status.h"
#include "runtime/report.h"
#include "runtime/run_lock.h"
#include "tune/board/board_io.h"
#include "tune/profile/commands.h"
#include "tune/profile/json.h"
#include "tune/profile/profile.h"
#include "tune/usage/usage.h"

namespace {

// A difference as a JSON object; a DQ delay's signed delays beside its codes.
void print_json_difference(const change& d, const char* separator) {
    const value_domain domain = d.prop->domain();
    const std::string board = domain.shown(d.before), file = domain.shown(d.after);
    std::string delays;
    if (!domain.delay_text(d.before).empty())
        delays = ", \"board_delay\": " + json_string(domain.delay_text(d.before)) +
                 ", \"file_delay\": " + json_string(domain.delay_text(d.after));
    std::printf("%s  {\"name\": %s, \"board\": %s, \"file\": %s%s}", separator,
                json_string(d.prop->name).c_str(), json_value(&board).c_str(),
                json_value(&file).c_str(), delays.c_str());
}

}  // namespace

int diff_command(int argc, char** argv) {
    static const option options[] = {
        {"json", no_argument, nullptr, 'j'}, {"help", no_argument, nullptr, 'h'}, {}};
    bool json = false;
    for (int opt; (opt = getopt_long(argc, argv, "h", options, nullptr)) != -1;) {
        switch (opt) {
        case 'j': json = true; break;
        case 'h': print_usage(stdout); return tune_status::ok;
        default: return unknown_option(argv);
        }
    }
    if (optind == argc)
        return usage_error("diff needs a FILE");
    std::vector<setting> settings;
    if (!load_profiles({argv + optind, argv + argc}, &settings) || !take_run_lock())
        return tune_status::bad_input;
    std::vector<property*> unreadable;
    const std::vector<change> differences = compare_with_board(settings, &unreadable);
    for (property* prop : unreadable)
        report("%s: unreadable", prop->name.c_str());
    const char* separator = "\n";
    if (json)
        std::fputs("[", stdout);
    for (const change& d : differences) {
        if (json)
            print_json_difference(d, separator);
        else
            std::printf("%s: %s -> %s\n", d.prop->name.c_str(), code_text(d.prop, d.before).c_str(),
                        code_text(d.prop, d.after).c_str());
        separator = ",\n";
    }
    if (json)
        std::fputs(differences.empty() ? "]\n" : "\n]\n", stdout);
    return !unreadable.empty()   ? tune_status::bad_input
           : differences.empty() ? tune_status::ok
                                 : tune_status::not_done;
}
