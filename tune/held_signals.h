// Holds back the signals that would end a run half-way through its writes.
#ifndef PADKIT_TUNE_HELD_SIGNALS_H
#define PADKIT_TUNE_HELD_SIGNALS_H

#include <signal.h>

// While it lives, SIGINT, SIGTERM and SIGHUP stay pending; when it goes they
// are delivered and act as they would have.
class held_signals {
public:
    held_signals();
    ~held_signals();
    held_signals(const held_signals&) = delete;
    held_signals& operator=(const held_signals&) = delete;

private:
    sigset_t previous;
};

#endif
