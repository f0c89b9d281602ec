// SPDX-License-Identifier: MIT
// The subcommands of padkit-tune on profiles. Each takes its own arguments,
// the subcommand's name first, and returns the exit status.
#ifndef PADKIT_TUNE_PROFILE_COMMANDS_H
#define PADKIT_TUNE_PROFILE_COMMANDS_H

int dump_command(int argc, char** argv);
int diff_command(int argc, char** argv);
int apply_command(int argc, char** argv);
int trial_command(int argc, char** argv);
int bless_command(int argc, char** argv);

#endif
