// SPDX-License-Identifier: MIT
// padkit-tune: a board's whole tuning as a profile file.
#ifndef PADKIT_TUNE_TUNE_H
#define PADKIT_TUNE_TUNE_H

// Serves the subcommand of a run; returns main's exit status.
int padkit_tune_main(int argc, char** argv);

#endif
