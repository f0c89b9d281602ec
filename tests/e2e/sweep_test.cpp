// SPDX-License-Identifier: MIT
// padkit-tune-sim sweep end to end, with test commands that pass for some values only.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tests/e2e/sim_board.h"

namespace {

// A test command passing for values in LO..HI; more windows with "||".
std::string in(int lo, int hi) {
    return "[ $PADKIT_SWEEP_VALUE -ge " + std::to_string(lo) + " -a $PADKIT_SWEEP_VALUE -le " + std::to_string(hi) + " ]";
}

const std::string mmc = "mmc::rdqs", odt = "tarnm-ddra::odt", cpu = "cpu_regulator::microvolts";
const std::string dq = "tarnm-ddra-read0::dq";

// Passes when the composite reads 5 everywhere but at the swept member, which holds the value.
const std::string members_apart =
    PADKIT_SIM_EMULATOR " \"" PADKIT_SIM "\" " + dq + " 2>/dev/null | tr -d '{}' | "
    "awk -F, -v k=${PADKIT_SWEEP_NAME##*dq} -v v=$PADKIT_SWEEP_VALUE "
    "'{for (i = 1; i <= NF; i++) if ($i != (i == k + 1 ? v : 5)) bad = 1} END {exit bad || NR != 1}'";

strings sweep(strings args, const std::string& command) {
    args.insert(args.begin(), "sweep");
    args.insert(args.end(), {"--", "sh", "-c", command});
    return args;
}

// A case that names no board file must leave the swept property as it was.
const run_case cases[] = {
    // A window with a hole, two equal windows.
    {sweep({"-y", mmc, "30", "45"}, in(32, 34) + " || " + in(37, 41)), {},
     "           30            45\nmmc::rdqs  ..###..#####....\nmmc::rdqs: window 37..41 (5 values), centre 39\n", "", 0},
    {sweep({"-y", mmc, "39", "30"}, in(31, 33) + " || " + in(35, 37)), {},
     "           39      30\nmmc::rdqs  ..###.###.\nmmc::rdqs: window 35..37 (3 values), centre 36\n", "", 0},
    // Every run must pass: here the second one passes at 2 only.
    {sweep({"-y", "--runs", "2", "mac-tx::delay", "0", "3"},
           "f=${TMPDIR:-/tmp}/padkit-sweep-run.$PPID.$PADKIT_SWEEP_VALUE; [ ! -e $f ] && touch $f || "
           "{ rm $f; [ $PADKIT_SWEEP_VALUE = 2 ]; }"), {},
     "               0  3\nmac-tx::delay  ..#.\nmac-tx::delay: window 2..2 (1 value), centre 2\n", "", 0},
    // Keeping the centre, or the original where there is no window at all.
    {sweep({"-y", "--keep", "centre", mmc, "30", "45"}, in(33, 40)), {},
     "           30            45\nmmc::rdqs  ...########.....\nmmc::rdqs: window 33..40 (8 values), centre 36\n",
     "padkit-tune-sim: mmc::rdqs: kept at the centre, 36\n", 0, "-", {{"sys/kernel/debug/mmc0/rdqs", "36"}}},
    {sweep({"-y", "--keep", "centre", mmc, "2", "3"}, "false"), {},
     "           2 3\nmmc::rdqs  ..\nmmc::rdqs: no passing value\n", "", 1},
    // A table field visits its keys; a regulator takes a step.
    {sweep({"-y", odt, "1", "200"}, in(40, 60)), {},
     "                 40 120\ntarnm-ddra::odt  ##.\ntarnm-ddra::odt: window 40..60 (2 values), centre 40\n",
     "", 0},
    {sweep({"-y", "--step", "20000", cpu, "1040000", "1000000"}, in(0, 1020000)), {},
     "                           1040000 1000000\ncpu_regulator::microvolts  .##\n"
     "cpu_regulator::microvolts: window 1000000..1020000 (2 values), centre 1000000\n", "", 0},
    // Hanging past the time-out, and interrupted half-way.
    {sweep({"-y", "--timeout", "0.3", mmc, "40", "41"}, "sleep 30"), {},
     "           40 41\nmmc::rdqs  TT\nmmc::rdqs: no passing value\n", "", 1},
    {sweep({"-y", mmc, "30", "40"}, "[ $PADKIT_SWEEP_VALUE -lt 34 ] || { kill -TERM $PPID; sleep 30; }"), {},
     "           30       40\nmmc::rdqs  ####\nmmc::rdqs: window 30..33 (4 values), centre 31\n",
     "padkit-tune-sim: interrupted by Terminated; every swept property restored\n", 143},
    // Refused before anything is written.
    {sweep({mmc, "30", "40"}, "true"), {}, "", "WARNING! This sweeps mmc::rdqs over 30..40 (11 values)...",
     2, ""},
    {sweep({"-y", "--timeout", "1.", mmc, "30", "x"}, "true"), {}, "",
     "padkit-tune-sim: TO: 'x' is not a decimal...", 2, ""},
    {sweep({"-y", mmc, "1", "40"}, "true"), {}, "",
     "padkit-tune-sim: mmc::rdqs: 1 is not in 2..255; nothing written\n", 2, ""},
    {sweep({"-y", odt, "1", "30"}, "true"), {}, "",
     "padkit-tune-sim: tarnm-ddra::odt: no key of its table from 1 to 30\n", 2, ""},
};

}  // namespace

TEST(padkit_tune_sweep, charts_windows_and_what_is_left) {
    for (const run_case& c : cases) {
        tune_board b;
        const strings dump = {"dump", c.args[c.args.size() - 7]};  // NAME FROM TO -- sh -c COMMAND
        const std::string before = b.run(dump).out;
        check(b, c);
        EXPECT_EQ(c.files.empty() ? b.run(dump).out : before, before);
    }
}

// Each member is swept with the others at their values, the first member's first value
// hanging past the time-out; the SVG is read back by an XML parser.
TEST(padkit_tune_sweep, composite_member_by_member_to_csv_and_svg) {
    tune_board b;
    b.change("fives", (dq + " = {5,5,5,5,5,5,5,5}").c_str());
    b.run({"apply", (b.dir / "fives").string()});
    const std::string csv = (b.scratch / "sweep.csv").string(), svg = (b.scratch / "sweep.svg").string();
    const std::string command = "[ $PADKIT_SWEEP_NAME$PADKIT_SWEEP_VALUE != " + dq + "00 ] || sleep 9; " +
                                in(1, 2) + " && " + members_apart;
    const result got =
        b.run({"sweep", "-y", "--timeout", "0.3", "--csv", csv, "--svg", svg, dq, "0", "2", "--", "sh", "-c", command});
    EXPECT_EQ(got.status, 0) << got.err;
    EXPECT_EQ(b.run({"dump", dq}).out, dq + " = {5,5,5,5,5,5,5,5}\n");
    std::string expected_csv = "name,value,result\n", expected_svg = "axis 0\naxis 2\n", summaries;
    for (int k = 0; k < 8; ++k) {
        const std::string name = dq + std::to_string(k), cell = name + " = ", first = k ? "fail" : "timeout";
        expected_csv += name + ",0," + first + "\n" + name + ",1,pass\n" + name + ",2,pass\n";
        expected_svg += "name " + name + "\ncell " + cell + "0: " + first + "\ncell " + cell + "1: pass\ncell " + cell +
                        "2: pass\nwindow " + cell + "1: pass .. " + cell + "2: pass 2\ncentre " + cell + "1: pass\n";
        summaries += "summary " + name + ": window 1..2 (2 values), centre 1\n";
    }
    EXPECT_EQ(slurp(csv), expected_csv);
    EXPECT_EQ(std::system((SVG_SHOWS " " + svg + " >" + svg + ".txt 2>&1").c_str()), 0);
    EXPECT_EQ(slurp(svg + ".txt"), expected_svg + summaries);
}
