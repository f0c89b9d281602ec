// SPDX-License-Identifier: MIT
// A program of the simulated board run as a separate process on a board of its own.
#ifndef PADKIT_TESTS_SIM_BOARD_H
#define PADKIT_TESTS_SIM_BOARD_H

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "runtime/exit_status.h"

namespace fs = std::filesystem;

// Where the suite finds what it runs: a program where the environment's NAME says (an installed suite), else at
// BUILT, its place in the build tree relative to the test program; the helpers in PADKIT_E2E_DIR, by default the
// test program's directory, which shell commands read from the environment.
inline fs::path test_program_dir() { return fs::read_symlink("/proc/self/exe").parent_path(); }
inline const bool helpers_found = setenv("PADKIT_E2E_DIR", test_program_dir().c_str(), 0) == 0;
inline std::string program_path(const char* name, const char* built) {
    const char* given = std::getenv(name);
    return given ? given : (test_program_dir() / built).lexically_normal().string();
}
#define PADKIT_SIM program_path("PADKIT_SIM", BUILT_PADKIT_SIM)
#define PADKIT_TUNE_SIM program_path("PADKIT_TUNE_SIM", BUILT_PADKIT_TUNE_SIM)
#define PADKIT_MEMTEST program_path("PADKIT_MEMTEST", BUILT_PADKIT_MEMTEST)
#define PADKIT_MEMTEST_SIM program_path("PADKIT_MEMTEST_SIM", BUILT_PADKIT_MEMTEST_SIM)
#define PYTHON3 "python3"
#define SVG_SHOWS PYTHON3 " \"$PADKIT_E2E_DIR/svg_shows.py\""

// Whether TOOL is missing here, as it may be on a board that runs the installed suite: its tests skip.
inline bool lacks(const std::string& tool) {
    return std::system(("command -v '" + tool + "' >/dev/null 2>&1").c_str()) != 0;
}

using strings = std::vector<std::string>;
// Environment variables, or board files as in change(); nullptr unsets or removes.
using settings = std::vector<std::pair<std::string, const char*>>;

inline std::string slurp(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// A CSV file without the facts that differ between two runs of one campaign: when and with which command.
inline std::string results_of(const std::string& csv) {
    std::istringstream in(csv);
    std::string kept;
    for (std::string line; std::getline(in, line);)
        if (line.rfind("# date: ", 0) != 0 && line.rfind("# test: ", 0) != 0)
            kept += line + "\n";
    return kept;
}

// A profile without its two header lines, which name the command line and the time.
inline std::string settings_of(const std::string& profile) {
    return profile.substr(profile.find('\n', profile.find('\n') + 1) + 1);
}

struct result {
    std::string out, err, trace;
    int status;
};

// A status as the shell sees it: padkit's negative ones modulo 256.
constexpr int shell_status(int status) { return status & 0xff; }
static_assert(shell_status(padkit_status::lock_failed) == 255 && shell_status(padkit_status::usage) == 254 &&
                  shell_status(padkit_status::not_supported) == 253 && shell_status(padkit_status::get_failed) == 246 &&
                  shell_status(padkit_status::set_failed) == 245 && shell_status(padkit_status::output_failed) == 244 &&
                  tune_status::not_done == 1 && tune_status::bad_input == 2 && tune_status::left_changed == 3,
              "the statuses the manual pages document");

// A scratch directory for one run's output, and a board in it that a run creates.
struct sim_board {
    explicit sim_board(std::string program) : program(std::move(program)) {}
    std::string program;
    strings launcher;  // words run before the (emulated) program, e.g. a namespace wrapper
    fs::path scratch = mkdtemp((fs::temp_directory_path() / "padkit-e2e-XXXXXX").string().data());
    fs::path dir = scratch / "board";

    ~sim_board() {
        std::error_code ec;
        fs::remove_all(scratch, ec);
    }
    pid_t start(const strings& args, const settings& env = {}) const {
        std::istringstream emulator(PADKIT_SIM_EMULATOR);
        strings words = launcher;
        words.insert(words.end(), std::istream_iterator<std::string>(emulator), {});
        words.push_back(program);
        words.insert(words.end(), args.begin(), args.end());
        std::vector<char*> argv;
        for (std::string& word : words)
            argv.push_back(word.data());
        argv.push_back(nullptr);
        fs::remove(scratch / "trace");
        const pid_t pid = fork();
        if (pid != 0)
            return pid;
        setenv("PADKIT_SIM_DIR", dir.c_str(), 1);
        setenv("PADKIT_SIM_TRACE", (scratch / "trace").c_str(), 1);
        unsetenv("POSIXLY_CORRECT");
        for (const auto& [name, value] : env)
            value ? setenv(name.c_str(), value, 1) : unsetenv(name.c_str());
        // Standard input is never a terminal here, whatever runs the tests.
        dup2(open((scratch / "in").c_str(), O_RDONLY | O_CREAT, 0644), 0);
        dup2(open((scratch / "out").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), 1);
        dup2(open((scratch / "err").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), 2);
        execvp(argv[0], argv.data());
        _exit(127);
    }
    result finish(pid_t pid) const {
        int status = 0;
        waitpid(pid, &status, 0);
        return {slurp(scratch / "out"), slurp(scratch / "err"), slurp(scratch / "trace"),
                WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status)};
    }
    result run(const strings& args, const settings& env = {}) const { return finish(start(args, env)); }
    // Board set-up: nullptr removes, "->target" plants a symbolic link, else the file's text.
    void change(const std::string& path, const char* content) const {
        if (!content) {
            fs::remove_all(dir / path);
            return;
        }
        fs::create_directories((dir / path).parent_path());
        if (std::string(content).rfind("->", 0) == 0)
            fs::create_symlink(content + 2, dir / path);
        else
            std::ofstream(dir / path, std::ios::binary) << content;
    }
    std::map<std::string, std::string> files() const {
        std::map<std::string, std::string> all;
        for (const auto& entry : fs::recursive_directory_iterator(dir))
            if (entry.is_regular_file() && entry.path().filename() != "padkit.lock")
                all[fs::relative(entry.path(), dir).string()] = slurp(entry.path());
        return all;
    }
    std::string on_board(std::string text) const {
        for (std::string::size_type at; (at = text.find("<B>")) != std::string::npos;)
            text.replace(at, 3, dir.string());
        return text;
    }
};

// One run: the board's set-up, and what the run must print, return, access and leave (in a table, on the
// row's second line when the first is full).
struct run_case {
    strings args;  // <B> stands for the board directory, here and in err
    settings changes;
    std::string out, err;                                         // ending in "...": what the output begins with
    int status;                                                   // as the program returns it
    std::string trace = "-";                                      // "-": not checked
    std::vector<std::pair<std::string, std::string>> files = {};  // board file, expected content
};

// TEXT cut to what WANTED checks: all of it, or as much as comes before a final "...".
inline std::string cut_as(const std::string& text, const std::string& wanted) {
    const bool begins = wanted.size() >= 3 && wanted.compare(wanted.size() - 3, 3, "...") == 0;
    return begins ? text.substr(0, wanted.size() - 3) : text;
}

inline void check(const sim_board& b, const run_case& c) {
    SCOPED_TRACE(testing::PrintToString(c.args));
    for (const auto& [path, content] : c.changes)
        b.change(path, content);
    strings args = c.args;
    for (std::string& arg : args)
        arg = b.on_board(arg);
    const result got = b.run(args);
    const std::string err = b.on_board(c.err);
    EXPECT_EQ(cut_as(got.out, c.out), cut_as(c.out, c.out));
    EXPECT_EQ(cut_as(got.err, err), cut_as(err, err));
    EXPECT_EQ(got.status, shell_status(c.status));
    EXPECT_EQ(c.trace == "-" ? "-" : got.trace, c.trace);
    for (const auto& [path, content] : c.files)
        EXPECT_EQ(fs::exists(b.dir / path) ? slurp(b.dir / path) : "<missing>", content) << path;
}

struct named_case {
    const char* name;
    run_case c;
};

inline void check(const sim_board& b, const named_case& c) {
    SCOPED_TRACE(c.name);
    check(b, c.c);
}

// Runs the program in a private mount namespace that MOUNT ("$0" is PATH) has set up; false where it cannot have one.
inline bool in_namespace(sim_board& b, const fs::path& path, const std::string& mount) {
    b.launcher = {"unshare", "-m", "sh", "-c", mount + " && exec \"$@\"", path.string()};
    return b.run({"--version"}).status == 0;
}

// ... in which PATH is read-only.
inline bool read_only(sim_board& b, const fs::path& path) {
    return in_namespace(b, path, "mount --bind \"$0\" \"$0\" && mount -o remount,bind,ro \"$0\" \"$0\"");
}

// ... in which PATH is a mount point, which nothing can be renamed over.
inline bool mount_point(sim_board& b, const fs::path& path) {
    return in_namespace(b, path, "mount --bind \"$0\" \"$0\"");
}

// The eyes of a board, by line: its lowest and highest passing delay at the nominal core voltage.
inline std::map<std::string, std::pair<int, int>> eyes_of(const sim_board& b) {
    std::map<std::string, std::pair<int, int>> eyes;
    std::istringstream lines(slurp(b.dir / "eye"));
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string name;
        int low = 0, high = 0;
        if (words >> name >> low >> high)
            eyes[name] = {low, high};
    }
    return eyes;
}

// padkit-tune-sim on a board created by padkit-sim -h (padkit-tune-sim's -h creates none).
struct tune_board : sim_board {
    tune_board() : sim_board(PADKIT_SIM) {
        run({"-h"});
        program = PADKIT_TUNE_SIM;
    }
};

#endif
