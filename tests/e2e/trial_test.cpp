// SPDX-License-Identifier: MIT
// Trial profiles through the life of a simulated board; a boot is apply
// --system on the board put back to its fresh values.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "runtime/exit_status.h"
#include "tests/e2e/sim_board.h"

namespace {

const std::string p = "padkit-tune-sim: ", lib = "<B>/var/lib/padkit/";
std::string trying(const char* name, const char* count) { return p + "trying " + lib + name + ": try " + count + "\n"; }
std::string failed(const char* name, const char* tries) {
    return p + "trial " + lib + name + " failed after " + tries + "; not applied\n";
}

// What the board holds: mac-tx::delay (known-good 1) and mmc::rdqs (trial 9).
const std::string fresh = "0 37", known_good = "1 37", tried = "1 9";

// A step of the board's life and what it leaves: the trial and known-good
// directories, the board, and what trial --status --json says.
struct step {
    const char* name;
    strings args;  // none: a boot
    std::string listing, board, status, err = "";
    int exit = tune_status::ok;
    settings changes = {};  // of the board, after a boot's reset
};

struct trial_board : tune_board {
    std::map<std::string, std::string> fresh_files = files();
    trial_board() {
        change("etc/padkit.d/50-board.conf", "mac-tx::delay = 1\n");
        change("t", "mmc::rdqs = 9\ncore_regulator::microvolts = 1000000\n");
        change("bad", "mmc::rdqs = 1\n");
    }
    std::string listing() const {
        std::string names;
        for (const char* sub : {"var/lib/padkit", "etc/padkit.d"}) {
            std::error_code missing;
            std::set<std::string> sorted;
            for (const auto& entry : fs::directory_iterator(dir / sub, missing))
                sorted.insert(entry.path().filename());
            for (const std::string& name : sorted)
                names += name + " ";
            names += "| ";
        }
        return names;
    }
    std::string status() const {
        const std::string out = (scratch / "out").string(), json = (scratch / "json").string();
        run({"trial", "--status", "--json"});
        const std::string python = PYTHON3 " -c 'import json, sys; j = json.load(sys.stdin); print(j[\"state\"], "
                                   "j[\"tries_left\"], j[\"tries_done\"], end=\"\")' <" + out + " >" + json;
        return std::system(python.c_str()) == 0 ? slurp(json) : "not JSON: " + slurp(out);
    }
    void live(const std::vector<step>& steps) {
        for (const step& s : steps) {
            SCOPED_TRACE(s.name);
            for (const auto& [path, text] : s.args.empty() ? fresh_files : decltype(fresh_files)())
                change(path, text.c_str());
            for (const auto& [path, text] : s.changes)
                change(path, text);
            strings args = s.args.empty() ? strings{"apply", "--system"} : s.args;
            for (std::string& arg : args)
                arg = on_board(arg);
            const result got = run(args);
            EXPECT_EQ(got.err + std::to_string(got.status), on_board(s.err) + std::to_string(s.exit));
            const std::string dump = run({"dump", "mac-tx::delay", "mmc::rdqs"}).out;
            EXPECT_EQ(dump, "mac-tx::delay = " + s.board.substr(0, 1) + "\nmmc::rdqs = " + s.board.substr(2) + "\n");
            EXPECT_EQ(listing() + status(), s.listing + s.status);
        }
    }
};

const strings boot, bless = {"bless"}, remove_trial = {"trial", "--remove"};

}  // namespace

TEST(trial, blessed_after_its_first_try_is_known_good) {
    trial_board().live({
        {"installed", {"trial", "--tries", "2", "<B>/t"}, "trial-0001+2-0.conf | 50-board.conf | ", fresh, "pending 2 0"},
        {"untried refused", bless, "trial-0001+2-0.conf | 50-board.conf | ", fresh, "pending 2 0",
         p + "trial " + lib + "trial-0001+2-0.conf has not been tried yet; not blessed\n", tune_status::not_done},
        {"first boot", boot, "trial-0001+1-1.conf | 50-board.conf | ", tried, "pending 1 1", trying("trial-0001+1-1.conf", "1 of 2")},
        {"blessed", bless, "| 50-board.conf ~trial-0001.conf | ", tried, "good None None"},
        {"boot after", boot, "| 50-board.conf ~trial-0001.conf | ", tried, "good None None"},
        {"blessed twice", bless, "| 50-board.conf ~trial-0001.conf | ", tried, "good None None", p + "no trial to bless\n", tune_status::not_done},
        {"next trial", {"trial", "--now", "<B>/t"}, "trial-0002+2-1.conf | 50-board.conf ~trial-0001.conf | ", tried, "pending 2 1"},
        {"blessed at once", bless, "| 50-board.conf ~trial-0001.conf ~trial-0002.conf | ", tried, "good None None"},
    });
}

TEST(trial, never_blessed_or_failed_is_left_out) {
    trial_board().live({
        {"refused file", {"trial", "<B>/bad"}, "| 50-board.conf | ", fresh, "none None None", "<B>/bad:1: mmc::rdqs: 1 is not in 2..255\n", tune_status::bad_input},
        {"installed", {"trial", "--tries", "2", "<B>/t"}, "trial-0001+2-0.conf | 50-board.conf | ", fresh, "pending 2 0"},
        {"boot 1", boot, "trial-0001+1-1.conf | 50-board.conf | ", tried, "pending 1 1", trying("trial-0001+1-1.conf", "1 of 2")},
        {"boot 2", boot, "trial-0001+0-2.conf | 50-board.conf | ", tried, "pending 0 2", trying("trial-0001+0-2.conf", "2 of 2")},
        {"boot 3", boot, "trial-0001+0-2.bad | 50-board.conf | ", known_good, "bad 0 2", failed("trial-0001+0-2.bad", "2 tries")},
        {"boot 4", boot, "trial-0001+0-2.bad | 50-board.conf | ", known_good, "bad 0 2", failed("trial-0001+0-2.bad", "2 tries")},
        {"bad refused", bless, "trial-0001+0-2.bad | 50-board.conf | ", known_good, "bad 0 2",
         p + "trial " + lib + "trial-0001+0-2.bad failed; not blessed\n", tune_status::not_done},
        {"replaced", {"trial", "<B>/t"}, "trial-0002+3-0.conf | 50-board.conf | ", known_good, "pending 3 0"},
        {"removed", remove_trial, "| 50-board.conf | ", known_good, "none None None"},
        {"removed twice", remove_trial, "| 50-board.conf | ", known_good, "none None None", p + "no trial to remove\n", tune_status::not_done},
        {"installed again", {"trial", "<B>/t"}, "trial-0001+3-0.conf | 50-board.conf | ", known_good, "pending 3 0"},
        // The regulator's limit is lower on the board it boots: a bad line fails the trial at once.
        {"cannot be applied", boot, "trial-0001+0-1.bad | 50-board.conf | ", known_good, "bad 0 1",
         trying("trial-0001+2-1.conf", "1 of 3") + lib + "trial-0001+2-1.conf:2: core_regulator::microvolts: 1000000 "
         "is not in the regulator's limits 800000..950000\n" + failed("trial-0001+0-1.bad", "1 try"), tune_status::ok,
         {{"sys/class/regulator/regulator.2/max_microvolts", "950000\n"}}},
        {"boot after", boot, "trial-0001+0-1.bad | 50-board.conf | ", known_good, "bad 0 1", failed("trial-0001+0-1.bad", "1 try")},
    });
}
