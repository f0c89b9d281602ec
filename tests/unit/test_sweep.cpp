// SPDX-License-Identifier: MIT
// The sweep's units, for what a sweep end to end does not show cheaply: the test
// command's process group and stop signals, and the confirmation on a terminal.
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tune/sweep/command_run.h"
#include "tune/sweep/consent.h"
#include "tune/sweep/progress.h"
#include "tests/unit/fake_hw.h"

namespace {

// Whether the process is gone (or only waiting to be reaped), within a while.
bool ends(pid_t pid) {
    for (int tries = 0; tries < 100; ++tries) {
        std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
        std::string skip, state;
        if (!(stat >> skip >> skip >> state) || state == "Z")
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
}

}  // namespace

TEST(command_run, OutcomesTimeoutAndWhatTheCommandLeftRunning) {
    const std::string pid_file = "/tmp/padkit-sweep-pid-" + std::to_string(getpid());
    const struct { std::vector<std::string> argv; double timeout; command_result::kind what; int detail; } rows[] = {
        {{"sh", "-c", "kill -KILL $$"}, 5, command_result::failed, 0},
        {{"/nonexistent/command"}, 5, command_result::not_started, ENOENT},
        // A background sleep shares the group: it ends with the command.
        {{"sh", "-c", "sleep 30 & echo $! >" + pid_file + "; wait"}, 1.2, command_result::timed_out, 0},
        {{"sh", "-c", "sleep 30 & echo $! >" + pid_file}, 5, command_result::passed, 0},
        {{"sh", "-c", "trap '' TERM; sleep 30"}, 0.2, command_result::timed_out, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.argv.back());
        stop_signals stop;
        int ticks = 0;
        const auto started = std::chrono::steady_clock::now();
        const command_result got = run_command(row.argv, {}, row.timeout, stop, [&] { ++ticks; });
        EXPECT_EQ(got.what, row.what);
        EXPECT_EQ(got.detail, row.detail);
        EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(10));
        EXPECT_TRUE(row.timeout < 1 || row.what != command_result::timed_out || ticks >= 1);
        pid_t background = 0;
        if (std::ifstream(pid_file) >> background) {
            EXPECT_TRUE(ends(background));
        }
        std::remove(pid_file.c_str());
    }
}

TEST(stop_signals, HeldUntilTakenIgnoredOnesStayIgnored) {
    signal(SIGHUP, SIG_IGN);
    stop_signals stop;
    EXPECT_TRUE(sigismember(&stop.set(), SIGINT) && sigismember(&stop.set(), SIGTERM));
    EXPECT_FALSE(sigismember(&stop.set(), SIGHUP));
    raise(SIGINT);
    EXPECT_EQ(stop.take(), SIGINT);
    EXPECT_EQ(stop.take(), 0);
    signal(SIGHUP, SIG_DFL);
}

TEST(command_run, CommandExistsLikeExecvpWouldFindIt) {
    for (const auto& [command, exists] : std::vector<std::pair<std::string, bool>>{
             {"sh", true}, {"/bin/sh", true}, {"no-such-command-here", false}, {"/etc/passwd", false}, {"/tmp", false}})
        EXPECT_EQ(command_exists(command), exists) << command;
}

TEST(consent, OnlyYOrYesOnATerminalProceeds) {
    const struct { bool terminal; const char* input; consent answer; } rows[] = {
        {true, "y\n", consent::given},       {true, " YES \n", consent::given}, {true, "yess\n", consent::refused},
        {true, "", consent::refused},        {true, "n\ny\n", consent::refused}, {false, "y\n", consent::no_terminal},
    };
    for (const auto& row : rows) {
        std::string input = row.input;
        std::FILE* in = fmemopen(input.data(), input.size() + 1, "r");
        consent answer = consent::given;
        const std::string err = stderr_of([&] { answer = ask_consent("WARNING! x", in, row.terminal, stderr); });
        std::fclose(in);
        EXPECT_EQ(answer, row.answer) << row.input;
        EXPECT_EQ(err, row.terminal ? "WARNING! x\nContinue? [y/N] " : "WARNING! x\n");
    }
}

TEST(progress, EstimateAtThePaceSoFar) {
    EXPECT_EQ(progress_text("p", "point", 1, 9, 5), "p (point 1 of 9), 0:05 elapsed") << "nothing done yet";
    EXPECT_EQ(progress_text("p", "point", 3, 9, 20), "p (point 3 of 9), 0:20 elapsed, about 1:10 left") << "2 done";
    EXPECT_EQ(progress_text("p", "value", 2, 2, 3700), "p (value 2 of 2), 1:01:40 elapsed, about 1:01:40 left") << "hours";
}
