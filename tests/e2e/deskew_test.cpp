// SPDX-License-Identifier: MIT
// deskew on the simulated eye: the tables and profile of visiting every value from a fraction of the runs, the
// lines without a data bit counted apart, edges under noise, and a campaign killed anywhere and resumed.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <string>

#include "runtime/exit_status.h"
#include "tests/e2e/sim_board.h"

namespace {

const settings seed = {{"PADKIT_SIM_EYE_SEED", "7"}};

// padkit-memtest-sim on the bus of the lines swept, each run their name in the scratch "runs"; killing padkit-tune
// at the runs counted in KILLS. Its path.
std::string counted_memtest(const sim_board& b, const std::set<int>& kills = {}) {
    std::string at;
    for (int kill : kills)
        at += " " + std::to_string(kill);
    const fs::path script = b.scratch / "memtest", runs = b.scratch / "runs";
    std::ofstream(script) << "#!/bin/sh\necho \"$PADKIT_SWEEP_NAME\" >>" << runs.string() << "\ncase \"" << at
                          << " \" in *\" $(wc -l <" << runs.string() << ") \"*) kill -KILL $PPID; exit 1;; esac\n"
                          << "case $PADKIT_SWEEP_BUS in tarnm-ddra) width=32;; *) width=64;; esac\nexec "
                          << PADKIT_SIM_EMULATOR " " << PADKIT_MEMTEST_SIM << " --size 64K --bus-width $width\n";
    fs::permissions(script, fs::perms::owner_all);
    return script.string();
}

// The runs of lines judged by their data bits, and of lines without one.
std::pair<std::size_t, std::size_t> runs_of(const sim_board& b) {
    std::istringstream in(slurp(b.scratch / "runs"));
    std::pair<std::size_t, std::size_t> runs;
    for (std::string line; std::getline(in, line);)
        ++(line.find("::dq8") == std::string::npos ? runs.first : runs.second);
    return runs;
}

strings deskew(const sim_board& b, strings options, const strings& what) {
    options.insert(options.begin(), {"deskew", "-y"});
    options.insert(options.end(), what.begin(), what.end());
    options.insert(options.end(), {"--", counted_memtest(b)});
    return options;
}

// The table rows of a CSV file by line: lower and upper edge.
std::map<std::string, std::pair<int, int>> edges_in(const std::string& csv) {
    std::istringstream in(csv.substr(csv.find("\nline,lower,")));
    std::map<std::string, std::pair<int, int>> edges;
    for (std::string line; std::getline(in, line);) {
        std::istringstream fields(line);
        std::string name, lower, upper;
        if (std::getline(fields, name, ',') && std::getline(fields, lower, ',') && std::getline(fields, upper, ',') &&
            name.find("::") != std::string::npos)
            edges[name] = {std::stoi(lower), std::stoi(upper)};
    }
    return edges;
}

using namespace tune_status;

}  // namespace

TEST(PadkitTuneDeskew, GivesTheTablesOfEveryValueWithAFractionOfTheRuns) {
    if (*PADKIT_SIM_EMULATOR)
        GTEST_SKIP() << "a thousand runs of the command, the same on every target: run natively";
    // clang-format off
    const struct { const char* name; strings what; bool against_full; std::size_t most_runs, alone; } rows[] = {
        {"a controller", {"tarnm-ddra"}, true, 81, 4},
        {"the whole board", {"all"}, false, 244, 12},
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        tune_board b, full;
        const result got = b.run(deskew(b, {"--profile", (b.scratch / "conf").string()}, row.what), seed);
        EXPECT_EQ(got.status, ok) << got.err;
        const auto [runs, alone] = runs_of(b);
        EXPECT_LE(runs, row.most_runs);
        EXPECT_EQ(alone, row.alone * 19) << "the coarse pass and each end of the range confirmed";
        EXPECT_NE(got.out.find(std::to_string(row.alone) + " lines without a data bit by the exit status in " +
                               std::to_string(alone) + " runs\n"),
                  std::string::npos)
            << got.out;
        if (!row.against_full)
            continue;
        const result every =
            full.run(deskew(full, {"--full", "--profile", (full.scratch / "conf").string()}, row.what), seed);
        EXPECT_EQ(got.out.substr(0, got.out.find(" lines by their data bits")),
                  every.out.substr(0, every.out.find(" lines by their data bits")));
        EXPECT_EQ(settings_of(slurp(b.scratch / "conf")), settings_of(slurp(full.scratch / "conf")));
        EXPECT_GT(runs_of(full).first, 127u * 2);
    }
}

// Noise one step either side of each edge: every edge within a step of the quiet eye's, passing twice (--runs 2),
// and no value that failed once inside a window.
TEST(PadkitTuneDeskew, NoiseAtTheEdgesMovesThemAtMostAStepInward) {
    if (*PADKIT_SIM_EMULATOR)
        GTEST_SKIP() << "a thousand runs of the command, the same on every target: run natively";
    tune_board b;
    const strings words = deskew(b, {"--csv", (b.scratch / "csv").string()}, {"tarnm-ddra"});
    ASSERT_EQ(b.run(words, seed).status, ok);
    const auto quiet = edges_in(slurp(b.scratch / "csv"));
    std::string eye = slurp(b.dir / "eye");
    b.change("eye", eye.replace(eye.find("noise 0"), 7, "noise 1").c_str());
    ASSERT_EQ(b.run(words, seed).status, ok);
    const std::string csv = slurp(b.scratch / "csv");
    const auto noisy = edges_in(csv);
    ASSERT_EQ(noisy.size(), quiet.size());
    for (const auto& [line, edges] : noisy) {
        EXPECT_LE(std::abs(edges.first - quiet.at(line).first), 1) << line;
        EXPECT_LE(std::abs(edges.second - quiet.at(line).second), 1) << line;
    }
    std::istringstream in(csv.substr(0, csv.find("\n# original: ")));
    std::size_t failed = 0;
    std::map<std::pair<std::string, int>, int> passed;
    for (std::string line; std::getline(in, line);) {
        const std::string name = line.substr(0, line.find(','));
        if (!noisy.count(name))
            continue;
        const int value = std::stoi(line.substr(name.size() + 1));
        if (line.compare(line.size() - 5, 5, ",pass") == 0 && ++passed[{name, value}])
            continue;
        ++failed;
        EXPECT_TRUE(value < noisy.at(name).first || value > noisy.at(name).second) << line;
    }
    for (const auto& [line, edges] : noisy) {
        EXPECT_GE((passed[{line, edges.first}]), 2) << line << " lower edge confirmed";
        EXPECT_GE((passed[{line, edges.second}]), 2) << line << " upper edge confirmed";
    }
    EXPECT_GT(failed, 0u);
}

// Killed at twenty points chosen at random and resumed with --retry-hang each time: the result of a campaign in one
// go, each killed run once more and no other run repeated; its journal and CSV file read back as the table it printed.
TEST(PadkitTuneDeskew, KilledAnywhereAndResumedEndsAsInOneGo) {
    tune_board killed, whole;
    const strings what = {"tarnm-ddra-write0::dq", "tarnm-ddra-read2::dq"};
    const auto options = [](const sim_board& b) {
        return strings{"--journal", (b.scratch / "j").string(),   "--csv", (b.scratch / "csv").string(),
                       "--profile", (b.scratch / "conf").string()};
    };
    const result in_one_go = whole.run(deskew(whole, options(whole), what), seed);
    ASSERT_EQ(in_one_go.status, ok) << in_one_go.err;
    const std::size_t runs = runs_of(whole).first + runs_of(whole).second;
    std::set<int> kills;
    std::mt19937 random(33);
    while (kills.size() < 20)
        kills.insert(1 + static_cast<int>(random() % runs));
    strings words = deskew(killed, options(killed), what);
    words.back() = counted_memtest(killed, kills);
    result got = killed.run(words, seed);
    for (std::size_t resumed = 0; got.status == 128 + SIGKILL && resumed < kills.size(); ++resumed)
        got = killed.run({"resume", "--retry-hang", (killed.scratch / "j").string()}, seed);
    EXPECT_EQ(got.status, ok) << got.err;
    EXPECT_EQ(got.out, in_one_go.out);
    EXPECT_EQ(settings_of(slurp(killed.scratch / "conf")), settings_of(slurp(whole.scratch / "conf")));
    EXPECT_EQ(results_of(slurp(killed.scratch / "csv")), results_of(slurp(whole.scratch / "csv")));
    EXPECT_EQ(runs_of(killed).first + runs_of(killed).second, runs + kills.size());
    for (const char* file : {"j", "csv"})
        EXPECT_EQ(killed.run({"report", (killed.scratch / file).string()}).out, got.out) << file;
    const std::string json = (killed.scratch / "r.json").string();
    std::ofstream(json) << killed.run({"report", "--json", (killed.scratch / "j").string()}).out;
    const std::string keys =
        "import json, sys; print(*(len([l for l in t['lines'] if l['width'] and l['margin_below'] "
        "and l['margin_above']]) for t in json.load(sys.stdin)['tables']))";
    EXPECT_EQ(std::system((PYTHON3 " -c \"" + keys + "\" <" + json + " >" + json + ".txt").c_str()), 0);
    EXPECT_EQ(slurp(json + ".txt"), "9 8\n");
}
