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

// A step of the board's life and what it leaves: the trial and known-good
// directories, mac-tx::delay and mmc::rdqs, and what trial --status --json says.
struct step {
    const char* name;
    strings args;  // none: a boot
    std::string listing, board, status, err = "";
    int exit = tune_status::ok;
};

struct trial_board : tune_board {
    std::map<std::string, std::string> fresh = files();
    trial_board() {
        change("etc/padkit.d/50-board.conf", "mac-tx::delay = 1\n");
        change("t", "mmc::rdqs = 9\ncore_regulator::microvolts = 1000000\n");
        change("bad", "mmc::rdqs = 1\n");
    }
    std::string listing() const {
        std::string names;
        for (const char* sub : {"var/lib/padkit", "etc/padkit.d"}) {
            std::set<std::string> sorted;
            std::error_code missing;
            for (const auto& entry : fs::directory_iterator(dir / sub, missing))
                sorted.insert(entry.path().filename());
            for (const std::string& name : sorted)
                names += name + " ";
            names += "| ";
        }
        return names;
    }
    std::string values() const {
        std::string out = run({"dump", "mac-tx::delay", "mmc::rdqs"}).out, shown;
        for (std::string::size_type at = 0; (at = out.find(" = ", at)) != std::string::npos; at += 3)
            shown += out.substr(at + 3, out.find('\n', at) - at - 3) + " ";
        return shown;
    }
    std::string status() const {
        run({"trial", "--status", "--json"});
        const std::string json = (scratch / "json").string();
        const std::string python = PYTHON3 " -c 'import json, sys; j = json.load(sys.stdin); "
                                   "print(j[\"state\"], j[\"tries_left\"], j[\"tries_done\"], end=\"\")' <" +
                                   (scratch / "out").string() + " >" + json;
        return std::system(python.c_str()) == 0 ? slurp(json) : "not JSON: " + slurp(scratch / "out");
    }
    void live(const std::vector<step>& steps) {
        for (const step& s : steps) {
            SCOPED_TRACE(s.name);
            if (s.args.empty())
                for (const auto& [path, text] : fresh)
                    change(path, text.c_str());
            strings args = s.args.empty() ? strings{"apply", "--system"} : s.args;
            for (std::string& arg : args)
                arg = on_board(arg);
            const result got = run(args);
            EXPECT_EQ(got.err, on_board(s.err));
            EXPECT_EQ(got.status, s.exit);
            EXPECT_EQ(listing(), s.listing);
            EXPECT_EQ(values(), s.board);
            EXPECT_EQ(status(), s.status);
        }
    }
};

const strings boot, bless = {"bless"}, remove_trial = {"trial", "--remove"};

}  // namespace

TEST(trial, blessed_after_its_first_try_is_known_good) {
    trial_board().live({
        {"installed", {"trial", "--tries", "2", "<B>/t"}, "trial-0001+2-0.conf | 50-board.conf | ", "0 37 ", "pending 2 0"},
        {"untried refused", bless, "trial-0001+2-0.conf | 50-board.conf | ", "0 37 ", "pending 2 0",
         p + "trial " + lib + "trial-0001+2-0.conf has not been tried yet; not blessed\n", tune_status::not_done},
        {"first boot", boot, "trial-0001+1-1.conf | 50-board.conf | ", "1 9 ", "pending 1 1", trying("trial-0001+1-1.conf", "1 of 2")},
        {"blessed", bless, "| 50-board.conf ~trial-0001.conf | ", "1 9 ", "good None None"},
        {"boot after", boot, "| 50-board.conf ~trial-0001.conf | ", "1 9 ", "good None None"},
        {"blessed twice", bless, "| 50-board.conf ~trial-0001.conf | ", "1 9 ", "good None None", p + "no trial to bless\n", tune_status::not_done},
        {"next trial", {"trial", "--now", "<B>/t"}, "trial-0002+2-1.conf | 50-board.conf ~trial-0001.conf | ", "1 9 ", "pending 2 1"},
        {"blessed at once", bless, "| 50-board.conf ~trial-0001.conf ~trial-0002.conf | ", "1 9 ", "good None None"},
    });
}

TEST(trial, never_blessed_runs_out_of_tries) {
    trial_board().live({
        {"refused file", {"trial", "<B>/bad"}, "| 50-board.conf | ", "0 37 ", "none None None", "<B>/bad:1: mmc::rdqs: 1 is not in 2..255\n", tune_status::bad_input},
        {"installed", {"trial", "--tries", "2", "<B>/t"}, "trial-0001+2-0.conf | 50-board.conf | ", "0 37 ", "pending 2 0"},
        {"boot 1", boot, "trial-0001+1-1.conf | 50-board.conf | ", "1 9 ", "pending 1 1", trying("trial-0001+1-1.conf", "1 of 2")},
        {"boot 2", boot, "trial-0001+0-2.conf | 50-board.conf | ", "1 9 ", "pending 0 2", trying("trial-0001+0-2.conf", "2 of 2")},
        {"boot 3", boot, "trial-0001+0-2.bad | 50-board.conf | ", "1 37 ", "bad 0 2", failed("trial-0001+0-2.bad", "2 tries")},
        {"boot 4", boot, "trial-0001+0-2.bad | 50-board.conf | ", "1 37 ", "bad 0 2", failed("trial-0001+0-2.bad", "2 tries")},
        {"bad refused", bless, "trial-0001+0-2.bad | 50-board.conf | ", "1 37 ", "bad 0 2",
         p + "trial " + lib + "trial-0001+0-2.bad failed; not blessed\n", tune_status::not_done},
        {"replaced", {"trial", "<B>/t"}, "trial-0002+3-0.conf | 50-board.conf | ", "1 37 ", "pending 3 0"},
        {"removed", remove_trial, "| 50-board.conf | ", "1 37 ", "none None None"},
        {"removed twice", remove_trial, "| 50-board.conf | ", "1 37 ", "none None None", p + "no trial to remove\n", tune_status::not_done},
    });
}

// The trial's regulator value fits the board where it was installed, not
// the one it boots on: a bad line at boot.
TEST(trial, one_that_cannot_be_applied_fails_at_once) {
    trial_board b;
    b.fresh["sys/class/regulator/regulator.2/max_microvolts"] = "950000\n";
    b.live({
        {"installed", {"trial", "<B>/t"}, "trial-0001+3-0.conf | 50-board.conf | ", "0 37 ", "pending 3 0"},
        {"boot 1", boot, "trial-0001+0-1.bad | 50-board.conf | ", "1 37 ", "bad 0 1",
         trying("trial-0001+2-1.conf", "1 of 3") + lib + "trial-0001+2-1.conf:2: core_regulator::microvolts: "
         "1000000 is not in the regulator's limits 800000..950000\n" + failed("trial-0001+0-1.bad", "1 try")},
        {"boot 2", boot, "trial-0001+0-1.bad | 50-board.conf | ", "1 37 ", "bad 0 1", failed("trial-0001+0-1.bad", "1 try")},
    });
}
