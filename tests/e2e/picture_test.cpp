// SPDX-License-Identifier: MIT
// Every kind of picture padkit-tune-sim draws, read back by svg_shows.py: a title that says what ran, where,
// when and how; axis titles with units; ticks on both sides at the first value, the last and 0; a legend
// inside the canvas that names only the marks drawn.
#include <gtest/gtest.h>

#include <string>

#include "tests/e2e/sim_board.h"

namespace {

// t runs padkit-tune-sim, $B is the board, $S the picture to draw.
const std::string prelude = R"sh(T="$*"; t() { $T "$@"; }; B=$PADKIT_SIM_DIR; S=$B/p.svg
)sh";

// Lines of svg_shows.py's output; one ending in "..." begins a line.
struct picture_row {
    const char* name;
    std::string script;
    strings shows;
};

const std::string dq3 = "tarnm-ddra-read0::dq3", core = "core_regulator::microvolts";

// clang-format off
const picture_row rows[] = {
    {"sweep, cut by the range", R"sh(t sweep -y --svg $S tarnm-ddra-read0::dq3 -20 20 -- \
            sh -c '[ $PADKIT_SWEEP_VALUE -ge -10 ]')sh",
        {"title sweep: " + dq3 + " -20..+20, step 1 delay step", "title host: ...",
         "title test: sh -c '[ $PADKIT_SWEEP_VALUE -ge -10 ]'", "axis-title " + dq3 + " (delay steps)",
         "ticks top: -20 -15 -10 -5 0 +5 +10 +15 +20", "edge right of " + dq3 + " = +20: pass",
         "legend edge not found"}},
    {"regulator, falling", R"sh(t sweep -y --svg $S --step -20000 cpu_regulator::microvolts 1040000 1000000 -- \
            sh -c '[ $PADKIT_SWEEP_VALUE -le 1020000 ]')sh",
        {"title sweep: cpu_regulator::microvolts 1040000..1000000, step 20000 microvolts",
         "axis-title cpu_regulator::microvolts (mV)", "ticks top: 1040 1000"}},
    {"register field", R"sh(t sweep -y --svg $S mac-tx::delay 0 3 -- sh -c '[ $PADKIT_SWEEP_VALUE -ge 1 ]')sh",
        {"axis-title mac-tx::delay (codes)", "ticks top: 0 3", "legend original"}},
    {"table keys", R"sh(t sweep -y --svg $S tarnm-ddra::odt 0 120 -- sh -c '[ $PADKIT_SWEEP_VALUE -ge 40 ]')sh",
        {"axis-title tarnm-ddra::odt (keys)", "ticks top: 0 120"}},
    {"composite", R"sh(t sweep -y --svg $S tarnm-ddra-read0::dq -3 3 -- \
            sh -c '[ $PADKIT_SWEEP_VALUE -ge -1 -a $PADKIT_SWEEP_VALUE -le 2 ]')sh",
        {"block tarnm-ddra-read0::dq", "axis-title tarnm-ddra-read0::dq (delay steps)", "ticks top: -3 0 +3",
         "common-centre tarnm-ddra-read0::dq0 = 0: pass", "legend common centre"}},
    {"shmoo", R"sh(t shmoo -y --svg $S tarnm-ddra-read0::dq3 -3 3 core_regulator::microvolts 880000 920000 -- \
            sh -c '[ $PADKIT_SHMOO_X_VALUE -ge 0 ]')sh",
        {"title shmoo: " + dq3 + " -3..+3, step 1 delay step against " + core +
             " 880000..920000, step 10000 microvolts",
         "axis-title " + core + " (mV)", "axis-title " + dq3 + " (delay steps)", "ticks top: -3 0 +3",
         "ticks left: 880 890 900 910 920", "summary 20 of 35 points pass",
         "summary safest point X=+1, Y=890000 (margin 1 delay step in X, 10000 microvolts in Y)",
         "legend safest point's margin"}},
    {"shmoo, partial", R"sh(t shmoo -y --svg $S mac-tx::delay 0 3 mac-rx::delay 0 3 -- \
            sh -c '[ $PADKIT_SHMOO_Y_VALUE -lt 2 ] || { kill -TERM $PPID; sleep 30; }')sh",
        {"partial partial: not every value was measured", "summary partial: 8 of 16 points measured",
         "summary no safest point from a partial shmoo", "legend not measured"}},
    {"merge", R"sh(for board in 1 2; do
            t sweep -y --csv $B/$board.csv tarnm-ddra-read0::dq3 -4 4 -- sh -c "[ \$PADKIT_SWEEP_VALUE -ge -$board ]" \
                >/dev/null
        done; t merge --svg $S $B/1.csv $B/2.csv)sh",
        {"title merge: " + dq3 + " -4..+4, step 1 delay step", "title boards: 1 on ...", "block " + dq3,
         "ship 1 = +1: pass",
         "summary " + dq3 + ": common window -1..+4 (6 values), centre +1 (setting 65); upper edge not found",
         "legend value to ship"}},
};
// clang-format on

}  // namespace

TEST(PadkitTunePictures, EveryKindExplainsItself) {
    if (lacks(PYTHON3))
        GTEST_SKIP() << "needs python3";
    for (const picture_row& row : rows) {
        SCOPED_TRACE(row.name);
        tune_board b;
        b.launcher = {"sh", "-c", prelude + row.script, "sh"};
        b.run({});
        const std::string svg = (b.dir / "p.svg").string();
        ASSERT_EQ(std::system((SVG_SHOWS " " + svg + " >" + svg + ".txt 2>&1").c_str()), 0) << slurp(svg + ".txt");
        const std::string shown = "\n" + slurp(svg + ".txt");
        for (const std::string& line : row.shows)
            EXPECT_NE(shown.find("\n" + cut_as(line, line) + (line == cut_as(line, line) ? "\n" : "")),
                      std::string::npos)
                << line << shown;
        EXPECT_EQ(shown.find("\nproblem: "), std::string::npos) << shown;
    }
}
