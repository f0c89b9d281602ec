// SPDX-License-Identifier: MIT
// The subcommands of padkit-tune on sweeps and shmoos; those on profiles are in
// tune/profile/commands.h. Each takes its own arguments, the subcommand's
// name first, and returns the exit status.
#ifndef PADKIT_TUNE_COMMANDS_H
#define PADKIT_TUNE_COMMANDS_H

int sweep_command(int argc, char** argv);
int shmoo_command(int argc, char** argv);
int resume_command(int argc, char** argv);
int merge_command(int argc, char** argv);

#endif
