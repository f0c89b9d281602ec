// SPDX-License-Identifier: MIT
// trial and bless: a profile that has to prove itself at boot before it
// joins the known-good ones.
#include "tune/profile/trial.h"

#include <getopt.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "properties/strict_value.h"
#include "runtime/exit_status.h"
#include "runtime/report.h"
#include "runtime/run_lock.h"
#include "runtime/stop_signals.h"
#include "tune/profile/apply.h"
#include "tune/profile/commands.h"
#include "tune/profile/input_text.h"
#include "tune/profile/json.h"
#include "tune/profile/profile.h"
#include "tune/profile/trial_store.h"
#include "tune/usage/usage.h"

namespace {

const int most_tries = 99;

const char* state_name(trial_state state) {
    switch (state) {
    case trial_state::pending: return "pending";
    case trial_state::bad: return "bad";
    case trial_state::good: return "good";
    case trial_state::none: break;
    }
    return "none";
}

// The listing under the run lock, so that no other run changes it meanwhile.
bool locked_listing(trial_listing* listing) { return take_run_lock() && list_trials(listing); }

void report_failed(const trial& t) {
    if (!t.regular)
        report("trial %s is not a regular file; not applied", t.path.c_str());
    else
        report("trial %s failed after %d %s; not applied", t.path.c_str(), t.done,
               t.done == 1 ? "try" : "tries");
}

// Renames a failed trial bad, and says so.
void mark_bad(trial* t) {
    const std::string bad = trial_dir() + "/" + bad_name(t->number, t->done);
    if (move_synced(t->path, bad))
        t->path = bad;
    t->state = trial_state::bad;
    report_failed(*t);
}

// Marks a trial applied whole in this boot, the one mark bless takes. Says
// why it cannot.
bool mark_applied(const trial& t) {
    const std::string boot = boot_id();
    if (boot.empty()) {
        report("no boot id to mark %s applied; it cannot be blessed in this boot", t.path.c_str());
        return false;
    }
    return move_synced(t.path, trial_dir() + "/" + pending_name(t.number, t.left, t.done, boot));
}

// Applies a trial whose try is counted, with the stop signals HELD since the
// count, and marks it applied; one that cannot be applied is bad at once.
// Then a signal held meanwhile ends the program.
int apply_counted(trial t, bool verbose, const stop_signals& held) {
    int status = apply_profiles({t.path}, true, false, verbose, true);
    if (status != tune_status::ok)
        mark_bad(&t);
    else if (!mark_applied(t))
        status = tune_status::not_done;
    end_if_stopped(held, status);
    return status;
}

// Counts one try of a pending trial on disk: the count is there before
// anything is written, so that a board hanging in the trial still uses it up.
bool count_try(trial* t) {
    const std::string counted =
        trial_dir() + "/" + pending_name(t->number, t->left - 1, t->done + 1);
    if (!move_synced(t->path, counted))
        return false;
    t->path = counted;
    --t->left;
    ++t->done;
    return true;
}

int install(const std::string& file, int tries, bool now) {
    if (file == "-")
        return usage_error("trial needs a file, not standard input");
    std::vector<setting> settings;
    if (!load_profiles({file}, &settings))
        return tune_status::bad_input;
    std::ifstream in(file, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (!in.is_open() || in.bad()) {
        report("%s: cannot be read again", file.c_str());
        return tune_status::bad_input;
    }
    trial_listing listing;
    if (!locked_listing(&listing))
        return tune_status::not_done;
    trial t;
    t.number = listing.highest + 1;
    if (t.number > 9999) {
        // The last number is held by the trial itself, or by a blessed one.
        if (listing.current.state == trial_state::good)
            report("no trial number left: remove the ~trial-*.conf files of %s",
                   known_good_dir().c_str());
        else
            report("no trial number left: remove the trial %s first (trial --remove)",
                   listing.current.path.c_str());
        return tune_status::not_done;
    }
    // --now tries it at once: that is its first try, counted as it is installed.
    t.left = tries - now;
    t.done = now;
    const std::string name = pending_name(t.number, t.left, t.done);
    // From here on a stop signal waits until the trial is installed (and
    // with --now marked applied or bad).
    const stop_signals held;
    if (!install_trial_file(source_line(shown(file)) + text, name))
        return tune_status::not_done;
    t.path = trial_dir() + "/" + name;
    // A replaced trial left behind by a cut-short run is ignored, the newest counts.
    if (!remove_synced(listing.trial_files))
        return tune_status::not_done;
    std::printf("%s installed as %s (%d %s)\n", shown(file).c_str(), t.path.c_str(), tries,
                tries == 1 ? "try" : "tries");
    std::fflush(stdout);
    return now ? apply_counted(t, false, held) : tune_status::ok;
}

void print_status(const trial& t, bool json) {
    const bool tries = t.state == trial_state::pending || t.state == trial_state::bad;
    const bool pending = t.state == trial_state::pending;
    const std::string source = t.path.empty() ? "" : source_of(t.path);
    if (json) {
        std::printf(
            "{\"state\": \"%s\", \"file\": %s, \"source\": %s, \"tries_left\": %s, "
            "\"tries_done\": %s, \"applied\": %s}\n",
            state_name(t.state), t.path.empty() ? "null" : json_string(t.path).c_str(),
            source.empty() ? "null" : json_string(source).c_str(),
            tries ? std::to_string(t.left).c_str() : "null",
            tries ? std::to_string(t.done).c_str() : "null",
            pending ? (t.applied ? "true" : "false") : "null");
        return;
    }
    std::printf("state: %s\n", state_name(t.state));
    if (!t.path.empty())
        std::printf("file: %s\n", t.path.c_str());
    if (!source.empty())
        std::printf("source: %s\n", source.c_str());
    if (tries)
        std::printf("tries left: %d\ntries done: %d\n", t.left, t.done);
    if (pending)
        std::printf("applied in this boot: %s\n", t.applied ? "yes" : "no");
}

int remove_trial() {
    trial_listing listing;
    if (!locked_listing(&listing))
        return tune_status::not_done;
    if (listing.trial_files.empty()) {
        report("no trial to remove");
        return tune_status::not_done;
    }
    return remove_synced(listing.trial_files) ? tune_status::ok : tune_status::not_done;
}

}  // namespace

int apply_trial(bool verbose) {
    trial_listing listing;
    if (!locked_listing(&listing))
        return tune_status::not_done;
    trial t = listing.current;
    // Its last try did not end in a blessing.
    if (t.state == trial_state::pending && t.left == 0)
        mark_bad(&t);
    else if (t.state == trial_state::bad)
        report_failed(t);
    if (t.state != trial_state::pending)
        return tune_status::ok;
    const stop_signals held;
    if (!count_try(&t))
        return tune_status::not_done;
    report("trying %s: try %d of %d", t.path.c_str(), t.done, t.done + t.left);
    const int status = apply_counted(t, verbose, held);
    // The known-good profiles are in place, unless putting back failed.
    return status == tune_status::left_changed ? status : tune_status::ok;
}

int trial_command(int argc, char** argv) {
    static const option options[] = {{"tries", required_argument, nullptr, 't'},
                                     {"now", no_argument, nullptr, 'n'},
                                     {"status", no_argument, nullptr, 's'},
                                     {"json", no_argument, nullptr, 'j'},
                                     {"remove", no_argument, nullptr, 'r'},
                                     {"help", no_argument, nullptr, 'h'},
                                     {}};
    int tries = 3;
    bool tries_given = false, now = false, status = false, json = false, remove = false;
    for (int opt; (opt = getopt_long(argc, argv, "h", options, nullptr)) != -1;) {
        uint32_t number = 0;
        std::string problem;
        switch (opt) {
        case 't':
            if (!parse_strict_u32(optarg, &number, &problem))
                return usage_error("--tries: " + problem);
            if (number < 1 || number > most_tries)
                return usage_error("--tries takes 1 to " + std::to_string(most_tries));
            tries = static_cast<int>(number);
            tries_given = true;
            break;
        case 'n': now = true; break;
        case 's': status = true; break;
        case 'j': json = true; break;
        case 'r': remove = true; break;
        case 'h': print_usage(stdout); return tune_status::ok;
        default: return unknown_option(argv);
        }
    }
    const int files = argc - optind;
    const bool installing = tries_given || now || files > 0;
    if (status + remove + installing > 1 || (json && !status))
        return usage_error("trial: --status [--json], --remove and installing go alone");
    if (remove)
        return remove_trial();
    if (status) {
        trial_listing listing;
        if (!list_trials(&listing))
            return tune_status::not_done;
        print_status(listing.current, json);
        return tune_status::ok;
    }
    if (files != 1)
        return usage_error("trial needs one FILE");
    return install(argv[optind], tries, now);
}

int bless_command(int argc, char** argv) {
    static const option options[] = {{"help", no_argument, nullptr, 'h'}, {}};
    for (int opt; (opt = getopt_long(argc, argv, "h", options, nullptr)) != -1;) {
        if (opt != 'h')
            return unknown_option(argv);
        print_usage(stdout);
        return tune_status::ok;
    }
    if (optind < argc)
        return usage_error("bless takes no FILE");
    trial_listing listing;
    if (!locked_listing(&listing))
        return tune_status::not_done;
    const trial& t = listing.current;
    if (t.state == trial_state::bad) {
        report("trial %s %s; not blessed", t.path.c_str(),
               t.regular ? "failed" : "is not a regular file");
        return tune_status::not_done;
    }
    if (t.state != trial_state::pending) {
        report("no trial to bless");
        return tune_status::not_done;
    }
    if (t.done == 0) {
        report("trial %s has not been tried yet; not blessed", t.path.c_str());
        return tune_status::not_done;
    }
    if (!t.applied) {
        report("trial %s has not been applied whole in this boot; not blessed", t.path.c_str());
        return tune_status::not_done;
    }
    const std::string blessed = known_good_dir() + "/" + blessed_name(t.number);
    if (!make_dir(known_good_dir()) || !move_synced(t.path, blessed))
        return tune_status::not_done;
    std::printf("%s blessed: %s\n", t.path.c_str(), blessed.c_str());
    return tune_status::ok;
}
