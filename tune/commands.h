// SPDX-License-Identifier: MIT
// The subcommands of padkit-tune on sweeps and shmoos; those on profiles are in
// tune/profile/commands.h. Each takes its own arguments, the subcommand's
// name first, and returns the exit status.
#ifndef PADKIT_TUNE_COMMANDS_H
#define PADKIT_TUNE_COMMANDS_H

// sweep and shmoo: a campaign of the kind its name gives.
int campaign_command(int argc, char** argv);
int resume_command(int argc, char** argv);
int merge_command(int argc, char** argv);
int report_command(int argc, char** argv);

#endif
