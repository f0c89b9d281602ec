// SPDX-License-Identifier: MIT
// Trial profiles through the life of a simulated board; a boot is apply
// --system on the board put back to its fresh values, with a boot id of its own: 1, 2, ...
#include "runtime/exit_status.h"
#include "tests/e2e/sim_board.h"

namespace {

using namespace tune_status;
const std::string p = "padkit-tune-sim: ", lib = "<B>/var/lib/padkit/";
std::string trying(const char* name, const char* count) { return p + "trying " + lib + name + ": try " + count + "\n"; }
std::string failed(const char* name, const char* tries) {
    return p + "trial " + lib + name + " failed after " + tries + "; not applied\n";
}
// mac-tx::delay (known-good 1) and mmc::rdqs (trial 9) on the board.
const std::string fresh = "0 37", known_good = "1 37", tried = "1 9";

// A step of the board's life and what it leaves: the board, the files of
// the trial and known-good directories | what trial --status --json says.
struct step {
    const char* name;
    strings args;  // none: a boot
    std::string board, state, err = "";
    int exit = ok;
    settings changes = {};  // of the board, after a boot's reset
};

struct trial_board : tune_board {
    std::map<std::string, std::string> fresh_files = files();
    int boots = 0;
    trial_board() {
        change("etc/padkit.d/50-board.conf", "mac-tx::delay = 1\n");
        change("t", "mmc::rdqs = 9\ncore_regulator::microvolts = 1000000\n");
        change("bad", "mmc::rdqs = 1\n");
    }
    std::string state() const {
        const std::string out = (scratch / "out").string(), json = (scratch / "json").string();
        run({"trial", "--status", "--json"});
        const std::string python =
            PYTHON3
            " -c 'import json, os, sys; j = json.load(open(sys.argv[1])); "
            "print(*sorted(n for d in sys.argv[2:] if os.path.isdir(d) for n in os.listdir(d)), \"|\", "
            "j[\"state\"], j[\"tries_left\"], j[\"tries_done\"], j[\"applied\"], end=\"\")' " +
            out + on_board(" <B>/var/lib/padkit <B>/etc/padkit.d >") + json;
        return std::system(python.c_str()) == 0 ? slurp(json) : "not JSON: " + slurp(out);
    }
    void live(const std::vector<step>& steps) {
        for (const step& s : steps) {
            SCOPED_TRACE(s.name);
            for (const auto& [path, text] : s.args.empty() ? fresh_files : decltype(fresh_files)())
                change(path, text.c_str());
            if (s.args.empty())
                change("proc/sys/kernel/random/boot_id", (std::to_string(++boots) + "\n").c_str());
            check(*this, {s.args.empty() ? strings{"apply", "--system"} : s.args, s.changes, "...", s.err, s.exit});
            EXPECT_EQ(run({"dump", "mac-tx::delay", "mmc::rdqs"}).out,
                      "mac-tx::delay = " + s.board.substr(0, 1) + "\nmmc::rdqs = " + s.board.substr(2) + "\n");
            EXPECT_EQ(state(), s.state);
        }
    }
};

const strings boot, bless = {"bless"}, remove_trial = {"trial", "--remove"};

}  // namespace

TEST(PadkitTuneTrial, BlessedAfterItsFirstTryIsKnownGood) {
    if (lacks(PYTHON3))
        GTEST_SKIP() << "needs python3";
    // clang-format off
    trial_board().live({
        {"installed", {"trial", "--tries", "2", "<B>/t"},
            fresh, "50-board.conf trial-0001+2-0.conf | pending 2 0 False"},
        {"untried refused", bless,
            fresh, "50-board.conf trial-0001+2-0.conf | pending 2 0 False",
            p + "trial " + lib + "trial-0001+2-0.conf has not been tried yet; not blessed\n", not_done},
        {"first boot", boot,
            tried, "50-board.conf trial-0001+1-1@1.conf | pending 1 1 True",
            trying("trial-0001+1-1.conf", "1 of 2")},
        {"blessed", bless, tried, "50-board.conf ~trial-0001.conf | good None None None"},
        {"boot after", boot, tried, "50-board.conf ~trial-0001.conf | good None None None"},
        {"blessed twice", bless,
            tried, "50-board.conf ~trial-0001.conf | good None None None",
            p + "no trial to bless\n", not_done},
        {"next trial", {"trial", "--now", "<B>/t"},
            tried, "50-board.conf trial-0002+2-1@2.conf ~trial-0001.conf | pending 2 1 True"},
        {"blessed at once", bless, tried, "50-board.conf ~trial-0001.conf ~trial-0002.conf | good None None None"},
    });
    // clang-format on
}

TEST(PadkitTuneTrial, NeverBlessedOrFailedIsLeftOut) {
    if (lacks(PYTHON3))
        GTEST_SKIP() << "needs python3";
    const std::string not_applied = " has not been applied whole in this boot; not blessed\n";
    // clang-format off
    trial_board().live({
        {"refused file", {"trial", "<B>/bad"},
            fresh, "50-board.conf | none None None None",
            p + "<B>/bad:1: mmc::rdqs: 1 is not in 2..255\n", bad_input},
        {"installed", {"trial", "--tries", "2", "<B>/t"},
            fresh, "50-board.conf trial-0001+2-0.conf | pending 2 0 False"},
        {"boot 1", boot,
            tried, "50-board.conf trial-0001+1-1@1.conf | pending 1 1 True",
            trying("trial-0001+1-1.conf", "1 of 2")},
        // Boot 2 stops before the trial: the trial applied in boot 1 is not blessed in boot 2.
        {"boot 2, known-good refused", boot,
            fresh, "50-board.conf trial-0001+1-1@1.conf | pending 1 1 False",
            p + "<B>/etc/padkit.d/50-board.conf:1: expected NAME = VALUE\n", bad_input,
            {{"etc/padkit.d/50-board.conf", "oops\n"}}},
        {"not applied in boot 2", bless,
            fresh, "50-board.conf trial-0001+1-1@1.conf | pending 1 1 False",
            p + "trial " + lib + "trial-0001+1-1@1.conf" + not_applied, not_done},
        {"boot 3", boot,
            tried, "50-board.conf trial-0001+0-2@3.conf | pending 0 2 True",
            trying("trial-0001+0-2.conf", "2 of 2"), ok, {{"etc/padkit.d/50-board.conf", "mac-tx::delay = 1\n"}}},
        {"boot 4", boot,
            known_good, "50-board.conf trial-0001+0-2.bad | bad 0 2 None",
            failed("trial-0001+0-2.bad", "2 tries")},
        {"bad refused", bless,
            known_good, "50-board.conf trial-0001+0-2.bad | bad 0 2 None",
            p + "trial " + lib + "trial-0001+0-2.bad failed; not blessed\n", not_done},
        {"replaced", {"trial", "<B>/t"}, known_good, "50-board.conf trial-0002+3-0.conf | pending 3 0 False"},
        {"removed", remove_trial, known_good, "50-board.conf | none None None None"},
        {"removed twice", remove_trial,
            known_good, "50-board.conf | none None None None",
            p + "no trial to remove\n", not_done},
        {"installed again", {"trial", "<B>/t"}, known_good, "50-board.conf trial-0001+3-0.conf | pending 3 0 False"},
        // The regulator's limit is lower on the board it boots: a bad line fails the trial at once.
        {"cannot be applied", boot,
            known_good, "50-board.conf trial-0001+0-1.bad | bad 0 1 None",
            trying("trial-0001+2-1.conf", "1 of 3") + p + lib + "trial-0001+2-1.conf:3: core_regulator::microvolts: "
            "1000000 is not in the regulator's limits 800000..950000\n" + failed("trial-0001+0-1.bad", "1 try"), ok,
            {{"sys/class/regulator/regulator.2/max_microvolts", "950000\n"}}},
        {"boot after", boot,
            known_good, "50-board.conf trial-0001+0-1.bad | bad 0 1 None",
            failed("trial-0001+0-1.bad", "1 try")},
    });
    // clang-format on
}

// trial says what it installed, and the trial names the file it came from.
TEST(PadkitTuneTrial, NamesTheFileItCameFrom) {
    trial_board b;
    const result installed = b.run({"trial", b.on_board("<B>/t")});
    EXPECT_EQ(installed.out, b.on_board("<B>/t installed as " + lib + "trial-0001+3-0.conf (3 tries)\n"));
    EXPECT_NE(b.run({"trial", "--status"}).out.find(b.on_board("\nsource: <B>/t\n")), std::string::npos);
    const std::string json = b.run({"trial", "--status", "--json"}).out;
    EXPECT_NE(json.find(b.on_board("\"source\": \"<B>/t\"")), std::string::npos) << json;
}
