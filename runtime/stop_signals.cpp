// SPDX-License-Identifier: MIT
#include "runtime/stop_signals.h"

#include <time.h>
#include <unistd.h>

#include <initializer_list>

namespace {

// Those whose default action ends the process and that another process, a
// timer or the terminal sends; SIGPIPE is ignored instead.
void add_ending_signals(sigset_t* set) {
    for (int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGUSR1, SIGUSR2, SIGALRM, SIGVTALRM,
                       SIGPROF, SIGXCPU, SIGXFSZ, SIGIO, SIGPWR})
        sigaddset(set, signal);
#ifdef SIGSTKFLT
    sigaddset(set, SIGSTKFLT);
#endif
    for (int signal = SIGRTMIN; signal <= SIGRTMAX; ++signal)
        sigaddset(set, signal);
}

struct sigaction pipe_at_start {};

}  // namespace

stop_signals::stop_signals() {
    sigset_t ending;
    sigemptyset(&ending);
    add_ending_signals(&ending);
    sigemptyset(&signals);
    for (int signal = 1; signal <= SIGRTMAX; ++signal) {
        struct sigaction current {};
        if (sigismember(&ending, signal) == 1 && sigaction(signal, nullptr, &current) == 0 &&
            current.sa_handler != SIG_IGN)
            sigaddset(&signals, signal);
    }
    sigprocmask(SIG_BLOCK, &signals, &original);
}

stop_signals::~stop_signals() { sigprocmask(SIG_SETMASK, &original, nullptr); }

int stop_signals::take() const {
    const timespec now{0, 0};
    const int signal = sigtimedwait(&signals, nullptr, &now);
    return signal > 0 ? signal : 0;
}

void stop_signals::die_of(int signal) {
    struct sigaction by_default {};
    by_default.sa_handler = SIG_DFL;
    sigaction(signal, &by_default, nullptr);
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, signal);
    sigprocmask(SIG_UNBLOCK, &only, nullptr);
    raise(signal);
    _exit(128 + signal);
}

void ignore_broken_pipe() {
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &ignore, &pipe_at_start);
}

void restore_broken_pipe() { sigaction(SIGPIPE, &pipe_at_start, nullptr); }
