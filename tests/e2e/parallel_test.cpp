// SPDX-License-Identifier: MIT
// Sweeps of DQ lines judged by the failing bits of their test command: lanes in parallel against one line at a
// time on the simulated eye (no noise), the wiring of --bits, and what the failing-bits file may say.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>

#include "tests/e2e/sim_board.h"

namespace {

const settings seed = {{"PADKIT_SIM_EYE_SEED", "7"}};

// padkit-memtest-sim on a bus WIDTH bits wide, each run a line in the scratch "runs"; its path.
std::string counted_memtest(const sim_board& b, const std::string& width) {
    const fs::path script = b.scratch / "memtest";
    std::ofstream(script) << "#!/bin/sh\necho >>" << (b.scratch / "runs").string() << "\nexec " PADKIT_SIM_EMULATOR
                          << " " << PADKIT_MEMTEST_SIM << " --size 64K --bus-width " << width << "\n";
    fs::permissions(script, fs::perms::owner_all);
    return script.string();
}

std::size_t runs_of(const sim_board& b) {
    const std::string runs = slurp(b.scratch / "runs");
    return static_cast<std::size_t>(std::count(runs.begin(), runs.end(), '\n'));
}

// A signed delay as the chart shows it: 0, -3, +3.
std::string shown(int delay) { return (delay > 0 ? "+" : "") + std::to_string(delay); }

// The results of a CSV file, a letter each: "pf" for pass, fail.
std::string results_in(const std::string& csv) {
    std::istringstream in(csv);
    std::string letters;
    for (std::string line; std::getline(in, line);)
        if (line[0] != '#' && line.find("name,") == std::string::npos)
            letters += line[line.rfind(',') + 1];
    return letters;
}

}  // namespace

TEST(PadkitTuneParallel, GivesTheWindowsOfOneLineAtATimeWithAFractionOfTheRuns) {
    if (*PADKIT_SIM_EMULATOR)
        GTEST_SKIP() << "a thousand runs of the command, the same on every target: run natively";
    const strings ddra = {"tarnm-ddra-read0::dq", "tarnm-ddra-read1::dq", "tarnm-ddra-read2::dq",
                          "tarnm-ddra-read3::dq"};
    strings ddrb;
    for (int lane = 0; lane < 8; ++lane)
        ddrb.push_back("tarnm-ddrb-read" + std::to_string(lane) + "::dq");
    // clang-format off
    const struct { const char* name; strings lanes; const char* width; std::size_t fraction; } rows[] = {
        {"a read lane", {"tarnm-ddra-read1::dq"}, "32", 8},
        {"tarnm-ddra's four read lanes", ddra, "32", 32},
        {"tarnm-ddrb's eight read lanes", ddrb, "64", 64},
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        tune_board together, alone;
        strings words = {"sweep", "-y", "--step", "9", "--parallel"};
        words.insert(words.end(), row.lanes.begin(), row.lanes.end());
        words.insert(words.end(), {"-36", "36", "--", counted_memtest(together, row.width)});
        const result parallel = together.run(words, seed);
        std::string one_at_a_time;
        for (const std::string& lane : row.lanes)
            one_at_a_time +=
                alone
                    .run({"sweep", "-y", "--step", "9", lane, "-36", "36", "--", counted_memtest(alone, row.width)},
                         seed)
                    .out;
        EXPECT_EQ(parallel.status, tune_status::ok) << parallel.err;
        EXPECT_NE(parallel.out.find(": common window "), std::string::npos);
        EXPECT_EQ(parallel.out, one_at_a_time);
        EXPECT_EQ(runs_of(together) * row.fraction, runs_of(alone));
    }
}

// Lanes 0 and 1 swapped on the board, and two bits within lane 0: each line charts the eye of the line on its bit.
TEST(PadkitTuneParallel, WindowsFollowTheWiringOfBits) {
    tune_board b;
    std::string map = "# lanes 0 and 1 swapped\n";
    for (int dq = 0; dq < 8; ++dq) {
        const int bit = dq == 2 ? 5 : dq == 5 ? 2 : dq;
        map += "tarnm-ddra-read0::dq" + std::to_string(dq) + "  " + std::to_string(8 + bit) + "  ; wired\n";
        map += "tarnm-ddra-read1::dq" + std::to_string(dq) + "\t" + std::to_string(dq) + "\n";
    }
    b.change("map", map.c_str());
    const result got = b.run({"sweep", "-y", "--bits", (b.dir / "map").string(), "--parallel", "tarnm-ddra-read0::dq",
                              "tarnm-ddra-read1::dq", "-40", "40", "--", counted_memtest(b, "32")},
                             seed);
    EXPECT_EQ(got.status, tune_status::ok) << got.err;
    const auto eyes = eyes_of(b);
    for (int dq = 0; dq < 8; ++dq) {
        const std::string on_bit = std::to_string(dq == 2 ? 5 : dq == 5 ? 2 : dq);
        for (const auto& [line, wired] :
             {std::pair{"tarnm-ddra-read0::dq" + std::to_string(dq), "read1::dq" + on_bit},
              {"tarnm-ddra-read1::dq" + std::to_string(dq), "read0::dq" + std::to_string(dq)}}) {
            const auto [low, high] = eyes.at("tarnm-ddra-" + wired);
            EXPECT_NE(got.out.find(line + ": window " + shown(low) + ".." + shown(high) + " ("), std::string::npos)
                << line << " on the bit of " << wired << "\n"
                << got.out;
        }
    }
}

TEST(PadkitTuneParallel, RefusesLanesAndMapsThatDoNotFitWritingNothing) {
    const std::string refused = "padkit-tune-sim: ", nothing = "; nothing written\n";
    std::string whole;
    for (int dq = 0; dq < 8; ++dq)
        whole += "tarnm-ddra-read0::dq" + std::to_string(dq) + " " + std::to_string(dq) + "\n";
    // clang-format off
    const struct { const char* name; strings lanes; std::string map, err; } rows[] = {
        {"a map missing a member", {"tarnm-ddra-read0::dq"}, whole.substr(0, whole.rfind("tarnm")),
            refused + "<B>/map: no bit for tarnm-ddra-read0::dq7" + nothing},
        {"a map naming a member twice", {"tarnm-ddra-read0::dq"}, whole + "tarnm-ddra-read0::dq3 9\n",
            refused + "<B>/map:9: tarnm-ddra-read0::dq3 is named twice" + nothing},
        {"a map giving a bit twice", {"tarnm-ddra-read0::dq"}, whole + "tarnm-ddra-read1::dq3 3\n",
            refused + "<B>/map:9: bit 3 is given twice" + nothing},
        {"a bit beyond the bus", {"tarnm-ddra-read0::dq"}, whole.substr(0, whole.size() - 2) + "32\n",
            refused + "<B>/map: bit 32 of tarnm-ddra-read0::dq7 is beyond the 32-bit bus of tarnm-ddra" + nothing},
        {"lanes of two controllers", {"tarnm-ddra-read0::dq", "tarnm-ddrb-read0::dq"}, "",
            refused + "--parallel: tarnm-ddrb-read0::dq is not a read lane of tarnm-ddra" + nothing},
        {"a read and a write lane", {"tarnm-ddra-read1::dq", "tarnm-ddra-write0::dq"}, "",
            refused + "--parallel: tarnm-ddra-write0::dq is not a read lane of tarnm-ddra" + nothing},
        {"a lane twice", {"tarnm-ddra-read0::dq", "tarnm-ddra-read0::dq"}, "",
            refused + "--parallel: tarnm-ddra-read0::dq is named twice" + nothing},
        {"no lane", {"mmc::rdqs"}, "", refused + "--parallel: mmc::rdqs is no lane of DQ lines" + nothing},
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        tune_board b;
        strings words = {"sweep", "-y", "--csv", (b.scratch / "csv").string(), "--parallel"};
        if (!row.map.empty())
            b.change("map", row.map.c_str()), words.insert(words.begin() + 2, {"--bits", (b.dir / "map").string()});
        words.insert(words.end(), row.lanes.begin(), row.lanes.end());
        words.insert(words.end(), {"2", "3", "--", "false"});
        const auto before = b.files();
        const result got = b.run(words);
        EXPECT_EQ(got.err, b.on_board(row.err));
        EXPECT_EQ(got.status, tune_status::bad_input);
        EXPECT_EQ(b.files(), before);
        EXPECT_FALSE(fs::exists(b.scratch / "csv"));
    }
}

// What the command leaves in $PADKIT_FAILING_BITS decides per line; tarnm-ddra-read1's lines carry bits 8 to 15.
TEST(PadkitTuneParallel, FailingBitsJudgeEachLine) {
    const strings lane = {"sweep", "--parallel", "tarnm-ddra-read1::dq"}, dq1 = {"sweep", "tarnm-ddra-read1::dq1"};
    const std::string garbled = "padkit-tune-sim: the failing bits: ", all = "; every line fails\n";
    const std::string bits = " >\"$PADKIT_FAILING_BITS\"", second_run = "[ -e \"$0.2\" ] && echo 15" + bits;
    // clang-format off
    const struct { const char* name; strings swept; std::string command, results, err; } rows[] = {
        {"a word", lane, "echo 3 x" + bits, "ffffffff", garbled + "'x' is not the number of a data bit" + all},
        {"a bit beyond the bus", lane, "echo 32" + bits, "ffffffff", garbled + "bit 32 is beyond the 32-bit bus" + all},
        {"a directory", lane, "mkdir \"$PADKIT_FAILING_BITS\"", "ffffffff",
            garbled + "not a regular file of at most 64 KiB" + all},
        {"an empty file, exit 1", lane, ":" + bits + "; exit 1", "pppppppp", ""},
        {"no file, exit 1", lane, "exit 1", "ffffffff", ""},
        {"no file, the bus named", lane, "[ $PADKIT_SWEEP_BUS = tarnm-ddra ] && [ ! -e \"$PADKIT_FAILING_BITS\" ]",
            "pppppppp", ""},
        {"bits 9 and 14, exit 1", lane, "printf '9\\n 14'" + bits + "; exit 1", "pfppppfp", ""},
        {"--runs 2: failed in either run", {"sweep", "--runs", "2", lane[1], lane[2]},
            second_run + " || { touch \"$0.2\"; echo 8" + bits + "; }", "fppppppf", ""},
        {"a write lane leaves out dq8", {"sweep", "--parallel", "tarnm-ddra-write1::dq"}, "echo 9" + bits, "pfpppppp",
            "padkit-tune-sim: tarnm-ddra-write1::dq8 carries no data bit: left out; sweep it alone\n"},
        {"a line alone, its bit", dq1, "echo 9" + bits, "f", ""},
        {"a line alone, another bit, exit 1", dq1, "echo 8" + bits + "; exit 1", "p", ""},
        {"a shmoo's Y, a line", {"shmoo", "core_regulator::microvolts", "900000", "900000", dq1[1]},
            "echo 9" + bits, "f", ""},
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        tune_board b;
        const fs::path tmp = b.scratch / "tmp", csv = b.scratch / "csv";
        fs::create_directory(tmp);
        strings words = {row.swept[0], "-y", "--csv", csv.string()};
        words.insert(words.end(), row.swept.begin() + 1, row.swept.end());
        words.insert(words.end(), {"0", "0", "--", "sh", "-c", row.command, (b.scratch / "run").string()});
        const result got = b.run(words, {{"TMPDIR", tmp.c_str()}});
        EXPECT_EQ(results_in(slurp(csv)), row.results);
        EXPECT_EQ(got.err, row.err);
        EXPECT_TRUE(fs::is_empty(tmp)) << "the failing bits' directory is removed";
    }
}
