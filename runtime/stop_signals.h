// SPDX-License-Identifier: MIT
// Every signal that would end the program (SIGINT, SIGTERM, SIGHUP, SIGQUIT,
// SIGUSR1, SIGALRM and the rest) as a request to stop: blocked while an
// object of this class lives and taken only where stopping is safe, so that
// whatever runs between two such points (a write, a restore) is never cut
// short. Those still pending when it goes act as they would have. Not held:
// SIGKILL and SIGSTOP, which cannot be, and the signals of a fault in the
// program itself (SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT),
// which must not wait.
#ifndef PADKIT_STOP_SIGNALS_H
#define PADKIT_STOP_SIGNALS_H

#include <signal.h>

class stop_signals {
public:
    // A signal the program was started with ignored (nohup) stays ignored.
    stop_signals();
    ~stop_signals();
    stop_signals(const stop_signals&) = delete;
    stop_signals& operator=(const stop_signals&) = delete;

    const sigset_t& set() const { return signals; }
    // The mask from before, for a child that should not inherit the blocking.
    const sigset_t& original_mask() const { return original; }
    // A stop signal that has arrived, taken off the pending set; 0 if none.
    int take() const;

    // Ends the program the way the signal would have, once the caller has
    // cleaned up, so that a calling shell sees it was interrupted.
    [[noreturn]] static void die_of(int signal);

private:
    sigset_t signals;
    sigset_t original;
};

// SIGPIPE ignored for the rest of the run, unless it was already: a write to
// a reader that has gone fails, and the program notes it, instead of ending.
void ignore_broken_pipe();

// In a child about to run another program: SIGPIPE as the run found it.
void restore_broken_pipe();

#endif
