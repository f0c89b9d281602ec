// SPDX-License-Identifier: MIT
// padkit-tune-sim shmoo end to end, with test commands that pass inside a diamond of the grid.
#include <signal.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "tests/e2e/sim_board.h"

namespace {

// Passes within R steps (both distances added, a Y step 10 mV) of X, Y; with a hole at the centre.
std::string diamond(int x, int y, int r, bool hole = false) {
    return "dx=$((PADKIT_SHMOO_X_VALUE - " + std::to_string(x) + ")); dy=$(((PADKIT_SHMOO_Y_VALUE - " +
           std::to_string(y) + ") / 10000)); [ $((${dx#-} + ${dy#-})) -le " + std::to_string(r) + " ]" +
           (hole ? " && [ $dx$dy != 00 ]" : "");
}

const std::string p = "padkit-tune-sim: ", mmc = "mmc::rdqs", core = "core_regulator::microvolts";

// By default mmc::rdqs 34..40 across, the core voltage 870..930 mV down; the board's own point is 37, 900000.
strings shmoo(strings options, const std::string& command,
              const strings& grid = {mmc, "34", "40", core, "870000", "930000"}) {
    options.insert(options.begin(), "shmoo");
    options.insert(options.end(), grid.begin(), grid.end());
    options.insert(options.end(), {"--", "sh", "-c", command});
    return options;
}

const std::string legend = "# pass  . fail  T time-out  O original passing  X original not passing  @ safest point\n";
const std::string dq3 = "tarnm-ddra-read0::dq3", dq_diamond = diamond(1, 900000, 2);
const strings dq_grid = {dq3, "-3", "3", core, "880000", "920000"};

// The margins on mmc::rdqs's codes and on the core voltage's 10 mV steps, as the summary gives them.
std::string codes(int x, int y) {
    return "margin " + std::to_string(x) + (x == 1 ? " code" : " codes") + " in X, " + std::to_string(10000 * y) +
           " microvolts in Y";
}

const std::string members =
    "tarnm-ddra-read0::dq0, tarnm-ddra-read0::dq1, tarnm-ddra-read0::dq2, tarnm-ddra-read0::dq3, "
    "tarnm-ddra-read0::dq4, tarnm-ddra-read0::dq5, tarnm-ddra-read0::dq6, tarnm-ddra-read0::dq7";

// The core voltage's rows, from TOP down in 10 mV steps, against X, its axis labelled AXIS above and below.
std::string chart(const strings& rows, const std::string& x = mmc, const std::string& axis = "34   40",
                  int top = 930000) {
    std::string text = core + " (rows) against " + x + " (columns)\n        " + axis + "\n";
    for (std::size_t at = 0; at < rows.size(); ++at)
        text += std::to_string(top - 10000 * at) + "  " + rows[at] + "\n";
    return text + "        " + axis + "\n" + legend;
}

using namespace tune_status;

// A case that names no board file leaves both properties as they were.
// clang-format off
const named_case cases[] = {
    {"diamond below the original", {shmoo({"-y"}, diamond(36, 890000, 2)), {},
        chart({".......", ".......", "..#....", ".##O...", "##@##..", ".###...", "..#...."}) + "13 of 49 points pass\n"
        "safest point X=36, Y=890000 (" + codes(1, 1) + ")\noriginal X=37, Y=900000 (" + codes(0, 0) + ")\n", "", ok}},
    {"ring around a failing original", {shmoo({"-y"}, diamond(37, 900000, 4, true)), {},
        chart({"..###..", ".#####.", "#######", "###X###", "#######", ".##@##.", "..###.."}) + "36 of 49 points pass\n"
        "safest point X=37, Y=880000 (" + codes(1, 1) + ")\noriginal X=37, Y=900000: does not pass\n", "", ok}},
    {"nothing passes", {shmoo({"-y"}, "false"), {},
        chart({".......", ".......", ".......", "...X...", ".......", ".......", "......."}) + "0 of 49 points pass\n"
        "no passing point\noriginal X=37, Y=900000: does not pass\n", "", not_done}},
    // A DQ member's signed delays against a regulator's 10 mV steps.
    {"DQ member against a regulator", {shmoo({"-y"}, dq_diamond, dq_grid), {},
        chart({"....#..", "...###.", "..#O@##", "...###.", "....#.."}, dq3, "-3 0 +3", 920000) +
        "13 of 35 points pass\nsafest point X=+1, Y=900000 (margin 1 delay step in X, 10000 microvolts in Y)\n"
        "original X=0, Y=900000 (margin 0 delay steps in X, 0 microvolts in Y)\n", "", ok}},
    // A table field's keys against a register field's codes.
    {"table keys against field codes", {{"shmoo", "-y", "tarnm-ddra::odt", "0", "120", "mac-tx::delay", "0", "3", "--",
                                         "sh", "-c", "[ $PADKIT_SHMOO_X_VALUE -ge 40 -a $PADKIT_SHMOO_X_VALUE -le 60 "
                                                     "-a $PADKIT_SHMOO_Y_VALUE -le 2 ]"}, {},
        "mac-tx::delay (rows) against tarnm-ddra::odt (columns)\n"
        "   0 120\n"
        "3  ....\n"
        "2  .##.\n"
        "1  .##.\n"
        "0  .#@.\n"
        "   0 120\n" + legend + "6 of 16 points pass\n"
        "safest point X=60, Y=0 (margin 0 keys in X, 0 codes in Y)\n"
        "original X=60, Y=0 (margin 0 keys in X, 0 codes in Y)\n", "", ok}},
    {"--keep centre", {shmoo({"-y", "--keep", "centre"}, diamond(36, 890000, 2)), {},
        "core_regulator::microvolts (rows)...",
        p + "mmc::rdqs: kept at the safest point, 36\n" + p + core + ": kept at the safest point, 890000\n", ok,
        "-", {{"sys/kernel/debug/mmc0/rdqs", "36"}, {"sys/class/regulator/regulator.2/microvolts", "890000"}}}},
    // Hanging past the time-out at one point, and interrupted half-way.
    {"time-out at one point", {shmoo({"-y", "--timeout", "0.3"},
                                     "[ $PADKIT_SHMOO_X_VALUE$PADKIT_SHMOO_Y_VALUE != 34870000 ] || sleep 30"), {},
        chart({"#######", "#######", "#######", "###@###", "#######", "#######", "T######"}) + "48 of 49 points pass\n"
        "safest point X=37, Y=900000 (" + codes(2, 2) + ")\noriginal X=37, Y=900000 (" + codes(2, 2) + ")\n", "", ok}},
    // Partial: no safest point, no margin from points not measured.
    {"interrupted half-way", {shmoo({"-y"}, "[ $PADKIT_SHMOO_Y_VALUE -lt 890000 ] || { kill -TERM $PPID; sleep 30; }"),
                              {},
        chart({"       ", "       ", "       ", "   X   ", "       ", "#######", "#######"}) +
        "partial: 14 of 49 points measured\n14 of 49 points pass\n"
        "no safest point from a partial shmoo\noriginal X=37, Y=900000: not measured\n",
        p + "interrupted by Terminated; both settings restored\n", 128 + SIGTERM}},
    // Refused before anything is written.
    {"composite refused", {{"shmoo", "-y", "tarnm-ddra-read0::dq", "0", "3", mmc, "30", "40", "--", "true"}, {},
        "", p + "tarnm-ddra-read0::dq is a composite of " + members + "; a shmoo takes one of them; nothing written\n",
        bad_input, ""}},
    {"too many points", {{"shmoo", "-y", mmc, "2", "255", core, "800000", "1000000", "--", "true"}, {},
        "", p + "5334 points (254 by 21); a shmoo takes at most 4096\n", bad_input, ""}},
    {"same property twice", {{"shmoo", "-y", mmc, "30", "40", mmc, "2", "3", "--", "true"}, {},
        "", p + "X and Y are both mmc::rdqs; a shmoo takes two different properties\n", bad_input, ""}},
    {"no terminal, no -y", {shmoo({}, "true"), {},
        "", "WARNING! This shmoo sweeps mmc::rdqs over 34..40 (7 values) against core_regulator::microvolts over "
            "870000..930000 (7 values) on the running board. A value outside its working window can hang the system "
            "or corrupt memory and storage.\n" +
            p + "standard input is not a terminal; give -y to shmoo without asking\n",
        bad_input, ""}},
};
// clang-format on

}  // namespace

TEST(PadkitTuneShmoo, ChartsSafestPointsAndWhatIsLeft) {
    for (const auto& [name, c] : cases) {
        SCOPED_TRACE(name);
        tune_board b;
        const auto end = std::find(c.args.begin(), c.args.end(), "--");  // X XFROM XTO Y YFROM YTO --
        const strings dump = {"dump", end[-6], end[-3]};
        const std::string before = b.run(dump).out;
        check(b, c);
        EXPECT_EQ(c.files.empty() ? b.run(dump).out : before, before);
    }
}

// The profile a shmoo writes gives the board that --keep centre leaves.
TEST(PadkitTuneShmoo, ProfileGivesTheBoardKeepCentreLeaves) {
    tune_board kept, profiled;
    const std::string profile = (profiled.scratch / "p.conf").string();
    EXPECT_EQ(kept.run(shmoo({"-y", "--keep", "centre"}, dq_diamond, dq_grid)).status, tune_status::ok);
    EXPECT_EQ(profiled.run(shmoo({"-y", "--profile", profile}, dq_diamond, dq_grid)).status, tune_status::ok);
    EXPECT_EQ(profiled.run({"dump", dq3, core}).out, core + " = 900000\n# delay: -0\n" + dq3 + " = 0\n") << "restored";
    EXPECT_EQ(profiled.run({"apply", profile}).status, tune_status::ok);
    EXPECT_EQ(profiled.run({"dump", dq3, core}).out, kept.run({"dump", dq3, core}).out);
    EXPECT_EQ(kept.run({"dump", dq3}).out, "# delay: +1\n" + dq3 + " = 65\n");
}

// The slow Y is written once a row, then put back; X (mmc::rdqs, a debugfs file) leaves no trace.
TEST(PadkitTuneShmoo, YWrittenOnceARow) {
    tune_board b;
    const strings axes = {mmc, "30", "32", "mac-tx::delay", "0", "2"};
    std::istringstream trace(b.run(shmoo({"-y"}, "true", axes)).trace);
    std::string writes;
    for (std::string kind, address, word; trace >> kind >> address >> word;)
        writes += kind == "W" ? word + " " : "";
    EXPECT_EQ(writes, "0x00000000 0x00000100 0x00000200 0x00000000 ");
}

// Row by row to the CSV after the facts; the SVG read back by an XML parser: a cell per point, both axes
// titled with their units and ticked on both sides, both marks, the margin around the safest point, the summary.
TEST(PadkitTuneShmoo, CsvAndSvg) {
    if (lacks(PYTHON3))
        GTEST_SKIP() << "needs python3";
    tune_board b;
    const std::string csv = (b.scratch / "s.csv").string(), svg = (b.scratch / "s.svg").string();
    const result got = b.run(shmoo({"-y", "--csv", csv, "--svg", svg}, dq_diamond, dq_grid));
    EXPECT_EQ(got.status, tune_status::ok) << got.err;
    const std::string text = slurp(csv), rows = text.substr(text.find("x_name"));
    EXPECT_EQ(text.rfind("# shmoo: " + dq3 + " -3..+3, step 1 delay step against " + core +
                             " 880000..920000, step 10000 microvolts\n# host: ",
                         0),
              0u)
        << text;
    EXPECT_EQ(rows.substr(0, rows.find('\n', rows.find('\n') + 1) + 1),
              "x_name,x_value,y_name,y_value,result\n" + dq3 + ",-3," + core + ",880000,fail\n");
    EXPECT_EQ(std::count(rows.begin(), rows.end(), '\n'), 1 + 35 + 2 + 3) << "the points, the originals, the summary";
    EXPECT_NE(rows.find("\n# original: " + dq3 + " = 0 (delay -0)\n# original: " + core + " = 900000\n# summary: "),
              std::string::npos);
    EXPECT_NE(rows.find("\n# summary: safest point X=+1, Y=900000 (margin 1 delay step in X"), std::string::npos);
    EXPECT_EQ(std::system((SVG_SHOWS " " + svg + " >" + svg + ".txt 2>&1").c_str()), 0);
    std::string shown = slurp(svg + ".txt"), cells;
    for (std::string::size_type at = 0; (at = shown.find("cell ", at)) != std::string::npos; at += 5)
        cells += 'c';
    EXPECT_EQ(cells.size(), 35u) << shown;
    for (const std::string& item :
         strings{"axis-title " + core + " (mV)", "axis-title " + dq3 + " (delay steps)", "ticks top: -3 0 +3",
                 "ticks left: 880 890 900 910 920", "original X=0, Y=900000: pass", "safest X=+1, Y=900000: pass",
                 "margin X=0, Y=890000: pass .. X=+2, Y=910000: pass 9", "summary 13 of 35 points pass",
                 "summary safest point X=+1, Y=900000 (margin 1 delay step in X, 10000 microvolts in Y)"})
        EXPECT_NE(shown.find(item + "\n"), std::string::npos) << item << "\n" << shown;
    EXPECT_EQ(shown.find("problem:"), std::string::npos) << shown;
}

// Two regions: below, five delays by five rows; above, the whole width by three rows. The square rule takes the
// first; one delay step weighed like 5 mV (half a row) the second, and each margin is given in its axis's units.
TEST(PadkitTuneShmoo, WeighedAxesChooseAnotherPoint) {
    const strings grid = {dq3, "-4", "4", core, "860000", "940000"};
    const std::string regions =
        "[ $PADKIT_SHMOO_X_VALUE -le 0 -a $PADKIT_SHMOO_Y_VALUE -le 900000 ] || "
        "[ $PADKIT_SHMOO_Y_VALUE -ge 920000 ]";
    // clang-format off
    const struct { strings options; std::string safest; } rows[] = {
        {{"-y"}, "safest point X=-2, Y=880000 (margin 2 delay steps in X, 20000 microvolts in Y)\n"},
        {{"-y", "--weigh", "1:5000"},
            "safest point X=-1, Y=930000 (margin 3 delay steps in X, 10000 microvolts in Y)\n"},
    };
    // clang-format on
    for (const auto& row : rows) {
        tune_board b;
        const result got = b.run(shmoo(row.options, regions, grid));
        EXPECT_NE(got.out.find("\n52 of 81 points pass\n" + row.safest), std::string::npos) << got.out;
    }
}
