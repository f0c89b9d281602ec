// SPDX-License-Identifier: MIT
// apply: all of the profiles' settings or none of them.
#include <getopt.h>

#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "runtime/exit_status.h"
#include "runtime/report.h"
#include "runtime/run_lock.h"
#include "runtime/stop_signals.h"
#include "tune/board/board_io.h"
#include "tune/profile/apply.h"
#include "tune/profile/commands.h"
#include "tune/profile/profile.h"
#include "tune/profile/trial.h"
#include "tune/usage/usage.h"

namespace {

void print_change(const change& c) {
    std::printf("%s: %s -> %s\n", c.prop->name.c_str(), code_text(c.prop, c.before).c_str(),
                code_text(c.prop, c.after).c_str());
}

// The settings that differ from the board, with the board's values; false
// when a property cannot be read.
bool plan(const std::vector<setting>& settings, std::vector<change>* changes) {
    std::vector<property*> unreadable;
    *changes = compare_with_board(settings, &unreadable);
    for (property* prop : unreadable)
        report("%s: unreadable; nothing written", prop->name.c_str());
    return unreadable.empty();
}

// Writes the changes in order; on the first failure puts back what was
// written. Returns the exit status.
int write_all(const std::vector<change>& changes, bool verbose) {
    std::vector<change> written;
    for (const change& c : changes) {
        std::string problem;
        written.push_back(c);
        if (write_checked(c.prop, c.after, &problem)) {
            if (verbose)
                print_change(c);
            continue;
        }
        report("%s: %s", c.prop->name.c_str(), problem.c_str());
        const std::vector<std::string> left = undo(written);
        if (left.empty()) {
            report("apply failed; every property is as it was");
            return tune_status::not_done;
        }
        std::string names;
        for (const std::string& name : left)
            names += " " + name;
        report("apply failed; left changed:%s", names.c_str());
        return tune_status::left_changed;
    }
    return tune_status::ok;
}

}  // namespace

int apply_command(int argc, char** argv) {
    static const option options[] = {{"dry-run", no_argument, nullptr, 'n'},
                                     {"system", no_argument, nullptr, 's'},
                                     {"help", no_argument, nullptr, 'h'},
                                     {}};
    bool dry_run = false;
    bool verbose = false;
    bool system = false;
    for (int opt; (opt = getopt_long(argc, argv, "nvh", options, nullptr)) != -1;) {
        switch (opt) {
        case 'n': dry_run = true; break;
        case 'v': verbose = true; break;
        case 's': system = true; break;
        case 'h': print_usage(stdout); return tune_status::ok;
        default: return unknown_option(argv);
        }
    }
    std::vector<std::string> files(argv + optind, argv + argc);
    if (system && !files.empty())
        return usage_error("apply --system takes no FILE");
    if (!system && files.empty())
        return usage_error("apply needs a FILE");
    if (system && !system_profiles(&files))
        return tune_status::bad_input;
    const int status = apply_profiles(files, system, dry_run, verbose);
    // A trial goes on top of the known-good set, and only on a real boot.
    return system && !dry_run && status == tune_status::ok ? apply_trial(verbose) : status;
}

int apply_profiles(const std::vector<std::string>& files, bool system_files, bool dry_run,
                   bool verbose, bool held_by_caller) {
    if (files.empty())
        return tune_status::ok;
    std::vector<setting> settings;
    if (!load_profiles(files, &settings, system_files))
        return tune_status::bad_input;
    std::vector<change> changes;
    if (!take_run_lock() || !plan(settings, &changes))
        return tune_status::not_done;
    if (dry_run) {
        for (const change& c : changes)
            print_change(c);
        return tune_status::ok;
    }
    std::optional<stop_signals> own;
    if (!held_by_caller)
        own.emplace();
    const int status = write_all(changes, verbose);
    std::fflush(stdout);
    if (own)
        end_if_stopped(*own, status);
    return status;
}

void end_if_stopped(const stop_signals& held, int status) {
    const int signal = held.take();
    if (signal && status != tune_status::left_changed) {
        report("apply %s; ending on %s, held until the writes were done",
               status == tune_status::ok ? "complete" : "failed", strsignal(signal));
        stop_signals::die_of(signal);
    }
}
