// SPDX-License-Identifier: MIT
// padkit-tune-sim sweep end to end, with test commands that pass for some values only.
#include <pty.h>
#include <signal.h>

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/e2e/sim_board.h"

namespace {

// A test command passing for values in LO..HI; more windows with "||".
std::string in(int lo, int hi) {
    return "[ $PADKIT_SWEEP_VALUE -ge " + std::to_string(lo) + " -a $PADKIT_SWEEP_VALUE -le " + std::to_string(hi) +
           " ]";
}

const std::string p = "padkit-tune-sim: ", mmc = "mmc::rdqs", odt = "tarnm-ddra::odt", dq = "tarnm-ddra-read0::dq";
const std::string cpu = "cpu_regulator::microvolts";

// Passes when the composite reads 5 everywhere but at the swept member, which holds the setting.
const std::string members_apart =
    PADKIT_SIM_EMULATOR " \"" + PADKIT_SIM + "\" " + dq +
    " 2>/dev/null | tr -d '{}' | "
    "awk -F, -v k=${PADKIT_SWEEP_NAME##*dq} -v v=$PADKIT_SWEEP_SETTING "
    "'{for (i = 1; i <= NF; i++) if ($i != (i == k + 1 ? v : 5)) bad = 1} END {exit bad || NR != 1}'";

// Every line of LINES after PREFIX.
std::string each_line(const std::string& lines, const std::string& prefix) {
    std::istringstream in(lines);
    std::string out;
    for (std::string line; std::getline(in, line);)
        out += prefix + line + "\n";
    return out;
}

strings sweep(strings args, const std::string& command) {
    args.insert(args.begin(), "sweep");
    args.insert(args.end(), {"--", "sh", "-c", command});
    return args;
}

// A case that names no board file leaves the swept property as it was.
// clang-format off
const named_case cases[] = {
    {"hole, original at the window's edge", {sweep({"-y", mmc, "30", "45"}, in(32, 34) + " || " + in(37, 41)), {},
        "           30   35   40  45\n"
        "mmc::rdqs  ..###..O####....\n"
        "mmc::rdqs: window 37..41 (5 values), centre 39\nmmc::rdqs: original 37: margin 0 below, 4 above\n", "", 0}},
    {"falling, two equal windows", {sweep({"-y", mmc, "39", "30"}, in(31, 33) + " || " + in(35, 37)), {},
        "           39  35  30\n"
        "mmc::rdqs  ..O##.###.\n"
        "mmc::rdqs: window 35..37 (3 values), centre 36\nmmc::rdqs: original 37: margin 2 below, 0 above\n", "", 0}},
    // Every run must pass: here the second one passes at 2 only.
    {"runs, original outside", {sweep({"-y", "--runs", "2", "mac-tx::delay", "0", "3"},
                                      "f=${TMPDIR:-/tmp}/padkit-sweep-run.$PPID.$PADKIT_SWEEP_VALUE; "
                                      "[ ! -e $f ] && touch $f || { rm $f; [ $PADKIT_SWEEP_VALUE = 2 ]; }"), {},
        "               0  3\n"
        "mac-tx::delay  X.#.\n"
        "mac-tx::delay: window 2..2 (1 value), centre 2\nmac-tx::delay: original 0: outside the window\n", "", 0}},
    {"keep centre, original inside", {sweep({"-y", "--keep", "centre", mmc, "30", "45"}, in(33, 40)), {},
        "           30   35   40  45\n"
        "mmc::rdqs  ...####O###.....\n"
        "mmc::rdqs: window 33..40 (8 values), centre 36\nmmc::rdqs: original 37: margin 4 below, 3 above\n",
        p + "mmc::rdqs: kept at the centre, 36\n", 0, "-", {{"sys/kernel/debug/mmc0/rdqs", "36"}}}},
    {"no window, original off the axis", {sweep({"-y", "--keep", "centre", mmc, "2", "3"}, "false"), {},
        "           2 3\n"
        "mmc::rdqs  ..\n"
        "mmc::rdqs: no passing value\nmmc::rdqs: original 37: not on the axis\n", "", 1}},
    // Margins count delay steps, whatever the step, also from an original between two values.
    {"step 2, margins in delay steps", {sweep({"-y", "--step", "2", dq + "3", "-10", "10"}, in(-4, 6)), {},
        "                       -10  0  +10\n" +
        dq + "3  ...##O###..\n" +
        dq + "3: window -4..+6 (6 values), centre 0\n" + dq + "3: original 0: margin 4 below, 6 above\n", "", 0}},
    {"original between two values", {sweep({"-y", "--step", "2", dq + "3", "-9", "9"}, in(-5, 3)), {},
        "                       -9      +9\n" +
        dq + "3  ..#####...\n" +
        dq + "3: window -5..+3 (5 values), centre -1 (setting 1)\n" + dq + "3: original 0: margin 5 below, 3 above\n",
        "", 0}},
    // A window cut by the range: its edge there was not found, its margin there at least what it shows.
    {"table keys", {sweep({"-y", odt, "1", "200"}, in(40, 60)), {},
        "                 40 120\n"
        "tarnm-ddra::odt  #O.\n"
        "tarnm-ddra::odt: window 40..60 (2 values), centre 40; lower edge not found\n"
        "tarnm-ddra::odt: original 60: margin at least 1 below, 0 above\n", "", 0}},
    {"regulator, falling step", {sweep({"-y", "--step", "-20000", cpu, "1040000", "1000000"}, in(0, 1020000)), {},
        "                           1040000 1000000\n"
        "cpu_regulator::microvolts  .##\n"
        "cpu_regulator::microvolts: window 1000000..1020000 (2 values), centre 1000000; lower edge not found\n"
        "cpu_regulator::microvolts: original 1100000: not on the axis\n", "", 0}},
    {"time-out", {sweep({"-y", "--timeout", "0.3", mmc, "40", "41"}, "sleep 30"), {},
        "           40 41\n"
        "mmc::rdqs  TT\n"
        "mmc::rdqs: no passing value\nmmc::rdqs: original 37: not on the axis\n", "", 1}},
    {"interrupted", {sweep({"-y", mmc, "30", "40"},
                           "[ $PADKIT_SWEEP_VALUE -lt 34 ] || { kill -TERM $PPID; sleep 30; }"), {},
        "           30   35  40\n"
        "mmc::rdqs  ####\n"
        "mmc::rdqs: partial (4 of 11 values measured): window 30..33 (4 values); neither edge found\n",
        p + "interrupted by Terminated; every swept property restored\n", 143}},
    // Refused before anything is written.
    {"no consent", {sweep({mmc, "30", "40"}, "true"), {},
        "", "WARNING! This sweeps mmc::rdqs over 30..40 (11 values)...", 2, ""}},
    {"bad TO", {sweep({"-y", "--timeout", "1.", mmc, "30", "x"}, "true"), {},
        "", p + "TO: 'x' is not a decimal...", 2, ""}},
    {"below the file's range", {sweep({"-y", mmc, "1", "40"}, "true"), {},
        "", p + "mmc::rdqs: 1 is not in 2..255; nothing written\n", 2, ""}},
    {"no key between", {sweep({"-y", odt, "1", "30"}, "true"), {},
        "", p + "tarnm-ddra::odt: no key of its table from 1 to 30\n", 2, ""}},
    {"DQ codes are no delays", {sweep({"-y", dq + "3", "0", "127"}, "true"), {},
        "", p + "tarnm-ddra-read0::dq3: +127 is not in -63..+63; nothing written\n", 2, ""}},
    {"DQ below -63", {sweep({"-y", dq, "-64", "0"}, "true"), {},
        "", p + "tarnm-ddra-read0::dq: -64 is not in -63..+63; nothing written\n", 2, ""}},
    {"log into no directory", {sweep({"-y", "--log", "<B>/none", mmc, "30", "31"}, "true"), {},
        "", p + "--log <B>/none: No such file or directory; nothing written\n", 2, ""}},
    {"log into a file", {sweep({"-y", "--log", "<B>/sys/kernel/debug/mmc0/rdqs", mmc, "30", "31"}, "true"), {},
        "", p + "--log <B>/sys/kernel/debug/mmc0/rdqs: not a directory; nothing written\n", 2, ""}},
};
// clang-format on

}  // namespace

TEST(PadkitTuneSweep, ChartsWindowsAndWhatIsLeft) {
    for (const auto& [name, c] : cases) {
        SCOPED_TRACE(name);
        tune_board b;
        const strings dump = {"dump", c.args[c.args.size() - 7]};  // NAME FROM TO -- sh -c COMMAND
        const std::string before = b.run(dump).out;
        check(b, c);
        EXPECT_EQ(c.files.empty() ? b.run(dump).out : before, before);
    }
}

// Each member is swept with the others at their values, the first member's first value
// hanging past the time-out (long enough for the check to run padkit-sim under an emulator);
// the SVG is read back by an XML parser.
TEST(PadkitTuneSweep, CompositeMemberByMemberToCsvAndSvg) {
    if (lacks(PYTHON3))
        GTEST_SKIP() << "needs python3";
    tune_board b;
    b.change("fives", (dq + " = {5,5,5,5,5,5,5,5}").c_str());
    b.run({"apply", (b.dir / "fives").string()});
    const std::string csv = (b.scratch / "sweep.csv").string(), svg = (b.scratch / "sweep.svg").string();
    const std::string command =
        "[ $PADKIT_SWEEP_NAME$PADKIT_SWEEP_VALUE != " + dq + "00 ] || sleep 9; " + in(1, 2) + " && " + members_apart;
    const result got =
        b.run({"sweep", "-y", "--timeout", "2", "--csv", csv, "--svg", svg, dq, "0", "2", "--", "sh", "-c", command});
    EXPECT_EQ(got.status, 0) << got.err;
    EXPECT_EQ(b.run({"dump", dq}).out, "# delays: -5 -5 -5 -5 -5 -5 -5 -5\n" + dq + " = {5,5,5,5,5,5,5,5}\n");
    std::string expected_csv = "name,value,result\n", expected_svg, summaries, originals;
    for (int k = 0; k < 8; ++k) {
        const std::string name = dq + std::to_string(k), cell = name + " = ", first = k ? "fail" : "timeout";
        expected_csv += name + ",0," + first + "\n" + name + ",+1,pass\n" + name + ",+2,pass\n";
        originals += "# original: " + name + " = 5 (delay -5)\n";
        expected_svg += "name " + name + "\ncell " + cell + "0: " + first + "\ncell " + cell + "+1: pass\ncell " +
                        cell + "+2: pass\nwindow " + cell + "+1: pass .. " + cell + "+2: pass 2\nedge right of " +
                        cell + "+2: pass\ncentre " + cell + "+1: pass\n";
        summaries += name + ": window +1..+2 (2 values), centre +1 (setting 65); upper edge not found\n" + name +
                     ": original -5: not on the axis\n";
    }
    summaries += dq + ": common window +1..+2 (2 values), centre +1 (setting 65); upper edge not found\n" + dq +
                 ": centre +1: margin 0 below, at least 1 above (worst: " + dq + "0)\n";
    // The facts first, the summary last, each line of it a comment.
    const std::string text = slurp(csv), summary_facts = each_line(summaries, "# summary: ");
    EXPECT_EQ(text.rfind("# sweep: " + dq + " 0..+2, step 1 delay step\n# host: ", 0), 0u) << text;
    EXPECT_NE(text.find("\n# test: sh -c '[ $PADKIT_SWEEP_NAME$PADKIT_SWEEP_VALUE != "), std::string::npos) << text;
    EXPECT_NE(text.find("\n# values: " + dq + " 0 +1 +2\nname,value,result\n"), std::string::npos) << text;
    EXPECT_EQ(text.substr(text.find("name,value,result")), expected_csv + originals + summary_facts);
    EXPECT_EQ(std::system((SVG_SHOWS " " + svg +
                           " | grep -v -e ^title -e ^block -e ^axis-title -e ^legend -e ^ticks >" + svg + ".txt 2>&1")
                              .c_str()),
              0);
    EXPECT_EQ(slurp(svg + ".txt"), expected_svg + "common " + dq + "0 = +1: pass .. " + dq + "7 = +2: pass 16\n" +
                                       "common-centre " + dq + "0 = +1: pass\n" + each_line(summaries, "summary "));
}

// A DQ delay is swept on its signed delay and written as the code for it; here it starts at +12 (code 76).
TEST(PadkitTuneSweep, DqMemberOnItsSignedDelay) {
    if (lacks(PYTHON3))
        GTEST_SKIP() << "needs python3";
    const std::string dq3 = dq + "3", window = dq3 + ": window -10..+20 (31 values), centre +5 (setting 69)";
    // clang-format off
    const struct { const char* name; std::string from, to, ending, axis_labels; } rows[] = {
        {"-20 20, the window cut by the range", "-20", "20",
            "-20  -15  -10  -5   0    +5   +10     +20\n" +
            dq3 + "  ..........######################O########\n" +
            window + "; upper edge not found\n" + dq3 + ": original +12: margin 22 below, at least 8 above\n",
            "-20 -15 -10 -5 0 +5 +10 +15 +20 "},
        {"-63 63", "-63", "63", window + "\n" + dq3 + ": original +12: margin 22 below, 8 above\n",
            "-63 -60 -55 -50 -45 -40 -35 -30 -25 -20 -15 -10 -5 0 +5 +10 +15 +20 +25 +30 +35 +40 +45 +50 +55 +60 +63 "},
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        tune_board b;
        b.change("start", (dq3 + " = 76").c_str());
        b.run({"apply", (b.dir / "start").string()});
        const std::string svg = (b.scratch / "dq.svg").string();
        const result got = b.run(sweep({"-y", "--keep", "centre", "--svg", svg, dq3, row.from, row.to}, in(-10, 20)));
        EXPECT_EQ(got.out.substr(got.out.size() - std::min(got.out.size(), row.ending.size())), row.ending);
        EXPECT_EQ(b.run({"dump", dq3}).out, "# delay: +5\n" + dq3 + " = 69\n");
        std::system(
            (SVG_SHOWS " " + svg + " | sed -n 's/^ticks top: //p; s/^original //p' | tr '\\n' ' ' >" + svg + ".txt")
                .c_str());
        EXPECT_EQ(slurp(svg + ".txt"), dq3 + " = +12: pass " + row.axis_labels);
    }
}

// Member k passes for k-8..k+8: the lane's common window is where all of them overlap. The profile
// the sweep writes makes the board that --keep centre leaves.
TEST(PadkitTuneSweep, CompositeCommonWindowAndProfile) {
    const std::string command =
        "k=${PADKIT_SWEEP_NAME##*dq}; [ $PADKIT_SWEEP_VALUE -ge $((k - 8)) -a $PADKIT_SWEEP_VALUE -le $((k + 8)) ]";
    tune_board kept, profiled;
    const result got = kept.run(sweep({"-y", "--keep", "centre", dq, "-10", "10"}, command));
    const std::string common = "\n" + dq + ": common window -1..+8 (10 values), centre +3 (setting 67)\n";
    EXPECT_NE(got.out.find(common), std::string::npos) << got.out;
    const std::string profile = (profiled.scratch / "lane.conf").string();
    EXPECT_EQ(profiled.run(sweep({"-y", "--profile", profile, dq, "-10", "10"}, command)).status, 0);
    const std::string written = slurp(profile), header = "# padkit-tune-sim sweep -y --profile " + profile + " ";
    EXPECT_EQ(written.rfind(header + dq + " -10 10 -- sh -c '", 0), 0u) << written;
    EXPECT_NE(written.find("\n# delays: -0 +1 +2 +2 +3 +3 +4 +4\n" + dq + " = {0,65,66,66,67,67,68,68}\n"),
              std::string::npos)
        << written;
    EXPECT_EQ(profiled.run({"apply", profile}).status, 0);
    EXPECT_EQ(profiled.run({"dump"}).out, kept.run({"dump"}).out);
}

// A lane stopped by SIGTERM once its first member is measured: partial in its summary, CSV and SVG, and no common
// window from the one member measured.
TEST(PadkitTuneSweep, CompositeStoppedAfterItsFirstMemberIsPartial) {
    if (lacks(PYTHON3))
        GTEST_SKIP() << "needs python3";
    tune_board b;
    const std::string csv = (b.scratch / "lane.csv").string(), svg = (b.scratch / "lane.svg").string();
    const result got = b.run(sweep({"-y", "--csv", csv, "--svg", svg, dq, "-2", "2"},
                                   "[ $PADKIT_SWEEP_NAME = " + dq + "0 ] || { kill -TERM $PPID; sleep 30; }"));
    EXPECT_EQ(got.status, 128 + SIGTERM) << got.err;
    const std::string partial = dq + ": partial; no common window\n";
    EXPECT_EQ(got.out.substr(got.out.find(dq + "0: window")),
              dq + "0: window -2..+2 (5 values), centre 0; neither edge found\n" + dq +
                  "0: original 0: margin at least 2 below, at least 2 above\n" + partial);
    const std::string text = slurp(csv);
    EXPECT_NE(text.find("\n# partial: not every value was measured\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\n# summary: " + partial), std::string::npos) << text;
    EXPECT_EQ(std::system((SVG_SHOWS " " + svg + " >" + svg + ".txt 2>&1").c_str()), 0);
    const std::string shown = slurp(svg + ".txt");
    EXPECT_NE(shown.find("\npartial partial: not every value was measured\n"), std::string::npos) << shown;
    EXPECT_NE(shown.find("\nsummary " + partial), std::string::npos) << shown;
    EXPECT_EQ(shown.find("\ncommon"), std::string::npos) << shown;
}

// The test command's output never reaches the chart: on standard error, or with --log one file per run, named
// after the point's values and the run.
TEST(PadkitTuneSweep, CommandOutputKeptApart) {
    const std::string says = "echo out $PADKIT_SWEEP_VALUE; echo err $PADKIT_SWEEP_VALUE >&2";
    tune_board b;
    const result plain = b.run(sweep({"-y", mmc, "30", "31"}, says));
    EXPECT_EQ(plain.out,
              "           30 31\nmmc::rdqs  ##\nmmc::rdqs: window 30..31 (2 values), centre 30; neither edge "
              "found\nmmc::rdqs: original 37: not on the axis\n");
    EXPECT_EQ(plain.err, "out 30\nerr 30\nout 31\nerr 31\n");
    const fs::path logs = b.scratch / "logs";
    fs::create_directory(logs);
    const auto logged = [&](const strings& args) {
        const result got = b.run(args);
        std::map<std::string, std::string> files;
        for (const auto& entry : fs::directory_iterator(logs))
            files[entry.path().filename().string()] = slurp(entry.path());
        fs::remove_all(logs);
        fs::create_directory(logs);
        return std::make_pair(got, files);
    };
    const auto [swept, sweep_logs] =
        logged(sweep({"-y", "--runs", "2", "--log", logs.string(), mmc, "30", "31"}, says));
    EXPECT_EQ(swept.out, plain.out);
    EXPECT_EQ(swept.err, "");
    const std::map<std::string, std::string> per_run = {{mmc + "=30.1.log", "out 30\nerr 30\n"},
                                                        {mmc + "=30.2.log", "out 30\nerr 30\n"},
                                                        {mmc + "=31.1.log", "out 31\nerr 31\n"},
                                                        {mmc + "=31.2.log", "out 31\nerr 31\n"}};
    EXPECT_EQ(sweep_logs, per_run);
    const auto [shmooed, shmoo_logs] = logged({"shmoo", "-y", "--log", logs.string(), odt, "40", "60", "mac-tx::delay",
                                               "1", "1", "--", "sh", "-c", "echo $PADKIT_SHMOO_X_VALUE"});
    EXPECT_EQ(shmooed.status, 0) << shmooed.err;
    const std::map<std::string, std::string> per_point = {{odt + "=40,mac-tx::delay=1.1.log", "40\n"},
                                                          {odt + "=60,mac-tx::delay=1.1.log", "60\n"}};
    EXPECT_EQ(shmoo_logs, per_point);
}

// What padkit-tune-sim ARGS shows on an 80-column terminal.
std::string on_terminal(const tune_board& b, const std::string& args) {
    winsize size{24, 80, 0, 0};
    int terminal = -1;
    const pid_t pid = forkpty(&terminal, nullptr, nullptr, &size);
    if (pid == 0) {
        setenv("PADKIT_SIM_DIR", b.dir.c_str(), 1);
        dup2(open((b.scratch / "err").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), 2);
        const std::string run = PADKIT_SIM_EMULATOR " \"" + PADKIT_TUNE_SIM + "\" " + args;
        execl("/bin/sh", "sh", "-c", run.c_str(), nullptr);
        _exit(127);
    }
    std::string shown;
    char buffer[4096];
    for (ssize_t got; (got = read(terminal, buffer, sizeof buffer)) > 0;)
        shown.append(buffer, static_cast<std::size_t>(got));
    close(terminal);
    waitpid(pid, nullptr, 0);
    return shown;
}

// On an 80-column terminal the charts of 128 values are wrapped into blocks no wider than it, every cell kept,
// and the shmoo's legend wrapped too.
TEST(PadkitTuneSweep, ChartsAndLegendsFitAn80ColumnTerminal) {
    tune_board b;
    std::string board_csv = "name,value,result\n", board_cells, swept_cells;
    for (int value = 2; value <= 129; ++value) {
        const bool passes = value >= 40 && value <= 90;
        board_csv += mmc + "," + std::to_string(value) + (passes ? ",pass\n" : ",fail\n");
        board_cells += passes ? '#' : '.';
        swept_cells += value == 37 ? 'X' : board_cells.back();  // the board's original
    }
    b.change("a.csv", board_csv.c_str());
    b.change("b.csv", board_csv.c_str());
    // clang-format off
    const struct { const char* name; std::string args, row, shows; } rows[] = {
        {"sweep", "sweep -y " + mmc + " 2 129 -- sh -c '" + in(40, 90) + "'", mmc + "  ", swept_cells},
        {"shmoo", "shmoo -y " + mmc + " 2 129 mac-tx::delay 0 1 -- sh -c '[ $PADKIT_SHMOO_X_VALUE -ge 40 ]'", "0  ",
            "@ safest point"},
        {"merge", "merge " + (b.dir / "a.csv").string() + " " + (b.dir / "b.csv").string(), "b  ", board_cells},
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::istringstream lines(on_terminal(b, row.args));
        std::string cells, all;
        int blocks = 0;
        for (std::string line; std::getline(lines, line);) {
            line.erase(line.find_last_not_of('\r') + 1);
            EXPECT_LE(line.size(), 80u) << line;
            all += line + "\n";
            if (line.rfind(row.row, 0) != 0)
                continue;
            cells += line.substr(row.row.size());
            ++blocks;
        }
        EXPECT_EQ(blocks, 2) << all;
        EXPECT_NE((cells + "\n" + all).find(row.shows), std::string::npos) << all;
    }
}
