// SPDX-License-Identifier: MIT
// padkit-tune-sim shmoo end to end, with test commands that pass inside a diamond of the grid.
#include <gtest/gtest.h>

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
};

}  // namespace

TEST(padkit_tune_shmoo, charts_safest_points_and_what_is_left) {
    for (const run_case& c : cases) {
        tune_board b;
        const strings dump = {"dump", c.args[c.args.size() - 10], c.args[c.args.size() - 7]};
        const std::string before = b.run(dump).out;
        check(b, c);
        EXPECT_EQ(c.files.empty() ? b.run(dump).out : before, before);
    }
}
