// SPDX-License-Identifier: MIT
// The command lines of padkit-tune sweep and shmoo.
#ifndef PADKIT_SWEEP_OPTIONS_H
#define PADKIT_SWEEP_OPTIONS_H

#include <string>
#include <vector>

#include "tune/campaign/test_options.h"

// One swept property and its range.
struct swept_range {
    std::string name;
    long long from = 0, to = 0;
    long long step = 0;  // 0: the property's own default; below 0 only when FROM is above TO
};

struct sweep_options : test_options, swept_range {
    // --parallel: every NAME's members written together, each judged by its own bit.
    bool parallel = false;
    std::vector<std::string> names;  // NAME..., the first in name
    std::string bits_path;           // --bits: the board's own map of DQ lines to data bits
};

struct shmoo_options : test_options {
    swept_range x, y;
    // --weigh X:Y, X units of X counting like Y units of Y; 0: one step of each.
    long long weigh_x = 0, weigh_y = 0;
};

// A value as a profile writes it, or with a sign; the property decides
// later whether it fits. On failure says why in *problem.
bool parse_signed_value(const std::string& text, long long* out, std::string* problem);

// The file name given to OPTION ("--csv"): an empty one is refused, said with
// the usage, since an unset variable would drop the file without a word.
bool take_file_name(const char* option, const char* value, std::string* path);

struct deskew_options : test_options {
    std::vector<std::string> whats;  // WHAT...: controllers, lanes, or all
    swept_range range;               // FROM TO, the DQ axis by default
    bool full = false;               // --full: the coarse pass visits every value
    std::string bits_path;           // --bits, as sweep's
};

enum class sweep_request { run, help, bad };

// Read the subcommand's words (argv[0] is the subcommand's name): options,
// then the operands, where a word with a leading minus is a number, not an
// option, then "--" and the command. On bad input say what is wrong, and the
// usage, on standard error.
sweep_request parse_sweep_options(int argc, char** argv, sweep_options& options);
sweep_request parse_shmoo_options(int argc, char** argv, shmoo_options& options);
// WHAT... [FROM TO], --runs 2 unless given.
sweep_request parse_deskew_options(int argc, char** argv, deskew_options& options);

#endif
