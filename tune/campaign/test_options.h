// SPDX-License-Identifier: MIT
// What every campaign's command line gives: how the test command runs, and
// what is left and written at the end.
#ifndef PADKIT_CAMPAIGN_TEST_OPTIONS_H
#define PADKIT_CAMPAIGN_TEST_OPTIONS_H

#include <string>
#include <vector>

struct test_options {
    bool assume_yes = false;
    long long runs = 1;
    double timeout_seconds = 60;
    bool keep_centre = false;
    std::string csv_path, svg_path, profile_path;
    std::string journal_path, watchdog_path;
    std::string log_dir;  // where each run's output goes; empty: standard error
    std::vector<std::string> command;
    std::vector<std::string> words;  // all of the subcommand's, as given, for the journal
};

// The words as an argv, ending with a null pointer; valid while WORDS lives.
inline std::vector<char*> argv_of(std::vector<std::string>& words) {
    std::vector<char*> argv;
    for (std::string& word : words)
        argv.push_back(&word[0]);
    argv.push_back(nullptr);
    return argv;
}

#endif
