// SPDX-License-Identifier: MIT
// padkit-memtest as a process: what it refuses, how a signal ends it; padkit-memtest-sim on the simulated board's
// eyes, with the delays set by padkit-sim.
#include <pty.h>
#include <signal.h>

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>

#include "tests/e2e/sim_board.h"

namespace {

struct memtest_row {
    const char* name;
    strings args;
    std::string err;  // "...": what it begins with
    int status;
};

// clang-format off
const memtest_row memtest_rows[] = {
    {"a bus of 8 bits", {"--bus-width", "8"}, "padkit-memtest: --bus-width: 16, 32 or 64, not 8\nusage: ...",
        memtest_status::bad_input},
    {"an unknown pattern", {"--patterns", "random,walking"},
        "padkit-memtest: --patterns: no pattern 'walking'\nusage: ...", memtest_status::bad_input},
};
// clang-format on

TEST(PadkitMemtest, RefusesBadOptionsAndMoreThanTheFreeMemory) {
    sim_board b(PADKIT_MEMTEST);
    for (const memtest_row& row : memtest_rows) {
        const result got = b.run(row.args);
        EXPECT_EQ(cut_as(got.err, row.err), cut_as(row.err, row.err)) << row.name;
        EXPECT_EQ(got.status, row.status) << row.name;
    }
    std::ifstream meminfo("/proc/meminfo");
    std::string key, kib;
    while (meminfo >> key >> kib && key != "MemAvailable:")
        meminfo.ignore(256, '\n');
    const std::string twice = std::to_string(std::stoull(kib) * 2) + "K";
    const result got = b.run({"--size", twice}, {{"PADKIT_FAILING_BITS", (b.scratch / "bits").c_str()}});
    EXPECT_EQ(got.err.rfind("padkit-memtest: --size ", 0), 0u) << got.err;
    EXPECT_NE(got.err.find(" is more than the free memory, "), std::string::npos) << got.err;
    EXPECT_EQ(got.status, memtest_status::bad_input);
    EXPECT_FALSE(fs::exists(b.scratch / "bits"));
}

// A stop signal in the middle of a long run: the report on the terminal, no failing bits, then the signal.
TEST(PadkitMemtest, SigintEndsItAfterItsReport) {
    sim_board b(PADKIT_MEMTEST);
    int terminal = -1;
    const pid_t pid = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (pid == 0) {
        setenv("PADKIT_FAILING_BITS", (b.scratch / "bits").c_str(), 1);
        const std::string run = "exec " PADKIT_SIM_EMULATOR " \"" + PADKIT_MEMTEST + "\" --size 1M --passes 1000000";
        execl("/bin/sh", "sh", "-c", run.c_str(), nullptr);
        _exit(127);
    }
    std::string shown;
    char buffer[4096];
    bool interrupted = false;
    for (ssize_t got; (got = read(terminal, buffer, sizeof buffer)) > 0;) {
        shown.append(buffer, static_cast<std::size_t>(got));
        if (!interrupted && shown.find("(pattern ") != std::string::npos)
            interrupted = kill(pid, SIGINT) == 0;
    }
    close(terminal);
    int status = 0;
    waitpid(pid, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << status;
    EXPECT_NE(shown.find("padkit-memtest: interrupted by Interrupt after "), std::string::npos) << shown;
    EXPECT_NE(shown.find(" of 5000000 patterns; no failing bits written"), std::string::npos) << shown;
    EXPECT_FALSE(fs::exists(b.scratch / "bits"));
}

// A line's delay, counted from the lower (L) or upper (H) edge of its eye.
struct delay {
    const char* line;
    char edge;
    int steps;
};

struct eye_row {
    const char* name;
    const char* bus;
    const char* width;
    std::vector<delay> delays;
    settings changes;
    std::string bits;  // the failing-bits file; "<missing>" when there is none
    int status;
};

// clang-format off
const eye_row eye_rows[] = {
    {"a fresh board", "tarnm-ddra", "32", {}, {}, "", memtest_status::ok},
    {"read lane 1: dq3 a step above its eye, dq4 on its lower edge", "tarnm-ddra", "32",
        {{"tarnm-ddra-read1::dq3", 'H', 1}, {"tarnm-ddra-read1::dq4", 'L', 0}}, {}, "11\n", memtest_status::failed},
    {"write lane 2: dq0 a step below; dq8 outside has no data bit", "tarnm-ddra", "32",
        {{"tarnm-ddra-write2::dq0", 'L', -1}, {"tarnm-ddra-write2::dq8", 'H', 1}}, {}, "16\n", memtest_status::failed},
    {"the last bit of tarnm-ddrb's 64", "tarnm-ddrb", "64", {{"tarnm-ddrb-read7::dq7", 'L', -1}}, {}, "63\n",
        memtest_status::failed},
    {"10 mV below nominal each edge is 2 steps in", "tarnm-ddra", "32",
        {{"tarnm-ddra-read0::dq0", 'L', 2}, {"tarnm-ddra-read0::dq1", 'L', 1}, {"tarnm-ddra-read0::dq2", 'H', -2},
         {"tarnm-ddra-read0::dq3", 'H', -1}}, {{"sys/class/regulator/regulator.2/microvolts", "890000\n"}}, "1 3\n",
        memtest_status::failed},
    {"no delays to read: every bit fails", "tarnm-ddra", "32", {}, {{"regs", nullptr}},
        "0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 22 23 24 25 26 27 28 29 30 31\n",
        memtest_status::failed},
    {"a bus narrower than the controller's", "tarnm-ddrb", "32", {}, {}, "<missing>", memtest_status::bad_input},
};
// clang-format on

// Each row on a fresh board, whose eyes the first run makes from the same seed.
TEST(PadkitMemtestSim, FailsTheBitsOfTheLinesOutsideTheirEyes) {
    for (const eye_row& row : eye_rows) {
        SCOPED_TRACE(row.name);
        sim_board b(PADKIT_MEMTEST_SIM);
        const std::string bits = (b.scratch / "bits").string();
        ASSERT_EQ(b.run({"--size", "64K"}, {{"PADKIT_SWEEP_BUS", "tarnm-ddra"}, {"PADKIT_SIM_EYE_SEED", "7"}}).status,
                  0);
        const auto eyes = eyes_of(b);
        b.program = PADKIT_SIM;
        for (const delay& d : row.delays) {
            const int at = (d.edge == 'L' ? eyes.at(d.line).first : eyes.at(d.line).second) + d.steps;
            ASSERT_EQ(b.run({d.line, std::to_string(at > 0 ? 64 + at : -at)}).status, 0) << d.line;
        }
        for (const auto& [path, content] : row.changes)
            b.change(path, content);
        b.program = PADKIT_MEMTEST_SIM;
        const result got = b.run({"--size", "64K", "--bus-width", row.width},
                                 {{"PADKIT_SWEEP_BUS", row.bus}, {"PADKIT_FAILING_BITS", bits.c_str()}});
        EXPECT_EQ(fs::exists(b.scratch / "bits") ? slurp(b.scratch / "bits") : "<missing>", row.bits) << got.err;
        EXPECT_EQ(got.status, row.status) << got.err;
    }
}

}  // namespace
