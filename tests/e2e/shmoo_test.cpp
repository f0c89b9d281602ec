// SPDX-License-Identifier: MIT
// padkit-tune-sim shmoo end to end, with test commands that pass inside a diamond of the grid.
#include <signal.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "runtime/exit_status.h"
#include "tests/e2e/sim_board.h"

namespace {

// Passes within R steps (both distances added) of X, Y, where a Y step is YSTEP; with a hole at the centre.
std::string diamond(int x, int y, int r, int ystep = 10000, bool hole = false) {
    return "dx=$((PADKIT_SHMOO_X_VALUE - " + std::to_string(x) + ")); dy=$(((PADKIT_SHMOO_Y_VALUE - " +
           std::to_string(y) + ") / " + std::to_string(ystep) + ")); [ $((${dx#-} + ${dy#-})) -le " +
           std::to_string(r) + " ]" + (hole ? " && [ $dx$dy != 00 ]" : "");
}

const std::string mmc = "mmc::rdqs", core = "core_regulator::microvolts";

// mmc::rdqs 34..40 across, the core voltage 870..930 mV down; the board's own point is 37, 900000.
strings shmoo(strings options, const std::string& command) {
    options.insert(options.begin(), "shmoo");
    options.insert(options.end(), {mmc, "34", "40", core, "870000", "930000", "--", "sh", "-c", command});
    return options;
}

std::string chart(const std::vector<std::string>& rows) {
    std::string text = core + " (rows) against " + mmc + " (columns)\n        34   40\n";
    for (std::size_t at = 0; at < rows.size(); ++at)
        text += std::to_string(930000 - 10000 * at) + "  " + rows[at] + "\n";
    return text + "        34   40\n# pass  . fail  T time-out  O original  @ safest point\n";
}

const std::string rdqs_file = "sys/kernel/debug/mmc0/rdqs", core_file = "sys/class/regulator/regulator.2/microvolts";

// A case that names no board file must leave both properties as they were.
const run_case cases[] = {
    {shmoo({"-y"}, diamond(36, 890000, 2)), {},
     chart({".......", ".......", "..#....", ".##O...", "##@##..", ".###...", "..#...."}) +
         "13 of 49 points pass\nsafest point X=36, Y=890000 (margin 1 step)\noriginal X=37, Y=900000 (margin 0 steps)\n",
     "", tune_status::ok},
    {shmoo({"-y"}, diamond(34, 900000, 3)), {},
     chart({"#......", "##.....", "###....", "#@#O...", "###....", "##.....", "#......"}) +
         "16 of 49 points pass\nsafest point X=35, Y=900000 (margin 1 step)\noriginal X=37, Y=900000 (margin 0 steps)\n",
     "", tune_status::ok},
    {shmoo({"-y"}, diamond(37, 900000, 4, 10000, true)), {},
     chart({"..###..", ".#####.", "#######", "###O###", "#######", ".##@##.", "..###.."}) +
         "36 of 49 points pass\nsafest point X=37, Y=880000 (margin 1 step)\noriginal X=37, Y=900000: does not pass\n",
     "", tune_status::ok},
    {shmoo({"-y"}, "false"), {}, chart({".......", ".......", ".......", "...O...", ".......", ".......", "......."}) +
         "0 of 49 points pass\nno passing point\noriginal X=37, Y=900000: does not pass\n", "", tune_status::not_done},
    // A table field's keys against a register field's codes.
    {{"shmoo", "-y", "tarnm-ddra::odt", "0", "120", "mac-tx::delay", "0", "3", "--", "sh", "-c",
      "[ $PADKIT_SHMOO_X_VALUE -ge 40 -a $PADKIT_SHMOO_X_VALUE -le 60 -a $PADKIT_SHMOO_Y_VALUE -le 2 ]"}, {},
     "mac-tx::delay (rows) against tarnm-ddra::odt (columns)\n   0\n3  ....\n2  .##.\n1  .##.\n0  .#@.\n   0\n"
     "# pass  . fail  T time-out  O original  @ safest point\n6 of 16 points pass\n"
     "safest point X=60, Y=0 (margin 0 steps)\noriginal X=60, Y=0 (margin 0 steps)\n", "", tune_status::ok},
    {shmoo({"-y", "--keep", "centre"}, diamond(36, 890000, 2)), {}, "core_regulator::microvolts (rows)...",
     "padkit-tune-sim: mmc::rdqs: kept at the safest point, 36\n"
     "padkit-tune-sim: core_regulator::microvolts: kept at the safest point, 890000\n", tune_status::ok, "-",
     {{rdqs_file, "36"}, {core_file, "890000"}}},
    // Hanging past the time-out at one point, and interrupted half-way.
    {shmoo({"-y", "--timeout", "0.3"}, "[ $PADKIT_SHMOO_X_VALUE$PADKIT_SHMOO_Y_VALUE != 34870000 ] || sleep 30"), {},
     chart({"#######", "#######", "#######", "###@###", "#######", "#######", "T######"}) +
         "48 of 49 points pass\nsafest point X=37, Y=900000 (margin 2 steps)\noriginal X=37, Y=900000 (margin 2 steps)\n",
     "", tune_status::ok},
    {shmoo({"-y"}, "[ $PADKIT_SHMOO_Y_VALUE -lt 890000 ] || { kill -TERM $PPID; sleep 30; }"), {},
     chart({"       ", "       ", "       ", "   O   ", "       ", "#@#####", "#######"}) +
         "14 of 49 points pass\nsafest point X=35, Y=880000 (margin 0 steps)\noriginal X=37, Y=900000: not measured\n",
     "padkit-tune-sim: interrupted by Terminated; both settings restored\n", 128 + SIGTERM},
    // Refused before anything is written.
    {{"shmoo", "-y", "tarnm-ddra-read0::dq", "0", "3", mmc, "30", "40", "--", "true"}, {}, "",
     "padkit-tune-sim: tarnm-ddra-read0::dq is a composite of tarnm-ddra-read0::dq0, tarnm-ddra-read0::dq1, "
     "tarnm-ddra-read0::dq2, tarnm-ddra-read0::dq3, tarnm-ddra-read0::dq4, tarnm-ddra-read0::dq5, "
     "tarnm-ddra-read0::dq6, tarnm-ddra-read0::dq7; a shmoo takes one of them; nothing written\n", tune_status::bad_input, ""},
    {{"shmoo", "-y", mmc, "2", "255", core, "800000", "1000000", "--", "true"}, {}, "",
     "padkit-tune-sim: 5334 points (254 by 21); a shmoo takes at most 4096\n", tune_status::bad_input, ""},
    {{"shmoo", "-y", mmc, "30", "40", mmc, "2", "3", "--", "true"}, {}, "",
     "padkit-tune-sim: X and Y are both mmc::rdqs; a shmoo takes two different properties\n", tune_status::bad_input, ""},
    {shmoo({}, "true"), {}, "",
     "WARNING! This shmoo sweeps mmc::rdqs over 34..40 (7 values) against core_regulator::microvolts over "
     "870000..930000 (7 values) on the running board. A value outside its working window can hang the system or "
     "corrupt memory and storage.\npadkit-tune-sim: standard input is not a terminal; give -y to shmoo without asking\n",
     tune_status::bad_input, ""},
};

}  // namespace

TEST(padkit_tune_shmoo, charts_safest_points_and_what_is_left) {
    for (const run_case& c : cases) {
        tune_board b;
        const auto end = std::find(c.args.begin(), c.args.end(), "--");  // X XFROM XTO Y YFROM YTO --
        const strings dump = {"dump", end[-6], end[-3]};
        const std::string before = b.run(dump).out;
        check(b, c);
        EXPECT_EQ(c.files.empty() ? b.run(dump).out : before, before);
    }
}
