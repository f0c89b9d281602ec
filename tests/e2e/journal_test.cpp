// SPDX-License-Identifier: MIT
// padkit-tune-sim runs that survive a hang: killed with SIGKILL (standing in for a hung board),
// resumed or restored from their journal; the watchdog kept alive; every record on disk in time.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <set>
#include <string>

#include "runtime/exit_status.h"
#include "tests/e2e/sim_board.h"

namespace {

const std::string p = "padkit-tune-sim: ", in_flight = " (in flight when the run stopped)\n";

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

std::multiset<std::string> lines_of(const std::string& text) {
    std::istringstream in(text);
    std::multiset<std::string> lines;
    for (std::string line; std::getline(in, line);)
        lines.insert(line);
    return lines;
}

// What a picture draws, read back by svg_shows.py, without its title and legend.
std::string drawn(const fs::path& svg) {
    std::system((SVG_SHOWS " " + svg.string() + " | grep -v -e ^title -e ^legend >" + svg.string() + ".txt").c_str());
    return slurp(svg.string() + ".txt");
}

// WORDS and a command that logs each POINT to the scratch "runs", does THEN at KILL, passes where PASS holds.
strings run_words(const sim_board& b, strings words, const std::string& point, const std::string& kill,
                  const std::string& then, const std::string& pass) {
    words.insert(words.end(), {"--", "sh", "-c",
                               "echo " + point + " >>" + (b.scratch / "runs").string() + "; [ " + point +
                                   " != " + kill + " ] || " + then + "; " + pass});
    return words;
}

// The program run under strace with OPTIONS. LeakSanitizer refuses to run under ptrace; a sanitized build runs here
// without it.
void under_strace(sim_board& b, const strings& options) {
    const std::string asan = std::getenv("ASAN_OPTIONS") ? std::getenv("ASAN_OPTIONS") : "";
    if (asan.find(":detect_leaks=0") == std::string::npos)
        setenv("ASAN_OPTIONS", (asan + ":detect_leaks=0").c_str(), 1);
    b.launcher = {"strace", "-f"};
    b.launcher.insert(b.launcher.end(), options.begin(), options.end());
}

using namespace tune_status;

}  // namespace

// Killed and resumed: as one run in which the killed point failed, but shown as a hang. The
// shmoo passes only where the board holds Y.
TEST(PadkitTuneJournal, KilledAndResumedAsIfInOneGo) {
    if (lacks(PYTHON3))
        GTEST_SKIP() << "needs python3";
    const std::string dq3 = "tarnm-ddra-read0::dq3";
    const std::string y_held =
        "[ $(" PADKIT_SIM_EMULATOR " \"" + PADKIT_SIM + "\" mac-tx::delay 2>/dev/null) = $PADKIT_SHMOO_Y_VALUE ]";
    // clang-format off
    const struct { const char* name; strings words; std::string point, kill, pass, hang; strings dump; } rows[] = {
        {"sweep signed, kept", {"sweep", "-y", "--keep", "centre", dq3, "-4", "4"},
            "$PADKIT_SWEEP_VALUE", "-2", "[ $PADKIT_SWEEP_VALUE -le 3 ]", dq3 + ": -2", {"dump", dq3}},
        {"sweep in parallel, a hang for every line", {"sweep", "-y", "--parallel", "tarnm-ddra-read0::dq", "-4", "4"},
            "$PADKIT_SWEEP_VALUE", "-2", "[ $PADKIT_SWEEP_VALUE -ge -3 ] || echo 1 >$PADKIT_FAILING_BITS",
            "tarnm-ddra-read0::dq: -2", {"dump", "tarnm-ddra-read0::dq"}},
        {"shmoo mid-row", {"shmoo", "-y", "mmc::rdqs", "30", "33", "mac-tx::delay", "0", "2"},
            "$PADKIT_SHMOO_X_VALUE,$PADKIT_SHMOO_Y_VALUE", "31,1", "[ $PADKIT_SHMOO_X_VALUE -le 32 ] && " + y_held,
            "mmc::rdqs: 31, mac-tx::delay: 1", {"dump", "mmc::rdqs", "mac-tx::delay"}},
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        tune_board killed, whole;
        result runs[2];
        for (int i = 0; i < 2; ++i) {
            const sim_board& b = i ? whole : killed;
            const std::string at = b.scratch.string() + "/";
            strings words = row.words;
            words.insert(words.begin() + 2, {"--csv", at + "csv", "--svg", at + "svg", "--profile", at + "conf"});
            if (!i)
                words.insert(words.begin() + 2, {"--journal", at + "j"});
            runs[i] = b.run(run_words(b, words, row.point, row.kill, i ? "exit 1" : "kill -KILL $PPID", row.pass));
            ASSERT_EQ(runs[i].status, i ? tune_status::ok : 128 + SIGKILL);
        }
        const auto killed_file = [&](const char* name) { return slurp(killed.scratch / name); };
        const auto whole_file = [&](const char* name) { return slurp(whole.scratch / name); };
        const std::string started = killed_file("csv").substr(killed_file("csv").find("date: "), 31);
        const result resumed = killed.run({"resume", (killed.scratch / "j").string()}, {{"TZ", "XYZ-5:30"}});
        EXPECT_EQ(resumed.status, tune_status::ok) << resumed.err;
        EXPECT_NE(replaced(resumed.out, "H hang  ", "").find('H'), std::string::npos);
        EXPECT_NE(killed_file("svg").find("class=\"cell hang\""), std::string::npos);
        EXPECT_EQ(replaced(replaced(resumed.out, "H hang  ", ""), "H", "."), runs[1].out);
        EXPECT_EQ(results_of(replaced(killed_file("csv"), "hang", "fail")), results_of(whole_file("csv")));
        EXPECT_EQ(replaced(drawn(killed.scratch / "svg"), "hang", "fail"), drawn(whole.scratch / "svg"));
        EXPECT_EQ(lines_of(killed_file("runs")), lines_of(whole_file("runs")));
        EXPECT_NE(killed_file("csv").find("\n# " + started + "\n"), std::string::npos) << started;
        EXPECT_NE(killed_file("svg").find(started + "<"), std::string::npos) << started;
        EXPECT_EQ(settings_of(killed_file("conf")), settings_of(whole_file("conf")));
        EXPECT_NE(settings_of(killed_file("conf")), "");
        EXPECT_EQ(killed.run(row.dump).out, whole.run(row.dump).out);
        EXPECT_EQ(resumed.err, p + row.hang + " counted as a hang" + in_flight + runs[1].err);
    }
}

// --retry-hang measures the value in flight again, killed there again too; passing, it reads as a sweep in one go.
TEST(PadkitTuneJournal, RetryHangMeasuresTheValueInFlightAgain) {
    const std::string dq3 = "tarnm-ddra-read0::dq3", pass = "[ $PADKIT_SWEEP_VALUE -le 3 ]";
    tune_board whole, b;
    const result one_go = whole.run({"sweep", "-y", dq3, "-4", "4", "--", "sh", "-c", pass});
    const std::string journal = (b.scratch / "j").string(), runs = (b.scratch / "runs").string();
    const std::string twice = "[ $(grep -c -- -2 " + runs + ") -gt 2 ] || kill -KILL $PPID";
    const strings sweep = {"sweep", "-y", "--journal", journal, dq3, "-4", "4"};
    ASSERT_EQ(b.run(run_words(b, sweep, "$PADKIT_SWEEP_VALUE", "-2", twice, pass)).status, 128 + SIGKILL);
    ASSERT_EQ(b.run({"resume", "--retry-hang", journal}).status, 128 + SIGKILL);
    const result retried = b.run({"resume", "--retry-hang", journal});
    EXPECT_EQ(retried.out, one_go.out);
    EXPECT_EQ(retried.err, p + dq3 + ": -2 measured again" + in_flight + one_go.err);
}

// A run removes the temporary files that a run killed before left beside the result it writes: regular files so named,
// nothing else.
TEST(PadkitTuneJournal, LeftoverTemporariesOfTheResultRemovedNothingElse) {
    tune_board b;
    const fs::path at = b.scratch;
    const strings removed = {".conf.padkit-AbC123", ".conf.padkit-zz9Q0x"};
    const strings kept = {".conf.padkit-AbC12",
                          ".conf.padkit-AbC1234",
                          "conf.padkit-AbC123",
                          ".conf.padkit-Ab-123",
                          ".conf2.padkit-AbC123",
                          ".other.padkit-AbC123",
                          "target"};
    for (const strings& names : {removed, kept})
        for (const std::string& name : names)
            std::ofstream(at / name) << name;
    fs::create_symlink(at / "target", at / ".conf.padkit-Lnk789");
    EXPECT_EQ(b.run({"sweep", "-y", "--profile", (at / "conf").string(), "mmc::rdqs", "30", "31", "--", "true"}).status,
              ok);
    for (const std::string& name : removed)
        EXPECT_FALSE(fs::exists(at / name)) << name;
    for (const std::string& name : kept)
        EXPECT_EQ(slurp(at / name), name);
    EXPECT_TRUE(fs::is_symlink(at / ".conf.padkit-Lnk789"));
}

// Journals cut or changed from a whole sweep's; a refused one leaves board, journal and CSV unwritten.
TEST(PadkitTuneJournal, TornResumesEndedGarbledUnknownAndForeignRefused) {
    tune_board b;
    const std::string journal = (b.scratch / "j").string(), csv = (b.scratch / "out.csv").string();
    const std::string original = b.run({"dump", "mmc::rdqs"}).out;
    const strings sweep = {"sweep", "-y",        "--keep", "centre", "--journal", journal, "--csv",
                           csv,     "mmc::rdqs", "30",     "33",     "--",        "true"};
    ASSERT_EQ(b.run(sweep).status, tune_status::ok);
    const std::string whole = slurp(journal), torn = whole.substr(0, whole.find("try \"mmc::rdqs\" \"33\"") - 6);
    const std::string unkept = whole.substr(0, whole.size() - 4), foreign = replaced(torn, PADKIT_VERSION, "0.0.1");
    // clang-format off
    const struct { const char* name; std::string text; int status; std::string out_or_err; } rows[] = {
        {"torn last line", torn, ok, "mmc::rdqs  ##H#\n"},
        {"stopped while keeping", unkept, not_done,
            journal + ": the run stopped while it kept the centre; put back instead"},
        {"ended", whole, bad_input, journal + ": the sweep it records has ended; nothing written"},
        {"garbled", replaced(torn, "\"31\"", "\"31"), bad_input, journal + ":8: garbled record"},
        {"unknown property", replaced(torn, "mmc::rdqs", "mmc::nothing"), bad_input, "mmc::nothing"},
        {"another version", foreign, bad_input,
            journal + ":1: written by padkit-tune \"0.0.1\"; this is " PADKIT_VERSION},
    };
    // clang-format on
    for (const auto& row : rows) {
        b.change("../j", row.text.c_str());
        std::remove(csv.c_str());
        const auto board = b.files();
        const result got = b.run({"resume", journal});
        EXPECT_EQ(got.status, row.status) << row.name;
        EXPECT_NE((row.status ? got.err : got.out).find(row.out_or_err), std::string::npos) << row.name << got.err;
        if (row.status == tune_status::not_done) {
            EXPECT_EQ(b.run({"dump", "mmc::rdqs"}).out, original) << row.name;
            EXPECT_EQ(slurp(journal), row.text + "end\n") << row.name;
        }
        if (row.status == tune_status::bad_input) {
            EXPECT_TRUE(b.files() == board && !fs::exists(csv)) << row.name;
            EXPECT_EQ(slurp(journal), row.text) << row.name;
        }
    }
}

// And leaves the result files of what was measured, the hang included, marked partial.
TEST(PadkitTuneJournal, RestoreAfterKillPutsBackEveryOriginal) {
    tune_board b;
    const std::string dq = "tarnm-ddra-read0::dq", journal = (b.scratch / "j").string();
    b.change("fives", (dq + " = {5,5,5,5,5,5,5,5}").c_str());
    b.run({"apply", (b.dir / "fives").string()});
    const std::string csv = (b.scratch / "csv").string(), svg = (b.scratch / "svg").string();
    const strings sweep = {"sweep", "-y", "--journal", journal, "--csv", csv, "--svg", svg, dq, "0", "2"};
    const result killed =
        b.run(run_words(b, sweep, "$PADKIT_SWEEP_NAME$PADKIT_SWEEP_VALUE", dq + "12", "kill -KILL $PPID", "true"));
    ASSERT_EQ(killed.status, 128 + SIGKILL);
    ASSERT_EQ(b.run({"dump", dq}).out.find("{5,5,5,5,5,5,5,5}"), std::string::npos);
    const result got = b.run({"resume", "--restore", journal});
    EXPECT_EQ(got.status, tune_status::ok) << got.err;
    EXPECT_NE(got.out.find(dq + "1  ##H\n"), std::string::npos) << got.out;
    EXPECT_EQ(b.run({"dump", dq}).out, "# delays: -5 -5 -5 -5 -5 -5 -5 -5\n" + dq + " = {5,5,5,5,5,5,5,5}\n");
    const std::string text = slurp(journal);
    EXPECT_EQ(text.substr(text.size() - 17), "\nresult hang\nend\n");
    const std::string rows = slurp(csv);
    EXPECT_NE(rows.find("\n" + dq + "1,+2,hang\n# original: " + dq + "0 = 5 (delay -5)\n"), std::string::npos) << rows;
    EXPECT_NE(rows.find("\n# partial: "), std::string::npos) << rows;
    const std::string shown = "\n" + drawn(svg);
    EXPECT_NE(shown.find("\ncell " + dq + "1 = +2: hang\n"), std::string::npos) << shown;
    EXPECT_NE(shown.find("\npartial partial: not every value was measured\n"), std::string::npos) << shown;
}

// The stand-in is a plain file: it keeps every byte the sweep writes.
TEST(PadkitTuneJournal, WatchdogKeptAliveWhileTheCommandRunsThenClosed) {
    tune_board b;
    b.change("dev/watchdog0", "");
    const result got = b.run({"sweep", "-y", "--journal", (b.scratch / "j").string(), "--watchdog", "/dev/watchdog0",
                              "mmc::rdqs", "30", "30", "--", "sleep", "4"});
    const std::string written = slurp(b.dir / "dev/watchdog0");
    EXPECT_EQ(got.status, tune_status::ok) << got.err;
    const auto dots = std::count(written.begin(), written.end(), '.');
    EXPECT_TRUE(dots >= 2 && dots <= 8 && written.back() == 'V') << written;
    EXPECT_EQ(b.run({"sweep", "-y", "--watchdog", "/dev/watchdog0", "mmc::rdqs", "30", "30", "--", "true"}).status,
              tune_status::bad_input);
}

// Register writes go to a new regs file each (.regs-XXXXXX, renamed into place).
TEST(PadkitTuneJournal, EveryRecordOnDiskBeforeTheNextWrite) {
    if (lacks("strace"))
        GTEST_SKIP() << "needs strace";
    if (*PADKIT_SIM_EMULATOR)
        GTEST_SKIP() << "strace follows the emulator, not the program";
    tune_board b;
    const std::string journal = (b.scratch / "j").string(), log = (b.scratch / "strace").string();
    under_strace(b, {"-y", "-o", log, "-e", "trace=fsync,fdatasync,write,pwrite64"});
    ASSERT_EQ(b.run({"sweep", "-y", "--journal", journal, "mac-tx::delay", "0", "3", "--", "true"}).status,
              tune_status::ok);
    std::istringstream in(slurp(log));
    std::string events;
    for (std::string line; std::getline(in, line);)
        if (line.find("/.regs-") != std::string::npos && line.find(" write(") != std::string::npos)
            events += 'W';
        else if (line.find(" fsync(") != std::string::npos && line.find(journal + ">") != std::string::npos)
            events += 'S';
    // The header; per value its try, the write, its result; the original put back; the end.
    EXPECT_EQ(events, "SSWSSWSSWSSWSWS");
}

// SIGTERM at each fsync in turn, the journal's creation first: held from before the watchdog (a stand-in file) is
// opened, so that its last byte is the magic close.
TEST(PadkitTuneJournal, StopSignalAtAnySyncLeavesTheWatchdogClosed) {
    if (lacks("strace"))
        GTEST_SKIP() << "needs strace";
    if (*PADKIT_SIM_EMULATOR)
        GTEST_SKIP() << "strace follows the emulator, not the program";
    tune_board b;
    const std::string journal = (b.scratch / "j").string();
    int status = 128 + SIGTERM;
    for (int n = 1; status == 128 + SIGTERM; ++n) {
        b.change("dev/watchdog0", "");
        fs::remove(journal);
        under_strace(b, {"-o", "/dev/null", "--inject=fsync:signal=TERM:when=" + std::to_string(n)});
        status = b.run({"sweep", "-y", "--journal", journal, "--watchdog", "/dev/watchdog0", "mmc::rdqs", "30", "31",
                        "--", "true"})
                     .status;
        const std::string written = slurp(b.dir / "dev/watchdog0");
        EXPECT_EQ(written.empty() ? '-' : written.back(), 'V') << "SIGTERM at fsync " << n;
    }
    EXPECT_EQ(status, ok) << "past the last fsync";
}

// Killed at each rename in turn (the profile's), then resumed unless its journal ended: every result file as a run
// in one go leaves it, and the centre kept.
TEST(PadkitTuneJournal, KillAtAnyRenameLosesNoResultFile) {
    if (lacks("strace"))
        GTEST_SKIP() << "needs strace";
    if (*PADKIT_SIM_EMULATOR)
        GTEST_SKIP() << "strace follows the emulator, not the program";
    for (const std::string call : {"rename", "renameat", "renameat2"}) {
        if (std::system(("strace -o /dev/null -e trace=" + call + " true 2>/dev/null").c_str()) != 0)
            continue;
        for (int n = 1, status = 128 + SIGKILL; status == 128 + SIGKILL; ++n) {
            SCOPED_TRACE("killed at " + call + " " + std::to_string(n));
            tune_board b;
            const std::string at = b.scratch.string() + "/";
            under_strace(b, {"-o", "/dev/null", "--inject=" + call + ":signal=KILL:when=" + std::to_string(n)});
            status = b.run({"sweep", "-y", "--keep", "centre", "--journal", at + "j", "--csv", at + "csv", "--svg",
                            at + "svg", "--profile", at + "conf", "mmc::rdqs", "30", "32", "--", "true"})
                         .status;
            b.launcher.clear();
            const bool ended = slurp(at + "j").find("\nend\n") != std::string::npos;
            EXPECT_EQ(ended ? ok : b.run({"resume", at + "j"}).status, ok);
            const std::string csv = slurp(at + "csv");
            EXPECT_EQ(csv.substr(std::min(csv.size(), csv.find("name,value,result"))),
                      "name,value,result\nmmc::rdqs,30,pass\nmmc::rdqs,31,pass\nmmc::rdqs,32,pass\n"
                      "# original: mmc::rdqs = 37\n# summary: mmc::rdqs: window 30..32 (3 values), centre 31; neither "
                      "edge found\n"
                      "# summary: mmc::rdqs: original 37: not on the axis\n");
            EXPECT_NE(slurp(at + "svg").find("</svg>"), std::string::npos);
            EXPECT_EQ(settings_of(slurp(at + "conf")), "mmc::rdqs = 31\n");
            EXPECT_EQ(b.run({"dump", "mmc::rdqs"}).out, "mmc::rdqs = 31\n");
            EXPECT_NE(slurp(at + "j").find("\ntemporary \"" + at + ".conf.padkit-"), std::string::npos);
            for (const auto& entry : fs::directory_iterator(b.scratch))
                EXPECT_EQ(entry.path().filename().string().find(".padkit-"), std::string::npos) << entry.path();
        }
    }
}
