// SPDX-License-Identifier: MIT
// padkit-tune-sim merge end to end: the sweeps of several boards lined up per property.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "tests/e2e/sim_board.h"

namespace {

const std::string p = "padkit-tune-sim: ", dq3 = "tarnm-ddra-read0::dq3";
using namespace tune_status;

// The CSV of a sweep of dq3 over FROM..TO by STEP that passed for LO..HI.
std::string csv(int from, int to, int lo, int hi, int step = 1) {
    std::string text = "name,value,result\n";
    for (int value = from; value <= to; value += step)
        text += dq3 + "," + (value > 0 ? "+" : "") + std::to_string(value) +
                (value >= lo && value <= hi ? ",pass\n" : ",fail\n");
    return text;
}

const std::string a = csv(-3, 3, -2, 1), none = csv(-3, 3, 9, 9), later = csv(0, 5, 1, 4);
const std::string wide = csv(-6, 6, -4, 4, 2), high = csv(-6, 6, -2, 6, 2), cut = a + "# partial: interrupted\n";
const std::string good = "name,value,result\n" + dq3 + ",+1,pass\n", far = csv(5, 6, 5, 6);
const std::string marked = "\xef\xbb\xbf" + good;  // a UTF-8 byte order mark first
// Bad at line 3.
const std::string off = good + dq3 + ",+64,pass\n", odd = good + "dq\x1b[2J,1,pass\n",
                  unknown = good + dq3 + ",+2,passed\n";

// clang-format off
const named_case cases[] = {
    {"a board without a passing value", {{"merge", "<B>/a.csv", "<B>/none.csv"},
                                         {{"a.csv", a.c_str()}, {"none.csv", none.c_str()}},
        dq3 + "\n      -3 0 +3\na     .####..\nnone  .......\na: window -2..+1 (4 values), centre -1 (setting 1)\n"
        "none: no passing value\n" + dq3 + ": no common passing value\n", "", not_done}},
    {"axes differ: merged on the shared values", {{"merge", "<B>/a.csv", "<B>/later.csv"},
                                                  {{"a.csv", a.c_str()}, {"later.csv", later.c_str()}},
        dq3 + "\n       0 +3\na      ##..\nlater  .###\na: window 0..+1 (2 values), centre 0; lower edge not found\n"
        "later: window +1..+3 (3 values), centre +2 (setting 66); upper edge not found\n" +
        dq3 + ": common window +1..+1 (1 value), centre +1 (setting 65)\n" +
        dq3 + ": centre +1: margin 0 below, 0 above (worst: later below, a above)\n",
        p + dq3 + ": the boards' sweeps differ; merged on the 4 values every board measured\n", ok}},
    {"step 2: margins in delay steps", {{"merge", "<B>/wide.csv", "<B>/high.csv"},
                                        {{"wide.csv", wide.c_str()}, {"high.csv", high.c_str()}},
        dq3 + "\n      -6 0 +6\nwide  .#####.\nhigh  ..#####\nwide: window -4..+4 (5 values), centre 0\n"
        "high: window -2..+6 (5 values), centre +2 (setting 66); upper edge not found\n" +
        dq3 + ": common window -2..+4 (4 values), centre 0\n" +
        dq3 + ": centre 0: margin 2 below, 4 above (worst: high below, wide above)\n", "", ok}},
    {"a partial board: no common window", {{"merge", "<B>/a.csv", "<B>/cut.csv"},
                                           {{"a.csv", a.c_str()}, {"cut.csv", cut.c_str()}},
        dq3 + "\n     -3 0 +3\na    .####..\ncut  .####..\na: window -2..+1 (4 values), centre -1 (setting 1)\n"
        "cut: window -2..+1 (4 values), centre -1 (setting 1)\n" + dq3 + ": partial; no common window\n",
        "", not_done}},
    {"no shared value", {{"merge", "<B>/a.csv", "<B>/far.csv"}, {{"a.csv", a.c_str()}, {"far.csv", far.c_str()}},
        "", p + dq3 + ": no value that every board measured\n", bad_input}},
    {"value off its axis", {{"merge", "<B>/a.csv", "<B>/bad.csv"}, {{"a.csv", a.c_str()}, {"bad.csv", off.c_str()}},
        "", p + "<B>/bad.csv:3: " + dq3 + ": +64 is not on its axis\n", bad_input}},
    {"odd bytes escaped", {{"merge", "<B>/bad.csv"}, {{"bad.csv", odd.c_str()}},
        "", p + "<B>/bad.csv:3: no property dq\\x1b[2J\n", bad_input}},
    {"unknown result", {{"merge", "<B>/bad.csv"}, {{"bad.csv", unknown.c_str()}},
        "", p + "<B>/bad.csv:3: 'passed' is not pass, fail, timeout or hang\n", bad_input}},
    {"profile path unwritable", {{"merge", "--profile", "<B>/no/dir.conf", "<B>/a.csv"}, {{"a.csv", a.c_str()}},
        "", p + "cannot write <B>/no/dir.conf: No such file or directory; nothing written\n", bad_input}},
    {"an output that is an input, through a link", {{"merge", "--svg", "<B>/link", "<B>/a.csv"},
                                                    {{"a.csv", a.c_str()}, {"link", "->a.csv"}},
        "", p + "cannot write <B>/link: it is <B>/a.csv, one of the files merged; nothing written\n", bad_input,
        "-", {{"a.csv", a}}}},
    {"a byte order mark before the header", {{"merge", "<B>/bom.csv"}, {{"bom.csv", marked.c_str()}},
        dq3 + "\n     +1\nbom  #\nbom: window +1..+1 (1 value), centre +1 (setting 65); neither edge found\n...",
        "", ok}},
};
// clang-format on

}  // namespace

TEST(PadkitTuneMerge, RefusalsAndBoardsWithoutAWindow) {
    for (const auto& [name, c] : cases) {
        SCOPED_TRACE(name);
        tune_board b;
        check(b, c);
    }
}

// A board's rows in any order, even sorted as text ("+1" before "-1" before "0"), merge as in the axis's order.
TEST(PadkitTuneMerge, RowsInAnyOrderMergeAsOrdered) {
    const std::string ordered = csv(-6, 6, -4, 2), other = csv(-6, 6, -2, 5);
    std::vector<std::string> rows;
    std::istringstream lines(ordered.substr(ordered.find('\n') + 1));
    for (std::string line; std::getline(lines, line);)
        rows.push_back(line + "\n");
    std::vector<std::string> as_text = rows, shuffled;
    std::sort(as_text.begin(), as_text.end());
    for (std::size_t at = 0; at < rows.size(); ++at)
        shuffled.push_back(rows[at * 5 % rows.size()]);
    std::string expected;
    for (const auto& order : {rows, as_text, shuffled}) {
        tune_board b;
        b.change("a.csv", std::accumulate(order.begin(), order.end(), std::string("name,value,result\n")).c_str());
        b.change("b.csv", other.c_str());
        const result got = b.run({"merge", (b.dir / "a.csv").string(), (b.dir / "b.csv").string()});
        EXPECT_EQ(got.status, tune_status::ok) << got.err;
        if (expected.empty())
            expected = got.out;
        EXPECT_EQ(got.out, expected);
    }
    EXPECT_NE(expected.find(dq3 + ": common window -2..+2 (5 values), centre 0\n"), std::string::npos) << expected;
}

// Three boards swept for real by padkit-memtest-sim, the eye of dq3 on each 26 delays wide and shifted by 3 against
// the one before; the profile of the common centre applied to a fourth board leaves the code of +3 there.
TEST(PadkitTuneMerge, ThreeShiftedBoardsToProfileCsvAndSvg) {
    if (lacks(PYTHON3))
        GTEST_SKIP() << "needs python3";
    tune_board boards[3], fresh;
    const auto in_dir = [&](const std::string& name) { return (fresh.scratch / name).string(); };
    strings merge = {"merge", "--csv", in_dir("m.csv"), "--svg", in_dir("m.svg"), "--profile", in_dir("m.conf")};
    std::string chart = dq3 + "\n    -20  -15  -10  -5   0    +5   +10     +20\n", windows;
    for (int k = 0; k < 3; ++k) {
        const std::string board = "b" + std::to_string(k + 1), lo = std::to_string(3 * k - 12),
                          hi = std::to_string(3 * k + 13), file = in_dir(board + ".csv");
        tune_board& b = boards[k];
        const std::string memtest = PADKIT_SIM_EMULATOR " '" + PADKIT_MEMTEST_SIM + "' --size 64K --bus-width 32";
        // Its first run makes the board's eyes.
        std::system(("PADKIT_SIM_DIR=" + b.dir.string() + " PADKIT_SWEEP_BUS=tarnm-ddra " + memtest + " 2>&-").c_str());
        std::string eye = slurp(b.dir / "eye");
        const std::size_t at = eye.find(dq3 + " "), end = eye.find('\n', at);
        ASSERT_NE(at, std::string::npos) << eye;
        b.change("eye", eye.replace(at, end - at, dq3 + " " + lo + " " + hi).c_str());
        ASSERT_EQ(b.run({"sweep", "-y", "--csv", file, dq3, "-20", "20", "--", "sh", "-c", memtest}).status, ok);
        merge.push_back(file);
        chart += board + "  " + std::string(8 + 3 * k, '.') + std::string(26, '#') + std::string(7 - 3 * k, '.') + "\n";
        windows += board + ": window " + lo + "..+" + hi + " (26 values), centre " +
                   (k ? "+" + std::to_string(3 * k) + " (setting " + std::to_string(64 + 3 * k) + ")\n" : "0\n");
    }
    const result got = fresh.run(merge);
    EXPECT_EQ(got.out, chart + windows + dq3 + ": common window -6..+13 (20 values), centre +3 (setting 67)\n" + dq3 +
                           ": centre +3: margin 9 below, 10 above (worst: b3 below, b1 above)\n");
    EXPECT_EQ(got.status, ok) << got.err;
    const std::string csv = slurp(in_dir("m.csv"));
    EXPECT_NE(csv.find("\n" + dq3 + ",-7,2,3,fail\n" + dq3 + ",-6,3,3,pass\n"), std::string::npos) << csv;
    const std::string profile = slurp(in_dir("m.conf"));
    EXPECT_NE(profile.find("\n# delay: +3\n" + dq3 + " = 67\n"), std::string::npos) << profile;
    EXPECT_EQ(fresh.run({"apply", in_dir("m.conf")}).status, ok) << profile;
    EXPECT_EQ(fresh.run({"dump", dq3}).out, "# delay: +3\n" + dq3 + " = 67\n");
    const std::string svg = in_dir("m.svg");
    EXPECT_EQ(
        std::system((SVG_SHOWS " " + svg + " | grep -e ^block -e ^common -e ^name -e ^ship >" + svg + ".txt").c_str()),
        0);
    EXPECT_EQ(slurp(svg + ".txt"), "block " + dq3 +
                                       "\nname b1\nname b2\nname b3\ncommon b1 = -6: pass .. b3 = +13: pass 60\n" +
                                       "ship b1 = +3: pass\n");
}
