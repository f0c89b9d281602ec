#include "tune/held_signals.h"

#include <signal.h>

held_signals::held_signals() {
    sigset_t held;
    sigemptyset(&held);
    sigaddset(&held, SIGINT);
    sigaddset(&held, SIGTERM);
    sigaddset(&held, SIGHUP);
    sigprocmask(SIG_BLOCK, &held, &previous);
}

held_signals::~held_signals() { sigprocmask(SIG_SETMASK, &previous, nullptr); }
