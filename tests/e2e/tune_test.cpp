// SPDX-License-Identifier: MIT
// padkit-tune-sim end to end: profiles dumped, compared and applied on boards of their own.
#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/e2e/sim_board.h"

namespace {

const std::string p = "padkit-tune-sim: ", regulator2 = "sys/class/regulator/regulator.2";

// Random registers, eMMC delay and voltages; drive strength and ODT codes stay in their tables.
void randomize(const sim_board& b, std::mt19937& random) {
    std::istringstream trace(b.run({"dump"}).trace);
    std::ostringstream regs;
    char kind;
    std::string address, word, select, previous;
    while (trace >> kind >> address >> word) {
        if (kind == 'W')
            select = word;
        else if (address == "0x00f38120" || address == "0x00f18120")
            regs << address << " 0x00"
                 << "fbe8"[random() % 4] << "fbe8"[random() % 4] << "00"
                 << "fbe8"[random() % 4] << "6410"[random() % 4] << "\n";
        else
            regs << address << (previous == "W" ? "@" + select : "") << " 0x" << std::hex << random() << "\n";
        previous = kind;
    }
    b.change("regs", regs.str().c_str());
    b.change("sys/kernel/debug/mmc0/rdqs", std::to_string(2 + random() % 254).c_str());
    b.change(regulator2 + "/microvolts", std::to_string(800000 + random() % 21 * 10000).c_str());
}

}  // namespace

TEST(PadkitTune, DumpChangeApplyGivesTheSameDump) {
    std::mt19937 random(12);
    for (const strings& dump : {strings{"dump"}, strings{"dump", "-x"}}) {
        SCOPED_TRACE(dump.back());
        tune_board b;
        randomize(b, random);
        const result saved = b.run(dump);
        ASSERT_EQ(saved.status, tune_status::ok) << saved.err;
        b.change("saved", saved.out.c_str());
        EXPECT_EQ(b.run({"diff", (b.dir / "saved").string()}).status, tune_status::ok);
        randomize(b, random);
        EXPECT_EQ(b.run({"diff", (b.dir / "saved").string()}).status, tune_status::not_done);  // the board did change
        const result applied = b.run({"apply", (b.dir / "saved").string()});
        EXPECT_EQ(applied.err + std::to_string(applied.status), "0");
        EXPECT_EQ(b.run(dump).out, saved.out);
    }
}

// One profile with a bad line of each kind, each reported as FILE:LINE:; "" marks a good line.
const std::string core = "core_regulator::microvolts";
const std::string core_limits = " is not in the regulator's limits 800000..1000000";
// clang-format off
const std::pair<std::string, std::string> profile_lines[] = {
    {"; ok", ""},
    {"mac-tx::delay = 3", ""},
    {"mac-tx::delay = 4", "mac-tx::delay: 4 is not in 0..3"},
    {"mac-tx::delay = +1", "mac-tx::delay: '+1' is not a decimal or 0x hexadecimal number"},
    {"mac-tx::delay = 12abc", "mac-tx::delay: '12abc' is not a decimal or 0x hexadecimal number"},
    {"mac-tx::delay = 2  # a comment after a value", ""},
    {"mac-tx::delay = 2#no blank", "mac-tx::delay: '2#no blank' is not a decimal or 0x hexadecimal number"},
    {"mac-tx::delay = # no value", "mac-tx::delay: missing value"},
    {"tarnm-ddra0::scl = 4294967295", ""},
    {"tarnm-ddra0::scl = 4294967296", "tarnm-ddra0::scl: 4294967296 does not fit 32 bits"},
    {"tarnm-ddra::odt = 50", "tarnm-ddra::odt: 50 is not one of 0, 40, 60, 120"},
    {"mmc::rdqs = 255", ""},
    {"mmc::rdqs = 256", "mmc::rdqs: 256 is not in 2..255"},
    {"mmc::rdqs = 1", "mmc::rdqs: 1 is not in 2..255"},
    {"", ""},
    {core + " = 1000001", core + ": 1000001" + core_limits},
    {"core_regulator::microvolts = 800000", ""},
    {core + " = 799999", core + ": 799999" + core_limits},
    {"core_regulator::microvolts = 905000", "core_regulator::microvolts: 905000 is not a multiple of 10000 microvolts"},
    {"cpu_regulator::microvolts = 95%", "cpu_regulator::microvolts: '95%' is not a decimal or 0x hexadecimal number"},
    {"tarnm-ddrb-read3::dq = { 1,2,3,4,5,6,7,127 }", ""},
    {"tarnm-ddra-read0::dq = 5", "tarnm-ddra-read0::dq: expected a brace list of 8 values"},
    {"tarnm-ddra-read0::dq = {1,2}", "tarnm-ddra-read0::dq: expected 8 values, found 2"},
    {"tarnm-ddra-read0::dq = {1,2,3,4,5,6,7,128}", "tarnm-ddra-read0::dq: tarnm-ddra-read0::dq7: 128 is not in 0..127"},
    {"nope = 1", "no property nope"},
    {"mac-tx::delay 1", "expected NAME = VALUE"},
    {"= 1", "missing name"},
    {"mac-tx::delay =", "mac-tx::delay: missing value"},
};
// clang-format on

TEST(PadkitTune, BadProfileWritesNothing) {
    tune_board b;
    const auto before = b.files();
    std::string profile, err;
    int line = 0;
    for (const auto& [text, wrong] : profile_lines) {
        profile += text + "\n";
        ++line;
        err += wrong.empty() ? "" : b.on_board("padkit-tune-sim: <B>/p:") + std::to_string(line) + ": " + wrong + "\n";
    }
    b.change("p", profile.c_str());
    for (const char* command : {"apply", "diff"}) {
        const result got = b.run({command, b.on_board("<B>/p")});
        EXPECT_EQ(got.out + got.err + got.trace + std::to_string(got.status),
                  err + std::to_string(tune_status::bad_input))
            << command;
    }
    b.change("p", nullptr);
    EXPECT_EQ(b.files(), before);
}

// A regulator read-only in a private mount namespace refuses the last write: the rest is put back, last first.
TEST(PadkitTune, FailedWriteIsRolledBack) {
    tune_board b;
    const std::string before = b.run({"dump"}).out;
    b.change("p",
             "mac-tx::delay = 3\ntarnm-ddrb-read3::dq5 = 1\nmmc::rdqs = 9\n"
             "cpu_regulator::microvolts = 1200000\ncore_regulator::microvolts = 1000000\n");
    if (!read_only(b, b.dir / regulator2))
        GTEST_SKIP() << "no private mount namespace here";
    const result got = b.run({"apply", (b.dir / "p").string()});
    EXPECT_EQ(got.status, tune_status::not_done);
    EXPECT_EQ(got.err, p + "core_regulator::microvolts: writing 1000000 failed\n" + p +
                           "cpu_regulator::microvolts: restored to 1100000\n" + p + "mmc::rdqs: restored to 37\n" + p +
                           "tarnm-ddrb-read3::dq5: restored to 0 (delay -0)\n" + p + "mac-tx::delay: restored to 0\n" +
                           p + "apply failed; every property is as it was\n");
    b.launcher.clear();
    EXPECT_EQ(b.run({"dump"}).out, before);
}

const std::string rdqs = "sys/kernel/debug/mmc0/rdqs", cpu = "cpu_regulator::microvolts";
const std::string cpu_volts = "sys/class/regulator/regulator.1/microvolts";
std::string rdqs_invalid(const char* value) {
    return p + "mmc::rdqs: current value " + value + " is not valid, valid range = 2 ~ 255\n";
}
const std::string dumped_json =
    "{\n  \"mac-rx::delay\": 0,\n  \"mac-tx::delay\": 2,\n  \"mmc::rdqs\": null,\n"
    "  \"tarnm-ddrb-write7::dq\": [0,0,0,0,0,0,0,0,0]\n}\n";
using namespace tune_status;

// clang-format off
const named_case cli_rows[] = {
    {"no subcommand", {{}, {}, "", p + "no subcommand\nusage: padkit-tune-sim dump...", bad_input}},
    {"sweep, no arguments", {{"sweep"}, {},
        "", p + "sweep needs NAME FROM TO, then -- and the command\nusage:...", bad_input}},
    {"shmoo, a weight of 0", {{"shmoo", "--weigh", "1:0", "mmc::rdqs", "36", "37", cpu, "1000000", "1010000", "--",
                               "true"}, {},
        "", p + "--weigh: '1:0' is not X:Y, two whole numbers above 0\nusage:...", bad_input}},
    {"deskew, no lines", {{"deskew", "-y", "--", "true"}, {},
        "", p + "deskew needs WHAT..., then -- and the command\nusage:...", bad_input}},
    {"deskew, no controller", {{"deskew", "-y", "mmc", "-3", "3", "--", "true"}, {},
        "", p + "mmc is no controller, lane of DQ lines or all; nothing written\n", bad_input}},
    {"deskew, no window", {{"deskew", "-y", "tarnm-ddra-read0::dq", "--", "false"}, {},
        "tarnm-ddra-read, in delay steps:\n...", "", not_done}},
    {"unknown option", {{"dump", "-q"}, {}, "", p + "unknown option -q\nusage:...", bad_input}},
    {"dump, unknown name", {{"dump", "nope"}, {}, "", p + "no property or group nope\nusage:...", bad_input}},
    {"apply, no file", {{"apply"}, {}, "", p + "apply needs a FILE\nusage:...", bad_input}},
    {"report, both formats", {{"report", "--json", "--svg", "x.csv"}, {},
        "", p + "report takes --json or --svg, not both\nusage:...", bad_input}},
    {"report, a profile", {{"report", "<B>/p"}, {{"p", "mmc::rdqs = 3\n"}},
        "", p + "<B>/p:1: expected the header of a sweep's, a shmoo's, a merge's or a deskew's CSV file\n", bad_input}},
    {"diff, missing file", {{"diff", "<B>/nope"}, {}, "", p + "<B>/nope: No such file or directory\n", bad_input}},
    {"dump --json, one unreadable", {{"dump", "--json", "mac", "mmc::rdqs", "tarnm-ddrb-write7::dq"},
                                     {{"regs", "0x140000 0x200\n"}, {rdqs, "1\n"}},
        dumped_json, rdqs_invalid("1"), not_done}},
    {"dump -x, one unreadable", {{"dump", "-x", "mac-tx::delay", "mmc"},
                                 {{rdqs, nullptr}, {"regs", "0x140000 0x300\n"}},
        "mac-tx::delay = 0x3\n# mmc::rdqs: unreadable\n", p + "mmc::rdqs: open <B>/" + rdqs + " failed.\n", not_done}},
    // A later member wins over its composite; equal values are not shown.
    {"diff, member after composite", {{"diff", "<B>/p"}, {{"p", "tarnm-ddra-read0::dq = {0,0,3,0,0,0,0,1}\n"
                                                                "tarnm-ddra-read0::dq2 = 0\nmmc::rdqs = 37\n"}},
        "tarnm-ddra-read0::dq7: 0 (delay -0) -> 1 (delay -1)\n", "", not_done}},
    {"diff --json", {{"diff", "--json", "<B>/p"},
                     {{"p", "mac-tx::delay = 1\nmmc::rdqs=0x25\ntarnm-ddra-read0::dq2 = 64\n"}},
        "[\n  {\"name\": \"mac-tx::delay\", \"board\": 0, \"file\": 1},\n  {\"name\": \"tarnm-ddra-read0::dq2\", "
        "\"board\": 0, \"file\": 64, \"board_delay\": \"-0\", \"file_delay\": \"+0\"}\n]\n", "", not_done}},
    {"diff, board unreadable", {{"diff", "<B>/p"}, {{"p", "mmc::rdqs = 3"}, {rdqs, "x"}},
        "", rdqs_invalid("0") + p + "mmc::rdqs: unreadable\n", bad_input}},
    {"apply -n", {{"apply", "-n", "<B>/p"}, {{"p", "mac-tx::delay = 1\nmmc::rdqs = 2\nmac-rx::delay = 0"}},
        "mac-tx::delay: 0 -> 1\nmmc::rdqs: 37 -> 2\n", "", ok, "R 0x00140000 0x00000000\nR 0x00140000 0x00000000\n",
        {{rdqs, "37\n"}}}},
    {"apply -v, DQ members", {{"apply", "-v", "<B>/p"},
                              {{"p", "tarnm-ddra-read0::dq = {0,0,64,1,0,0,0,0}  # delays: -0 -0 +0 -1\n"}},
        "tarnm-ddra-read0::dq2: 0 (delay -0) -> 64 (delay +0)\n"
        "tarnm-ddra-read0::dq3: 0 (delay -0) -> 1 (delay -1)\n", "", ok}},
    {"apply, board unreadable", {{"apply", "<B>/p"}, {{"p", "mmc::rdqs = 3"}, {rdqs, "x"}},
        "", rdqs_invalid("0") + p + "mmc::rdqs: unreadable; nothing written\n", not_done}},
    {"sweep, putting back fails", {{"sweep", "-y", cpu, "1000000", "1010000", "--", "true"}, {{cpu_volts, "1095000"}},
        "...", p + cpu + ": wrote 1095000, reads back 1100000\n...", left_changed}},
    {"shmoo, putting back fails", {{"shmoo", "-y", "mmc::rdqs", "36", "37", cpu, "1000000", "1010000", "--", "true"},
                                   {{cpu_volts, "1095000"}},
        "...", p + cpu + ": wrote 1095000...", left_changed}},
    {"apply --system, none", {{"apply", "--system"}, {}, "", "", ok}},
    {"apply --system -v", {{"apply", "--system", "-v"},
                           {{"etc/padkit.d/20-b.conf", "mac-tx::delay = 2\n"}, {"etc/padkit.d/x", "bad"},
                            {"etc/padkit.d/10-a.conf", "mac-tx::delay = 1\nmac-rx::delay = 3\t; after a tab\n"}},
        "mac-rx::delay: 0 -> 3\nmac-tx::delay: 0 -> 2\n", "", ok}},
};
// clang-format on

TEST(PadkitTune, CommandLine) {
    for (const named_case& row : cli_rows)
        check(tune_board(), row);
}
