// SPDX-License-Identifier: MIT
// The lock that keeps two runs from touching the board at the same time.
#ifndef PADKIT_RUN_LOCK_H
#define PADKIT_RUN_LOCK_H

#include <signal.h>

#include <functional>

// Opens the board's lock file on first use and takes the exclusive lock.
// When another process holds it, says on standard error which one (when
// /proc/locks tells) and waits for it. On failure says why on standard error
// and returns false.
bool take_run_lock();

// The same, but one of the signals (blocked by the caller) that arrives while
// it waits ends the wait: false, with *signal set to it and the signal taken
// off the pending set. *signal is 0 when the lock failed for another reason.
// While it waits, WHILE_WAITING (if given) is called about every 20 ms.
bool take_run_lock(const sigset_t& stop, int* signal,
                   const std::function<void()>& while_waiting = nullptr);

// Releases the lock; the file stays open, so it can be taken again.
void release_run_lock();

#endif
