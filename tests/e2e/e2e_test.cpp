// SPDX-License-Identifier: MIT
// padkit-sim end to end, each case on a board of its own.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "tests/e2e/sim_board.h"

namespace {

std::string get(const std::string& name, const std::string& value) {
    return "PADKIT: get " + name + " := " + value + "\n";
}
std::string set(const std::string& name, const std::string& value, bool done = true) {
    return "PADKIT: set " + name + " := " + value + (done ? "\n" : " failed.\n");
}

const std::string usage =
    "padkit [options] [<property> [value if write]]\noptions:\n\t-h            : help\n"
    "\t-i            : interactive mode\n\t-l            : list all properties\n"
    "\t-x            : show hex value (default decimal)\n";
const std::string unknown = "No such property registered.\n", no_mem = "open /dev/zeb_mem failed.\n";
const std::string no_lock = "Failed to open <B>/tmp/padkit.lock\nFailed to lock!\n";
const std::string fresh_regs =
    "0x00540008 0x00ac111c\n0x0054001c 0x00ac111c\n0x00540030 0x00ac111c\n"
    "0x00540044 0x00ac111c\n0x00f18120 0x00bb00b4\n0x00f38120 0x00bb00b4\n";
const std::string vref = "ehci0-phy::tx-vref", odt = "tarnm-ddra::odt", clk = "tarnm-ddrb::clkdrv";
const std::string dq3 = "tarnm-ddra-read1::dq3", dqs = "tarnm-ddra-read0::dq";
const std::string mmc = "mmc::rdqs", rdqs = "sys/kernel/debug/mmc0/rdqs", r_zero = "R 0x00540008 0x00000000\n";
const std::string cpu = "cpu_regulator::microvolts", reg1 = "sys/class/regulator/regulator.1/";
const std::string page = "37" + std::string(4094, ' '), past_page = page + " ";  // a kernel file holds a page
const settings worked = {{"regs", "0x00540008 0x12345678\n"}};

const run_case rows[] = {
    {{}, {}, usage, "", 254, ""},
    {{vref, "-x"}, {}, "..3\n" + usage, "", 0, ""},
    {{"-r", vref}, {}, "8\n", "", 0, "R 0x00540008 0x00ac111c\n"},
    {{"-r", "nope"}, {}, "", unknown, 0, ""},
    {{"-l", "x", "y"}, {},
     "ehci :\n\tehci0-phy::disconnect-threshold : x=0~7  : 575mV + (-6 + 1.5x)%\n...", "", 0, ""},
    {{"-xl"}, {}, "", unknown, 0, ""},
    {{vref, "16"}, {}, "", set(vref, "16", false), 245, "", {{"regs", fresh_regs}}},
    {{vref, ""}, {}, "", set(vref, "", false), 245, ""},
    // Characters after a number are ignored, a number is cut to the word, a text without one is refused.
    {{vref, "12abc"}, worked, "", set(vref, "12abc"), 0, "-", {{"regs", "0x00540008 0x12365678\n"}}},
    {{"tarnm-ddrb2::scl", "4294967297"}, {{"regs", ""}}, "", set("tarnm-ddrb2::scl", "4294967297"), 0, "-",
     {{"regs", "0x00f1812c 0x00000010\n0x00f1813c@0x00000010 0x00000001\n"}}},
    {{"-x", vref, "z"}, {}, "", "failed to parse value z\n" + set(vref, "z", false), 245, ""},
    {{"-i"}, {{"tmp/padkit.lock", nullptr}, {"tmp/padkit.lock", "->../regs"}}, "", no_lock, 255, ""},
    // A relative value is clamped to the field; the value is read back after the write.
    {{vref, "+9"}, worked, "",
     "warning! applying 9 to current value 8 is out of range (0 ~ 15). adjusted to 15\n" + set(vref, "+9"), 0,
     "R 0x00540008 0x12345678\nW 0x00540008 0x1237d678\nR 0x00540008 0x1237d678\n"},
    // Mapped fields take keys of their table only.
    {{clk, "35"}, {}, "", set(clk, "35", false), 245, ""},
    {{odt, "+1"}, {}, "", "warning! applying 1 to current value 60 is out of range (0 ~ 15). adjusted to 15\n" +
                              set(odt, "+1", false), 245, "R 0x00f38120 0x00bb00b4\n"},  // 61 clamps to code 15, no key
    {{odt}, {{"regs", "0x00f38120 0x00000005\n"}}, "\n", "PADKIT: get " + odt + "failed.\n", 246,
     "R 0x00f38120 0x00000005\n"},
    // DQ delays and lanes sit behind the PHY select register; the board clears the update bit.
    {{dq3, "5"}, {{"regs", "0x00f38194@0x00000307 0x00001234\n0x00f38194@0x7 0xaaaa0000\n"}}, "", set(dq3, "5"), 0,
     "W 0x00f3812c 0x00000307\nR 0x00f38194 0x00001234\nW 0x00f3812c 0x00000307\n"
     "W 0x00f38194 0x00001285\nW 0x00f3812c 0x00000007\nR 0x00f38194 0xaaaa0000\n",
     {{"regs", "0x00f3812c 0x00000007\n0x00f38194@0x00000007 0xaaaa0000\n"
               "0x00f38194@0x00000307 0x00001205\n"}}},
    // A composite reads its members in order.
    {{dqs}, {{"regs", "0x00f38194@0x100 0x45\n"}}, "{0,69,0,0,0,0,0,0}\n",
     get(dqs, "{0,69,0,0,0,0,0,0}"), 0, "-"},
    // The eMMC file and the regulators.
    {{mmc, "300"}, {}, "", "apply current value 37 to 300is limited to 255\n" + set(mmc, "300"), 0, "", {{rdqs, "255"}}},
    {{mmc, "+ "}, {}, "", "failed to parse value + \n" + set(mmc, "+ ", false), 245, "", {{rdqs, "37\n"}}},
    {{mmc, "+1"}, {{rdqs, page.c_str()}}, "", set(mmc, "+1"), 0, "", {{rdqs, "38"}}},
    {{mmc}, {{rdqs, past_page.c_str()}}, "\n",
     "current value 0 is not valid, valid range = 2 ~ 255\nPADKIT: get mmc::rdqsfailed.\n", 246, ""},
    {{cpu, "93%"}, {}, "", set(cpu, "93%"), 0, "", {{reg1 + "microvolts", "1030000"}}},
    {{cpu, "107.5%"}, {}, "", "percentage 107.5%: out of range\n" + set(cpu, "107.5%", false), 245, ""},
    {{cpu, "1300001"}, {}, "", "1310000mv: out of range(800000-1300000)\n" + set(cpu, "1300001", false), 245, ""},
    // Limits beyond what the driver takes, or crossed, make the regulator unreadable.
    {{cpu}, {{reg1 + "max_microvolts", "4294967296"}}, "\n", "PADKIT: get " + cpu + "failed.\n", 246, ""},
    {{cpu, "900000"}, {{reg1 + "min_microvolts", "1300001"}}, "", set(cpu, "900000", false), 245, "",
     {{reg1 + "microvolts", "1100000\n"}}},
    // Without a usable regs the board has no memory device; the trace still shows each access.
    {{vref, "9"}, {{"regs", nullptr}}, "", no_mem + no_mem + no_mem + set(vref, "9"), 0,
     "R 0x00540008 0x00000000\nW 0x00540008 0x00048000\nR 0x00540008 0x00000000\n"},
    {{vref}, {{"regs", "# fits?\n0x00540008@0x1 0x123456789\n"}}, "0\n",
     "<B>/regs:2: bad register entry\n" + no_mem + get(vref, "0"), 0, r_zero},
    // A rewrite keeps the user's comments with their entries and clears what a killed run left.
    {{vref, "9", "extra"},
     {{"regs", "# tuned\n\n0x00540030 0x2 #\n0x00540030 0x1\n# a\n 0X00540008\t0X12345678 # by hand\n# end"},
      {".regs-Ab12Cd", "half"}}, "", set(vref, "9"), 0, "-",
     {{"regs", "# a\n0x00540008 0x1234d678 # by hand\n# tuned\n0x00540030 0x00000001 #\n# end\n"},
      {".regs-Ab12Cd", "<missing>"}}},
    // Links in the board are not followed: root must not read or replace what they name.
    {{mmc, "100"}, {{"secret", "7"}, {rdqs, nullptr}, {rdqs, "->../../../../secret"}}, "",
     "open <B>/" + rdqs + " failed.\n" + set(mmc, "100", false), 245, "", {{"secret", "7"}}},
    {{vref}, {{"secret", "0x00540008 0x12345678\n"}, {"regs", nullptr}, {"regs", "->secret"}}, "0\n", no_mem + get(vref, "0"), 0, r_zero},
};

}  // namespace

TEST(padkit_sim, table) {
    for (const run_case& r : rows) {
        sim_board b(PADKIT_SIM);
        if (!r.changes.empty())
            b.run({"-h"});
        check(b, r);
    }
}

// Two runs start on a missing board at once: one of them creates it, and
// neither sees half a board or leaves anything behind.
TEST(padkit_sim, fresh_board) {
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

TEST(padkit_sim, run_waits_for_the_lock) {
    sim_board b(PADKIT_SIM);
    b.run({"-h"});
    const int fd = open((b.dir / "tmp/padkit.lock").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(flock(fd, LOCK_EX), 0);
    const pid_t pid = b.start({"-i"});
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(waitpid(pid, nullptr, WNOHANG), 0) << "finished while the lock was held";
    flock(fd, LOCK_UN);
    close(fd);
    const result got = b.finish(pid);
    EXPECT_EQ(got.out + std::to_string(got.status), "Not supported yet.\n253");
    EXPECT_EQ(got.err, "Waiting for the lock on " + (b.dir / "tmp/padkit.lock").string() +
                           ", held by process " + std::to_string(getpid()) + ".\n");
}

TEST(padkit_sim, board_directory_from_environment) {
    sim_board b(PADKIT_SIM);
    const std::string state = (b.scratch / "state").string(), home = (b.scratch / "home").string();
    EXPECT_EQ(b.run({"-r", mmc}, {{"PADKIT_SIM_DIR", ""}, {"XDG_STATE_HOME", state.c_str()}}).out, "37\n");
    EXPECT_EQ(slurp(state + "/padkit-sim/regs"), fresh_regs);
    const settings home_only = {{"PADKIT_SIM_DIR", nullptr}, {"XDG_STATE_HOME", ""}, {"HOME", home.c_str()}};
    EXPECT_EQ(b.run({"-r", mmc}, home_only).out, "37\n");
    EXPECT_EQ(slurp(home + "/.local/state/padkit-sim/regs"), fresh_regs);
    const result none = b.run({"-l"}, {{"PADKIT_SIM_DIR", nullptr}, {"XDG_STATE_HOME", ""}, {"HOME", nullptr}});
    EXPECT_EQ(none.out + none.err + std::to_string(none.status),
              "No board directory: set PADKIT_SIM_DIR, XDG_STATE_HOME or HOME.\n255");
    EXPECT_FALSE(fs::exists(b.dir));
}
