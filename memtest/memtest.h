// SPDX-License-Identifier: MIT
// padkit-memtest: a memory test that names the data bits of the bus that fail.
#ifndef PADKIT_MEMTEST_MEMTEST_H
#define PADKIT_MEMTEST_MEMTEST_H

// The whole run; returns the exit status (runtime/exit_status.h), or ends by
// the stop signal that interrupted the test.
int padkit_memtest_main(int argc, char** argv);

#endif
