// SPDX-License-Identifier: MIT
// The exit statuses of the programs, named once for the code and the tests.
#ifndef PADKIT_EXIT_STATUS_H
#define PADKIT_EXIT_STATUS_H

// padkit's, as padkit_main returns them; the shell sees them modulo 256.
namespace padkit_status {
constexpr int ok = 0;
constexpr int lock_failed = -1;     // 255
constexpr int usage = -2;           // 254
constexpr int not_supported = -3;   // 253
constexpr int get_failed = -10;     // 246
constexpr int set_failed = -11;     // 245
constexpr int output_failed = -12;  // 244
}  // namespace padkit_status

// padkit-tune's. What "not done" means is each subcommand's: differences
// (diff), rolled back (apply), no passing window (sweep), unreadable (dump).
namespace tune_status {
constexpr int ok = 0;
constexpr int not_done = 1;
constexpr int bad_input = 2;
constexpr int left_changed = 3;
// The work is done but some of its output could not be written; a run whose
// result was not 0 keeps that status instead.
constexpr int output_lost = 4;
}  // namespace tune_status

// padkit-memtest's.
namespace memtest_status {
constexpr int ok = 0;           // no bit failed
constexpr int failed = 1;       // some bits failed, named in the failing-bits file
constexpr int bad_input = 2;    // nothing tested
constexpr int output_lost = 4;  // as padkit-tune's
}  // namespace memtest_status

#endif
