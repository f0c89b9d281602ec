// SPDX-License-Identifier: MIT
// The command line of padkit-tune sweep.
#ifndef PADKIT_SWEEP_OPTIONS_H
#define PADKIT_SWEEP_OPTIONS_H

#include <string>
#include <vector>

struct sweep_options {
    bool assume_yes = false;
    long long step = 0;  // 0: the property's own default; below 0 only when FROM is above TO
    long long runs = 1;
    double timeout_seconds = 60;
    bool keep_centre = false;
    std::string csv_path, svg_path, profile_path;
    std::string name;
    long long from = 0, to = 0;
    std::vector<std::string> command;
};

// A value as a profile writes it, or with a sign; the property decides
// later whether it fits. On failure says why in *problem.
bool parse_signed_value(const std::string& text, long long* out, std::string* problem);

enum class sweep_request { run, help, bad };

// Reads the subcommand's words (argv[0] is "sweep"): options, then NAME FROM
// TO, where a word with a leading minus is a number, not an option. On bad
// input says what is wrong, and the usage, on standard error.
sweep_request parse_sweep_options(int argc, char** argv, sweep_options& options);

#endif
