// SPDX-License-Identifier: MIT
// padkit-tune-sim report: a campaign's CSV file or journal read back on a machine without its board.
#include <gtest/gtest.h>

#include "tests/e2e/sim_board.h"

namespace {

const std::string p = "padkit-tune-sim: ", dq = "tarnm-ddra-read0::dq";
// No board at all: report must not need one.
const settings no_board = {{"PADKIT_SIM_DIR", "/nonexistent/padkit-board"}};

strings campaign(const tune_board& b, strings args, const std::string& command) {
    args.insert(args.begin() + 1, {"-y", "--csv", (b.scratch / "c.csv").string(), "--journal",
                                   (b.scratch / "j").string(), "--svg", (b.scratch / "c.svg").string()});
    args.insert(args.end(), {"--", "sh", "-c", command});
    return args;
}

// What svg_shows.py reads in the picture at PATH, but the lines that begin with LEAVE_OUT.
std::string svg_shows(const fs::path& path, const std::string& leave_out = "^$") {
    const std::string shown = path.string() + ".txt";
    EXPECT_EQ(std::system((SVG_SHOWS " " + path.string() + " | grep -v '" + leave_out + "' >" + shown).c_str()), 0);
    return slurp(shown);
}

}  // namespace

// The chart and summary of the run, again from its CSV file and from its journal; the SVG from the CSV file as the
// run drew it (but for its title: the journal does not know the host); JSON that parses.
TEST(PadkitTuneReport, ShowsWhatTheRunShowed) {
    if (lacks(PYTHON3))
        GTEST_SKIP() << "needs python3";
    // clang-format off
    const struct { const char* name; strings args; std::string command; int status; } rows[] = {
        {"sweep of a lane, step 2", {"sweep", "--step", "2", dq, "-9", "9"},
            "[ $PADKIT_SWEEP_VALUE -ge -5 -a $PADKIT_SWEEP_VALUE -le 3 ]", 0},
        {"sweep interrupted, partial", {"sweep", "mmc::rdqs", "30", "40"},
            "[ $PADKIT_SWEEP_VALUE -lt 34 ] || { kill -TERM $PPID; sleep 30; }", 143},
        {"shmoo, weighed", {"shmoo", "--weigh", "2:1", "tarnm-ddra::odt", "40", "120", "mmc::rdqs", "36", "39"},
            "[ $PADKIT_SHMOO_Y_VALUE -le 38 -a $PADKIT_SHMOO_X_VALUE -le 60 ]", 0},
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        tune_board b;
        const result run = b.run(campaign(b, row.args, row.command));
        ASSERT_EQ(run.status, row.status) << run.err;
        for (const char* file : {"c.csv", "j"}) {
            const result shown = b.run({"report", (b.scratch / file).string()}, no_board);
            EXPECT_EQ(shown.out, run.out) << file;
            EXPECT_EQ(shown.err, "");
            EXPECT_EQ(shown.status, 0);
        }
        std::ofstream(b.scratch / "r.json") << b.run({"report", "--json", (b.scratch / "j").string()}, no_board).out;
        EXPECT_EQ(
            std::system(
                (PYTHON3 " -c 'import json, sys; json.load(sys.stdin)' <" + (b.scratch / "r.json").string()).c_str()),
            0);
        const std::string drawn = svg_shows(b.scratch / "c.svg");
        std::ofstream(b.scratch / "r.svg") << b.run({"report", "--svg", (b.scratch / "c.csv").string()}, no_board).out;
        EXPECT_EQ(svg_shows(b.scratch / "r.svg"), drawn);
        std::ofstream(b.scratch / "rj.svg") << b.run({"report", "--svg", (b.scratch / "j").string()}, no_board).out;
        EXPECT_EQ(svg_shows(b.scratch / "rj.svg", "^title"), svg_shows(b.scratch / "c.svg", "^title"));
    }
}

// Per line the edges, width, centre, original and margins; an edge the range cut and a line without a window
// flagged. Member 0 never passes, member 1 from -1 up, the others -2..+2.
TEST(PadkitTuneReport, JsonHoldsTheEdgesOfEveryLine) {
    if (lacks(PYTHON3))
        GTEST_SKIP() << "needs python3";
    tune_board b;
    const result run = b.run(campaign(b, {"sweep", dq, "-3", "3"},
                                      "v=$PADKIT_SWEEP_VALUE; case $PADKIT_SWEEP_NAME in *0) false;; "
                                      "*1) [ $v -ge -1 ];; *) [ $v -ge -2 -a $v -le 2 ];; esac"));
    ASSERT_EQ(run.status, tune_status::not_done) << run.err;
    const std::string fields =
        "import json, sys; d = json.load(sys.stdin); t = d['tables'][0]; print(d['kind'], d['partial'], t['name'], "
        "t['unit']); [print(*(l[k] for k in ('line', 'lower', 'upper', 'width', 'centre', 'original', 'margin_below', "
        "'margin_above', 'lower_edge_not_found', 'upper_edge_not_found', 'no_window'))) for l in t['lines'][:3]]";
    const std::string lines = "sweep False " + dq + " delay steps\n" + dq + "0 None None None None 0 None None " +
                              "False False True\n" + dq + "1 -1 3 5 1 0 1 3 False True False\n" + dq +
                              "2 -2 2 5 0 0 2 2 False False False\n";
    for (const char* file : {"c.csv", "j"}) {
        SCOPED_TRACE(file);
        const std::string json = (b.scratch / "r.json").string();
        std::ofstream(json) << b.run({"report", "--json", (b.scratch / file).string()}, no_board).out;
        EXPECT_EQ(std::system((PYTHON3 " -c \"" + fields + "\" <" + json + " >" + json + ".txt").c_str()), 0);
        EXPECT_EQ(slurp(json + ".txt"), lines);
    }
}

// A CSV file without its comment lines still reads: its chart without the originals, which only they gave.
TEST(PadkitTuneReport, CsvWithoutHeaderLines) {
    tune_board b;
    b.change("bare.csv", "name,value,result\nmmc::rdqs,30,fail\nmmc::rdqs,31,pass\nmmc::rdqs,32,pass\n");
    const result got = b.run({"report", (b.dir / "bare.csv").string()}, no_board);
    EXPECT_EQ(got.out,
              "           30 32\nmmc::rdqs  .##\nmmc::rdqs: window 31..32 (2 values), centre 31; upper edge "
              "not found\n");
    EXPECT_EQ(got.status, 0) << got.err;
}
