// SPDX-License-Identifier: MIT
// The subcommands of padkit-tune. Each takes its own arguments, the
// subcommand's name first, and returns the exit status.
#ifndef PADKIT_TUNE_COMMANDS_H
#define PADKIT_TUNE_COMMANDS_H

#include <cstdio>
#include <string>

int dump_command(int argc, char** argv);
int diff_command(int argc, char** argv);
int apply_command(int argc, char** argv);
// sweep and shmoo: a campaign of the kind its name gives.
int campaign_command(int argc, char** argv);
int resume_command(int argc, char** argv);
int trial_command(int argc, char** argv);
int bless_command(int argc, char** argv);
int merge_command(int argc, char** argv);

void print_usage(std::FILE* out);

// Reports the problem and the usage on standard error; the usage status, 2.
int usage_error(const std::string& problem);

// The usage error of the option getopt could not take.
int unknown_option(char** argv);

#endif
