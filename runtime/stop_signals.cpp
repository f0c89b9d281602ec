// SPDX-License-Identifier: MIT
#include "runtime/stop_signals.h"

#include <time.h>

#include <initializer_list>

stop_signals::stop_signals() {
    sigemptyset(&signals);
    for (int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction current {};
        if (sigaction(signal, nullptr, &current) == 0 && current.sa_handler != SIG_IGN)
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
