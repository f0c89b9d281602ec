// SPDX-License-Identifier: MIT
// The sweep's test command: its process group, time-out and stop signals, and the files of its output.
#include <signal.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "tune/sweep/command_run.h"
#include "tune/sweep/run_log.h"

namespace {

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

TEST(CommandRun, OutcomesTimeoutAndWhatTheCommandLeftRunning) {
    char dir[] = "/tmp/padkit-command-run-XXXXXX";
    ASSERT_TRUE(mkdtemp(dir));
    const std::string pid_file = std::string(dir) + "/pid";
    // clang-format off
    const struct { const char* name; std::vector<std::string> argv; double timeout; command_result::kind what;
                   int detail; } rows[] = {
        {"killed", {"sh", "-c", "kill -KILL $$"}, 5, command_result::failed, 0},
        {"not found", {"/nonexistent/command"}, 5, command_result::not_started, ENOENT},
        // A background sleep shares the group: it ends with the command.
        {"timed out, group ended", {"sh", "-c", "sleep 30 & echo $! >" + pid_file + "; wait"}, 1.2,
            command_result::timed_out, 0},
        {"passed, group ended", {"sh", "-c", "sleep 30 & echo $! >" + pid_file}, 5, command_result::passed, 0},
        {"ignores SIGTERM", {"sh", "-c", "trap '' TERM; sleep 30"}, 0.2, command_result::timed_out, 0},
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
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
    rmdir(dir);
}

TEST(StopSignals, HeldUntilTakenIgnoredOnesStayIgnored) {
    signal(SIGHUP, SIG_IGN);
    stop_signals stop;
    EXPECT_TRUE(sigismember(&stop.set(), SIGINT) && sigismember(&stop.set(), SIGTERM));
    EXPECT_FALSE(sigismember(&stop.set(), SIGHUP));
    raise(SIGINT);
    EXPECT_EQ(stop.take(), SIGINT);
    EXPECT_EQ(stop.take(), 0);
    signal(SIGHUP, SIG_DFL);
}

TEST(CommandRun, CommandExistsLikeExecvpWouldFindIt) {
    // clang-format off
    const std::pair<const char*, bool> rows[] = {
        {"sh", true},
        {"/bin/sh", true},
        {"no-such-command-here", false},
        {"/etc/passwd", false},
        {"/tmp", false},
    };
    // clang-format on
    for (const auto& [command, exists] : rows)
        EXPECT_EQ(command_exists(command), exists) << command;  // the command is the row's name
}

// A point as the progress line shows it becomes one file name in the directory, whatever its bytes.
TEST(CommandRun, RunLogNamedAfterThePointAndTheRun) {
    // clang-format off
    const struct { const char* point; long long run; const char* path; } rows[] = {
        {"tarnm-ddra-read0::dq3 = -4", 1, "d/tarnm-ddra-read0::dq3=-4.1.log"},
        {"tarnm-ddra::odt = 40, mmc::rdqs = 37", 12, "d/tarnm-ddra::odt=40,mmc::rdqs=37.12.log"},
        {"a/../b = x\t(y)*", 2, "d/a_.._b=x__y__.2.log"},
    };
    // clang-format on
    for (const auto& row : rows)
        EXPECT_EQ(run_log_path("d", row.point, row.run), row.path) << row.point;
}
