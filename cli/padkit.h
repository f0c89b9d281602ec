// SPDX-License-Identifier: MIT
// The padkit command line, as an entry point that programs and harnesses link.
#ifndef PADKIT_CLI_PADKIT_H
#define PADKIT_CLI_PADKIT_H

// Serves the one request of a run; returns main's exit status.
int padkit_main(int argc, char** argv);

#endif
