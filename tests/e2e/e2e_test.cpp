// SPDX-License-Identifier: MIT
// padkit-sim end to end, each case on a board of its own.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <thread>

#include "tests/e2e/sim_board.h"

namespace {

std::string get(const std::string& name, const std::string& value) {
    return "PADKIT: get " + name + " := " + value + "\n";
}
std::string failed_get(const std::string& name) { return "PADKIT: get " + name + "failed.\n"; }
std::string set(const std::string& name, const std::string& value, bool done = true) {
    return "PADKIT: set " + name + " := " + value + (done ? "\n" : " failed.\n");
}
std::string clamped(const std::string& delta, int current, int top, int to) {
    return "warning! applying " + delta + " to current value " + std::to_string(current) + " is out of range (0 ~ " +
           std::to_string(top) + "). adjusted to " + std::to_string(to) + "\n";
}
std::string limited(int current, const std::string& value, int bound) {
    return "apply current value " + std::to_string(current) + " to " + value + "is limited to " +
           std::to_string(bound) + "\n" + set("mmc::rdqs", value);
}
std::string hex(uint32_t word) {
    char text[11];
    std::snprintf(text, sizeof text, "0x%08x", word);
    return text;
}
// Lines of the access trace: a word read from or written to an address.
std::string R(uint32_t address, uint32_t word) { return "R " + hex(address) + " " + hex(word) + "\n"; }
std::string W(uint32_t address, uint32_t word) { return "W " + hex(address) + " " + hex(word) + "\n"; }
// The regs line of ehci0-phy with tx-vref (bits 18..15) at V in an otherwise arbitrary word.
std::string vref_at(uint32_t v) { return "0x00540008 " + hex(0x12305678 | v << 15) + "\n"; }

const std::string usage_text =
    "padkit [options] [<property> [value if write]]\noptions:\n\t-h            : help\n"
    "\t-i            : interactive mode\n\t-l            : list all properties\n"
    "\t-x            : show hex value (default decimal)\n";
const std::string listing_start = "ehci :\n\tehci0-phy::disconnect-threshold : x=0~7  : ...";
const std::string unknown = "No such property registered.\n", no_mem = "open /dev/zeb_mem failed.\n";
const std::string no_lock = "Failed to open <B>/tmp/padkit.lock\nFailed to lock!\n";
const std::string fresh_regs =
    "0x00540008 0x00ac111c\n0x0054001c 0x00ac111c\n0x00540030 0x00ac111c\n"
    "0x00540044 0x00ac111c\n0x00f18120 0x00bb00b4\n0x00f38120 0x00bb00b4\n";
const std::string vref = "ehci0-phy::tx-vref", odt = "tarnm-ddra::odt", clk = "tarnm-ddrb::clkdrv";
const std::string dq3 = "tarnm-ddra-read1::dq3", dqs = "tarnm-ddra-read0::dq", scl = "tarnm-ddrb2::scl";
const std::string mmc = "mmc::rdqs", rdqs = "sys/kernel/debug/mmc0/rdqs";
const std::string cpu = "cpu_regulator::microvolts", reg1 = "sys/class/regulator/regulator.1/";
const std::string volts = reg1 + "microvolts", low = reg1 + "min_microvolts", high = reg1 + "max_microvolts";
const std::string page = "37" + std::string(4094, ' '), past_page = page + " ";  // a kernel file holds a page
const settings worked = {{"regs", "0x00540008 0x12345678\n"}};                   // tx-vref 8
const uint32_t ehci0 = 0x540008, ddra_odt = 0xf38120, ddra_select = 0xf3812c, ddra_dq = 0xf38194;
// dq3 of read register 1 (select 0x307) set to 127: fetched, written with the update bit, and read back
// behind the register's own select (0x7), where the board holds the word with the bit cleared.
const char* dq3_board = "0x00f38194@0x00000307 0x00001234\n0x00f38194@0x7 0xaaaa0000\n";
const std::string dq3_set_to_top = W(ddra_select, 0x307) + R(ddra_dq, 0x1234) + W(ddra_select, 0x307) +
                                   W(ddra_dq, 0x12ff) + W(ddra_select, 0x7) + R(ddra_dq, 0xaaaa0000);
const std::string dq3_board_after =
    "0x00f3812c 0x00000007\n0x00f38194@0x00000007 0xaaaa0000\n0x00f38194@0x00000307 0x0000127f\n";
// The user's regs (comments, a blank line, an entry twice, capitals, a tab) and what a rewrite makes of it.
const char* hand_written_regs =
    "# tuned\n\n0x00540030 0x2 #\n0x00540030 0x1\n# a\n 0X00540008\t0X12345678 # by hand\n# end";
const std::string rewritten_regs = "# a\n0x00540008 0x1234d678 # by hand\n# tuned\n0x00540030 0x00000001 #\n# end\n";
using namespace padkit_status;

// clang-format off
const named_case rows[] = {
    {"no arguments", {{}, {}, usage_text, "", usage, ""}},
    {"-h", {{"-h"}, {}, usage_text, "", usage, ""}},
    {"-x after the name", {{vref, "-x"}, {}, "..3\n" + usage_text, "", ok, ""}},
    {"raw read", {{"-r", vref}, {}, "8\n", "", ok, R(ehci0, 0xac111c)}},
    {"raw read, unknown name", {{"-r", "nope"}, {}, "", unknown, ok, ""}},
    {"listing ignores words", {{"-l", "x", "y"}, {}, listing_start, "", ok, ""}},
    {"-xl is a name", {{"-xl"}, {}, "", unknown, ok, ""}},
    {"field at its top", {{vref, "15"}, worked, "", set(vref, "15"), ok, "-", {{"regs", vref_at(15)}}}},
    {"field past its top", {{vref, "16"}, {}, "", set(vref, "16", false), set_failed, "", {{"regs", fresh_regs}}}},
    {"empty value", {{vref, ""}, {}, "", set(vref, "", false), set_failed, ""}},
    // Characters after a number are ignored, a number is cut to the word, a text without one is refused.
    {"trailing characters", {{vref, "12abc"}, worked, "", set(vref, "12abc"), ok, "-", {{"regs", vref_at(12)}}}},
    {"cut to the word", {{scl, "4294967297"}, {{"regs", ""}},
        "", set(scl, "4294967297"), ok, "-", {{"regs", "0x00f1812c 0x00000010\n0x00f1813c@0x00000010 0x00000001\n"}}}},
    {"-x, no hex digit", {{"-x", vref, "z"}, {},
        "", "failed to parse value z\n" + set(vref, "z", false), set_failed, ""}},
    {"lock not opened", {{"-i"}, {{"tmp/padkit.lock", nullptr}, {"tmp/padkit.lock", "->../regs"}},
        "", no_lock, lock_failed, ""}},
    // A relative change is clamped to the field; the value is read back after the write.
    {"field +, onto its top", {{vref, "+7"}, worked, "", set(vref, "+7"), ok, "-", {{"regs", vref_at(15)}}}},
    {"field +, past its top", {{vref, "+8"}, worked,
        "", clamped("8", 8, 15, 15) + set(vref, "+8"), ok,
        R(ehci0, 0x12345678) + W(ehci0, 0x1237d678) + R(ehci0, 0x1237d678)}},
    {"field -, onto zero", {{vref, "-8"}, worked, "", set(vref, "-8"), ok, "-", {{"regs", vref_at(0)}}}},
    {"field -, past zero", {{vref, "-9"}, worked,
        "", clamped("-9", 8, 15, 0) + set(vref, "-9"), ok, "-", {{"regs", vref_at(0)}}}},
    {"mapped, no key", {{clk, "35"}, {}, "", set(clk, "35", false), set_failed, ""}},
    // 61 clamps to code 15, which has no key.
    {"mapped +, past the field", {{odt, "+1"}, {},
        "", clamped("1", 60, 15, 15) + set(odt, "+1", false), set_failed, R(ddra_odt, 0xbb00b4)}},
    {"mapped, code without key", {{odt}, {{"regs", "0x00f38120 0x00000005\n"}},
        "\n", failed_get(odt), get_failed, R(ddra_odt, 5)}},
    // DQ delays and lanes sit behind the PHY select register; the board clears the update bit.
    {"DQ at its top", {{dq3, "127"}, {{"regs", dq3_board}},
        "", set(dq3, "127"), ok, dq3_set_to_top, {{"regs", dq3_board_after}}}},
    {"composite read", {{dqs}, {{"regs", "0x00f38194@0x100 0x45\n"}},
        "{0,69,0,0,0,0,0,0}\n", get(dqs, "{0,69,0,0,0,0,0,0}"), ok, "-"}},
    {"eMMC at its top", {{mmc, "255"}, {}, "", set(mmc, "255"), ok, "", {{rdqs, "255"}}}},
    {"eMMC past its top", {{mmc, "256"}, {}, "", limited(37, "256", 255), ok, "", {{rdqs, "255"}}}},
    {"eMMC at its bottom", {{mmc, "2"}, {}, "", set(mmc, "2"), ok, "", {{rdqs, "2"}}}},
    {"eMMC past its bottom", {{mmc, "1"}, {}, "", limited(37, "1", 2), ok, "", {{rdqs, "2"}}}},
    {"eMMC top in file, - onto bottom", {{mmc, "-253"}, {{rdqs, "255"}}, "", set(mmc, "-253"), ok, "", {{rdqs, "2"}}}},
    {"eMMC bottom in file, + onto top", {{mmc, "+253"}, {{rdqs, "2"}}, "", set(mmc, "+253"), ok, "", {{rdqs, "255"}}}},
    {"eMMC +, past its top", {{mmc, "+1"}, {{rdqs, "255"}}, "", limited(255, "+1", 255), ok, "", {{rdqs, "255"}}}},
    {"eMMC -, past its bottom", {{mmc, "-1"}, {{rdqs, "2"}}, "", limited(2, "-1", 2), ok, "", {{rdqs, "2"}}}},
    {"eMMC past its top in file", {{mmc}, {{rdqs, "256"}},
        "\n", "current value 256 is not valid, valid range = 2 ~ 255\n" + failed_get(mmc), get_failed, ""}},
    {"eMMC +, no number", {{mmc, "+ "}, {},
        "", "failed to parse value + \n" + set(mmc, "+ ", false), set_failed, "", {{rdqs, "37\n"}}}},
    {"eMMC file of a page", {{mmc, "+1"}, {{rdqs, page.c_str()}}, "", set(mmc, "+1"), ok, "", {{rdqs, "38"}}}},
    {"eMMC file past a page", {{mmc}, {{rdqs, past_page.c_str()}},
        "\n", "current value 0 is not valid, valid range = 2 ~ 255\n" + failed_get(mmc), get_failed, ""}},
    // The regulator: 93% to 107% of the voltage found, within the limits of its files, in steps of 10 mV.
    {"percent at bottom", {{cpu, "93%"}, {}, "", set(cpu, "93%"), ok, "", {{volts, "1030000"}}}},
    {"percent past bottom", {{cpu, "92.99%"}, {},
        "", "percentage 92.99%: out of range\n" + set(cpu, "92.99%", false), set_failed, ""}},
    {"percent at top", {{cpu, "107%"}, {{high, "2147483647"}}, "", set(cpu, "107%"), ok, "", {{volts, "1180000"}}}},
    {"percent past top", {{cpu, "107.01%"}, {},
        "", "percentage 107.01%: out of range\n" + set(cpu, "107.01%", false), set_failed, ""}},
    {"volts at lowest limit", {{cpu, "800000"}, {}, "", set(cpu, "800000"), ok, "", {{volts, "800000"}}}},
    {"volts past lowest limit", {{cpu, "790000"}, {},
        "", "790000mv: out of range(800000-1300000)\n" + set(cpu, "790000", false), set_failed, ""}},
    {"volts at highest limit, limits equal", {{cpu, "1300000"}, {{low, "1300000"}},
        "", set(cpu, "1300000"), ok, "", {{volts, "1300000"}}}},
    {"volts past highest limit", {{cpu, "1300001"}, {},
        "", "1310000mv: out of range(800000-1300000)\n" + set(cpu, "1300001", false), set_failed, ""}},
    // Limits beyond what the driver takes (an int from 0), or crossed, make the regulator unusable.
    {"limit file past an int", {{cpu}, {{high, "2147483648"}}, "\n", failed_get(cpu), get_failed, ""}},
    {"voltage file at zero", {{cpu}, {{volts, "0"}}, "0\n", get(cpu, "0"), ok, ""}},
    {"voltage file below zero", {{cpu}, {{volts, "-1"}}, "\n", failed_get(cpu), get_failed, ""}},
    {"limits crossed", {{cpu, "900000"}, {{low, "1300001"}},
        "", set(cpu, "900000", false), set_failed, "", {{volts, "1100000\n"}}}},
    // Without a usable regs the board has no memory device; the trace still shows each access.
    {"no regs", {{vref, "9"}, {{"regs", nullptr}},
        "", no_mem + no_mem + no_mem + set(vref, "9"), ok, R(ehci0, 0) + W(ehci0, 0x48000) + R(ehci0, 0)}},
    {"bad regs entry", {{vref}, {{"regs", "# fits?\n0x00540008@0x1 0x123456789\n"}},
        "0\n", "<B>/regs:2: bad register entry\n" + no_mem + get(vref, "0"), ok, R(ehci0, 0)}},
    // A rewrite keeps the user's comments with their entries and clears what a killed run left.
    {"regs rewritten", {{vref, "9", "extra"}, {{"regs", hand_written_regs}, {".regs-Ab12Cd", "half"}},
        "", set(vref, "9"), ok, "-", {{"regs", rewritten_regs}, {".regs-Ab12Cd", "<missing>"}}}},
    // Links in the board are not followed: root must not read or replace what they name.
    {"eMMC file a link", {{mmc, "100"}, {{"secret", "7"}, {rdqs, nullptr}, {rdqs, "->../../../../secret"}},
        "", "open <B>/" + rdqs + " failed.\n" + set(mmc, "100", false), set_failed, "", {{"secret", "7"}}}},
    {"regs a link", {{vref}, {{"secret", "0x00540008 0x12345678\n"}, {"regs", nullptr}, {"regs", "->secret"}},
        "0\n", no_mem + get(vref, "0"), ok, R(ehci0, 0)}},
};
// clang-format on

}  // namespace

TEST(PadkitSim, RequestOutputStatusTraceAndBoardFiles) {
    for (const named_case& r : rows) {
        sim_board b(PADKIT_SIM);
        if (!r.c.changes.empty())
            b.run({"-h"});
        check(b, r);
    }
}

// Two runs on a missing board at once: one creates it, neither sees half a board or leaves anything behind.
TEST(PadkitSim, FreshBoard) {
    sim_board first(PADKIT_SIM), second(PADKIT_SIM);
    second.dir = first.dir;
    const pid_t pids[] = {first.start({mmc}), second.start({mmc})};
    for (result got : {first.finish(pids[0]), second.finish(pids[1])}) {
        if (got.err.rfind("Waiting for the lock", 0) == 0)  // the other run held it
            got.err.erase(0, got.err.find('\n') + 1);
        EXPECT_EQ(got.out + got.err + got.trace, "37\n" + get(mmc, "37"));
    }
    for (const auto& entry : fs::directory_iterator(first.scratch))  // the run's own files, and the board
        EXPECT_TRUE(entry.is_regular_file() || entry.path() == first.dir) << entry.path();
    sim_board alone(PADKIT_SIM);
    alone.run({"-h"});
    EXPECT_EQ(first.files(), alone.files());
}

TEST(PadkitSim, RunWaitsForTheLock) {
    sim_board b(PADKIT_SIM);
    b.run({"-h"});
    const int fd = open((b.dir / "tmp/padkit.lock").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(flock(fd, LOCK_EX), 0);
    const pid_t pid = b.start({"-i"});
    // The lock is let go only once the run has said that it waits, however slow its start (an emulator).
    bool waiting = false;
    for (int tries = 0; tries < 12000 && !waiting && waitpid(pid, nullptr, WNOHANG) == 0; ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        waiting = slurp(b.scratch / "err").find("Waiting") != std::string::npos;
    }
    EXPECT_TRUE(waiting) << "finished, or never said that it waits, while the lock was held";
    flock(fd, LOCK_UN);
    close(fd);
    const result got = b.finish(pid);
    EXPECT_EQ(got.out + std::to_string(got.status),
              "Not supported yet.\n" + std::to_string(shell_status(padkit_status::not_supported)));
    EXPECT_EQ(got.err, "Waiting for the lock on " + (b.dir / "tmp/padkit.lock").string() + ", held by process " +
                           std::to_string(getpid()) + ".\n");
}

TEST(PadkitSim, BoardDirectoryFromEnvironment) {
    sim_board b(PADKIT_SIM);
    const std::string state = (b.scratch / "state").string(), home = (b.scratch / "home").string();
    EXPECT_EQ(b.run({"-r", mmc}, {{"PADKIT_SIM_DIR", ""}, {"XDG_STATE_HOME", state.c_str()}}).out, "37\n");
    EXPECT_EQ(slurp(state + "/padkit-sim/regs"), fresh_regs);
    const settings home_only = {{"PADKIT_SIM_DIR", nullptr}, {"XDG_STATE_HOME", ""}, {"HOME", home.c_str()}};
    EXPECT_EQ(b.run({"-r", mmc}, home_only).out, "37\n");
    EXPECT_EQ(slurp(home + "/.local/state/padkit-sim/regs"), fresh_regs);
    const result none = b.run({"-l"}, {{"PADKIT_SIM_DIR", nullptr}, {"XDG_STATE_HOME", ""}, {"HOME", nullptr}});
    EXPECT_EQ(none.out + none.err + std::to_string(none.status),
              "No board directory: set PADKIT_SIM_DIR, XDG_STATE_HOME or HOME.\n" +
                  std::to_string(shell_status(padkit_status::lock_failed)));
    EXPECT_FALSE(fs::exists(b.dir));
}

// A request served whose output is lost fails: the file size limit refuses the first byte.
TEST(PadkitSim, LostOutput) {
    // clang-format off
    const struct { std::string program; strings args; int status; } rows[] = {
        {PADKIT_SIM, {"-r", mmc}, shell_status(padkit_status::output_failed)},
        {PADKIT_TUNE_SIM, {"dump", mmc}, tune_status::not_done},
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(row.program);
        sim_board b(row.program);
        b.run({"-h"});
        b.launcher = {"sh", "-c", "trap '' XFSZ; ulimit -f 0; exec \"$@\"", "sh"};
        EXPECT_EQ(b.run(row.args).status, row.status);
    }
}
