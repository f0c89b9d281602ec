// SPDX-License-Identifier: MIT
// padkit-tune-sim runs that survive a hang: killed with SIGKILL (standing in for a hung board),
// resumed or restored from their journal; the watchdog kept alive; every record on disk in time.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "runtime/exit_status.h"
#include "tests/e2e/sim_board.h"

namespace {

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

std::string sorted_lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    std::sort(lines.begin(), lines.end());
    std::string out;
    for (const std::string& line : lines)
        out += line + "\n";
    return out;
}

// The words of a run up to its command, which counts its runs in the board's scratch directory,
// does THEN at the point KILL and passes where PASS holds.
strings run_words(const sim_board& b, strings words, const std::string& point, const std::string& kill,
                  const std::string& then, const std::string& pass) {
    words.insert(words.end(), {"--", "sh", "-c",
                               "echo " + point + " >>" + (b.scratch / "runs").string() + "; [ " + point +
                                   " != " + kill + " ] || " + then + "; " + pass});
    return words;
}

const std::string sweep_value = "$PADKIT_SWEEP_VALUE", shmoo_point = "$PADKIT_SHMOO_X_VALUE,$PADKIT_SHMOO_Y_VALUE";

// A profile without its two header lines, which name the command line and the time.
std::string settings_of(const std::string& profile) {
    return profile.substr(profile.find('\n', profile.find('\n') + 1) + 1);
}

}  // namespace

// Killed, resumed: as one run in which the killed point failed, but shown as a hang. The sweep
// is on signed delays, kept at its centre's code; the shmoo is killed in the middle of a row
// and passes only where the board holds Y.
TEST(padkit_tune_journal, killed_and_resumed_as_if_in_one_go) {
    const std::string dq3 = "tarnm-ddra-read0::dq3", x_le_32 = "[ $PADKIT_SHMOO_X_VALUE -le 32 ]";
    const std::string y_held =
        "[ $(" PADKIT_SIM_EMULATOR " \"" PADKIT_SIM "\" mac-tx::delay 2>/dev/null) = $PADKIT_SHMOO_Y_VALUE ]";
    const strings shmoo = {"shmoo", "-y", "mmc::rdqs", "30", "33", "mac-tx::delay", "0", "2"};
    // clang-format off
    const struct { const char* name; strings words; std::string point, kill, pass; strings dump; } rows[] = {
        {"sweep signed, kept", {"sweep", "-y", "--keep", "centre", dq3, "-4", "4"}, sweep_value, "-2", "[ $PADKIT_SWEEP_VALUE -le 3 ]", {"dump", dq3}},
        {"shmoo mid-row", shmoo, shmoo_point, "31,1", x_le_32 + " && " + y_held, {"dump", "mmc::rdqs", "mac-tx::delay"}},
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        tune_board killed, whole;
        strings files[3];
        result runs[2];
        for (int i = 0; i < 2; ++i) {
            const sim_board& b = i ? whole : killed;
            files[i] = {(b.scratch / "out.csv").string(), (b.scratch / "out.svg").string(),
                        (b.scratch / "out.conf").string()};
            strings words = row.words;
            words.insert(words.begin() + 2, {"--csv", files[i][0], "--svg", files[i][1], "--profile", files[i][2]});
            if (!i)
                words.insert(words.begin() + 2, {"--journal", (b.scratch / "j").string()});
            runs[i] = b.run(run_words(b, words, row.point, row.kill, i ? "exit 1" : "kill -KILL $PPID", row.pass));
            ASSERT_EQ(runs[i].status, i ? tune_status::ok : 128 + SIGKILL);
        }
        const result resumed = killed.run({"resume", (killed.scratch / "j").string()});
        const std::string svg = slurp(files[0][1]);
        EXPECT_EQ(resumed.status, tune_status::ok) << resumed.err;
        EXPECT_NE(resumed.out.find('H'), std::string::npos);
        EXPECT_NE(svg.find("class=\"cell hang\""), std::string::npos);
        EXPECT_EQ(replaced(replaced(resumed.out, "H hang  ", ""), "H", "."), runs[1].out);
        EXPECT_EQ(replaced(slurp(files[0][0]), "hang", "fail"), slurp(files[1][0]));
        EXPECT_EQ(replaced(svg, "hang", "fail"), replaced(slurp(files[1][1]), "hang", "fail"));
        EXPECT_EQ(sorted_lines(slurp(killed.scratch / "runs")), sorted_lines(slurp(whole.scratch / "runs")));
        EXPECT_EQ(settings_of(slurp(files[0][2])), settings_of(slurp(files[1][2])));
        EXPECT_NE(settings_of(slurp(files[0][2])), "");
        EXPECT_EQ(killed.run(row.dump).out, whole.run(row.dump).out);
        EXPECT_EQ(resumed.err, runs[1].err);
    }
}

// Journals changed from one of a whole sweep: a torn last line resumes; one that stopped while it
// kept the centre ends without keeping it again; the others are refused with nothing written,
// neither the board nor the journal nor the CSV.
TEST(padkit_tune_journal, torn_resumes_ended_garbled_unknown_and_foreign_refused) {
    tune_board b;
    const std::string journal = (b.scratch / "j").string(), csv = (b.scratch / "out.csv").string();
    const std::string original = b.run({"dump", "mmc::rdqs"}).out;
    ASSERT_EQ(b.run({"sweep", "-y", "--keep", "centre", "--journal", journal, "--csv", csv, "mmc::rdqs", "30", "33",
                     "--", "true"})
                  .status,
              tune_status::ok);
    const std::string whole = slurp(journal), torn = whole.substr(0, whole.find("try \"mmc::rdqs\" \"33\"") - 6);
    const std::string unkept = whole.substr(0, whole.size() - 4), foreign = replaced(torn, PADKIT_VERSION, "0.0.1");
    // clang-format off
    const struct { const char* name; std::string text; int status; std::string out_or_err; } rows[] = {
        {"torn last line", torn, tune_status::ok, "mmc::rdqs  ##H#\n"},
        {"stopped while keeping", unkept, tune_status::not_done, journal + ": the run stopped while it kept the centre; put back instead"},
        {"ended", whole, tune_status::bad_input, journal + ": the sweep it records has ended; nothing written"},
        {"garbled", replaced(torn, "\"31\"", "\"31"), tune_status::bad_input, journal + ":7: garbled record"},
        {"unknown property", replaced(torn, "mmc::rdqs", "mmc::nothing"), tune_status::bad_input, "mmc::nothing"},
        {"another version", foreign, tune_status::bad_input, journal + ":1: written by padkit-tune \"0.0.1\"; this is " PADKIT_VERSION},
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
            EXPECT_EQ(b.files(), board) << row.name;
            EXPECT_EQ(slurp(journal), row.text) << row.name;
            EXPECT_FALSE(fs::exists(csv)) << row.name;
        }
    }
}

TEST(padkit_tune_journal, restore_after_kill_puts_back_every_original) {
    tune_board b;
    const std::string dq = "tarnm-ddra-read0::dq", journal = (b.scratch / "j").string();
    b.change("fives", (dq + " = {5,5,5,5,5,5,5,5}").c_str());
    b.run({"apply", (b.dir / "fives").string()});
    ASSERT_EQ(b.run(run_words(b, {"sweep", "-y", "--journal", journal, dq, "0", "2"},
                              "$PADKIT_SWEEP_NAME$PADKIT_SWEEP_VALUE", dq + "12", "kill -KILL $PPID", "true"))
                  .status,
              128 + SIGKILL);
    ASSERT_NE(b.run({"dump", dq}).out, dq + " = {5,5,5,5,5,5,5,5}\n");
    const result got = b.run({"resume", "--restore", journal});
    EXPECT_EQ(got.status, tune_status::ok) << got.err;
    EXPECT_NE(got.out.find(dq + "1  ##H\n"), std::string::npos) << got.out;
    EXPECT_EQ(b.run({"dump", dq}).out, dq + " = {5,5,5,5,5,5,5,5}\n");
    const std::string text = slurp(journal);
    EXPECT_EQ(text.substr(text.size() - 17), "\nresult hang\nend\n");
}

// The stand-in is a plain file: it keeps every byte the sweep writes.
TEST(padkit_tune_journal, watchdog_kept_alive_while_the_command_runs_then_closed) {
    tune_board b;
    b.change("dev/watchdog0", "");
    const result got = b.run({"sweep", "-y", "--journal", (b.scratch / "j").string(), "--watchdog", "/dev/watchdog0",
                              "mmc::rdqs", "30", "30", "--", "sleep", "4"});
    const std::string written = slurp(b.dir / "dev/watchdog0");
    EXPECT_EQ(got.status, tune_status::ok) << got.err;
    EXPECT_GE(std::count(written.begin(), written.end(), '.'), 2) << written;
    EXPECT_LE(std::count(written.begin(), written.end(), '.'), 8) << written;
    EXPECT_EQ(written.substr(written.size() - 1), "V");
    EXPECT_EQ(b.run({"sweep", "-y", "--watchdog", "/dev/watchdog0", "mmc::rdqs", "30", "30", "--", "true"}).status,
              tune_status::bad_input);
}

// Register writes go to a new regs file each (.regs-XXXXXX, renamed into place).
TEST(padkit_tune_journal, every_record_on_disk_before_the_next_write) {
    if (*PADKIT_SIM_EMULATOR)
        GTEST_SKIP() << "strace follows the emulator, not the program";
    tune_board b;
    const std::string journal = (b.scratch / "j").string(), log = (b.scratch / "strace").string();
    b.launcher = {"strace", "-f", "-y", "-o", log, "-e", "trace=fsync,fdatasync,write,pwrite64"};
    // LeakSanitizer refuses to run under ptrace; a sanitized build runs here without it.
    const char* asan = std::getenv("ASAN_OPTIONS");
    setenv("ASAN_OPTIONS", (std::string(asan ? asan : "") + ":detect_leaks=0").c_str(), 1);
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
    EXPECT_EQ(events,
              "S"
              "SWS"
              "SWS"
              "SWS"
              "SWS"
              "WS");
}
